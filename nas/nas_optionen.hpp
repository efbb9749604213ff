#pragma once
// The options of the NAS work: the check boxes of the NAS dialog and window, kept in the settings
// as one text "#name,value#name,value" (value 1 on, anything else off).

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

    /// True when one of the area computations is asked for.
    bool Flächenberechnung() const {
        return mitNaBerechnung || quickNaBerechnung || quickBSBerechnung || quickLWBerechnung ||
               quickBROBBerechnung;
    }

    /// Reads the settings text; names it doesn't know are passed over, missing ones stay off.
    static NasOptionen AusText(std::string_view text);
};

} // namespace flurix::nas
