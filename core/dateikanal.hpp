#pragma once
// One open file through POSIX calls: large reads and writes without buffering of our own, and
// errors that name the file and the cause in German. The text preparation of the import and the
// head reading of the core share it.

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace flurix {

/// Throws Fehler: `Die Datei "<pfad>" kann nicht <was> werden (<cause of errno>)!`.
[[noreturn]] void DateiFehler(const std::filesystem::path& pfad, std::string_view was, int fehler);

/// One open file. Reading fills the buffer up to its size, so blocks are whole but for the last.
class Dateikanal {
public:
    enum class Zweck { Lesen, Schreiben };

    /// Opens for reading, or creates/truncates for writing. Throws Fehler naming the file when
    /// that fails ("geöffnet" / "angelegt"); `name` is the file the messages name, when it is not
    /// `pfad` (the target of a file written under a temporary name).
    Dateikanal(const std::filesystem::path& pfad, Zweck zweck,
               const std::filesystem::path& name = {});
    Dateikanal(const Dateikanal&) = delete;
    Dateikanal& operator=(const Dateikanal&) = delete;
    Dateikanal(Dateikanal&&) = delete;
    Dateikanal& operator=(Dateikanal&&) = delete;
    ~Dateikanal();

    /// Up to `n` bytes; fewer only at the end of the file, 0 there. Throws Fehler on a read error.
    std::size_t Lesen(char* puffer, std::size_t n);

    /// Writes all `n` bytes. Throws Fehler when that fails.
    void Schreiben(const char* daten, std::size_t n);

    /// Closes and reports what the system only tells at close (a full disk on some file systems).
    void Schließen();

private:
    std::filesystem::path m_pfad;
    int m_fd = -1;
};

} // namespace flurix
