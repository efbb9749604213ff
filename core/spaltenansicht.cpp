#include "core/spaltenansicht.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace flurix {
namespace {

constexpr int TwipsJeZeichen = 100;
constexpr int TwipsRand = 200;

std::size_t Zeichenzahl(std::string_view text) {
    // UTF-8: count the bytes that start a character.
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string LängsteZelle(const Kataster& kataster, std::size_t spalte) {
    std::string_view längste;
    std::size_t zeichen = 0;
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z) {
        const auto text = kataster.Zelle(z, spalte);
        // A text has at most as many characters as bytes: only a longer one needs counting.
        if (text.size() <= zeichen)
            continue;
        if (const std::size_t n = Zeichenzahl(text); n > zeichen) {
            längste = text;
            zeichen = n;
        }
    }
    return std::string(längste);
}

// A number as the program prints it: an integer without leading zeros, else as short as exact.
std::string ZahlText(double wert) {
    char puffer[32];
    const auto ende = std::abs(wert) < 1e15 && wert == std::floor(wert)
                          ? std::to_chars(puffer, puffer + sizeof puffer, static_cast<long long>(wert)).ptr
                          : std::to_chars(puffer, puffer + sizeof puffer, wert).ptr;
    return std::string(puffer, ende);
}

bool IstZahl(std::string_view text) {
    text = TrimmeLeerzeichen(text);
    if (text.starts_with('-') || text.starts_with('+'))
        text.remove_prefix(1);
    double wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return !text.empty() && fehler == std::errc() && ende == text.data() + text.size();
}

} // namespace

std::vector<std::string> AnsichtenNamen(const std::filesystem::path& ansichtsdatei) {
    std::vector<std::string> namen{std::string(AnsichtAlles)};
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(ansichtsdatei));
    for (std::string_view zeile : TextZeilen(text))
        if (std::string name = TokenNr(zeile, 1, "="); !name.empty())
            namen.push_back(std::move(name));
    return namen;
}

std::string AnsichtSpalten(const std::filesystem::path& ansichtsdatei, std::string_view name) {
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(ansichtsdatei));
    for (std::string_view zeile : TextZeilen(text))
        if (TokenNr(zeile, 1, "=") == name)
            return TokenNr(zeile, 2, "=");
    return {};
}

void SpaltenlisteAnwenden(Kataster& kataster, std::string_view schlüsselliste) {
    for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s)
        kataster.Spalte(s).sichtbar = false;
    std::size_t platz = 0;
    for (std::string_view schlüssel : Teilen(schlüsselliste, ';')) {
        schlüssel = TrimmeLeerzeichen(schlüssel);
        if (schlüssel.empty())
            continue;
        if (const auto spalte = kataster.SpaltenIndex(schlüssel)) {
            kataster.Spalte(*spalte).sichtbar = true;
            kataster.SpalteVerschieben(*spalte, platz);
        }
        ++platz;
    }
}

bool ComboColVis(Kataster& kataster, std::string_view ansicht,
                 const std::filesystem::path& ansichtsdatei) {
    std::string liste;
    if (ansicht != AnsichtAlles) {
        liste = AnsichtSpalten(ansichtsdatei, ansicht);
        if (liste.empty())
            return false;
    }
    // The numbering column is made before the view is applied, so that the view can place it.
    if (ansicht == AnsichtLageplan && !kataster.Leer())
        kataster.SpalteHinzufügen({"ID_GG", "ID_GG", 600});
    if (ansicht == AnsichtAlles)
        kataster.AlleSpaltenZeigen();
    else
        SpaltenlisteAnwenden(kataster, liste);
    if (const auto dienststelle = kataster.SpaltenIndex("Dienststelle"))
        kataster.Spalte(*dienststelle).breite = static_cast<int>(
            std::lround(TextbreiteTwips(LängsteZelle(kataster, *dienststelle)) * 1.2));
    kataster.Sortieren(StandardSortierung);
    return true;
}

int TextbreiteTwips(std::string_view text) {
    return static_cast<int>(Zeichenzahl(text)) * TwipsJeZeichen + TwipsRand;
}

void ALBDatenColFormatierung(Kataster& kataster) {
    for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s) {
        auto& spalte = kataster.Spalte(s);
        spalte.breite = std::max(TextbreiteTwips(spalte.überschrift),
                                 TextbreiteTwips(LängsteZelle(kataster, s)));
    }
    if (const auto flurstück = kataster.SpaltenIndex("Flurstück"))
        kataster.Spalte(*flurstück).schattiert = true;
    if (const auto fläche = kataster.SpaltenIndex("Fläche"))
        kataster.Spalte(*fläche).breite = 1200;
    static constexpr std::array<std::string_view, 15> begrenzt = {
        "Nutzung_tatsächlich", "Angaben_Klassifizierung", "Klassifizierung", "Nutzungsart",
        "NA-Schlüssel", "Flurstück-Vorgänger", "BZ", "AZ", "Schätzung", "BZ-AZ-Fläche",
        "Schlüssel_Klassifizierung", "Bezeichnung_Klassifizierung", "NA_Klassifizierung",
        "NA-Fläche", "EMZ"};
    for (std::string_view schlüssel : begrenzt)
        if (const auto s = kataster.SpaltenIndex(schlüssel))
            kataster.Spalte(*s).breite = std::min(kataster.Spalte(*s).breite, 2000);
}

