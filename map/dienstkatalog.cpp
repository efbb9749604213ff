#include "map/dienstkatalog.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>

namespace flurix::karte {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 7> Prüfspalten = {
    "Transparenz", "vStyle", "Zugang", "vInvers", "vSW", "vTxt", "vGrau"};

constexpr int Standardbreite = 1200;

bool EndungIst(const fs::path& datei, std::string_view endung) {
    return Kleinbuchstaben(datei.extension().string()) == endung;
}

std::string Name(const fs::path& datei) { return datei.filename().string(); }

} // namespace

bool IstPrüfspalte(std::string_view spalte) {
    return std::find(Prüfspalten.begin(), Prüfspalten.end(), spalte) != Prüfspalten.end();
}

bool PrüfwertLesen(std::string_view zelle) {
    const std::string klein = Kleinbuchstaben(TrimmeLeerzeichen(zelle));
    return klein == "true" || klein == "1" || klein == "wahr";
}

std::string_view PrüfwertText(bool wert) { return wert ? "true" : "false"; }

Dienstkatalog::Dienstkatalog() {
    for (std::size_t i = 0; i < KatalogSpalten.size(); ++i) {
        const std::string name(KatalogSpalten[i]);
        // The login file and the level are kept out of sight; Position only works for the moves.
        const bool verborgen = name == "ZugangKey" || name == "Ebene";
        m_spalten.push_back(
            {name, name, verborgen ? 0 : Standardbreite, name != "Position", static_cast<int>(i)});
    }
}

std::optional<std::size_t> Dienstkatalog::SpaltenIndex(std::string_view spalte) {
    const auto it = std::find(KatalogSpalten.begin(), KatalogSpalten.end(), spalte);
    if (it == KatalogSpalten.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - KatalogSpalten.begin());
}

void Dienstkatalog::Prüfen(std::size_t zeile) const {
    if (zeile >= m_zeilen.size())
        throw Fehler("Web-Service Zeile " + std::to_string(zeile + 1) + " nicht vorhanden!");
}

std::optional<std::size_t> Dienstkatalog::ZeileFinden(std::string_view dienst) const {
    for (std::size_t i = 0; i < m_zeilen.size(); ++i)
        if (m_zeilen[i][1] == dienst)
            return i;
    return std::nullopt;
}

const std::string& Dienstkatalog::Zelle(std::size_t zeile, std::string_view spalte) const {
    Prüfen(zeile);
    const auto index = SpaltenIndex(spalte);
    if (!index)
        throw Fehler("Web-Service Spalte \"" + std::string(spalte) + "\" nicht vorhanden!");
    return m_zeilen[zeile][*index];
}

void Dienstkatalog::ZelleSetzen(std::size_t zeile, std::string_view spalte, std::string wert) {
    Prüfen(zeile);
    const auto index = SpaltenIndex(spalte);
    if (!index)
        throw Fehler("Web-Service Spalte \"" + std::string(spalte) + "\" nicht vorhanden!");
    m_zeilen[zeile][*index] = std::move(wert);
}

bool Dienstkatalog::Prüfzelle(std::size_t zeile, std::string_view spalte) const {
    return PrüfwertLesen(Zelle(zeile, spalte));
}

void Dienstkatalog::PrüfzelleSetzen(std::size_t zeile, std::string_view spalte, bool wert) {
    ZelleSetzen(zeile, spalte, std::string(PrüfwertText(wert)));
}

void Dienstkatalog::ZeileAnfügen(const std::vector<std::string>& zellen) {
    Zeile zeile;
    for (std::size_t i = 0; i < zeile.size() && i < zellen.size(); ++i)
        zeile[i] = zellen[i];
    for (std::size_t i = 0; i < zeile.size(); ++i)
        if (IstPrüfspalte(KatalogSpalten[i]))
            zeile[i] = PrüfwertText(PrüfwertLesen(zeile[i]));
    m_zeilen.push_back(std::move(zeile));
}

std::size_t Dienstkatalog::NeuerDienst(std::string_view name) {
    ZeileAnfügen({});
    const std::size_t zeile = m_zeilen.size() - 1;
    ZelleSetzen(zeile, "id", std::to_string(zeile + 1));
    ZelleSetzen(zeile, "Web-Service", std::string(name));
    PrüfzelleSetzen(zeile, "Transparenz", true);
    ZelleSetzen(zeile, "Format", "png");
    ZelleSetzen(zeile, "MapQuelle", "©GeoBasis");
    for (std::string_view spalte : {"vTransparenz", "vHelligkeit", "vKontrast"})
        ZelleSetzen(zeile, spalte, "0");
    ZelleSetzen(zeile, "GetCapabilities", std::string(StandardCapabilities));
    return zeile;
}

void Dienstkatalog::Nummerieren() {
    for (std::size_t i = 0; i < m_zeilen.size(); ++i)
        m_zeilen[i][0] = std::to_string(i + 1);
}

