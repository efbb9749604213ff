// The NAS drawing export, first step: the GEOgraf file read line by line into the work tables.

#include "export/dxf_nas_tabellen.hpp"

#include "core/fehler.hpp"
#include "core/text.hpp"
#include "export/dxf_nas.hpp"
#include "export/grafbat_leser.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <system_error>

namespace flurix::ausgabe::detail {

namespace {

constexpr const char* TabellenAnlegen[] = {
    "CREATE TABLE Daten(Layer TEXT)",
    "CREATE TABLE GGPK(Layer TEXT, Nr INTEGER, EbeneArt TEXT, Y REAL, X REAL, YXH TEXT, H REAL, "
    "Sachdaten1 TEXT, Sachdaten2 TEXT, Sachdaten3 TEXT, Punktkennung TEXT)",
    "CREATE INDEX GGPK_Nr ON GGPK(Nr)",
    "CREATE TABLE GGLI(Layer TEXT, PK1 INTEGER, PK2 INTEGER, EbeneArt TEXT, Radius REAL, "
    "Richtung INTEGER, PK1yx TEXT, PK2yx TEXT, PK1y REAL, PK1x REAL, PK2y REAL, PK2x REAL, "
    "id INTEGER)",
    "CREATE TABLE GGTE(Layer TEXT, TXPos INTEGER, EbeneArt TEXT, Y REAL, X REAL, bY REAL, bX REAL, "
    "YX TEXT, TX TEXT, Winkel REAL, Hoehe REAL, Ausrichtung INTEGER)",
    "CREATE TABLE GGSCH(Layer TEXT, SCHPos TEXT, EbeneArt TEXT, Abstand REAL, Winkel REAL, "
    "Typ INTEGER, Y REAL, X REAL, YX TEXT, id INTEGER)",
};

std::optional<double> Zahl(std::string_view text) {
    text = TrimmeLeerzeichen(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double zahl = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), zahl);
    if (text.empty() || fehler != std::errc() || ende != text.data() + text.size() || !std::isfinite(zahl))
        return std::nullopt;
    return zahl;
}

std::optional<long long> Ganzzahl(std::string_view text) {
    text = TrimmeLeerzeichen(text);
    long long zahl = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), zahl);
    if (text.empty() || fehler != std::errc() || ende != text.data() + text.size())
        return std::nullopt;
    return zahl;
}

std::string_view Feld(const GrafbatSatz& satz, std::size_t i) {
    return i < satz.felder.size() ? TrimmeLeerzeichen(satz.felder[i]) : std::string_view();
}

void BindeOderNull(Anweisung& a, const std::optional<double>& wert) {
    if (wert)
        a.Binde(*wert);
    else
        a.Binde(nullptr);
}

// The lines of the file, for the progress: counted before the reading, at a few hundred MB/s.
long long ZeilenZählen(const std::filesystem::path& datei) {
    std::ifstream ein(datei, std::ios::binary);
    if (!ein)
        throw Fehler("Die GEOgraf-Datei " + datei.string() + " kann nicht geöffnet werden!");
    std::string puffer(1 << 16, '\0');
    long long zeilen = 0;
    char letztes = '\n';
    for (;;) {
        const auto n = ein.rdbuf()->sgetn(puffer.data(), static_cast<std::streamsize>(puffer.size()));
        if (n <= 0)
            break;
        zeilen += std::count(puffer.data(), puffer.data() + n, '\n');
        letztes = puffer[static_cast<std::size_t>(n - 1)];
    }
    return letztes == '\n' ? zeilen : zeilen + 1;
}

// A point waits for its DA line, a text for its TX, an area for its POS.
struct OffenerPunkt {
    long long nr = 0;
    std::string layer, ebeneArt, yxh, kennung;
    double y = 0, x = 0;
    std::optional<double> h;
    // Filled by its DA line, when one follows.
    std::string sachdaten1{}, sachdaten2{}, sachdaten3{};
    bool mitDaten = false;
};

