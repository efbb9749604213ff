#pragma once
// The decimal separator check. The whole program parses and prints numbers with a point. On Windows
// the program moved the system's decimal separator while it ran; on Linux the same effect is had for
// the process: its numeric locale is set to "C" when the locale it started with writes a comma, and
// set back when the program ends. Numbers in files are read and written with from_chars/to_chars in
// any case, so the check decides only the flags and the messages.

#include <string>

namespace flurix {

class Einstellungen;
class Oberfläche;

/// The number conversion of the process (the "system's" conversion), as a port so tests can play a
/// comma system without touching the process's locale.
class Zahlenformat {
public:
    Zahlenformat() = default;
    Zahlenformat(const Zahlenformat&) = delete;
    Zahlenformat& operator=(const Zahlenformat&) = delete;
    Zahlenformat(Zahlenformat&&) = delete;
    Zahlenformat& operator=(Zahlenformat&&) = delete;
    virtual ~Zahlenformat() = default;

    /// The number 1.1 as the conversion writes it: "1.1" or "1,1".
    virtual std::string EinsKommaEins() const = 0;
    /// Sets the decimal and the thousands separator; true when that succeeded.
    virtual bool SeparatorenSetzen(char dezimal, char tausender) = 0;
};

/// The real one: the C library's numeric locale of this process (LC_NUMERIC). Setting "." selects
/// the "C" numeric locale; setting "," goes back to the locale the process had before.
class ProzessZahlenformat final : public Zahlenformat {
public:
    ProzessZahlenformat();
    std::string EinsKommaEins() const override;
    bool SeparatorenSetzen(char dezimal, char tausender) override;

private:
    std::string m_ursprung; ///< LC_NUMERIC at construction
};

/// State of the check, kept for the whole run.
struct NummernformatZustand {
    bool FormatGeprüft = false; ///< the first check has been made
    bool KommaGeändert = false; ///< the program moved comma to point and must move it back
};

inline constexpr const char* TitelDezimaltrennzeichen = "Ländereinstellung - Dezimaltrennzeichen";

/// The check, called at start-up and at the start of each NAS step, of the map's load and of the
/// DXF and GEOgraf exports. "PrüfeNummerFormat=nein" switches it off; the first call sets the point
/// when the conversion writes a comma; later calls do so again only with
/// "PrüfeNummerFormatBeiBenutzung=ja". "PrüfeNummerFormatMitMeldung=ja" tells the user each time.
void PrüfeNummerFormatAufruf(const Einstellungen& einstellungen, Zahlenformat& format,
                             NummernformatZustand& zustand, Oberfläche& ui);

/// At the end of the program: when the program moved the separator, it sets it back and, with
/// "PrüfeNummerFormatMitMeldung=ja", says so.
void NummerFormatZurücksetzen(const Einstellungen& einstellungen, Zahlenformat& format,
                              NummernformatZustand& zustand, Oberfläche& ui);

} // namespace flurix
