#include "map/zugang.hpp"

#include "core/datei.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "core/verschleiern.hpp"
#include "map/dienstkatalog.hpp"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace flurix::karte {
namespace {

std::string Schlüssel(std::string_view besitzer) {
    return std::string(besitzer) + "|" + std::string(ZugangKonstante);
}

void Verweigern(Oberfläche& ui, std::string_view text) {
    ui.Meldung(text, ZugangTitel, Stil::Fehler);
}

} // namespace

std::string Besitzer() {
    if (const passwd* eintrag = ::getpwuid(::geteuid()); eintrag && eintrag->pw_name)
        return eintrag->pw_name;
    const char* user = std::getenv("USER");
    return user ? user : "";
}

std::string ZugangDateiname(std::string_view dienst) {
    std::string name;
    for (char c : dienst)
        if (std::string_view("\\/:?*^\"<>| ").find(c) == std::string_view::npos)
            name.push_back(c);
    return name + ".key";
}

std::string ZugangVerschleiern(std::string_view benutzer, std::string_view passwort,
                               std::string_view besitzer) {
    const std::string text =
        std::string(benutzer) + "|" + std::string(passwort) + "|" + std::string(besitzer) + "|";
    return Verschleiern(text, Schlüssel(besitzer));
}

std::optional<Zugangsdaten> ZugangEntschlüsseln(std::string_view inhalt,
                                                std::string_view besitzer) {
    const std::string text = Verschleiern(inhalt, Schlüssel(besitzer));
    const auto felder = Teilen(text, '|');
    // Unscrambled with the wrong owner's key the third field is noise, never that owner.
    if (felder.size() < 3 || felder[2] != besitzer)
        return std::nullopt;
    return Zugangsdaten{std::string(felder[0]), std::string(felder[1])};
}

std::optional<HttpOptionen> ZugangFürZeile(const Dienstkatalog& katalog, std::size_t zeile,
                                           const std::filesystem::path& konfig,
                                           std::string_view besitzer, Oberfläche& ui,
                                           Zugangszweck zweck) {
    if (!katalog.Prüfzelle(zeile, "Zugang"))
        return HttpOptionen{};
    const std::string& schlüsseldatei = katalog.Zelle(zeile, "ZugangKey");
    const auto datei = konfig / schlüsseldatei;
    if (schlüsseldatei.empty() || !DateiVorhanden(datei)) {
        if (zweck == Zugangszweck::Karte)
            Verweigern(ui, "Prüfen Sie bitte Ihre Zugangsdaten für WMS-Service: " +
                               katalog.Zelle(zeile, "Web-Service"));
        else
            Verweigern(ui, ZugangVerweigert);
        return std::nullopt;
    }
    const auto daten = ZugangEntschlüsseln(DateiKomplettLesen(datei), besitzer);
    if (!daten) {
        Verweigern(ui, ZugangVerweigert);
        return std::nullopt;
    }
    HttpOptionen optionen;
    optionen.benutzer = daten->benutzer;
    optionen.passwort = daten->passwort;
    return optionen;
}

Ergebnis ZugangUmschalten(Dienstkatalog& katalog, std::size_t zeile,
                          const std::filesystem::path& konfig, std::string_view besitzer,
                          Oberfläche& ui) {
    if (katalog.Prüfzelle(zeile, "Zugang")) {
        const std::string& name = katalog.Zelle(zeile, "ZugangKey");
        const auto datei = konfig / name;
        if (!name.empty() && DateiVorhanden(datei)) {
            const Fragestellung frage{"Soll der vorhandene Zugang gelöscht werden?",
                                      std::string(ZugangTitel), Knöpfe::JaNein, Antwort::Nein,
                                      Antwort::Nein};
            if (ui.Frage(frage) != Antwort::Ja)
                return Ergebnis::Abbruch();
            std::error_code fehler;
            std::filesystem::remove(datei, fehler);
            if (fehler) {
                const std::string text =
                    "Die Datei \"" + datei.string() + "\" kann nicht gelöscht werden!";
                ui.Meldung(text, ZugangTitel, Stil::Fehler);
                return Ergebnis::Fehlschlag(text);
            }
        }
        katalog.ZelleSetzen(zeile, "ZugangKey", "");
        katalog.PrüfzelleSetzen(zeile, "Zugang", false);
        return Ergebnis::Ok();
    }
    const std::string benutzer =
        ui.Eingabe("Geben Sie bitte Ihren User-Name für diesen Dienst ein!", "User", "");
    if (benutzer.empty())
        return Ergebnis::Abbruch();
    const std::string passwort =
        ui.Eingabe("Geben Sie bitte Ihr Passwort für diesen Dienst ein!", "Passwort", "");
    const std::string name = ZugangDateiname(katalog.Zelle(zeile, "Web-Service"));
    try {
        DateiSchreiben(konfig / name, ZugangVerschleiern(benutzer, passwort, besitzer));
    } catch (const Fehler& f) {
        ui.Meldung(f.what(), ZugangTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(f.what());
    }
    katalog.ZelleSetzen(zeile, "ZugangKey", name);
    katalog.PrüfzelleSetzen(zeile, "Zugang", true);
    return Ergebnis::Ok();
}

} // namespace flurix::karte