struct OffenerText {
    long long nr = 0;
    std::string layer, ebeneArt, yx;
    double y = 0, x = 0, höhe = 1, winkel = 0;
    std::optional<double> bY, bX;
    long long ausrichtung = 0;
};

struct OffeneFläche {
    long long nr = 0;
    std::string layer, ebeneArt;
    double abstand = 0, winkel = 0;
    long long typ = 0;
};

class Tabellenleser {
public:
    Tabellenleser(Datenbank& db, const std::function<void(std::string_view)>& protokoll)
        : m_protokoll(protokoll),
          m_daten(db.VorbereitenNativ("INSERT INTO Daten VALUES(?)")),
          m_pk(db.VorbereitenNativ("INSERT INTO GGPK VALUES(?,?,?,?,?,?,?,?,?,?,?)")),
          m_li(db.VorbereitenNativ("INSERT INTO GGLI VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)")),
          m_te(db.VorbereitenNativ("INSERT INTO GGTE VALUES(?,?,?,?,?,?,?,?,?,?,?,?)")),
          m_sch(db.VorbereitenNativ("INSERT INTO GGSCH VALUES(?,?,?,?,?,?,?,?,?,?)")) {}

    void Satz(const GrafbatSatz& satz);
    void Ende() { Schließen(); }
    void Übergehen(const std::string& zeile) {
        m_protokoll(zeile);
        ++m_bestand.übergangen;
    }
    DxfNasBestand& Bestand() { return m_bestand; }

private:
    enum class Offen { Nichts, Punkt, Text, Fläche };

    void Schließen();
    void Punkt(const GrafbatSatz& satz);
    void Daten(const GrafbatSatz& satz);
    void Linie(const GrafbatSatz& satz);
    void Text(const GrafbatSatz& satz);
    void TextZeile(const GrafbatSatz& satz);
    void Fläche(const GrafbatSatz& satz);
    void Umriss(const GrafbatSatz& satz);
    void LayerMerken(const std::string& layer);
    // The position of a PK or TE (fields 3 and 4); false and a protocol line when it is unreadable.
    bool LageLesen(const GrafbatSatz& satz, double& y, double& x) {
        const auto yZahl = Zahl(Feld(satz, 2)), xZahl = Zahl(Feld(satz, 3));
        if (!yZahl || !xZahl) {
            Unlesbar(satz, "ohne lesbare Koordinaten");
            return false;
        }
        y = *yZahl;
        x = *xZahl;
        return true;
    }
    void Unlesbar(const GrafbatSatz& satz, std::string_view warum) {
        Übergehen("Zeile " + std::to_string(satz.zeile) + ": " + satz.kennung +
                  std::to_string(satz.nummer) + " " + std::string(warum) + ", übergangen");
    }
    static void Ausführen(Anweisung& a) {
        a.Schritt();
        a.Zurücksetzen();
    }

    const std::function<void(std::string_view)>& m_protokoll;
    Anweisung m_daten, m_pk, m_li, m_te, m_sch;
    std::set<std::string, std::less<>> m_layer;
    DxfNasBestand m_bestand;
    Offen m_offen = Offen::Nichts;
    OffenerPunkt m_punkt;
    OffenerText m_text;
    OffeneFläche m_fläche;
};

void Tabellenleser::LayerMerken(const std::string& layer) {
    if (m_layer.insert(layer).second) {
        m_daten.Binde(layer);
        Ausführen(m_daten);
    }
}

void Tabellenleser::Satz(const GrafbatSatz& satz) {
    if (satz.art != GrafbatArt::Satz)
        return;
    const std::string& k = satz.kennung;
    if (satz.unterSatz) {
        if (k == "TX")
            TextZeile(satz);
        else if (k == "POS")
            Umriss(satz);
        // Other sub-records (OR, ...) carry nothing the drawing shows.
        return;
    }
    if (k == "DA") {
        Daten(satz);
        return;
    }
    Schließen();
    if (k == "PK")
        Punkt(satz);
    else if (k == "LI")
        Linie(satz);
    else if (k == "TE")
        Text(satz);
    else if (k == "SCH")
        Fläche(satz);
}

