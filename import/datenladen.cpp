#include "import/datenladen.hpp"

#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "core/textkodierung.hpp"
#include "import/textvorbereitung.hpp"
#include "nas/nas_form.hpp"

#include <fstream>

namespace flurix::import {
namespace {

constexpr std::size_t WldgeProbe = 32000;
constexpr int WldgeKopfzeilen = 10;
constexpr int NasKopfzeilen = 500;

std::string Anfang(const std::filesystem::path& datei, std::size_t anzahl) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden!");
    std::string puffer(anzahl, '\0');
    ein.read(puffer.data(), static_cast<std::streamsize>(anzahl));
    puffer.resize(static_cast<std::size_t>(ein.gcount()));
    return puffer;
}

std::string FormatNichtUnterstützt(std::string_view format, const std::filesystem::path& datei) {
    return "Das WLDGE-Abgabeformat Kennung \"" + std::string(format) + "\" der Datei " +
           datei.string() +
           " wird nicht unterstützt!\n"
           "Die Datei kann nicht eingelesen werden! Bitte stellen Sie die Daten im "
           "WLDGE-Abgabeformat \"32\" oder \"35\" bereit!\n"
           "Abbruch!   ";
}

// Hands a load to a reader slot, or says that this version has no such reader.
template <typename Slot, typename... Argumente>
Ergebnis Übergeben(const Slot& slot, std::string_view name, Oberfläche& ui,
                   const Argumente&... argumente) {
    if (!slot) {
        std::string text = NochNichtVerfügbar(name);
        ui.Meldung(text, ProduktTitel, Stil::Information);
        return Ergebnis::Fehlschlag(std::move(text));
    }
    return slot(argumente...);
}

Ergebnis NasÜbergeben(const std::filesystem::path& datei, Ladeumgebung& umgebung, Oberfläche& ui) {
    if (DateiZuGroß(datei)) {
        ui.Meldung(MeldungAusgangsdateiZuGroß, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::string(MeldungAusgangsdateiZuGroß));
    }
    return Übergeben(umgebung.leser.nasFenster, "Der NAS-Arbeitsbereich", ui, datei);
}

// A saved table or an extract is about to replace the grid. A saved table is read into a table
// of its own and replaces the grid only when it was read whole, so the grid is not emptied for it.
bool TabelleErsetzenDürfen(const std::filesystem::path& datei, Ladeumgebung& umgebung,
                           Oberfläche& ui, bool leeren = true) {
    if (umgebung.tabellenZeilen && umgebung.tabellenZeilen() > 0) {
        const Fragestellung frage{"Soll die vorhandene Datenbank überschrieben werden?   ",
                                  ProduktTitel, Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
        if (ui.Frage(frage) != Antwort::Ja)
            return false;
        if (leeren && umgebung.tabelleLeeren)
            umgebung.tabelleLeeren();
    }
    ui.Status(1, datei.filename().string());
    return true;
}

Ergebnis WebXmlLaden(const std::vector<std::filesystem::path>& dateien, Ladeumgebung& umgebung,
                     Oberfläche& ui) {
    if (!TabelleErsetzenDürfen(dateien.front(), umgebung, ui))
        return Ergebnis::Abbruch();
    umgebung.optionen.importFormat = "XML";
    if (umgebung.optionenDialog && !umgebung.optionenDialog(umgebung.optionen))
        return Ergebnis::Abbruch();
    return Übergeben(umgebung.leser.webXml, "Der Web-XML-Leser", ui, dateien, umgebung.optionen);
}

Ergebnis WldgeLaden(const std::filesystem::path& datei, Ladeumgebung& umgebung, Oberfläche& ui) {
    if (Anfang(datei, WldgeProbe).find("\r\n") == std::string::npos)
        UnixToPcDatei(datei, true, ui);
    const std::string format = WldgeFormatLesen(DateiKopfLesen(datei, WldgeKopfzeilen));
    if (format != "32" && format != "35") {
        std::string text = FormatNichtUnterstützt(format, datei);
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    }
    auto& optionen = umgebung.optionen;
    optionen.importFormat = format;
    if (umgebung.optionenDialog && !umgebung.optionenDialog(optionen))
        return Ergebnis::Abbruch();
    // Only format 32 can be read completely.
    if (optionen.albKomplett && format == "32")
        return Übergeben(umgebung.leser.wldgeKomplett, "Der WLDGE-Leser (komplett)", ui, datei,
                         optionen);
    if (format == "35")
        optionen.alleEigentümerInEinerZeile = true; // that reader makes its rows itself
    return Übergeben(umgebung.leser.wldgeSchnell, "Der WLDGE-Leser (teilweise)", ui, datei,
                     optionen);
}

Ergebnis Verteilen(Ladeauftrag auftrag, Ladeumgebung& umgebung, Oberfläche& ui) {
    if (auftrag.dateien.empty())
        return Ergebnis::Abbruch();
    // Several files named by their type only are Web-XML extracts: only that reader takes several.
    if (auftrag.dateien.size() > 1 && auftrag.art == Eingabeart::Xml)
        auftrag.art = Eingabeart::WebXml;
    const auto& datei = auftrag.dateien.front();
    // Before anything looks at the file's lines (or changes its line ends).
    for (const auto& d : auftrag.dateien)
        if (auftrag.art != Eingabeart::NasDatenbank && IstUtf16Datei(d)) {
            std::string text = MeldungUtf16(d);
            ui.Meldung(text, ProduktTitel, Stil::Fehler);
            return Ergebnis::Fehlschlag(std::move(text));
        }

    if (auftrag.vonKommandozeile) {
        const std::string text =
            "Soll die Eingabedatei \"" + datei.filename().string() + "\" eingelesen werden?   ";
        const Fragestellung frage{text, ProduktTitel, Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
        if (ui.Frage(frage) != Antwort::Ja)
            return Ergebnis::Abbruch();
    }
    if (auftrag.dateien.size() > 1 && auftrag.art != Eingabeart::WebXml) {
        std::string text = "Die Datei-Mehrfachauswahl ist nur für Web-XML-Dateien zulässig! "
                           "Bitte wählen Sie erneut aus!   ";
        ui.Meldung(text, ProduktTitel, Stil::Warnung);
        return Ergebnis::Fehlschlag(std::move(text));
    }

    switch (auftrag.art) {
    case Eingabeart::WebXml:
        for (const auto& d : auftrag.dateien) {
            UnixToPcDatei(d, true, ui);
            if (IstNasKopf(DateiKopfLesen(d, NasKopfzeilen))) {
                std::string text = "Keine ALB-WFS Datei!\nALKIS-Formatierungen vorgefunden! "
                                   "Bitte wählen Sie die Datei neu aus!   ";
                ui.Meldung(text, "Format Fehler", Stil::Fehler);
                return Ergebnis::Fehlschlag(std::move(text));
            }
        }
        return WebXmlLaden(auftrag.dateien, umgebung, ui);
    case Eingabeart::Xml:
        UnixToPcDatei(datei, true, ui);
        if (IstNasKopf(DateiKopfLesen(datei, NasKopfzeilen)))
            return NasÜbergeben(datei, umgebung, ui);
        return WebXmlLaden(auftrag.dateien, umgebung, ui);
    case Eingabeart::NasXml:
    case Eingabeart::NasDatenbank:
        return NasÜbergeben(datei, umgebung, ui);
    case Eingabeart::FkzListe:
        return Übergeben(umgebung.leser.fkzListe, "Die Flurstückssuche über eine FKZ-Liste", ui,
                         datei);
    case Eingabeart::Tabelle:
        if (!TabelleErsetzenDürfen(datei, umgebung, ui, false))
            return Ergebnis::Abbruch();
        return Übergeben(umgebung.leser.tabelle, "Das Einlesen gespeicherter Tabellen", ui, datei);
    case Eingabeart::Wldge:
        return WldgeLaden(datei, umgebung, ui);
    }
    return Ergebnis::Abbruch();
}

} // namespace

bool EingabeartAusEndung(const std::filesystem::path& datei, Eingabeart& art) {
    const std::string endung = Kleinbuchstaben(datei.extension().string());
    if (endung == ".wldge")
        art = Eingabeart::Wldge;
    else if (endung == ".fil")
        art = Eingabeart::Tabelle;
    else if (endung == ".xml" || endung == ".gml")
        art = Eingabeart::Xml;
    else if (endung == ".mdb")
        art = Eingabeart::NasDatenbank;
    else if (endung == ".fkz")
        art = Eingabeart::FkzListe;
    else
        return false;
    return true;
}

std::string WldgeFormatLesen(std::string_view kopf) {
    int gelesen = 0;
    for (std::string_view zeile : Teilen(kopf, '\n')) {
        if (++gelesen > WldgeKopfzeilen)
            break;
        if (zeile.size() >= 33 && zeile[0] == '1' && zeile.substr(25, 8) == " E   01 ")
            return std::string(zeile.substr(33, 2));
    }
    return {};
}

bool IstNasKopf(std::string_view kopf) {
    return IstInText(kopf, "AX_Bestandsdatenauszug,AX_Person") ||
           nas::NasFormErkennen(kopf).form != nas::NasForm::Unbekannt;
}

Ergebnis ALBDatenLaden(const Ladeauftrag& auftrag, Ladeumgebung& umgebung, Oberfläche& ui) {
    try {
        return Verteilen(auftrag, umgebung, ui);
    } catch (const std::exception& e) {
        std::string text = std::string(e.what()) +
                           ", Bitte überprüfen Sie Ihre Eingaben!\n"
                           "Eventuelle Vorgaben wurden nicht eingehalten!   ";
        ui.Meldung(text, "Flurix/ALB-Daten laden", Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    }
}

Erkennung DateiErkennen(const std::filesystem::path& datei) {
    Erkennung e;
    if (!std::filesystem::is_regular_file(datei))
        throw Fehler("Die Datei \"" + datei.string() + "\" wurde nicht gefunden!");
    Anfang(datei, 1); // throws when it can't be read
    if (IstUtf16Datei(datei)) {
        e.beschreibung = "Textdatei in UTF-16";
        e.leser = "keiner: in Windows-1252 oder UTF-8 speichern";
        return e;
    }
    if (!EingabeartAusEndung(datei, e.art)) {
        e.beschreibung = "Unbekannter Dateityp \"" + datei.extension().string() + "\"";
        e.leser = "keiner";
        return e;
    }
    if (e.art == Eingabeart::Wldge) {
        e.format = WldgeFormatLesen(DateiKopfLesen(datei, WldgeKopfzeilen));
        e.beschreibung = "WLDGE-Datei, Abgabeformat \"" + e.format + "\"";
        e.unterstützt = e.format == "32" || e.format == "35";
        e.leser = e.format == "32"   ? "WLDGE-Leser (komplett oder teilweise)"
                  : e.format == "35" ? "WLDGE-Leser (teilweise)"
                                     : "keiner: Abgabeformat nicht unterstützt";
        return e;
    }
    if (e.art == Eingabeart::Xml)
        e.art = IstNasKopf(DateiKopfLesen(datei, NasKopfzeilen)) ? Eingabeart::NasXml
                                                                 : Eingabeart::WebXml;
    struct Art {
        Eingabeart art;
        std::string_view beschreibung, leser;
    };
    static constexpr Art arten[] = {
        {Eingabeart::NasXml, "NAS-Datei (ALKIS)", "NAS-Arbeitsbereich"},
        {Eingabeart::WebXml, "Web-XML-Datei (ALB-Auszug)", "Web-XML-Leser"},
        {Eingabeart::Tabelle, "Gespeicherte Flurix-Tabelle", "Einlesen gespeicherter Tabellen"},
        {Eingabeart::NasDatenbank, "NAS-Datenbank", "NAS-Arbeitsbereich"},
        {Eingabeart::FkzListe, "Liste von Flurstückskennzeichen", "Flurstückssuche (Gazetteer)"},
    };
    for (const auto& a : arten)
        if (a.art == e.art) {
            e.beschreibung = a.beschreibung;
            e.leser = a.leser;
            e.unterstützt = true;
        }
    if (e.art == Eingabeart::NasXml) {
        const nas::NasFormbefund form = nas::NasFormErkennen(DateiKopfLesen(datei, NasKopfzeilen));
        if (form.form != nas::NasForm::Unbekannt)
            e.beschreibung += ": " + form.Name();
        if (form.form == nas::NasForm::Aktualisierung) {
            e.leser = "flurix nas <datei> --db <objektdatenbank> --aktualisieren";
        }
    }
    return e;
}

} // namespace flurix::import
