#include "core/einstellungen.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/fehler.hpp"

#include <ctime>

namespace flurix {

std::string TokenNr(std::string_view text, int n, std::string_view trenner) {
    if (n < 1)
        return {};
    std::string ohneTabs;
    ohneTabs.reserve(text.size());
    for (char c : text)
        if (c != '\t')
            ohneTabs += c;
    std::string_view rest = ohneTabs;
    if (trenner.empty())
        return n == 1 ? std::string(TrimmeLeerzeichen(rest)) : std::string();
    for (int i = 1; i < n; ++i) {
        const auto pos = rest.find(trenner);
        if (pos == std::string_view::npos)
            return {}; // the piece does not exist
        rest.remove_prefix(pos + trenner.size());
    }
    return std::string(TrimmeLeerzeichen(rest.substr(0, rest.find(trenner))));
}

std::string EinstellungLesen(const std::filesystem::path& datei, std::string_view schlüssel,
                             std::string_view trenner) {
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(datei));
    for (std::string_view zeile : TextZeilen(text))
        if (TokenNr(zeile, 1, trenner) == schlüssel)
            return TokenNr(zeile, 2, trenner);
    return {};
}

void ZeileErsetzen(const std::filesystem::path& datei, std::string_view präfix,
                   std::string_view neueZeile) {
    if (!DateiVorhanden(datei))
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden!");
    const std::string roh = DateiKomplettLesen(datei);
    const bool utf8 = IstGültigesUtf8(roh);
    const std::string text = utf8 ? roh : Cp1252NachUtf8(roh);

    std::string neu;
    neu.reserve(text.size() + neueZeile.size());
    for (std::string_view zeile : TextZeilen(text)) {
        if (zeile.find(präfix) != std::string_view::npos)
            zeile = neueZeile;
        else if (TrimmeLeerzeichen(zeile).empty())
            continue;
        neu.append(zeile).append("\r\n");
    }
    DateiSchreiben(datei, utf8 ? neu : Utf8NachCp1252(neu));
}

std::string ZeitStempelText(std::chrono::system_clock::time_point zeitpunkt) {
    const std::time_t t = std::chrono::system_clock::to_time_t(zeitpunkt);
    std::tm lokal{};
    localtime_r(&t, &lokal);
    // The program prints date and time as "dd.mm.yyyy hh:mm:ss"; the separators are then removed.
    char puffer[32];
    std::strftime(puffer, sizeof puffer, "%d%m%Y %H%M%S", &lokal);
    return puffer;
}

std::string ZeitStempelText() { return ZeitStempelText(std::chrono::system_clock::now()); }

} // namespace flurix