void Tabellenleser::Schließen() {
    switch (m_offen) {
    case Offen::Nichts:
        break;
    case Offen::Punkt: {
        const OffenerPunkt& p = m_punkt;
        LayerMerken(p.layer);
        m_pk.Binde(p.layer).Binde(p.nr).Binde(p.ebeneArt).Binde(p.y).Binde(p.x).Binde(p.yxh);
        BindeOderNull(m_pk, p.h);
        if (p.mitDaten)
            m_pk.Binde(p.sachdaten1).Binde(p.sachdaten2).Binde(p.sachdaten3);
        else
            m_pk.Binde(nullptr).Binde(nullptr).Binde(nullptr);
        m_pk.Binde(p.kennung);
        Ausführen(m_pk);
        break;
    }
    case Offen::Text:
        Übergehen("TX-Fehler: Kein Text zu TE vorhanden!");
        break;
    case Offen::Fläche:
        Übergehen("SCH-Fehler: Keine POS zu SCH vorhanden!");
        break;
    }
    m_offen = Offen::Nichts;
}

void Tabellenleser::Punkt(const GrafbatSatz& satz) {
    double y = 0, x = 0;
    if (!LageLesen(satz, y, x))
        return;
    const std::string ebeneArt(Feld(satz, 1));
    m_punkt = {.nr = satz.nummer,
               .layer = NasDxfLayer("PK", ebeneArt),
               .ebeneArt = ebeneArt,
               .yxh = std::string(Feld(satz, 2)) + " " + std::string(Feld(satz, 3)) + " " +
                      std::string(Feld(satz, 4)),
               .kennung = std::string(Feld(satz, 0)),
               .y = y,
               .x = x,
               .h = Zahl(Feld(satz, 4))};
    m_offen = Offen::Punkt;
    DxfNasBestand& b = m_bestand;
    if (!b.mitPunkten) {
        b.yMin = b.yMax = y;
        b.xMin = b.xMax = x;
        b.mitPunkten = true;
    } else {
        b.yMin = std::min(b.yMin, y);
        b.yMax = std::max(b.yMax, y);
        b.xMin = std::min(b.xMin, x);
        b.xMax = std::max(b.xMax, x);
    }
}

void Tabellenleser::Daten(const GrafbatSatz& satz) {
    if (m_offen != Offen::Punkt || m_punkt.mitDaten) {
        Unlesbar(satz, "ohne Punkt davor");
        return;
    }
    // ";ABM=1100;GST=1000;GWT=3;LZK=;BEM=": the mark apart (it chooses the symbol), the
    // accuracy parts together, the remark alone (it may be long).
    OffenerPunkt& p = m_punkt;
    p.mitDaten = true;
    for (const std::string_view teil : Teilen(satz.text, ';')) {
        const auto gleich = teil.find('=');
        if (gleich == std::string_view::npos)
            continue;
        const std::string_view name = TrimmeLeerzeichen(teil.substr(0, gleich));
        const std::string_view wert = TrimmeLeerzeichen(teil.substr(gleich + 1));
        if (name == "ABM") {
            p.sachdaten1 = std::string(wert);
        } else if (name == "BEM") {
            p.sachdaten3 = "BEM=" + std::string(wert);
        } else if ((name == "GST" || name == "GWT" || name == "LZK") && !wert.empty()) {
            if (!p.sachdaten2.empty())
                p.sachdaten2 += ' ';
            p.sachdaten2 += std::string(name) + "=" + std::string(wert);
        }
    }
}

