#include "map/schnellauswahl.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>

namespace flurix::karte {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view Titel = "Schnellauswahl WMS-Dienst";

/// The lines of the file as they stand (empty ones dropped), and whether it was UTF-8, so that
/// a rewrite keeps its code page.
struct Dateizeilen {
    std::vector<std::string> zeilen;
    bool utf8 = false;
};

Dateizeilen ZeilenLesen(const fs::path& datei) {
    Dateizeilen ergebnis;
    const std::string roh = DateiKomplettLesen(datei);
    ergebnis.utf8 = !roh.empty() && IstGültigesUtf8(roh);
    const std::string text = DateitextNachUtf8(roh);
    for (std::string_view zeile : TextZeilen(text))
        if (!TrimmeLeerzeichen(zeile).empty())
            ergebnis.zeilen.emplace_back(zeile);
    return ergebnis;
}

void ZeilenSchreiben(const fs::path& datei, const Dateizeilen& inhalt) {
    std::string text;
    for (const auto& zeile : inhalt.zeilen)
        text.append(zeile).append("\r\n");
    DateiSchreiben(datei, inhalt.utf8 ? text : Utf8NachCp1252(text));
}

/// Index of the entry named `name`, or the line count when there is none.
std::size_t EintragSuchen(const Dateizeilen& inhalt, std::string_view name) {
    std::size_t i = 0;
    while (i < inhalt.zeilen.size() && SchnellauswahlZeile(inhalt.zeilen[i]).name != name)
        ++i;
    return i;
}

Ergebnis Versuchen(Oberfläche& ui, const auto& arbeit) {
    try {
        return arbeit();
    } catch (const Fehler& f) {
        ui.Meldung(f.what(), Titel, Stil::Fehler);
        return Ergebnis::Fehlschlag(f.what());
    }
}

} // namespace

Schnellauswahl SchnellauswahlZeile(std::string_view zeile) {
    Schnellauswahl auswahl;
    const auto doppelpunkt = zeile.rfind(':');
    if (doppelpunkt == std::string_view::npos) {
        auswahl.name = TrimmeLeerzeichen(zeile);
        return auswahl;
    }
    auswahl.name = TrimmeLeerzeichen(zeile.substr(doppelpunkt + 1));
    for (std::string_view dienst : Teilen(zeile.substr(0, doppelpunkt), ';'))
        if (!dienst.empty())
            auswahl.dienste.emplace_back(dienst);
    return auswahl;
}

std::string SchnellauswahlText(const Schnellauswahl& auswahl) {
    std::string text;
    for (const auto& dienst : auswahl.dienste) {
        if (!text.empty())
            text.push_back(';');
        text += dienst;
    }
    return text + ":" + auswahl.name;
}

std::vector<Schnellauswahl> SchnellauswahlenLesen(const fs::path& datei) {
    if (!DateiVorhanden(datei))
        return {Schnellauswahl{std::string(OhneEintrag), {}}};
    std::vector<Schnellauswahl> liste;
    for (const auto& zeile : ZeilenLesen(datei).zeilen)
        liste.push_back(SchnellauswahlZeile(zeile));
    return liste;
}

Ergebnis SchnellauswahlHinzufügen(const fs::path& datei, const std::vector<std::string>& dienste,
                                  Oberfläche& ui) {
    const std::string name(
        TrimmeLeerzeichen(ui.Eingabe("Name Schnellauswahl WMS-Dienst:", Titel, "")));
    if (name.empty())
        return Ergebnis::Abbruch();
    return Versuchen(ui, [&] {
        Dateizeilen inhalt = ZeilenLesen(datei);
        inhalt.zeilen.push_back(SchnellauswahlText({name, dienste}));
        ZeilenSchreiben(datei, inhalt);
        const std::string text = "Schnellauswahl WMS-Dienst mit \"" + name + "\" erweitert!";
        ui.Meldung(text, Titel, Stil::Information);
        return Ergebnis::Ok(text);
    });
}

Ergebnis SchnellauswahlAktualisieren(const fs::path& datei, std::string_view name,
                                     const std::vector<std::string>& dienste, Oberfläche& ui) {
    return Versuchen(ui, [&] {
        Dateizeilen inhalt = ZeilenLesen(datei);
        const std::size_t i = EintragSuchen(inhalt, name);
        if (i == inhalt.zeilen.size())
            throw Fehler("Schnellauswahl WMS-Dienst \"" + std::string(name) + "\" nicht gefunden!");
        inhalt.zeilen[i] = SchnellauswahlText({std::string(name), dienste});
        ZeilenSchreiben(datei, inhalt);
        const std::string text =
            "Schnellauswahl WMS-Dienst \"" + std::string(name) + "\" aktualisiert!";
        ui.Meldung(text, Titel, Stil::Information);
        return Ergebnis::Ok(text);
    });
}

Ergebnis SchnellauswahlLöschen(const fs::path& datei, std::string_view name, Oberfläche& ui) {
    if (name == OhneEintrag)
        return Ergebnis::Abbruch();
    const Fragestellung frage{"Schnellauswahl WMS-Dienst: \"" + std::string(name) + "\" löschen?",
                              std::string(Titel), Knöpfe::JaNein, Antwort::Nein, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    return Versuchen(ui, [&] {
        Dateizeilen inhalt = ZeilenLesen(datei);
        const std::size_t i = EintragSuchen(inhalt, name);
        if (i == inhalt.zeilen.size())
            throw Fehler("Schnellauswahl WMS-Dienst \"" + std::string(name) + "\" nicht gefunden!");
        // The copy comes first: a deleted selection can be taken back from it.
        std::error_code fehler;
        fs::copy_file(datei, datei.string() + "_" + ZeitStempelText() + ".dat",
                      fs::copy_options::overwrite_existing, fehler);
        if (fehler)
            throw Fehler("Sicherungskopie von \"" + datei.string() + "\" nicht möglich!");
        inhalt.zeilen.erase(inhalt.zeilen.begin() + static_cast<long>(i));
        ZeilenSchreiben(datei, inhalt);
        const std::string text =
            "Schnellauswahl WMS-Dienst: \"" + std::string(name) + "\" gelöscht!";
        ui.Meldung(text, Titel, Stil::Information);
        return Ergebnis::Ok(text);
    });
}

std::vector<std::string> VorlagenLesen(const fs::path& datei) {
    if (!DateiVorhanden(datei))
        return {std::string(OhneEintrag)};
    return ZeilenLesen(datei).zeilen;
}

} // namespace flurix::karte
