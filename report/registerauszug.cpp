#include "report/registerauszug.hpp"

#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "report/pdf_format.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace flurix::report {
namespace {

// A page ends here: the extract shows AuszugSortierfehler and saves what stands.
struct Seitenabbruch {};

// ---- positions (points, origin top left) --------------------------------------------------------
// Every millimetre value is converted on its own and rounded to single precision before it is
// added to another: the last decimal of the file depends on it.

float Mm(double wert) { return static_cast<float>(wert * 720.0 / 254.0); }

// Left column: the left edge and a text inset of 5 points.
const float XL = Mm(20) + 5.0F;

// n millimetres right of the left edge.
float X(double n) { return Mm(20) + Mm(n); }

// y of line k: the top edge, 13 points a line, 4 points down to the text.
float ZeilenY(std::int32_t k) { return Mm(11) + static_cast<float>(13 * k) + 4.0F; }

// Lower page limit of a block of owner lines.
constexpr float Seitenende = 780.0F;

constexpr std::string_view Doppellinie = "=========================";

// ---- cells --------------------------------------------------------------------------------------

std::string Verkettet(std::initializer_list<std::string_view> teile) {
    std::string text;
    for (const auto t : teile)
        text += t;
    return text;
}

// Piece i of a split list; a missing piece ends the page, as an index outside a list always did.
std::string_view Teil(const std::vector<std::string_view>& liste, std::size_t i) {
    if (i >= liste.size())
        throw Seitenabbruch{};
    return liste[i];
}

// UTF-8: the number of characters, and the first n characters.
std::size_t Zeichenzahl(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

std::string_view ErsteZeichen(std::string_view text, std::size_t n) {
    std::size_t pos = 0;
    for (std::size_t zeichen = 0; pos < text.size(); ++pos) {
        if ((static_cast<unsigned char>(text[pos]) & 0xC0U) != 0x80U && zeichen++ == n)
            break;
    }
    return text.substr(0, pos);
}

// A number in its shortest form: whole numbers without a point (the way numbers were always
// turned into text here).
std::string Zahltext(double wert) {
    if (std::abs(wert) < 1e15 && wert == std::floor(wert))
        return std::to_string(static_cast<long long>(wert));
    char puffer[32];
    const auto [ende, fehler] = std::to_chars(puffer, puffer + sizeof puffer, wert);
    return fehler == std::errc() ? std::string(puffer, ende) : std::string();
}

} // namespace

// ---- text forms ---------------------------------------------------------------------------------

std::string_view Trimmen(std::string_view text) {
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    return text;
}

std::string Flächenformat(std::string_view zelle) {
    const std::string_view text = Trimmen(zelle);
    if (text.empty())
        return {};
    double wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    if (fehler != std::errc() || ende != text.data() + text.size() || !std::isfinite(wert))
        return std::string(text);
    // Half away from zero, as the digit pattern rounds.
    const double ganz = std::round(wert);
    std::string ziffern = Zahltext(std::abs(ganz));
    if (ziffern.size() < 10)
        ziffern.insert(0, 10 - ziffern.size(), '0');
    return ganz < 0 ? "-" + ziffern : ziffern;
}

std::string Eigentümernummer(std::string_view namensnummer) {
    const auto teil = [&](std::size_t von, std::size_t anzahl) {
        const std::string_view vorn = ErsteZeichen(namensnummer, von);
        const std::string_view rest = namensnummer.substr(vorn.size());
        return Zahltext(ZahlLesen(ErsteZeichen(rest, anzahl)));
    };
    return teil(0, 4) + "." + teil(4, 2) + "." + teil(6, 2);
}

std::string Lagetext(std::string_view straßenschlüssel, std::string_view lagebezeichnung) {
    const std::string ganz = Verkettet({straßenschlüssel, " ", lagebezeichnung});
    const std::string_view lage = Trimmen(ganz);
    if (Zeichenzahl(lage) > 65)
        return Verkettet({ErsteZeichen(lage, 60), "..."});
    return std::string(lage);
}

std::string Kurzdatum(const std::tm& zeit) {
    const auto zwei = [](int n) { return (n < 10 ? "0" : "") + std::to_string(n); };
    return zwei(zeit.tm_mday) + "." + zwei(zeit.tm_mon + 1) + "." +
           std::to_string(zeit.tm_year + 1900);
}

std::vector<std::string_view> Listenteile(std::string_view zelle) {
    if (zelle.empty())
        return {};
    return Teilen(zelle, ';');
}

std::string AuszugDateiname(const Kataster& kataster, std::size_t zeile) {
    std::string name =
        Verkettet({"ALB-", kataster.Zelle(zeile, "Gemarkungsschlüssel"), "-",
                   kataster.Zelle(zeile, "Flur"), "-", kataster.Zelle(zeile, "Flurstück"), ".pdf"});
    std::erase(name, ' ');
    const auto anfang = name.rfind('-') + 1;
    name.erase(std::remove(name.begin() + static_cast<std::ptrdiff_t>(anfang), name.end(), '/'),
               name.end());
    return name;
}

std::vector<std::size_t> ParcelRows(const Kataster& kataster, std::size_t zeile) {
    if (const auto fkz = kataster.SpaltenIndex("Flurstückskennzeichen")) {
        const std::string_view kennzeichen = kataster.Zelle(zeile, *fkz);
        if (!Trimmen(kennzeichen).empty()) {
            const Kataster::Index index = kataster.IndexBauen(*fkz);
            const auto zeilen = index.Zeilen(kennzeichen);
            return {zeilen.begin(), zeilen.end()};
        }
    }
    const auto flurstück = kataster.SpaltenIndex("Flurstück");
    if (!flurstück)
        return {zeile};
    // The index answers for the parcel number; the few rows of that number in other Fluren or
    // Gemarkungen are then passed over.
    const Kataster::Index index = kataster.IndexBauen(*flurstück);
    const auto kandidaten = index.Zeilen(kataster.Zelle(zeile, *flurstück));
    std::vector<std::size_t> zeilen;
    for (const std::size_t z : kandidaten) {
        if (kataster.Zelle(z, "Gemarkungsschlüssel") ==
                kataster.Zelle(zeile, "Gemarkungsschlüssel") &&
            kataster.Zelle(z, "Flur") == kataster.Zelle(zeile, "Flur"))
            zeilen.push_back(z);
    }
    return zeilen;
}

// ---- the report ---------------------------------------------------------------------------------

Registerauszug::Registerauszug(PdfHerkunft herkunft) : m_herkunft(std::move(herkunft)) {}

std::optional<Auszug>
Registerauszug::CreateRegisterExtract(const Kataster& kataster, std::size_t zeile,
                                      const std::filesystem::path& ordner, Oberfläche& ui,
                                      const std::optional<std::filesystem::path>& datei) {
    if (zeile >= kataster.Zeilenzahl())
        return std::nullopt;

    clsPDF pdf(m_herkunft);
    pdf.PageStarted = [this] { pdf_PageStarted(); };
    pdf.DrawColor(0);
    pdf.DrawWidth(1);
    pdf.DropBlankPages(true);
    pdf.FillColor(0xFFFFFF);
    pdf.FillMode(-1);
    pdf.FontSize(10);
    pdf.Height(5);
    pdf.Width(5);
    pdf.LeftMargin(80);
    pdf.LinesPerPage(67);
    pdf.NewPageString("\f");
    pdf.Orientation(0);
    pdf.PaperSize(5); // A4: replaces the height and width above
    pdf.TopMargin(60);

    // The report lists every owner of the parcel, from its first row in the table on. In a table
    // sorted by parcel and Eigentümerposition that is the row Eigentümerposition − 1 above a row
    // of the parcel; in any other order the owners are found all the same.
    m_eigentümer = ParcelRows(kataster, zeile);

    m_pdf = &pdf;
    m_kataster = &kataster;
    m_datum = Kurzdatum(m_herkunft.uhr ? m_herkunft.uhr() : LokaleZeit());
    m_fehler = false;
    m_seitenstand = 1;
    pdf.PrintLine("");
    while (m_weitereSeiten) {
        pdf.NewPage(0, 0);
        pdf.PrintLine("");
    }
    m_pdf = nullptr;
    m_kataster = nullptr;
    if (m_fehler)
        ui.Meldung(AuszugSortierfehler, ProduktTitel, Stil::Information);

    Auszug auszug;
    auszug.datei = datei ? *datei : ordner / AuszugDateiname(kataster, m_eigentümer.front());
    auszug.inhalt = pdf.value();
    auszug.seiten = pdf.PageNumber();
    auszug.unvollständig = m_fehler;
    auszug.gespeichert = pdf.SavePDF(auszug.datei);
    return auszug;
}

std::string_view Registerauszug::Zeile(std::size_t zeile, std::string_view schlüssel) const {
    return m_kataster->Zelle(zeile, schlüssel);
}

std::string_view Registerauszug::Eigene(std::string_view schlüssel) const {
    return Zeile(m_eigentümer.front(), schlüssel);
}

void Registerauszug::Text(float x, float y, std::string_view text) {
    m_pdf->DrawText(x, y, text, 0.0F);
}

void Registerauszug::pdf_PageStarted() {
    m_weitereSeiten = false;
    m_R = 0;
    m_F = 0;
    m_S.clear();
    try {
        Rahmen();
        Kopfbereich();
        if (m_seitenstand == 1) {
            Flurstücksdaten();
            Nutzung();
            Hinweise();
            Vorgänger();
            Grundbuch();
            if (!Eigentümerschleife({37, 3, "Bestand GBBZ:", true, true, 0}))
                return;
        } else {
            m_pdf->FontSize(11);
            m_J0 = m_J;
            if (static_cast<std::size_t>(m_J) >= m_eigentümer.size())
                return;
            if (!Eigentümerschleife({13, 4, "Bestand GBBZ: ", false, false, m_J0}))
                return;
        }
        Eigentümerzusatz();
    } catch (const Seitenabbruch&) {
        // The more-pages flag is still clear: the report ends with this page.
        m_fehler = true;
    }
}

void Registerauszug::Rahmen() {
    m_pdf->FillColor(0);
    m_pdf->DrawColor(0);
    m_pdf->DrawWidth(1);
    // Sizes and sums of the top coordinate in millimetres, converted afterwards.
    m_pdf->DrawBox(Mm(20), Mm(11), Mm(93), Mm(23), 0);
    m_pdf->DrawBox(Mm(20) + Mm(93), Mm(11), Mm(87), Mm(23), 0);
    m_pdf->DrawBox(Mm(20), Mm(34), Mm(180), Mm(32), 0);
    m_pdf->DrawBox(Mm(20), Mm(66), Mm(180), Mm(220), 0);
    m_pdf->FontSize(6);
    Text(Mm(20), Mm(289),
         Verkettet({"Flurstücks- und Eigentümernachweis erstellt mit ", m_herkunft.producer,
                    " ... ALB-Auszug nicht vollständig und ohne Gewähr!"}));
}

void Registerauszug::Kopfbereich() {
    const float oben = Mm(11);
    m_pdf->FontSize(11);
    Text(XL, oben + 13.0F + 6.0F, "AUSZUG AUS DEM LIEGENSCHAFTSKATASTER ");
    m_pdf->FontSize(15);
    Text(XL, oben + 26.0F + 12.0F, "-LIEGENSCHAFTSBUCH-");
    m_pdf->FontSize(11);
    Text(XL, oben + 52.0F + 4.0F, "Flurstücks- und Eigentümernachweis");
    Text(X(95), oben + 13.0F + 6.0F, "Flurstück ");
    m_pdf->FontSize(15);
    Text(X(118), oben + 13.0F + 6.0F,
         Verkettet({Eigene("Gemarkungsschlüssel"), "-", Eigene("Flur"), "-", Eigene("Flurstück")}));
    m_pdf->FontSize(11);
    Text(X(118), oben + 26.0F + 2.0F, Doppellinie);
    Text(X(95), ZeilenY(3), "Datum");
    Text(X(118), ZeilenY(3), m_datum);
    Text(X(95), ZeilenY(4), "Aktualität");
    Text(X(118), ZeilenY(4), Eigene("Aktualitätsnummer"));
    Text(X(158), ZeilenY(4), "Seite     " + std::to_string(m_pdf->PageNumber()));
    Text(XL, ZeilenY(6), Eigene("Katasteramt"));

    // Label, key and name of the administrative units (Kreis/Stadt has no key column).
    struct Einheit {
        std::int32_t zeile;
        std::string_view beschriftung, schlüssel, name;
    };
    static constexpr Einheit einheiten[] = {
        {8, "Gemarkung", "Gemarkungsschlüssel", "Gemarkung"},
        {9, "Gemeinde", "Gemeindeschlüssel", "Gemeinde"},
        {10, "Kreis/Stadt", "", "Landkreis"},
        {11, "Finanzamt", "Finanzamtsschlüssel", "Finanzamt"},
    };
    for (const auto& e : einheiten) {
        Text(XL, ZeilenY(e.zeile), e.beschriftung);
        if (!e.schlüssel.empty())
            Text(X(60), ZeilenY(e.zeile), Eigene(e.schlüssel));
        Text(X(95), ZeilenY(e.zeile), Eigene(e.name));
    }
}

void Registerauszug::Flurstücksdaten() {
    Text(XL, ZeilenY(13), "Gmkg");
    Text(X(20), ZeilenY(13), "Flr");
    Text(X(32), ZeilenY(13), "Flurst-Nr");
    Text(XL, ZeilenY(14), Eigene("Gemarkungsschlüssel"));
    Text(X(20), ZeilenY(14), Eigene("Flur"));
    Text(X(32), ZeilenY(14), Eigene("Flurstück"));
    Text(XL, ZeilenY(15), Doppellinie);
    // Label at X60, cell at X95.
    static constexpr std::pair<std::int32_t, std::string_view> daten[] = {
        {15, "Entstehung"}, {16, "Fortführung"}, {17, "LiegenschKarte"}};
    for (const auto& [zeile, schlüssel] : daten) {
        Text(X(60), ZeilenY(zeile), schlüssel);
        Text(X(95), ZeilenY(zeile), Eigene(schlüssel));
    }
    Text(X(60), ZeilenY(18), "Koordinaten");
    Text(X(95), ZeilenY(18), Verkettet({Eigene("Rechtswert"), " ", Eigene("Hochwert")}));
    Text(XL, ZeilenY(20), "Lage");
    Text(X(60), ZeilenY(20), Lagetext(Eigene("Straßenschlüssel"), Eigene("Lagebezeichnung")));
    Text(XL, ZeilenY(22), "Tatsächliche Nutzung");
}

void Registerauszug::Flächenzeile(std::int32_t zeile, std::string_view fläche) {
    Text(X(30), ZeilenY(zeile), Flächenformat(fläche));
    Text(X(53), ZeilenY(zeile), "m²");
}

void Registerauszug::Nutzung() {
    const auto flächen = Listenteile(Eigene("NA-Fläche"));
    std::vector<std::string_view> schlüssel{" "};
    if (!Eigene("NA_Klassifizierung").empty())
        schlüssel = Listenteile(Eigene("NA_Klassifizierung"));
    else if (!Eigene("Nutzung_tatsächlich").empty())
        schlüssel = Listenteile(Eigene("NA-Schlüssel"));
    const auto namen = Listenteile(Eigene("Nutzung_tatsächlich"));

    const auto n = static_cast<std::int32_t>(namen.size());
    for (std::int32_t i = 0; i < n; ++i) {
        const auto index = static_cast<std::size_t>(i);
        Flächenzeile(23 + i, Teil(flächen, index));
        Text(X(60), ZeilenY(23 + i), Trimmen(Teil(schlüssel, index)));
        Text(X(75), ZeilenY(23 + i), Trimmen(namen[index]));
    }
    m_R = n;
    Text(XL, ZeilenY(m_R + 24), std::string(44, '-'));
    Text(XL, ZeilenY(m_R + 25), "Fläche");
    Flächenzeile(m_R + 25, Eigene("Fläche"));
    Text(XL, ZeilenY(m_R + 26), Doppellinie);
}

void Registerauszug::Hinweise() {
    const std::string_view hinweis = Trimmen(Eigene("Bezeichnung_Hinweis_Flurstück"));
    if (!hinweis.empty()) {
        Text(XL, ZeilenY(m_R + 28), "Hinweise");
        Text(X(30), ZeilenY(m_R + 28),
             Verkettet({Trimmen(Eigene("Schlüssel_Bezeichnung_Hinweis_Flurstück")), " ", hinweis}));
        m_R += 2;
    }
    const std::string_view bov = Trimmen(Eigene("sonstigesBOV"));
    if (!bov.empty()) {
        Text(XL, ZeilenY(m_R + 28), "BOV-Verfahren");
        Text(X(30), ZeilenY(m_R + 28), bov);
        m_R += 2;
    }
    // The classification block is switched off: its guard names a column no table has, so it
    // reads an empty cell. The block stays, ready to be switched on by renaming the guard.
    if (Eigene("#ohne###Schlüssel_Klassifizierung").empty()) {
        m_R -= 2;
        return;
    }
    Text(XL, ZeilenY(m_R + 28), "Klassifizierung");
    const auto flächen = Listenteile(Eigene("BZ-AZ-Fläche"));
    const auto schlüssel = Listenteile(Eigene("Schlüssel_Klassifizierung"));
    const auto namen = Listenteile(Eigene("Bezeichnung_Klassifizierung"));
    const auto schätzung = Listenteile(Eigene("Schätzung"));
    const auto bz = Listenteile(Eigene("BZ"));
    const auto az = Listenteile(Eigene("AZ"));
    const auto emz = Listenteile(Eigene("EMZ"));
    const auto anzahl = static_cast<std::int32_t>(flächen.size());
    for (std::int32_t i = 0; i < anzahl; ++i) {
        const auto index = static_cast<std::size_t>(i);
        Flächenzeile(m_R + 28 + i, flächen[index]);
        Text(X(60), ZeilenY(m_R + 28 + i), Teil(schlüssel, index));
        Text(X(75), ZeilenY(m_R + 28 + i), Teil(namen, index));
        Text(X(60), ZeilenY(m_R + 29 + i),
             Verkettet({"Bodsch: ", Trimmen(Teil(schätzung, index)),
                        "  Wertzahl: ", Trimmen(Teil(bz, index)), "/", Trimmen(Teil(az, index)),
                        "  EMZ: ", Trimmen(Teil(emz, index))}));
        m_R += 1;
    }
    m_R += anzahl - 1;
}

void Registerauszug::Vorgänger() {
    const std::string_view vorgänger = Trimmen(Eigene("Flurstück-Vorgänger"));
    if (vorgänger.empty()) {
        m_R -= 2;
        return;
    }
    Text(XL, ZeilenY(m_R + 30), "Vorgängerflurstück");
    const auto teile = Listenteile(Eigene("Flurstück-Vorgänger"));
    const auto anzahl = static_cast<std::int32_t>(teile.size());
    for (std::int32_t i = 0; i < anzahl; ++i)
        Text(X(40), ZeilenY(m_R + 30 + i), Trimmen(teile[static_cast<std::size_t>(i)]));
    m_R += anzahl - 1;
}

std::string Registerauszug::Bestandsdetail(std::size_t zeile) const {
    return Verkettet({"GBBL: ", Zeile(zeile, "Grundbuchblatt"), "  BVNR: ", Zeile(zeile, "BVNR"),
                      "  BA: ", Zeile(zeile, "Buchungsart")});
}

void Registerauszug::Grundbuch() {
    static constexpr std::array<std::array<std::string_view, 3>, 2> gerichte = {{
        {"Amtsgericht", "Amtsgerichtsschlüssel", "Amtsgericht"},
        {"Grundbuchbezirk", "Grundbuchbezirkschlüssel", "Grundbuchbezirk"},
    }};
    for (std::int32_t i = 0; i < 2; ++i) {
        const auto& [beschriftung, schlüssel, name] = gerichte[static_cast<std::size_t>(i)];
        Text(XL, ZeilenY(m_R + 32 + i), beschriftung);
        Text(X(40), ZeilenY(m_R + 32 + i), Eigene(schlüssel));
        Text(X(55), ZeilenY(m_R + 32 + i), Eigene(name));
    }
    Bestandszeile(m_eigentümer.front(), "Bestand GBBZ: ", m_R + 35);
    m_S = Bestandstext(m_eigentümer.front());
    m_R -= 1;
    m_J = 0;
}

std::string Registerauszug::Bestandstext(std::size_t zeile) const {
    return Verkettet({Zeile(zeile, "Grundbuchbezirkschlüssel"), Bestandsdetail(zeile)});
}

void Registerauszug::Bestandszeile(std::size_t zeile, std::string_view beschriftung,
                                   std::int32_t linie) {
    Text(XL, ZeilenY(linie), Verkettet({beschriftung, Zeile(zeile, "Grundbuchbezirkschlüssel")}));
    Text(X(45), ZeilenY(linie), Bestandsdetail(zeile));
}

bool Registerauszug::Eigentümerschleife(const Eigentümerform& form) {
    for (;;) {
        const std::size_t zeile = m_eigentümer[static_cast<std::size_t>(m_J)];
        // The first owner line of this block, for the row offset and owner count so far.
        const auto linie = [&] { return m_R + form.nummernzeile + m_J - form.j0; };
        if (ZeilenY(linie() + form.prüfabstand) > Seitenende) {
            m_seitenstand += 1;
            m_weitereSeiten = true;
            return false;
        }
        const std::string stand = Bestandstext(zeile);
        if (stand != m_S) {
            Bestandszeile(zeile, form.bestand, linie());
            m_R += 1;
        }
        m_S = stand;
        Text(XL, ZeilenY(linie()), Eigentümernummer(Zeile(zeile, "Namensnummer")));
        if (!Trimmen(Zeile(zeile, "Anteilsverhältnis")).empty())
            Text(X(40), ZeilenY(linie()),
                 Verkettet({"Anteilsverhältnis: ", Zeile(zeile, "Anteilsverhältnis")}));
        // First pages have always put Ort above Straße, continuation pages Straße above Ort.
        const std::string_view oben = form.ortVorStraße ? "Ort" : "Straße";
        const std::string_view unten = form.ortVorStraße ? "Straße" : "Ort";
        Text(X(15), ZeilenY(linie() + 1), Zeile(zeile, "Name"));
        Text(X(15), ZeilenY(linie() + 2), Zeile(zeile, "Namenszusatz"));
        Text(X(15), ZeilenY(linie() + 3), Zeile(zeile, oben));
        Text(X(15), ZeilenY(linie() + 4), Zeile(zeile, unten));
        if (form.merktF)
            m_F = m_R + 26;
        m_R += 5;
        if (!NächsterEigentümer())
            return true;
    }
}

bool Registerauszug::NächsterEigentümer() {
    const auto j = static_cast<std::size_t>(m_J);
    const std::size_t zeile = m_eigentümer[j];
    if (zeile + 1 >= m_kataster->Zeilenzahl())
        return false; // the last row of the table: J stays at its last value
    m_J += 1;
    if (j + 1 >= m_eigentümer.size())
        return false;
    // Owners follow their Eigentümerposition (owners of one position may share it); a row that
    // goes back ends the page with the message, after the owners that stand in order.
    const std::string_view vorher = Trimmen(Zeile(zeile, "Eigentümerposition"));
    const std::string_view nachher = Trimmen(Zeile(m_eigentümer[j + 1], "Eigentümerposition"));
    if (!vorher.empty() && !nachher.empty() && ZahlLesen(nachher) < ZahlLesen(vorher))
        throw Seitenabbruch{};
    return true;
}

void Registerauszug::Eigentümerzusatz() {
    if (Trimmen(Eigene("Eigentümerzusatz")).empty())
        return;
    std::string zusatz(Eigene("Eigentümerzusatz"));
    // On a first page F still holds the last owner's R + 26, so R counts twice and the line lies
    // well below the owners; J0 is the last continuation page's, of this extract or an earlier one.
    std::erase(zusatz, ';');
    Text(XL, ZeilenY(m_R + 13 + m_J - m_J0 + m_F), zusatz);
}

} // namespace flurix::report
