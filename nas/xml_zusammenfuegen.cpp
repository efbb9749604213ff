// "ALKIS-XML-Merge": the features of several NAS files into one, each identifier once.
#include "nas/xml_werkzeuge.hpp"

#include "core/dateikopf.hpp"
#include "core/oberflaeche.hpp"
#include "nas/xml_werkzeug_basis.hpp"

#include <cstdio>
#include <system_error>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using namespace detail;

constexpr std::string_view Titel = "ALKIS-XML-Merge";

std::string Dreistellig(std::size_t zahl) {
    char text[24];
    std::snprintf(text, sizeof text, "%03zu", zahl);
    return text;
}

} // namespace

Ergebnis XmlZusammenfügen(const std::vector<fs::path>& dateien,
                          const std::vector<std::string>& reduzierung, Oberfläche& ui,
                          XmlBericht& bericht, const XmlOptionen& optionen) {
    bericht = {};
    ui.Meldung(
        "Es können nur ALKIS-XML-Dateien OHNE identische Objekte zusammengefügt werden! Alle "
        "vorgefundenen identischen Objekte werden in den folgenden Dateien überlesen! Die "
        "Kopfdaten "
        "der neuen ALKIS-XML-Datei werden von der ersten Datei übernommen und werden nicht "
        "angepaßt!   ",
        Titel, Stil::Information);
    if (dateien.size() < 2) {
        ui.Meldung("Bitte wählen Sie mindestens zwei XML-Dateien aus!   ", Titel, Stil::Warnung);
        return Ergebnis::Fehlschlag("Bitte wählen Sie mindestens zwei XML-Dateien aus!   ");
    }
    std::uint64_t gesamt = 0;
    for (const auto& datei : dateien) {
        if (auto fehler = EingabePrüfen(ui, Titel, datei))
            return *fehler;
        if (DateiZuGroß(datei))
            return Fehlschlag(ui, Titel, std::string(MeldungEineAusgangsdateiZuGroß));
        std::error_code fehler;
        const std::uintmax_t größe = fs::file_size(datei, fehler);
        gesamt += fehler ? 0 : größe;
    }
    const Fragestellung frage{"Wollen Sie " + std::to_string(dateien.size()) +
                                  " Dateien zusammenführen?   ",
                              std::string(Titel)};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    const fs::path ziel = ZielNeben(dateien.front(), "_MERGE.xml");
    if (!ZielFreigegeben(ui, ziel, optionen, FrageErsetzen(ziel), "Datei schon vorhanden!"))
        return Ergebnis::Abbruch();

    try {
        const XmlKopf kopf = KopfLesen(dateien.front());
        if (kopf.mitgliedTag.empty())
            throw Fehler("Im Kopf der Datei \"" + dateien.front().string() +
                         "\" steht kein <gml:featureMember> und kein <wfs:member>!   ");
        XmlAusgabe ausgabe(ziel, kopf);
        const Typliste typen(reduzierung);
        Kennungsmenge kennungen;
        Laufanzeige anzeige(ui, gesamt, [](int schritt) {
            return "ALKIS-XML-Merge  " + std::string(Drehzeichen(schritt));
        });
        std::uint64_t basis = 0;
        for (std::size_t i = 0; i < dateien.size(); ++i) {
            const auto& datei = dateien[i];
            // Lines ends are not converted (the cut does not need it); the step keeps its place.
            ui.Status(1,
                      Dreistellig(i + 1) + ".Datei UNIX-PC Prüfung: " + datei.filename().string());
            // A file whose head names no member tag is cut at the first file's.
            std::string tag = i == 0 ? kopf.mitgliedTag : KopfLesen(datei).mitgliedTag;
            if (tag.empty())
                tag = kopf.mitgliedTag;
            const bool weiter =
                ObjekteLesen(datei, tag, anzeige, basis,
                             [&](std::string_view objekt, std::string_view einrückung) {
                                 if (typen.Enthält(Objektart(objekt))) {
                                     ++bericht.übersprungen;
                                     return;
                                 }
                                 const std::string_view id = GmlId(objekt);
                                 if (!id.empty() && !kennungen.Einfügen(id)) {
                                     ++bericht.doppelt;
                                     return;
                                 }
                                 ausgabe.Objekt(einrückung, objekt);
                                 ++bericht.geschrieben;
                             });
            if (!weiter)
                return Abgebrochen();
            ++bericht.dateien;
            basis += fs::file_size(datei);
        }
        ausgabe.Abschließen();
    } catch (const std::exception& f) {
        return ZielNichtErstellt(ui, Titel, ziel, f);
    }
    bericht.ziel = ziel;
    return Erledigt(ui, Titel, "XML-Dateien nach " + ziel.string() + " zusammengefügt...");
}

} // namespace flurix::nas
