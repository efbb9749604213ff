#pragma once
// The options of the NAS work: the check boxes of the NAS dialog and window, kept in the user's
// settings as one text "#name,value#name,value" (value 1 on, anything else off).

#include <span>
#include <string>
#include <string_view>

namespace flurix::nas {

struct NasOptionen {
    bool mitNaBerechnung = false;         ///< chkMitNaBerechnung: land use, soil and BOV areas
    bool quickNaBerechnung = false;       ///< chkQuickNaBerechnung
    bool quickBSBerechnung = false;       ///< chkQuickBSBerechnung
    bool quickLWBerechnung = false;       ///< chkQuickLWBerechnung
    bool quickBROBBerechnung = false;     ///< chkQuickBROBBerechnung
    bool mitFlächenAnpassung = false;     ///< chkMitFlächenAnpassung
    bool svgLöschen = false;              ///< chkSVGlöschen
    bool protokollNichtSchreiben = false; ///< chkWriteAlkisProtokolldatei ("nicht schreiben")
    bool nutzungOhneAx = false;           ///< chkNutzung_tatsächlich: use text without "AX-Nutzung"
    bool mehrereAnschriften = false;      ///< chkAlkisAnschrift
    bool suchbegriffGemarkung = false;    ///< chkFlurixSuchbegriffGemarkung
    bool sqlAbfrage = false;              ///< chkSQLAbfrage: the SQL query opens after a file is opened
    bool sqlMeridianKZ = false;           ///< chkSQLMeridianKZ: coordinates with the full zone number
    bool ggMitSchraffur = false;          ///< chkSQLGGmitSchraffur: GEOgraf output hatches buildings
    bool dxfMitSchraffur = false;         ///< chkALKISDXFmitSchraffur
    bool dxfMitPunktbeschriftung = false; ///< chkALKISDXFmitPunktbeschriftung
    bool dxfMitSachdaten = false;         ///< chkALKISDXFmitSachdaten
    bool dxfMitCalibri = false;           ///< chkALKISDXFmitCalibri: DXF texts in "Calibri"

    /// True when one of the area computations is asked for.
    bool Flächenberechnung() const {
        return mitNaBerechnung || quickNaBerechnung || quickBSBerechnung || quickLWBerechnung ||
               quickBROBBerechnung;
    }

    /// Reads the settings text; names it doesn't know are passed over, missing ones stay off.
    static NasOptionen AusText(std::string_view text);
    /// The settings text of all options, in the order of Felder(): "#name,0#name,1...".
    std::string AlsText() const;

    /// The dependent boxes behave as radio buttons: switching a "nur ..." box on switches the
    /// others off; switching the area computation off switches them all off (they are enabled only
    /// with it). Any other field is simply set.
    void Setzen(bool NasOptionen::*feld, bool an);
    /// True for the boxes that are enabled only while the area computation is on.
    static bool HängtAnFlächenberechnung(bool NasOptionen::*feld);

    /// Caption of the dialog's start button: "Import direkt in den Flurix", with the area
    /// computation "... mit Flächenanpassung an BF" or "... ohne Flächenanpassung an BF".
    std::string StartKnopfText() const;
};

/// One check box: the name it is kept under, its caption, the field it sets.
struct NasOptionsfeld {
    std::string_view name;
    std::string_view beschriftung;
    bool NasOptionen::*feld;
};

/// Every option in the order of the settings text and of the dialog.
std::span<const NasOptionsfeld> NasOptionsfelder();

/// Where the window keeps the options text: application, section, key of the user's settings.
inline constexpr char NasOptionenAnwendung[] = "MyApplication";
inline constexpr char NasOptionenAbschnitt[] = "FormALKIS";
inline constexpr char NasOptionenSchlüssel[] = "Optionen";

} // namespace flurix::nas
