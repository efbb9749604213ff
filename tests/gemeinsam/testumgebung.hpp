#pragma once
// Helpers every test program shares: a scratch folder of its own, files written and read as bytes.

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix::test {

/// A fresh empty folder under the system's temp dir, removed again with the object.
class TempOrdner {
public:
    TempOrdner();
    TempOrdner(const TempOrdner&) = delete;
    TempOrdner& operator=(const TempOrdner&) = delete;
    TempOrdner(TempOrdner&&) = delete;
    TempOrdner& operator=(TempOrdner&&) = delete;
    ~TempOrdner();

    const std::filesystem::path& pfad() const { return m_pfad; }
    std::filesystem::path operator/(std::string_view name) const { return m_pfad / name; }

private:
    std::filesystem::path m_pfad;
};

/// Writes the bytes as they are; creates missing folders.
void DateiSchreiben(const std::filesystem::path& pfad, std::string_view inhalt);
/// The bytes of a file; throws when it can't be read.
std::string DateiLesen(const std::filesystem::path& pfad);

/// True when an executable of that name lies in one of the folders of PATH.
bool ImSuchpfad(std::string_view programm);
/// A path as one word for the shell, in single quotes.
std::string Wort(const std::filesystem::path& pfad);

/// What a shell command gave: its exit status as pclose reports it (-1: not started) and stdout.
struct Programmlauf {
    int status = -1;
    std::string ausgabe;
};
/// Runs a command through the shell and collects its standard output.
Programmlauf Ausführen(const std::string& befehl);

/// Compares `ist` with the expected file `erwartet` byte for byte. Returns "" when they are equal,
/// else the file's name and its first differing line, expected and got. With FLURIX_GOLDEN_NEU=1
/// in the environment it writes `ist` as the new expected file instead (and returns ""): run the
/// tests that way only on purpose, and read `git diff` before keeping the files.
std::string GoldenVergleich(std::string_view ist, const std::filesystem::path& erwartet);

/// Folder of the fixtures in the source tree.
std::filesystem::path Testdaten();
/// The shared test data beside the repository (may be absent).
std::filesystem::path GemeinsameTestdaten();

} // namespace flurix::test
