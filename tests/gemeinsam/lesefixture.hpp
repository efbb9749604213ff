#pragma once
// What the tests of the register readers (WLDGE complete and quick, Web-XML) share: one fixture
// with a scratch folder, the import options, the table and a scripted UI, and the builder of
// WLDGE lines with their fields at fixed columns.

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "import/datenladen.hpp"

#include <gtest/gtest.h>

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

/// The fixture of every reader test: the reader under test is called with `optionen`, `kataster`
/// and `ui`; `Schreiben` puts its input into the scratch folder.
class Lesefixture : public ::testing::Test {
protected:
    std::filesystem::path Schreiben(std::string_view name, std::string_view inhalt) {
        DateiSchreiben(ordner / name, inhalt);
        return ordner / name;
    }
    std::string Zelle(std::size_t zeile, std::string_view spalte) const {
        return std::string(kataster.Zelle(zeile, spalte));
    }
    /// Each row as the cells of `spalten` joined with "|": one text per row to compare whole.
    std::vector<std::string> Zeilen(std::initializer_list<std::string_view> spalten) const {
        std::vector<std::string> zeilen;
        for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
            std::string zeile;
            for (const auto s : spalten)
                zeile += "|" + Zelle(z, s);
            zeilen.push_back(zeile.substr(1));
        }
        return zeilen;
    }

    TempOrdner ordner;
    import::ImportOptionen optionen;
    Kataster kataster;
    SkriptOberfläche ui;
};

} // namespace flurix::test
