#include "core/textkodierung.hpp"

#include <fstream>

namespace flurix {

bool IstUtf16(std::string_view kopf) {
    if (kopf.starts_with("\xFF\xFE") || kopf.starts_with("\xFE\xFF"))
        return true;
    constexpr std::size_t Prüflänge = 32;
    if (kopf.size() < Prüflänge)
        return false;
    // Little-endian puts the NUL second, big-endian first.
    for (const std::size_t null : {std::size_t{1}, std::size_t{0}}) {
        bool passt = true;
        for (std::size_t i = 0; i < Prüflänge && passt; ++i)
            passt = (kopf[i] == '\0') == (i % 2 == null);
        if (passt)
            return true;
    }
    return false;
}

std::string MeldungUtf16(const std::filesystem::path& datei) {
    return "Die Datei \"" + datei.string() +
           "\" ist in UTF-16 kodiert! Flurix liest Textdateien in Windows-1252 oder UTF-8: bitte "
           "die Datei in einer dieser Kodierungen speichern und erneut öffnen.   ";
}

bool IstUtf16Datei(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    char kopf[64];
    ein.read(kopf, sizeof kopf);
    return IstUtf16(std::string_view(kopf, static_cast<std::size_t>(ein.gcount())));
}

} // namespace flurix
