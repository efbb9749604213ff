#pragma once
// What the NAS XML tools share: the head of a file and the elements it leaves open, the target
// written under a temporary name, the output of features with their member tags, the identifier
// set, the running status, and the checks and questions before a tool starts. Internal to the tools
// (nas/xml_werkzeuge.hpp is their public face).

#include "core/zieldatei.hpp"
#include "core/fehler.hpp"

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {
struct XmlOptionen;
}

namespace flurix::nas::detail {

/// Follows every failure message of a tool.
inline constexpr std::string_view MeldungProgrammautor =
    "Bei weiteren Problemen kontaktieren Sie bitte den Programmautor!   ";

/// A tool's head is what stands before the first member; it is looked for in this many bytes.
inline constexpr std::size_t KopfSuchlänge = 1'000'000;

/// The head of a NAS file.
struct XmlKopf {
    std::string mitgliedTag; ///< "gml:featureMember" or "wfs:member"; "" when the head has neither
    std::string text;        ///< the bytes before the first member start tag
    std::string zeilenende;  ///< "\r\n" when the head has CR LF, else "\n"
};

/// Reads the first KopfSuchlänge bytes of a file: the member tag (the start tag
/// "<gml:featureMember>" before "<wfs:member>") and the head before it. Throws Fehler when the file
/// can't be read.
XmlKopf KopfLesen(const std::filesystem::path& datei);

/// The elements that `kopf` opens and does not close, outermost first. Declarations, comments,
/// processing instructions and empty elements open nothing; ">" inside a quoted attribute value
/// does not end a tag.
std::vector<std::string> OffeneElemente(std::string_view kopf);

/// The value of the first gml:id attribute of a feature's text; "" when it has none.
std::string_view GmlId(std::string_view objekt);

/// The first element name of a feature's text (its type, "AX_Flurstueck" or "adv:AX_Flurstueck");
/// comments and processing instructions before it are passed over. "" when there is none.
std::string_view Objektart(std::string_view objekt);

/// The object types a tool passes over.
class Typliste {
public:
    explicit Typliste(const std::vector<std::string>& namen);
    bool Leer() const { return m_namen.empty(); }
    /// True when the type or, for a prefixed type, its name behind the prefix is on the list.
    bool Enthält(std::string_view art) const;

private:
    struct Streuung {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };
    std::unordered_set<std::string, Streuung, std::equal_to<>> m_namen;
};

/// The set of identifiers seen: 128-bit hashes in one flat open-addressing table (see
/// nas/xml_werkzeuge.hpp for why).
class Kennungsmenge {
public:
    Kennungsmenge();
    /// True when the identifier was not in the set; it is in the set afterwards.
    bool Einfügen(std::string_view kennung);
    std::size_t Anzahl() const { return m_anzahl; }

private:
    struct Schlüssel {
        std::uint64_t a = 0;
        std::uint64_t b = 0;
    };
    bool Setzen(const Schlüssel& schlüssel);
    void Wachsen();

    std::vector<Schlüssel> m_tabelle;
    std::size_t m_anzahl = 0;
};

/// The XML target of merge, check and thinning: the head, then each feature in its member tags on a
/// line of its own with the indentation the input had before it, then the closing tags of the
/// elements the head left open, innermost first.
class XmlAusgabe {
public:
    XmlAusgabe(const std::filesystem::path& ziel, const XmlKopf& kopf);
    void Objekt(std::string_view einrückung, std::string_view text);
    /// A comment in place of a feature: "<!-- text -->".
    void Kommentar(std::string_view einrückung, std::string_view text);
    void Abschließen();

private:
    void Zeilenanfang(std::string_view einrückung);

    Zieldatei m_datei;
    std::string m_start; ///< "<" + member tag + ">"
    std::string m_ende;  ///< "</" + member tag + ">"
    std::string m_zeilenende;
    std::vector<std::string> m_offen;
    bool m_erstes = true;
};

/// The status of a running tool, its progress and the person's cancel, looked at every 100 ms
/// (a status update costs the window an event loop turn).
class Laufanzeige {
public:
    /// `text` makes the status text from the step (0, 1, 2, 3, 0, ... for the turning sign).
    Laufanzeige(Oberfläche& ui, std::uint64_t gesamt, std::function<std::string(int)> text);
    /// Per feature: `position` is the bytes read of all files. False when the person asked to stop.
    bool Weiter(std::uint64_t position);
    /// Shows the status now.
    void Zeigen(std::uint64_t position);

private:
    Oberfläche& m_ui;
    std::uint64_t m_gesamt;
    std::function<std::string(int)> m_text;
    std::chrono::steady_clock::time_point m_zuletzt;
    int m_schritt = 0;
};

/// The turning sign of a running tool's status: "--", "\", "|", "/".
std::string_view Drehzeichen(int schritt);

/// Reads the features of `datei` cut at `mitgliedTag`; `jeObjekt` gets each feature's text and the
/// indentation of its line. `basis` is added to the file's position for the progress. False when
/// the person stopped the run. Throws Fehler when the file ends inside a feature or a feature has
/// no end tag: the tools copy features whole or not at all.
bool ObjekteLesen(
    const std::filesystem::path& datei, const std::string& mitgliedTag, Laufanzeige& anzeige,
    std::uint64_t basis,
    const std::function<void(std::string_view objekt, std::string_view einrückung)>& jeObjekt);

/// Shows `text` and the line MeldungProgrammautor in a message box titled `titel`; the failed
/// result.
Ergebnis Fehlschlag(Oberfläche& ui, std::string_view titel, const std::string& text);

/// The failure of a tool after its target was begun: the cause and that the target was not made.
Ergebnis ZielNichtErstellt(Oberfläche& ui, std::string_view titel,
                           const std::filesystem::path& ziel, const std::exception& ursache);

/// The end of a tool that wrote its target: `status` in panel 1 (the message when empty), the
/// message box; the Ok result with the message.
Ergebnis Erledigt(Oberfläche& ui, std::string_view titel, const std::string& meldung,
                  const std::string& status = {});

/// The result of a run the person stopped.
Ergebnis Abgebrochen();

/// Checks that an input is there and can be opened for reading. The failed result (the message
/// shown) when it can't, nullopt when it can.
std::optional<Ergebnis> EingabePrüfen(Oberfläche& ui, std::string_view titel,
                                      const std::filesystem::path& datei);

/// Asks before an existing target is replaced (`frage` and `titel`; an unattended run answers with
/// `optionen.ersetzen`). True when there is no target or it may be replaced.
bool ZielFreigegeben(Oberfläche& ui, const std::filesystem::path& ziel, const XmlOptionen& optionen,
                     const std::string& frage, std::string_view titel);

/// The question of merge, check and thinning before an existing target is replaced.
std::string FrageErsetzen(const std::filesystem::path& ziel);

/// The target beside `datei`: its name without the extension + `anhang` ("_MERGE.xml").
std::filesystem::path ZielNeben(const std::filesystem::path& datei, std::string_view anhang);

} // namespace flurix::nas::detail
