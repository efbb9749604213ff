#include "nas/flaechenergebnis.hpp"

#include "core/text.hpp"

#include <charconv>
#include <cmath>
#include <vector>

namespace flurix::nas {

using enum Flächenspalte;

const std::array<std::string_view, FlächenspaltenAnzahl> FlächenspaltenNamen = {
    "AlkisFlaeche", "AlkisNA", "AlkisOriNA", "AlkisNaFlaeche", "AlkisNaBeschreibung", "AlkisOriNaFlaeche",
    "BS_Bodenschaetzung", "BS_Flaeche", "BS_GesamtFlaeche", "BS_OriFlaeche", "BS_bodenart", "BS_kulturart",
    "BS_zustandsstufeOderBodenstufe", "BS_entstehungsartOderKlimastufeWasserverhaeltnisse",
    "BS_bodenzahlOderGruenlandgrundzahl", "BS_ackerzahlOderGruenlandzahl", "BS_Ertragsmesszahl",
    "BS_GesamtErtragsmesszahl", "BS_AzMittel", "BS_sonstigeAngaben", "KL_bodenart",
    "KL_entstehungsartOderKlimastufeWasserverhaeltnisse", "KL_funktion", "KL_kulturart",
    "KL_vegetationsmerkmal", "KL_zustandsstufeOderBodenstufe", "INFO_BauRaumOderBodenordnungsrecht",
    "AlkisNAFlaechenDifferenz", "AlkisBSFlaechenDifferenz", "AlkisAmtlichFlaechenDifferenz",
};

namespace {

void Anhängen(std::string& liste, std::string_view wert, bool erster) {
    if (!erster)
        liste += "; ";
    liste += wert;
}

std::vector<std::string> Einträge(std::string_view liste) {
    std::vector<std::string> einträge;
    for (std::string_view e : Teilen(liste, ';'))
        einträge.emplace_back(TrimmeLeerzeichen(e));
    return einträge;
}

std::string Verbinden(const std::vector<std::string>& einträge) {
    std::string liste;
    for (std::size_t i = 0; i < einträge.size(); ++i)
        Anhängen(liste, einträge[i], i == 0);
    return liste;
}

double Summe(std::string_view liste) {
    double summe = 0;
    for (const std::string& e : Einträge(liste))
        summe += ZahlLesen(e);
    return summe;
}

/// Each entry of the list read as a number, multiplied and rounded to `stellen` places.
std::string Skaliert(std::string_view liste, double faktor, int stellen) {
    std::vector<std::string> einträge = Einträge(liste);
    for (std::string& e : einträge)
        e = ZahlGerundet(ZahlLesen(e) * faktor, stellen);
    return Verbinden(einträge);
}

std::string Ganz(double wert) { return std::to_string(std::llround(wert)); }

} // namespace

void Flächenwerte::Beginnen(double parcelFläche) {
    for (std::string& w : m_werte)
        w.clear();
    m_treffer = 0;
    m_bsGesamt = 0;
    m_emzGesamt = 0;
    m_azSumme = 0;
    m_azAnzahl = 0;
    (*this)[AlkisFlaeche] = Zahlmuster(parcelFläche, "0000000.00");
}

void Flächenwerte::Nutzung(const Nutzungswerte& werte, double a) {
    const bool erster = (*this)[AlkisNaFlaeche].empty() && (*this)[AlkisNA].empty();
    const std::string fläche = ZahlGerundet(a, 3);
    Anhängen((*this)[AlkisNA], std::string(werte.klasse) + " " + fläche, erster);
    Anhängen((*this)[AlkisOriNA], werte.schlüssel, erster);
    Anhängen((*this)[AlkisNaFlaeche], fläche, erster);
    Anhängen((*this)[AlkisOriNaFlaeche], fläche, erster);
    Anhängen((*this)[AlkisNaBeschreibung], werte.beschreibung, erster);
    Anhängen((*this)[KL_funktion], werte.funktion.value_or(""), erster);
    Anhängen((*this)[KL_vegetationsmerkmal], werte.vegetationsmerkmal.value_or(""), erster);
    ++m_treffer;
}

void Flächenwerte::Bodenschätzung(const Bodenwerte& w, double a) {
    const bool erster = m_azAnzahl == 0;
    const std::string fläche = Ganz(a);
    const long long emz = std::llround(a * ZahlLesen(w.ackerzahl) / 100.0);
    Anhängen((*this)[BS_Bodenschaetzung], w.kulturartText + " " + fläche, erster);
    Anhängen((*this)[BS_Flaeche], fläche, erster);
    Anhängen((*this)[BS_bodenzahlOderGruenlandgrundzahl], w.bodenzahl, erster);
    Anhängen((*this)[BS_ackerzahlOderGruenlandzahl], w.ackerzahl, erster);
    Anhängen((*this)[BS_Ertragsmesszahl], std::to_string(emz), erster);
    Anhängen((*this)[BS_bodenart], w.bodenartText, erster);
    Anhängen((*this)[BS_kulturart], w.kulturartText, erster);
    Anhängen((*this)[BS_zustandsstufeOderBodenstufe], w.zustandsstufeText, erster);
    Anhängen((*this)[BS_entstehungsartOderKlimastufeWasserverhaeltnisse], w.entstehungsartText, erster);
    Anhängen((*this)[BS_sonstigeAngaben], w.sonstigeText, erster);
    Anhängen((*this)[KL_bodenart], w.bodenart, erster);
    Anhängen((*this)[KL_kulturart], w.kulturart, erster);
    Anhängen((*this)[KL_zustandsstufeOderBodenstufe], w.zustandsstufe, erster);
    Anhängen((*this)[KL_entstehungsartOderKlimastufeWasserverhaeltnisse], w.entstehungsart, erster);
    m_bsGesamt += a;
    m_emzGesamt += emz;
    m_azSumme += ZahlLesen(w.ackerzahl);
    ++m_azAnzahl;
    (*this)[BS_GesamtFlaeche] = Ganz(m_bsGesamt);
    (*this)[BS_GesamtErtragsmesszahl] = std::to_string(m_emzGesamt);
    (*this)[BS_AzMittel] = Zahlmuster(m_azSumme / m_azAnzahl, "000");
    ++m_treffer;
}

void Flächenwerte::Sonderfläche(std::string_view bezeichnung, std::string_view artDerFestlegung) {
    (*this)[INFO_BauRaumOderBodenordnungsrecht] = std::string(bezeichnung) + "; " + std::string(artDerFestlegung);
    ++m_treffer;
}

void FlächenAnpassen(Flächenwerte& w, double amtlich) {
    const double alkis = ZahlLesen(w[AlkisFlaeche]);
    const double faktor = alkis != 0 ? amtlich / alkis : 0;
    if (!w[AlkisNaFlaeche].empty()) {
        w[AlkisNAFlaechenDifferenz] = Zahlmuster(alkis - Summe(w[AlkisOriNaFlaeche]), "0000000.00");
        w[AlkisNaFlaeche] = Skaliert(w[AlkisNaFlaeche], faktor, 1);
        const std::vector<std::string> flächen = Einträge(w[AlkisNaFlaeche]);
        std::vector<std::string> arten = Einträge(w[AlkisNA]);
        for (std::size_t i = 0; i < arten.size() && i < flächen.size(); ++i)
            arten[i] = arten[i].substr(0, arten[i].find(' ')) + " " + flächen[i];
        w[AlkisNA] = Verbinden(arten);
        const double prozent = amtlich != 0 ? (alkis - amtlich) / amtlich * 100.0 : 0;
        w[AlkisAmtlichFlaechenDifferenz] =
            Zahlmuster(alkis - amtlich, "00000") + "m² --> " + Zahlmuster(prozent, "0.0") + "%";
    } else {
        w[AlkisNaFlaeche].clear();
        w[AlkisNA].clear();
        w[AlkisNAFlaechenDifferenz] = OhneVerteilung;
        w[AlkisAmtlichFlaechenDifferenz] = OhneVerteilung;
    }
    if (!w[BS_Bodenschaetzung].empty()) {
        w[BS_OriFlaeche] = w[BS_Flaeche];
        w[AlkisBSFlaechenDifferenz] = Zahlmuster(alkis - Summe(w[BS_Flaeche]), "0000000.00");
        w[BS_Flaeche] = Skaliert(w[BS_Flaeche], faktor, 0);
        w[BS_Ertragsmesszahl] = Skaliert(w[BS_Ertragsmesszahl], faktor, 0);
        w[BS_GesamtFlaeche] = ZahlGerundet(ZahlLesen(w[BS_GesamtFlaeche]) * faktor, 0);
        w[BS_GesamtErtragsmesszahl] = ZahlGerundet(ZahlLesen(w[BS_GesamtErtragsmesszahl]) * faktor, 0);
    } else {
        for (Flächenspalte s : {BS_Flaeche, BS_Ertragsmesszahl, BS_GesamtFlaeche, BS_GesamtErtragsmesszahl, BS_OriFlaeche})
            w[s].clear();
        w[AlkisBSFlaechenDifferenz] = OhneVerteilung;
    }
}

} // namespace flurix::nas
