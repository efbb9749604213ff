// "ALKIS-ID-Prüfung": a copy of a NAS file without the repeats of an identifier, each repeat
// noted in the copy, in the protocol of the window and in an error file.
#include "nas/xml_werkzeuge.hpp"

#include "core/cp1252.hpp"
#include "core/oberflaeche.hpp"
#include "nas/xml_werkzeug_basis.hpp"

#include <memory>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using namespace detail;

constexpr std::string_view Titel = "ALKIS-ID-Prüfung";

} // namespace

Ergebnis XmlIdPrüfung(const fs::path& datei, Oberfläche& ui, XmlBericht& bericht,
                      const XmlOptionen& optionen) {
    bericht = {};
    if (auto fehler = EingabePrüfen(ui, Titel, datei))
        return *fehler;
    const fs::path ziel = ZielNeben(datei, "_Prüfung.xml");
    if (!ZielFreigegeben(ui, ziel, optionen, FrageErsetzen(ziel), "Datei schon vorhanden!"))
        return Ergebnis::Abbruch();
    const fs::path fehlerdatei = fs::path(ziel).replace_extension(".err");

    try {
        ui.Status(1, "001.Datei UNIX-PC Prüfung: " + datei.filename().string());
        ui.Status(1, "ALKIS-XML-Voreinlesen");
        const XmlKopf kopf = KopfLesen(datei);
        if (kopf.mitgliedTag.empty())
            throw Fehler("Im Kopf der Datei \"" + datei.string() +
                         "\" steht kein <gml:featureMember> und kein <wfs:member>!   ");
        XmlAusgabe ausgabe(ziel, kopf);
        // The error file is made with the first repeat; a run without one leaves none.
        std::unique_ptr<Zieldatei> fehlerliste;
        Kennungsmenge kennungen;
        Laufanzeige anzeige(ui, fs::file_size(datei), [](int schritt) {
            return "ALKIS-XML-Einlesen  " + std::string(Drehzeichen(schritt));
        });
        const bool weiter = ObjekteLesen(datei, kopf.mitgliedTag, anzeige, 0,
                                         [&](std::string_view objekt, std::string_view einrückung) {
                                             const std::string_view id = GmlId(objekt);
                                             if (id.empty() || kennungen.Einfügen(id)) {
                                                 ausgabe.Objekt(einrückung, objekt);
                                                 ++bericht.geschrieben;
                                                 return;
                                             }
                                             ++bericht.doppelt;
                                             ++bericht.fehler;
                                             const std::string text =
                                                 "ID: " + std::string(id) + " mehrfach vorgefunden";
                                             ausgabe.Kommentar(einrückung, "XML-Pruefung: " + text);
                                             const std::string zeile = ", XML-Prüfung: " + text;
                                             ui.Protokoll(zeile);
                                             if (!fehlerliste)
                                                 fehlerliste =
                                                     std::make_unique<Zieldatei>(fehlerdatei);
                                             fehlerliste->Schreiben(Utf8NachCp1252(zeile) + "\r\n");
                                         });
        if (!weiter)
            return Abgebrochen();
        ausgabe.Abschließen();
        if (fehlerliste) {
            fehlerliste->Abschließen();
        } else {
            std::error_code alt;
            fs::remove(fehlerdatei,
                       alt); // of an earlier run: it would tell of repeats no more there
        }
        bericht.dateien = 1;
    } catch (const std::exception& f) {
        return ZielNichtErstellt(ui, Titel, ziel, f);
    }
    bericht.ziel = ziel;
    if (bericht.fehler == 0)
        ui.Meldung("XML-Datei auf ID-Fehler geprüft und keine Fehler gefunden!", Titel,
                   Stil::Information);
    else
        ui.Meldung("XML-Datei auf ID-Fehler geprüft und " + std::to_string(bericht.fehler) +
                       " Fehler gefunden! Export nach " + ziel.string() + " ...",
                   Titel, Stil::Warnung);
    return Erledigt(ui, Titel, "XML-Datei geprüft und nach " + ziel.string() + " exportiert!   ");
}

} // namespace flurix::nas