void Dienstkatalog::VerschiebenNach(std::size_t zeile, std::size_t zielId) {
    Prüfen(zeile);
    const std::size_t ziel = std::clamp<std::size_t>(zielId, 1, m_zeilen.size()) - 1;
    if (ziel == zeile)
        return;
    // A rotation keeps the rows in between in their order, each shifted by one place.
    const auto anfang = m_zeilen.begin();
    if (ziel < zeile)
        std::rotate(anfang + static_cast<long>(ziel), anfang + static_cast<long>(zeile),
                    anfang + static_cast<long>(zeile) + 1);
    else
        std::rotate(anfang + static_cast<long>(zeile), anfang + static_cast<long>(zeile) + 1,
                    anfang + static_cast<long>(ziel) + 1);
    for (auto& z : m_zeilen)
        z[24].clear(); // Position marks a row only while it moves
    Nummerieren();
}

std::size_t Dienstkatalog::Verschieben(std::size_t zeile, Verschiebung wohin) {
    Prüfen(zeile);
    const std::size_t id = zeile + 1;
    std::size_t ziel = id;
    switch (wohin) {
    case Verschiebung::Erste:
        ziel = 1;
        break;
    case Verschiebung::Vor:
        ziel = id > 1 ? id - 1 : 1;
        break;
    case Verschiebung::Zurück:
        ziel = id + 1;
        break;
    case Verschiebung::Letzte:
        ziel = m_zeilen.size();
        break;
    }
    VerschiebenNach(zeile, ziel);
    return std::clamp<std::size_t>(ziel, 1, m_zeilen.size()) - 1;
}

void Dienstkatalog::SpaltenÜbernehmen(const std::vector<TabellenSpalte>& spalten) {
    for (const auto& spalte : spalten)
        if (const auto index = SpaltenIndex(spalte.schlüssel)) {
            m_spalten[*index].breite = spalte.breite;
            m_spalten[*index].sichtbar = spalte.sichtbar;
        }
}

// --- Files --------------------------------------------------------------------------------------

void DatTextAnfügen(Dienstkatalog& katalog, std::string_view text) {
    for (std::string_view zeile : TextZeilen(text)) {
        // Any line naming the column "Web-Service" is a header, also one in the middle of a file
        // made by appending one text form to another.
        if (zeile.find("Web-Service") != std::string_view::npos || zeile.empty())
            continue;
        std::vector<std::string> zellen;
        for (std::string_view zelle : Teilen(zeile, ';'))
            zellen.emplace_back(zelle);
        katalog.ZeileAnfügen(zellen);
    }
    katalog.Nummerieren();
}

std::string DatText(const Dienstkatalog& katalog) {
    std::string text;
    for (std::string_view spalte : KatalogSpalten)
        text.append(spalte).push_back(';');
    text += "\r\n";
    for (const auto& zeile : katalog.Zeilen()) {
        for (const auto& zelle : zeile)
            text.append(zelle).push_back(';');
        text += "\r\n";
    }
    return text;
}

Dienstkatalog KatalogLesen(const fs::path& datei) {
    Dienstkatalog katalog;
    if (EndungIst(datei, ".dat")) {
        if (!DateiVorhanden(datei))
            throw Fehler("Web-Service Datei \"" + datei.string() + "\" kann nicht gelesen werden!");
        DatTextAnfügen(katalog, DateitextNachUtf8(DateiKomplettLesen(datei)));
        return katalog;
    }
    TabellendateiLeser leser(datei, Tabellenformat::Fil);
    katalog.SpaltenÜbernehmen(leser.Spalten());
    std::vector<std::optional<std::size_t>> ziel;
    for (const auto& spalte : leser.Spalten())
        ziel.push_back(Dienstkatalog::SpaltenIndex(spalte.schlüssel));
    std::vector<std::string> zellen(KatalogSpalten.size());
    while (const auto zeile = leser.NächsteZeile()) {
        std::fill(zellen.begin(), zellen.end(), std::string());
        for (std::size_t i = 0; i < zeile->size(); ++i)
            if (ziel[i])
                zellen[*ziel[i]] = (*zeile)[i];
        katalog.ZeileAnfügen(zellen);
    }
    katalog.Nummerieren();
    return katalog;
}

void KatalogFilSpeichern(const Dienstkatalog& katalog, const fs::path& fil) {
    TabellendateiSchreiber schreiber(fil, katalog.Spalten(), Tabellenformat::Fil);
    for (const auto& zeile : katalog.Zeilen())
        schreiber.Zeile(std::span<const std::string>(zeile));
    schreiber.Abschließen();
}

void KatalogDatSpeichern(const Dienstkatalog& katalog, const fs::path& dat) {
    const std::string text = DatText(katalog);
    // Windows-1252 unless that would lose a character: the reader takes either.
    const std::string ansi = Utf8NachCp1252(text);
    DateiSchreiben(dat, Cp1252NachUtf8(ansi) == text ? ansi : text);
}

