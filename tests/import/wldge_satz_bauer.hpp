#pragma once
// Test fixtures of WLDGE files: lines whose fields are placed at their 1-based columns, and files of
// such lines with CR LF line ends. Shared by the tests of the complete and the quick reader.

#include "core/cp1252.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace flurix::test {

/// One WLDGE line: fields are placed at their 1-based columns into a line of blanks; text is
/// UTF-8 and written as Windows-1252.
class Satz {
public:
    Satz(char block, std::string_view schlüssel, char art) : m_zeile(140, ' ') {
        m_zeile[0] = block;
        Setze(2, schlüssel);
        m_zeile[26] = art;
    }
    Satz& Setze(std::size_t spalte, std::string_view text) {
        const std::string roh = Utf8NachCp1252(text);
        if (m_zeile.size() < spalte - 1 + roh.size())
            m_zeile.resize(spalte - 1 + roh.size(), ' ');
        m_zeile.replace(spalte - 1, roh.size(), roh);
        return *this;
    }
    /// The line without its trailing blanks.
    std::string Text() const {
        std::string z = m_zeile;
        z.erase(z.find_last_not_of(' ') + 1);
        return z;
    }

private:
    std::string m_zeile;
};

/// The header line of a format ("32", "35").
inline std::string Kopf(std::string_view format) {
    return Satz('1', "05", ' ').Setze(27, "E   01").Setze(34, format).Text();
}

/// The lines joined with CR LF, as a file of the register.
inline std::string Datei(const std::vector<std::string>& zeilen) {
    std::string text;
    for (const auto& z : zeilen)
        text += z + "\r\n";
    return text;
}

} // namespace flurix::test
