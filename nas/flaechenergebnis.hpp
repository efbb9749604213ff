#pragma once
// The result columns of the area computation for one parcel: the list columns that get one entry
// per intersected polygon (joined with "; ", all lists of a kind in step), the sums, and the fitting
// of the areas to the official area. Pure text work, no database: the walk fills them, the fitting
// reads them back from the parcel's row.

#include "core/text.hpp"
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace flurix::nas {

/// The columns of AX_Flurstueck the computation writes, in their order.
enum class Flächenspalte {
    AlkisFlaeche, AlkisNA, AlkisOriNA, AlkisNaFlaeche, AlkisNaBeschreibung, AlkisOriNaFlaeche,
    BS_Bodenschaetzung, BS_Flaeche, BS_GesamtFlaeche, BS_OriFlaeche, BS_bodenart, BS_kulturart,
    BS_zustandsstufeOderBodenstufe, BS_entstehungsartOderKlimastufeWasserverhaeltnisse,
    BS_bodenzahlOderGruenlandgrundzahl, BS_ackerzahlOderGruenlandzahl, BS_Ertragsmesszahl,
    BS_GesamtErtragsmesszahl, BS_AzMittel, BS_sonstigeAngaben, KL_bodenart,
    KL_entstehungsartOderKlimastufeWasserverhaeltnisse, KL_funktion, KL_kulturart,
    KL_vegetationsmerkmal, KL_zustandsstufeOderBodenstufe, INFO_BauRaumOderBodenordnungsrecht,
    AlkisNAFlaechenDifferenz, AlkisBSFlaechenDifferenz, AlkisAmtlichFlaechenDifferenz,
};
inline constexpr std::size_t FlächenspaltenAnzahl = 30;

/// The column names, indexed by Flächenspalte.
extern const std::array<std::string_view, FlächenspaltenAnzahl> FlächenspaltenNamen;

/// The text written when a parcel has no area of a kind to distribute.
inline constexpr char OhneVerteilung[] = "ohne Verteilung (Fläche = 0)";

/// One soil-assessment polygon as the lists take it: the codes and their texts.
struct Bodenwerte {
    std::string kulturart, bodenart, zustandsstufe, entstehungsart, sonstigeAngaben; ///< codes
    std::string kulturartText, bodenartText, zustandsstufeText, entstehungsartText, sonstigeText;
    std::string bodenzahl, ackerzahl; ///< as the data give them
};

/// One land-use polygon as the lists take it.
struct Nutzungswerte {
    std::string_view klasse;      ///< the class table ("AX_Wald")
    std::string beschreibung;     ///< the text of its code ("Laubholz")
    std::string schlüssel;        ///< its key of the land-use catalogue
    std::optional<std::string> funktion, vegetationsmerkmal; ///< where the table has them
};

/// The column values of one parcel.
class Flächenwerte {
public:
    std::string& operator[](Flächenspalte s) { return m_werte[static_cast<std::size_t>(s)]; }
    const std::string& operator[](Flächenspalte s) const { return m_werte[static_cast<std::size_t>(s)]; }

    /// All columns emptied, AlkisFlaeche set to the computed area ("0000000.00").
    void Beginnen(double parcelFläche);

    /// An intersected land-use polygon of area `a` (m², three decimals).
    void Nutzung(const Nutzungswerte& werte, double a);
    /// An intersected soil-assessment polygon: the entry and the area and yield sums.
    void Bodenschätzung(const Bodenwerte& werte, double a);
    /// A public-law area: only its description, the area does not count.
    void Sonderfläche(std::string_view bezeichnung, std::string_view artDerFestlegung);

    bool HatTreffer() const { return m_treffer > 0; }

private:
    std::array<std::string, FlächenspaltenAnzahl> m_werte;
    int m_treffer = 0;
    double m_bsGesamt = 0;
    long long m_emzGesamt = 0;
    double m_azSumme = 0;
    int m_azAnzahl = 0;
};

/// Fits the areas of a parcel to its official area `amtlich`: with the factor amtlich / computed
/// area, each land-use area (one place) and each soil area and yield (whole numbers) are scaled,
/// the differences written; a kind without entries gets OhneVerteilung.
void FlächenAnpassen(Flächenwerte& werte, double amtlich);

using flurix::Zahlmuster;

using flurix::Gerundet;
using flurix::ZahlGerundet;

} // namespace flurix::nas
