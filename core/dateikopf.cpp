#include "core/dateikopf.hpp"

#include "core/dateikanal.hpp"

#include <algorithm>
#include <system_error>

namespace flurix {

namespace fs = std::filesystem;

std::string DateiKopfLesen(const fs::path& pfad, int anzahl, std::size_t höchstens) {
    constexpr std::size_t Lesestück = 65'536;
    Dateikanal datei(pfad, Dateikanal::Zweck::Lesen); // also a missing file is reported
    std::string kopf;
    if (anzahl <= 0)
        return kopf;
    int zeilen = 0;
    std::size_t geprüft = 0;
    while (kopf.size() < höchstens) {
        const std::size_t alt = kopf.size();
        kopf.resize(alt + std::min(Lesestück, höchstens - alt));
        kopf.resize(alt + datei.Lesen(kopf.data() + alt, kopf.size() - alt));
        if (kopf.size() == alt)
            break;
        for (; geprüft < kopf.size(); ++geprüft) {
            const char c = kopf[geprüft];
            if (c == '\r') {
                if (geprüft + 1 == kopf.size())
                    break; // CR LF or a lone CR: the next byte tells
                if (kopf[geprüft + 1] == '\n')
                    continue; // the LF ends this line
            } else if (c != '\n') {
                continue;
            }
            if (++zeilen == anzahl) {
                kopf.resize(geprüft + 1);
                return kopf;
            }
        }
    }
    return kopf;
}

bool DateiZuGroß(const fs::path& pfad) {
    std::error_code ec;
    const std::uintmax_t größe = fs::file_size(pfad, ec);
    return !ec && größe > GrößteAusgangsdatei;
}

} // namespace flurix
