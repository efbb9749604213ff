#pragma once
// Cuts a NAS file into its features without ever holding more of it than one feature and one
// read block: the text between a member start tag ("<gml:featureMember>") and the next member
// end tag is one feature. What stands between features (the head, the closing tags) is handed on
// line by line, for the notes of the coordinate systems.
//
// The cut does not depend on line ends: files with LF, CR LF or CR only, and files that hold many
// features on one line, are cut alike. A start tag met before the end tag of the feature before it
// drops the unfinished feature (it is counted); a file that ends inside a feature leaves that
// piece unread (it is reported as cut off).

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace flurix::nas {

class ObjektSchneider {
public:
    /// Opens the file; throws Fehler when it can't be read.
    ObjektSchneider(const std::filesystem::path& datei, std::string mitgliedTag);

    /// The next feature's text (between the member tags), valid until the next call; false at
    /// the end of the file. Lines outside features go to `zwischenzeile` first, each without its
    /// line end.
    bool Nächstes(std::string_view& objekt,
                  const std::function<void(std::string_view)>& zwischenzeile);

    /// Bytes of the file consumed so far (the position for the progress).
    std::uint64_t Position() const { return m_gelesen - (m_puffer.size() - m_anfang); }
    std::uint64_t Größe() const { return m_größe; }
    /// Features dropped because a start tag came before their end tag.
    std::uint64_t Unvollständige() const { return m_unvollständige; }
    /// True when the file ended inside a feature.
    bool Abgeschnitten() const { return m_abgeschnitten; }

private:
    bool Nachlesen();
    void ZwischenzeilenAbgeben(std::size_t bis, bool auchLetzte,
                               const std::function<void(std::string_view)>& zwischenzeile);

    std::ifstream m_datei;
    std::uint64_t m_größe = 0;
    std::uint64_t m_gelesen = 0;
    std::string m_start; ///< "<" + tag + ">"
    std::string m_ende;  ///< "</" + tag + ">"
    std::string m_puffer;
    std::size_t m_anfang = 0; ///< the unconsumed text begins here
    bool m_dateiende = false;
    std::uint64_t m_unvollständige = 0;
    bool m_abgeschnitten = false;
};

} // namespace flurix::nas