void KatalogSpeichern(const Dienstkatalog& katalog, const fs::path& fil) {
    KatalogFilSpeichern(katalog, fil);
    fs::path dat = fil;
    KatalogDatSpeichern(katalog, dat.replace_extension(".dat"));
}

fs::path KatalogPfad(const fs::path& konfig, std::string_view einstellung) {
    if (TrimmeLeerzeichen(einstellung).empty())
        return konfig / "WebService.fil";
    if (einstellung.find("user") != std::string_view::npos) {
        // The setting may come from Windows: its last element is behind "\" as well as "/".
        const auto trenner = einstellung.find_last_of("\\/");
        const std::string_view letztes =
            trenner == std::string_view::npos ? einstellung : einstellung.substr(trenner + 1);
        return konfig / "user" / std::string(letztes);
    }
    return fs::path(std::string(einstellung));
}

// --- Operations ---------------------------------------------------------------------------------

Ergebnis KatalogFehlt(const fs::path& datei, Oberfläche& ui) {
    const std::string text = "Web-Service Datei: \"" + datei.string() +
                             "\" nicht vorhanden!\nBitte Web-Service installieren!\nAbbruch!";
    ui.Meldung(text, "MAP-Viewer", Stil::Fehler);
    return Ergebnis::Fehlschlag(text);
}

Ergebnis FormatSetzen(Dienstkatalog& katalog, std::size_t zeile, std::string_view format,
                      Oberfläche& ui) {
    if (format != "png" && format != "jpeg") {
        const std::string text = "Bitte geben Sie das Format <png> oder <jpeg> vor!";
        ui.Meldung(text, "Web-Service", Stil::Warnung);
        return Ergebnis::Fehlschlag(text);
    }
    katalog.ZelleSetzen(zeile, "Format", std::string(format));
    return Ergebnis::Ok();
}

namespace {

Ergebnis NichtGefunden(const fs::path& datei, Oberfläche& ui) {
    const std::string text = "Web-Service \"" + Name(datei) + "\" nicht gefunden! Abbruch!";
    ui.Meldung(text, "Web-Service", Stil::Fehler);
    return Ergebnis::Fehlschlag(text);
}

Ergebnis Fehlgeschlagen(const Fehler& f, Oberfläche& ui) {
    ui.Meldung(f.what(), "Web-Service", Stil::Fehler);
    return Ergebnis::Fehlschlag(f.what());
}

} // namespace

Ergebnis KatalogÖffnen(Dienstkatalog& katalog, const fs::path& datei, Oberfläche& ui) {
    if (!DateiVorhanden(datei))
        return NichtGefunden(datei, ui);
    for (std::string text : {"Datei \"" + Name(datei) + "\" neu einlesen?",
                             std::string("Achtung: Alle Voreinstellungen werden überschrieben!")})
        if (ui.Frage({text, "Web-Service", Knöpfe::JaNein, Antwort::Nein, Antwort::Ja}) !=
            Antwort::Ja)
            return Ergebnis::Abbruch();
    try {
        katalog = KatalogLesen(datei);
    } catch (const Fehler& f) {
        return Fehlgeschlagen(f, ui);
    }
    return Ergebnis::Ok();
}

Ergebnis KatalogAnfügen(Dienstkatalog& katalog, const fs::path& datei, Oberfläche& ui) {
    if (!DateiVorhanden(datei))
        return NichtGefunden(datei, ui);
    const Fragestellung frage{"Soll die Datei <" + Name(datei) +
                                  "> an die vorhandenen WMS-Daten anhängt werden?",
                              "Web-Service", Knöpfe::JaNein, Antwort::Nein, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    const std::size_t vorher = katalog.Zeilenzahl();
    DatTextAnfügen(katalog, DateitextNachUtf8(DateiKomplettLesen(datei)));
    const std::string text =
        "Es wurden " + std::to_string(katalog.Zeilenzahl() - vorher) + " Datenzeilen angehängt!";
    ui.Meldung(text, "Web-Service", Stil::Information);
    return Ergebnis::Ok(text);
}

Ergebnis KatalogSpeichernUnter(const Dienstkatalog& katalog, const fs::path& datei,
                               Oberfläche& ui) {
    fs::path fil = datei;
    fil.replace_extension(".fil");
    fs::path dat = datei;
    dat.replace_extension(".dat");
    try {
        KatalogFilSpeichern(katalog, fil);
        KatalogDatSpeichern(katalog, dat);
    } catch (const Fehler& f) {
        return Fehlgeschlagen(f, ui);
    }
    const std::string text =
        "Web-Service Daten gespeichert unter: " + fil.string() + "\n" + dat.string();
    ui.Meldung(text, "Web-Service", Stil::Information);
    return Ergebnis::Ok(text);
}

} // namespace flurix::karte
