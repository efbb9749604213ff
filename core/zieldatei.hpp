#pragma once
// A file the user gets whole or not at all: written under a temporary name beside the target, in
// large blocks, and renamed when it is complete. Until then an older target stays as it was.
//
// A full block goes to the system on a second thread while the writer fills the next one: on
// files of hundreds of megabytes the copy into the page cache costs as much as making the text,
// and the two then overlap.

#include "core/dateikanal.hpp"

#include <filesystem>
#include <future>
#include <optional>
#include <string>
#include <string_view>

namespace flurix {

/// The destructor removes the temporary file of a target not completed. Throws Fehler naming the
/// file when writing fails.
class Zieldatei {
public:
    /// Creates the temporary file. Throws Fehler naming it when it can't be created.
    explicit Zieldatei(std::filesystem::path ziel);
    Zieldatei(const Zieldatei&) = delete;
    Zieldatei& operator=(const Zieldatei&) = delete;
    Zieldatei(Zieldatei&&) = delete;
    Zieldatei& operator=(Zieldatei&&) = delete;
    ~Zieldatei();

    /// The temporary name of a target: "<ziel>.<process id>.tmp", in the target's folder so that
    /// the rename is one step, and of this process so that two runs never share it.
    static std::filesystem::path Zwischenname(const std::filesystem::path& ziel);

    void Schreiben(std::string_view text) {
        m_puffer.append(text);
        Weiter();
    }
    /// The buffer, for writers that build their text in place; Weiter() after appending.
    std::string& Puffer() { return m_puffer; }
    /// Hands a full buffer to the file. Throws Fehler when an earlier block could not be written.
    void Weiter() {
        if (m_puffer.size() >= Blockgröße)
            Leeren();
    }
    /// Writes the rest, closes and renames to the target.
    void Abschließen();
    const std::filesystem::path& Ziel() const { return m_ziel; }

private:
    static constexpr std::size_t Blockgröße = 4u << 20;
    void Leeren();
    /// Waits for the block on its way; rethrows its failure.
    void Abwarten();

    std::filesystem::path m_ziel;
    std::filesystem::path m_temporär;
    std::optional<Dateikanal> m_kanal;
    std::string m_puffer;
    std::string m_unterwegs; ///< the block the second thread writes
    std::future<void> m_auftrag;
    bool m_fertig = false;
};

} // namespace flurix
