#include "import/textvorbereitung.hpp"

#include "core/dateikanal.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace flurix::import {

namespace fs = std::filesystem;

namespace {

/// The temporary file "<name>#" of a conversion. It is deleted again unless it took the place of
/// the source, so that an error never leaves it behind and the source is replaced only by a
/// complete result.
class Zwischendatei {
public:
    explicit Zwischendatei(const fs::path& pfad)
        : m_pfad(pfad), m_kanal(pfad, Dateikanal::Zweck::Schreiben) {}
    Zwischendatei(const Zwischendatei&) = delete;
    Zwischendatei& operator=(const Zwischendatei&) = delete;
    Zwischendatei(Zwischendatei&&) = delete;
    Zwischendatei& operator=(Zwischendatei&&) = delete;
    ~Zwischendatei() { Verwerfen(); }

    /// Deletes the file, unless it has taken the place of the source. Never throws.
    void Verwerfen() {
        if (!m_erledigt) {
            std::error_code ec;
            fs::remove(m_pfad, ec);
            m_erledigt = true;
        }
    }

    void Schreiben(const char* daten, std::size_t n) { m_kanal.Schreiben(daten, n); }

    /// The complete file takes the place of `quelle`, keeping its permissions. rename() replaces
    /// in one step: the source is either the old file or the whole new one.
    void Ersetzt(const fs::path& quelle) {
        m_kanal.Schließen();
        std::error_code ec;
        const auto rechte = fs::status(quelle, ec).permissions();
        if (!ec)
            fs::permissions(m_pfad, rechte, ec);
        if (::rename(m_pfad.c_str(), quelle.c_str()) != 0)
            DateiFehler(quelle, "ersetzt", errno);
        m_erledigt = true;
    }

private:
    fs::path m_pfad;
    Dateikanal m_kanal;
    bool m_erledigt = false;
};

// --- The line-end converters ---------------------------------------------------------------

/// Input converted at a time: the output buffer stays a fixed size beside the block.
constexpr std::size_t Teilstück = std::size_t{1} << 18;
constexpr std::size_t AnsiStatusSchritt = 10'000'000;

enum class Umwandlung { UnixPrüfung, GemischteZeilenenden };

/// Characters of a path: the bytes that don't continue a UTF-8 sequence.
std::size_t Zeichenzahl(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::string Megabyte(std::uintmax_t bytes) { return std::to_string(bytes / 1'000'000); }

/// The block loop both converters share. False when nothing was done (path too long) or, for the
/// UNIX check, when the file has CR LF.
bool ZeilenendenUmwandeln(const fs::path& pfad, bool ersetzen, Oberfläche& ui, Umwandlung art) {
    // The Windows program also lower-cased the path here. Linux file names are case-sensitive:
    // the lower-cased name would name another file, so the path stays as given.
    if (Zeichenzahl(pfad.string()) > LängsterPfad)
        return false;
    const bool unixPrüfung = art == Umwandlung::UnixPrüfung;

    fs::path zwischenpfad = pfad;
    zwischenpfad += "#";
    std::error_code ec;
    // A leftover of an earlier run is deleted, not overwritten: were it a link, the writes would
    // go into the file it points to.
    fs::remove(zwischenpfad, ec);

    Dateikanal quelle(pfad, Dateikanal::Zweck::Lesen);
    Zwischendatei ziel(zwischenpfad);
    const auto block = std::make_unique_for_overwrite<char[]>(UmwandlungsBlock);
    const auto aus =
        std::make_unique_for_overwrite<char[]>(detail::Zeilenendwandler::AusgabeFür(Teilstück));
    detail::Zeilenendwandler wandler(!unixPrüfung);
    bool crDavor = false;
    std::uintmax_t erledigt = 0;

    while (const std::size_t n = quelle.Lesen(block.get(), UmwandlungsBlock)) {
        const std::string_view stück(block.get(), n);
        if (unixPrüfung) {
            ui.Status(3, Megabyte(erledigt) + " Mbyte UNIX-Prüfung  ");
            // One CR LF proves a PC file; in practice the first block shows it, so the check
            // costs next to nothing for files that need no conversion.
            if (detail::HatCrLf(stück, crDavor)) {
                ziel.Verwerfen();
                ui.Status(3, "UNIX-Prüfung ohne Fehler  ");
                return false;
            }
            crDavor = stück.back() == '\r';
        } else if (erledigt % AnsiStatusSchritt == 0) {
            ui.Status(3, Megabyte(erledigt) + " Mbyte, ANSI-Unix nach Ansi-PC...");
        }
        for (std::size_t von = 0; von < n; von += Teilstück)
            ziel.Schreiben(aus.get(), wandler.Umwandeln(stück.substr(von, Teilstück), aus.get()));
        erledigt += n;
    }
    ziel.Schreiben(aus.get(), wandler.Abschließen(aus.get()));
    if (ersetzen)
        ziel.Ersetzt(pfad);
    return true;
}

/// The first `zeichen` in [von, ende), or `ende`.
const char* Suche(const char* von, const char* ende, char zeichen) {
    const void* fund = std::memchr(von, zeichen, static_cast<std::size_t>(ende - von));
    return fund ? static_cast<const char*>(fund) : ende;
}

// --- Line counts -----------------------------------------------------------------------------

constexpr long long FortschrittZeilen = 1'000'000;

/// Bytes that leave a last piece without CR blank. The LF of a final CR LF and the end-of-file
/// mark 26 are among them, so that neither makes a line of its own.
bool IstLeer(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\x1A';
}

/// The count of ZeilenZählen; with `ui` also the progress text at each 1,000,000th line.
long long CrZeilenZählen(const fs::path& pfad, Oberfläche* ui) {
    Dateikanal datei(pfad, Dateikanal::Zweck::Lesen);
    std::array<char, ZählBlock> puffer;
    long long zeilen = 0;
    bool letzteZeileGefüllt = false; // a byte that isn't blank stands after the last CR
    while (const std::size_t n = datei.Lesen(puffer.data(), puffer.size())) {
        const char* anfang = puffer.data();
        const char* const ende = anfang + n;
        // memchr skips a line at a time, several times as fast as a comparison of each byte
        long long neu = 0;
        for (const char* cr = Suche(anfang, ende, '\r'); cr != ende; cr = Suche(anfang, ende, '\r')) {
            ++neu;
            anfang = cr + 1;
        }
        if (neu > 0)
            letzteZeileGefüllt = false;
        if (!letzteZeileGefüllt)
            letzteZeileGefüllt = std::find_if_not(anfang, ende, IstLeer) != ende;
        if (ui != nullptr) {
            for (long long marke = (zeilen / FortschrittZeilen + 1) * FortschrittZeilen;
                 marke <= zeilen + neu; marke += FortschrittZeilen)
                ui->Status(3, std::to_string(marke) + " Zeilen vorgeprüft...");
        }
        zeilen += neu;
    }
    return zeilen + (letzteZeileGefüllt ? 1 : 0);
}

// --- Character correction --------------------------------------------------------------------

constexpr char Entfernt = '\x1A'; // the old end-of-file mark some extracts carry

constexpr std::array<char, 256> KorrekturTabelle = [] {
    std::array<char, 256> tabelle{};
    for (std::size_t b = 0; b < tabelle.size(); ++b)
        tabelle[b] = static_cast<char>(b);
    // Code pages 437/850 first, then the national variant of ISO 646; the targets are
    // Windows-1252 (Ä 0xC4, Ü 0xDC, Ö 0xD6, ä 0xE4, ü 0xFC, ö 0xF6, ß 0xDF). No target is the
    // source of a later pair, so one table gives the same as the replacements one after another.
    // 225 is "á" in Windows-1252 and still becomes ß: the register systems meant ß by it.
    constexpr std::pair<unsigned char, unsigned char> paare[] = {
        {142, 0xC4}, {154, 0xDC}, {153, 0xD6}, {132, 0xE4}, {129, 0xFC}, {148, 0xF6},
        {225, 0xDF}, {'{', 0xE4}, {'|', 0xF6}, {'}', 0xFC}, {'~', 0xDF},
    };
    for (const auto& [alt, neu] : paare)
        tabelle[alt] = static_cast<char>(neu);
    return tabelle;
}();

} // namespace

// --- detail::Zeilenendwandler ------------------------------------------------------------------
// Each replacement is a small state machine fed byte by byte from the one before, so the result is
// that of the replacements on the whole input, wherever the pieces are cut. Only CR, LF and the
// first ordinary byte after them go through the machines; an ordinary byte leaves all of them
// empty, so the rest of a run of ordinary bytes is copied as it is.

namespace detail {

void Zeilenendwandler::CrCrZusammenfassen(char c, char*& aus) {
    if (m_crGehalten) {
        *aus++ = '\r';
        m_crGehalten = false;
        if (c == '\r')
            return; // CR CR became CR; the search goes on behind the pair
    }
    if (c == '\r')
        m_crGehalten = true;
    else
        *aus++ = c;
}

void Zeilenendwandler::LfCrLfZusammenfassen(char c, char*& aus) {
    if (!m_mitLfCrLf) {
        CrCrZusammenfassen(c, aus);
        return;
    }
    switch (m_lfCrLfStand) {
    case 1: // "LF" held
        if (c == '\r') {
            m_lfCrLfStand = 2;
            return;
        }
        CrCrZusammenfassen('\n', aus);
        m_lfCrLfStand = 0;
        break; // a new LF may start the pattern again: it is held below
    case 2: // "LF CR" held
        m_lfCrLfStand = 0;
        if (c == '\n') { // LF CR LF becomes CR LF
            CrCrZusammenfassen('\r', aus);
            CrCrZusammenfassen('\n', aus);
            return;
        }
        CrCrZusammenfassen('\n', aus);
        CrCrZusammenfassen('\r', aus);
        break;
    default:
        break;
    }
    if (c == '\n')
        m_lfCrLfStand = 1;
    else
        CrCrZusammenfassen(c, aus);
}

void Zeilenendwandler::LfNachCrLf(char c, char*& aus) {
    if (c == '\n')
        LfCrLfZusammenfassen('\r', aus);
    LfCrLfZusammenfassen(c, aus);
}

std::size_t Zeilenendwandler::Umwandeln(std::string_view stück, char* aus) {
    char* const anfang = aus;
    const char* p = stück.data();
    const char* const ende = p + stück.size();
    // Next CR and next LF, each looked for again only once passed: a file of LF lines costs one
    // fruitless search for CR per piece and one search for LF per line.
    const char* cr = Suche(p, ende, '\r');
    const char* lf = Suche(p, ende, '\n');
    while (p < ende) {
        const char* const sonder = std::min(cr, lf);
        if (sonder > p) {
            LfNachCrLf(*p, aus); // releases what the replacements held back
            const auto lauf = static_cast<std::size_t>(sonder - p - 1);
            std::memcpy(aus, p + 1, lauf);
            aus += lauf;
            p = sonder;
            if (p == ende)
                break;
        }
        LfNachCrLf(*p++, aus);
        if (cr < p)
            cr = Suche(p, ende, '\r');
        if (lf < p)
            lf = Suche(p, ende, '\n');
    }
    return static_cast<std::size_t>(aus - anfang);
}

std::size_t Zeilenendwandler::Abschließen(char* aus) {
    char* const anfang = aus;
    if (m_lfCrLfStand >= 1)
        CrCrZusammenfassen('\n', aus);
    if (m_lfCrLfStand == 2)
        CrCrZusammenfassen('\r', aus);
    m_lfCrLfStand = 0;
    if (m_crGehalten)
        *aus++ = '\r';
    m_crGehalten = false;
    return static_cast<std::size_t>(aus - anfang);
}

bool HatCrLf(std::string_view stück, bool crDavor) {
    if (stück.empty())
        return false;
    if (crDavor && stück.front() == '\n')
        return true;
    const char* const ende = stück.data() + stück.size();
    for (const char* p = Suche(stück.data(), ende, '\r'); p != ende; p = Suche(p, ende, '\r')) {
        if (++p == ende)
            return false;
        if (*p == '\n')
            return true;
    }
    return false;
}

} // namespace detail

// --- Public functions --------------------------------------------------------------------------

bool UnixToPcDatei(const fs::path& pfad, bool ersetzen, Oberfläche& ui) {
    return ZeilenendenUmwandeln(pfad, ersetzen, ui, Umwandlung::UnixPrüfung);
}

bool AnsiUnixToAnsiPc(const fs::path& pfad, bool ersetzen, Oberfläche& ui) {
    return ZeilenendenUmwandeln(pfad, ersetzen, ui, Umwandlung::GemischteZeilenenden);
}

long long AnsiUnixToAnsiPcString(const fs::path& pfad, Oberfläche& ui) {
    return CrZeilenZählen(pfad, &ui);
}

long long ZeilenZählen(const fs::path& pfad) { return CrZeilenZählen(pfad, nullptr); }

void ZeichenKorrektur(std::string& zeile) {
    char* const daten = zeile.data();
    const std::size_t n = zeile.size();
    if (std::memchr(daten, Entfernt, n) == nullptr) {
        for (std::size_t i = 0; i < n; ++i)
            daten[i] = KorrekturTabelle[static_cast<unsigned char>(daten[i])];
        return;
    }
    std::size_t j = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (daten[i] != Entfernt)
            daten[j++] = KorrekturTabelle[static_cast<unsigned char>(daten[i])];
    }
    zeile.resize(j);
}

bool IstInText(std::string_view text, std::string_view liste) {
    const auto stücke = Teilen(liste, ',');
    return std::any_of(stücke.begin(), stücke.end(), [text](std::string_view stück) {
        return !stück.empty() && text.find(stück) != std::string_view::npos;
    });
}

} // namespace flurix::import
