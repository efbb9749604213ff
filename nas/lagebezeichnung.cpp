#include "nas/lagebezeichnung.hpp"

#include "core/kataster.hpp"

#include <algorithm>
#include <charconv>

namespace flurix::nas {
namespace {

std::string Schlüssel(const Lageeintrag& eintrag) {
    return eintrag.schlüssel.empty() ? std::string("ohne") : eintrag.schlüssel;
}

void Anhängen(std::string& liste, std::string_view teil) {
    if (!liste.empty())
        liste += "; ";
    liste += teil;
}

} // namespace

int HausnummernVergleich(std::string_view a, std::string_view b) {
    const auto zahl = [](std::string_view text, std::string_view& rest) {
        unsigned long long wert = 0;
        const auto ende = std::from_chars(text.data(), text.data() + text.size(), wert).ptr;
        rest = text.substr(static_cast<std::size_t>(ende - text.data()));
        return ende == text.data() ? ~0ULL : wert; // no number: behind every number
    };
    std::string_view restA;
    std::string_view restB;
    const auto zahlA = zahl(a, restA);
    const auto zahlB = zahl(b, restB);
    if (zahlA != zahlB)
        return zahlA < zahlB ? -1 : 1;
    const std::string formA = Vergleichsform(restA);
    const std::string formB = Vergleichsform(restB);
    return formA.compare(formB);
}

Lagetext LagebezeichnungBilden(const std::vector<Lageeintrag>& mitHausnummer,
                               const std::vector<Lageeintrag>& ohneHausnummer) {
    Lagetext ergebnis;
    if (!mitHausnummer.empty()) {
        std::vector<Lageeintrag> sortiert = mitHausnummer;
        std::stable_sort(sortiert.begin(), sortiert.end(),
                         [](const Lageeintrag& a, const Lageeintrag& b) {
                             const int strasse = Vergleichsform(a.text).compare(Vergleichsform(b.text));
                             if (strasse != 0)
                                 return strasse < 0;
                             return HausnummernVergleich(a.hausnummer, b.hausnummer) < 0;
                         });
        for (std::size_t i = 0; i < sortiert.size();) {
            const Lageeintrag& erster = sortiert[i];
            std::string teil = erster.text;
            std::string nummern;
            std::string letzte;
            std::size_t j = i;
            for (; j < sortiert.size() && sortiert[j].text == erster.text; ++j) {
                const std::string& nummer = sortiert[j].hausnummer;
                if (nummer.empty() || (j > i && nummer == letzte))
                    continue;
                nummern += nummern.empty() ? "" : ", ";
                nummern += nummer;
                letzte = nummer;
            }
            if (!nummern.empty())
                teil += (teil.empty() ? "" : " ") + nummern;
            Anhängen(ergebnis.lagebezeichnung, teil);
            Anhängen(ergebnis.straßenschlüssel, Schlüssel(erster));
            i = j;
        }
        return ergebnis;
    }
    std::vector<std::string_view> gesehen;
    for (const Lageeintrag& eintrag : ohneHausnummer) {
        if (std::find(gesehen.begin(), gesehen.end(), eintrag.text) != gesehen.end())
            continue;
        gesehen.push_back(eintrag.text);
        Anhängen(ergebnis.lagebezeichnung, eintrag.text);
        Anhängen(ergebnis.straßenschlüssel, Schlüssel(eintrag));
    }
    return ergebnis;
}

} // namespace flurix::nas