std::string Anzeigeform(const KatasterSpalte& spalte, std::string_view text) {
    const std::string_view format = spalte.format;
    if (format.empty() || !IstZahl(text))
        return std::string(text);
    // A pattern of zeros: as many places before and after the point as it has.
    const auto punkt = format.find('.');
    const std::size_t ganz = std::min(punkt, format.size());
    const std::size_t nachkomma = punkt == std::string_view::npos ? 0 : format.size() - punkt - 1;
    if (format.find_first_not_of("0.") != std::string_view::npos)
        return std::string(text);
    const double wert = ZahlLesen(text);
    if (ganz <= 1 && nachkomma == 0)
        return ZahlText(std::round(wert));
    std::array<char, 64> puffer{};
    const auto [ende, fehler] = std::to_chars(puffer.data(), puffer.data() + puffer.size(),
                                              std::fabs(wert), std::chars_format::fixed,
                                              static_cast<int>(nachkomma));
    if (fehler != std::errc())
        return std::string(text);
    std::string zahl(puffer.data(), ende);
    const std::size_t stellen = std::min(zahl.find('.'), zahl.size());
    if (stellen < ganz)
        zahl.insert(0, ganz - stellen, '0');
    if (wert < 0 && zahl.find_first_not_of("0.") != std::string::npos)
        zahl.insert(0, 1, '-');
    return zahl;
}

bool FlurstückZahlenformat(Kataster& kataster, Oberfläche& ui) {
    const Fragestellung frage{"Sollen die Spaltenformatierungen für Flur, Flurstück, Fläche, "
                              "Grundbuchblatt und BVNR  nicht umkehrbar geändert werden?    ",
                              ProduktTitel, Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return false;
    for (std::string_view schlüssel : {"Flur", "Fläche", "Grundbuchblatt", "BVNR"})
        if (const auto s = kataster.SpaltenIndex(schlüssel))
            kataster.Spalte(*s).format = "0";
    const auto flurstück = kataster.SpaltenIndex("Flurstück");
    if (!flurstück)
        return true;
    const std::size_t zeilen = kataster.Zeilenzahl();
    for (std::size_t z = 0; z < zeilen; ++z) {
        const std::string_view text = kataster.Zelle(z, *flurstück);
        if (!TrimmeLeerzeichen(text).empty()) {
            const auto strich = text.find('/');
            const double zähler = ZahlLesen(text.substr(0, strich));
            const double nenner = strich == std::string_view::npos ? 0 : ZahlLesen(text.substr(strich + 1));
            std::string neu = ZahlText(zähler);
            if (nenner != 0)
                neu += "/" + ZahlText(nenner);
            kataster.ZelleSetzen(z, *flurstück, neu);
        }
        if (z % 10 == 0)
            ui.Status(1, std::to_string((z * 100 + zeilen / 2) / zeilen) + "% umgewandelt  ");
    }
    return true;
}

std::size_t ZeilenLöschenMitFrage(Kataster& kataster, std::vector<std::size_t> zeilen,
                                  Oberfläche& ui) {
    std::erase_if(zeilen, [&](std::size_t z) { return z >= kataster.Zeilenzahl(); });
    std::sort(zeilen.begin(), zeilen.end());
    zeilen.erase(std::unique(zeilen.begin(), zeilen.end()), zeilen.end());
    if (zeilen.empty())
        return 0;
    Fragestellung frage{"Datensatz löschen?   ", "Löschen", Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (zeilen.size() > 1)
        frage.text = "Achtung!\nEs sind " + std::to_string(zeilen.size()) +
                     " Datenzeilen selektiert!\n\nAlle selektierten Datenzeilen löschen?   ";
    if (ui.Frage(frage) != Antwort::Ja)
        return 0;
    // The table removes all rows in one pass; the status still tells the progress in steps of 20.
    for (std::size_t i = 0; i < zeilen.size(); i += 20)
        ui.Status(1, std::to_string(i * 100 / zeilen.size()) + "% gelöscht  ");
    kataster.ZeilenLöschen(zeilen);
    ui.Status(1, "100% gelöscht  ");
    return zeilen.size();
}

} // namespace flurix
