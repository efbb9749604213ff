// "ALKIS-XML-Ausdünnen": a copy of a NAS file without the features of the listed types.
#include "nas/xml_werkzeuge.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/oberflaeche.hpp"
#include "nas/xml_werkzeug_basis.hpp"

#include <algorithm>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using namespace detail;

constexpr std::string_view Titel = "XML-Ausdünnen";

std::string Stand(const XmlBericht& bericht) {
    return "ALKIS-XML-Ausdünnen: " + std::to_string(bericht.geschrieben) + " Objekte übernommen, " +
           std::to_string(bericht.übersprungen) + " Objekte übersprungen";
}

} // namespace

Ergebnis XmlAusdünnen(const fs::path& datei, const std::vector<std::string>& reduzierung,
                      Oberfläche& ui, XmlBericht& bericht, const XmlOptionen& optionen) {
    bericht = {};
    const Fragestellung frage{
        "Objektreduzierung ausführen?\n\nDie Objektarten, die übersprungen werden, "
        "stehen in ALKIS_Objektreduzierung.dat (Pflege unter \"Optionen\").",
        std::string(Titel)};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    if (auto fehler = EingabePrüfen(ui, Titel, datei))
        return *fehler;
    const fs::path ziel = ZielNeben(datei, "_Ausdünnen.xml");
    if (!ZielFreigegeben(ui, ziel, optionen, FrageErsetzen(ziel), "Datei schon vorhanden!"))
        return Ergebnis::Abbruch();

    try {
        ui.Status(1, "001.Datei UNIX-PC Prüfung: " + datei.filename().string());
        const XmlKopf kopf = KopfLesen(datei);
        if (kopf.mitgliedTag.empty())
            throw Fehler("Im Kopf der Datei \"" + datei.string() +
                         "\" steht kein <gml:featureMember> und kein <wfs:member>!   ");
        XmlAusgabe ausgabe(ziel, kopf);
        const Typliste typen(reduzierung);
        Laufanzeige anzeige(ui, fs::file_size(datei), [&](int) { return Stand(bericht); });
        const bool weiter = ObjekteLesen(datei, kopf.mitgliedTag, anzeige, 0,
                                         [&](std::string_view objekt, std::string_view einrückung) {
                                             if (typen.Enthält(Objektart(objekt))) {
                                                 ++bericht.übersprungen;
                                                 return;
                                             }
                                             ausgabe.Objekt(einrückung, objekt);
                                             ++bericht.geschrieben;
                                         });
        if (!weiter)
            return Abgebrochen();
        ausgabe.Abschließen();
        bericht.dateien = 1;
    } catch (const std::exception& f) {
        return ZielNichtErstellt(ui, Titel, ziel, f);
    }
    bericht.ziel = ziel;
    return Erledigt(ui, Titel, "XML-Datei nach " + ziel.string() + " erzeugt", Stand(bericht));
}

std::vector<std::string> ObjektreduzierungLesen(const fs::path& datei) {
    std::vector<std::string> typen;
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(datei));
    for (const auto zeile : TextZeilen(text)) {
        std::string_view name = zeile;
        name.remove_prefix(std::min(name.size(), name.find_first_not_of(" \t\r")));
        name.remove_suffix(name.size() - std::min(name.size(), name.find_last_not_of(" \t\r") + 1));
        if (!name.empty() && !name.starts_with('*'))
            typen.emplace_back(name);
    }
    return typen;
}

} // namespace flurix::nas