void Tabellenleser::Linie(const GrafbatSatz& satz) {
    // An end point is the number of a PK record or "PK=<Y> <X>".
    struct Ende {
        std::optional<long long> nr;
        std::optional<double> y, x;
        std::string yx;
    } enden[2];
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string_view feld = Feld(satz, i);
        if (feld.starts_with("PK=")) {
            const std::string_view yx = TrimmeLeerzeichen(feld.substr(3));
            const auto blank = yx.find(' ');
            if (blank != std::string_view::npos) {
                enden[i].y = Zahl(yx.substr(0, blank));
                enden[i].x = Zahl(yx.substr(blank + 1));
            }
            if (!enden[i].y || !enden[i].x) {
                Unlesbar(satz, "mit unlesbarem Endpunkt");
                return;
            }
            enden[i].yx = std::string(yx);
        } else if (!(enden[i].nr = Ganzzahl(feld))) {
            Unlesbar(satz, "mit unlesbarem Endpunkt");
            return;
        }
    }
    const std::string ebeneArt(Feld(satz, 2));
    const std::string layer = NasDxfLayer("LI", ebeneArt);
    LayerMerken(layer);
    m_li.Binde(layer);
    for (const Ende& e : enden)
        e.nr ? m_li.Binde(*e.nr) : m_li.Binde(nullptr);
    m_li.Binde(ebeneArt);
    BindeOderNull(m_li, Zahl(Feld(satz, 3)));
    const auto richtung = Ganzzahl(Feld(satz, 4));
    richtung ? m_li.Binde(*richtung) : m_li.Binde(nullptr);
    for (const Ende& e : enden)
        e.nr ? m_li.Binde(nullptr) : m_li.Binde(e.yx);
    for (const Ende& e : enden) {
        BindeOderNull(m_li, e.y);
        BindeOderNull(m_li, e.x);
    }
    m_li.Binde(satz.nummer);
    Ausführen(m_li);
}

void Tabellenleser::Text(const GrafbatSatz& satz) {
    double y = 0, x = 0;
    if (!LageLesen(satz, y, x))
        return;
    const std::string ebeneArt(Feld(satz, 1));
    m_text = {.nr = satz.nummer,
              .layer = NasDxfLayer("TE", ebeneArt),
              .ebeneArt = ebeneArt,
              .yx = std::string(Feld(satz, 2)) + " " + std::string(Feld(satz, 3)),
              .y = y,
              .x = x,
              .höhe = Zahl(Feld(satz, 6)).value_or(1.0),
              .winkel = Zahl(Feld(satz, 7)).value_or(0.0),
              .bY = Zahl(Feld(satz, 4)),
              .bX = Zahl(Feld(satz, 5)),
              .ausrichtung = Ganzzahl(Feld(satz, 9)).value_or(0)};
    m_offen = Offen::Text;
}

void Tabellenleser::TextZeile(const GrafbatSatz& satz) {
    if (m_offen != Offen::Text) {
        Unlesbar(satz, "ohne TE davor");
        return;
    }
    const OffenerText& t = m_text;
    LayerMerken(t.layer);
    m_te.Binde(t.layer).Binde(t.nr).Binde(t.ebeneArt).Binde(t.y).Binde(t.x);
    BindeOderNull(m_te, t.bY);
    BindeOderNull(m_te, t.bX);
    m_te.Binde(t.yx).Binde(satz.text).Binde(t.winkel).Binde(t.höhe).Binde(t.ausrichtung);
    Ausführen(m_te);
    m_offen = Offen::Nichts;
}

void Tabellenleser::Fläche(const GrafbatSatz& satz) {
    OffeneFläche& f = m_fläche;
    f = {};
    f.nr = satz.nummer;
    f.ebeneArt = std::string(Feld(satz, 1));
    f.layer = NasDxfLayer("SCH", f.ebeneArt);
    f.typ = Ganzzahl(Feld(satz, 2)).value_or(0);
    f.abstand = Zahl(Feld(satz, 3)).value_or(0.0);
    f.winkel = Zahl(Feld(satz, 4)).value_or(0.0);
    m_offen = Offen::Fläche;
}

void Tabellenleser::Umriss(const GrafbatSatz& satz) {
    if (m_offen != Offen::Fläche) {
        Unlesbar(satz, "ohne SCH davor");
        return;
    }
    const OffeneFläche& f = m_fläche;
    const std::string_view pos = TrimmeLeerzeichen(satz.text);
    const auto ringe = PosRinge(pos);
    LayerMerken(f.layer);
    m_sch.Binde(f.layer).Binde(pos).Binde(f.ebeneArt).Binde(f.abstand).Binde(f.winkel).Binde(f.typ);
    if (!ringe.empty()) {
        const DxfPunkt erster = ringe.front().front();
        m_sch.Binde(erster.x).Binde(erster.y);
        // The first pair as the text gives it.
        std::size_t ende = 0;
        for (int blanks = 0; ende < pos.size(); ++ende)
            if (pos[ende] == ' ' && pos[ende - 1] != ' ' && ++blanks == 2)
                break;
        m_sch.Binde(pos.substr(0, ende));
    } else {
        m_sch.Binde(nullptr).Binde(nullptr).Binde(nullptr);
    }
    m_sch.Binde(f.nr);
    Ausführen(m_sch);
    m_offen = Offen::Nichts;
}

// The end points of lines given by number, from the points; a line whose point is missing is a
// protocol line and goes.
void PunkteZuLinien(Datenbank& db, Tabellenleser& leser) {
    for (const char* ende : {"1", "2"}) {
        const std::string n(ende);
        db.AusführenNativ("UPDATE GGLI SET (PK" + n + "y, PK" + n + "x, PK" + n + "yx) = (SELECT Y, X, Y || ' ' || X "
                          "FROM GGPK WHERE Nr = GGLI.PK" + n + " ORDER BY rowid LIMIT 1) WHERE PK" + n +
                          " IS NOT NULL");
    }
    Anweisung fehlend = db.VorbereitenNativ(
        "SELECT id, CASE WHEN PK1y IS NULL THEN PK1 ELSE PK2 END FROM GGLI "
        "WHERE PK1y IS NULL OR PK2y IS NULL ORDER BY rowid");
    bool gefunden = false;
    while (fehlend.Schritt()) {
        gefunden = true;
        leser.Übergehen("LI-Fehler: Punkt " + std::string(fehlend.Text(1)) + " zu LI" +
                        std::string(fehlend.Text(0)) + " nicht vorhanden!");
    }
    if (gefunden)
        db.AusführenNativ("DELETE FROM GGLI WHERE PK1y IS NULL OR PK2y IS NULL");
}

} // namespace

DxfNasBestand DxfNasTabellenFüllen(Datenbank& db, const std::filesystem::path& outDatei,
                                   Oberfläche& ui,
                                   const std::function<void(std::string_view)>& protokoll) {
    const long long gesamt = ZeilenZählen(outDatei);
    GrafbatLeser leser(outDatei);
    // The database lives for one export and is deleted after it: no journal to keep.
    db.AusführenNativ("PRAGMA journal_mode = MEMORY");
    db.AusführenNativ("PRAGMA synchronous = OFF");
    Transaktion transaktion(db);
    for (const char* anweisung : TabellenAnlegen)
        db.AusführenNativ(anweisung);
    Tabellenleser tabellen(db, protokoll);
    std::size_t gemeldet = 0;
    const auto problemeMelden = [&] {
        for (; gemeldet < leser.Probleme().size(); ++gemeldet)
            tabellen.Übergehen(leser.Probleme()[gemeldet].meldung);
    };
    ui.Fortschritt(0, gesamt);
    while (const auto satz = leser.NächsterSatz()) {
        problemeMelden();
        tabellen.Satz(*satz);
        if (satz->zeile % 4096 == 0)
            ui.Fortschritt(static_cast<long long>(satz->zeile), gesamt);
    }
    problemeMelden();
    tabellen.Ende();
    PunkteZuLinien(db, tabellen);
    transaktion.Bestätigen();
    ui.Fortschritt(gesamt, gesamt);
    return tabellen.Bestand();
}

} // namespace flurix::ausgabe::detail
