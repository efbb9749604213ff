#include "core/tabellendatei.hpp"

#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"
#include "core/verschleiern.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstring>
#include <system_error>

namespace flurix {
namespace {

constexpr std::string_view Kennung = "FLURIX-TABELLE";
constexpr std::string_view Version = "1";
constexpr std::size_t ZählerStellen = 20; // digits of the largest 64-bit count
constexpr std::size_t Schreibpuffer = std::size_t{1} << 20;
constexpr std::size_t Lesestück = std::size_t{1} << 20;
// wfs.key lives in a hidden grid: the width only completes the file.
constexpr int SchlüsselBreite = 1000;

std::string Genannt(const std::filesystem::path& datei) { return "\"" + datei.string() + "\""; }

// Text taken from a file for a message, cut short: a hostile file must not make a message of
// megabytes.
std::string Ausschnitt(std::string_view text) {
    constexpr std::size_t höchstens = 40;
    return text.size() <= höchstens ? std::string(text)
                                    : std::string(text.substr(0, höchstens)) + "...";
}

template <class Zahl> std::optional<Zahl> GanzeZahl(std::string_view text) {
    Zahl wert{};
    const auto [ende, ec] = std::from_chars(text.data(), text.data() + text.size(), wert);
    if (ec != std::errc{} || ende != text.data() + text.size())
        return std::nullopt;
    return wert;
}

// Length of the valid UTF-8 sequence that starts at s[0], 0 when none does (overlong forms,
// surrogates and code points beyond U+10FFFF are not valid).
std::size_t Utf8Länge(const unsigned char* s, std::size_t rest) {
    struct Folge {
        std::size_t länge;
        unsigned char min, max; // range of the second byte
    };
    const unsigned char c = s[0];
    const Folge f = c < 0xC2    ? Folge{0, 0, 0}
                    : c <= 0xDF ? Folge{2, 0x80, 0xBF}
                    : c == 0xE0 ? Folge{3, 0xA0, 0xBF}
                    : c == 0xED ? Folge{3, 0x80, 0x9F}
                    : c <= 0xEF ? Folge{3, 0x80, 0xBF}
                    : c == 0xF0 ? Folge{4, 0x90, 0xBF}
                    : c <= 0xF3 ? Folge{4, 0x80, 0xBF}
                    : c == 0xF4 ? Folge{4, 0x80, 0x8F}
                                : Folge{0, 0, 0};
    if (f.länge == 0 || rest < f.länge || s[1] < f.min || s[1] > f.max)
        return 0;
    for (std::size_t i = 2; i < f.länge; ++i)
        if ((s[i] & 0xC0) != 0x80)
            return 0;
    return f.länge;
}

// The letter behind the backslash for each ASCII byte that is escaped; 0 where the byte stands as
// it is.
constexpr std::array<char, 128> Ersatzzeichen = [] {
    std::array<char, 128> tafel{};
    tafel['\\'] = '\\';
    tafel['\t'] = 't';
    tafel['\n'] = 'n';
    tafel['\r'] = 'r';
    tafel[0] = '0';
    return tafel;
}();

constexpr std::string_view HexZiffern = "0123456789ABCDEF";

// Appends the escaped form of one field to `aus`. Runs of plain bytes are copied in one piece.
void FeldMaskieren(std::string_view feld, std::string& aus) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(feld.data());
    const std::size_t n = feld.size();
    std::size_t frei = 0; // start of the run not yet copied
    std::size_t i = 0;
    while (i < n) {
        const unsigned char c = bytes[i];
        if (c < 0x80 && Ersatzzeichen[c] == 0) {
            ++i;
            continue;
        }
        std::size_t länge = 0;
        if (c >= 0x80 && (länge = Utf8Länge(bytes + i, n - i)) != 0) {
            i += länge;
            continue;
        }
        aus.append(feld.data() + frei, i - frei);
        aus += '\\';
        if (c < 0x80) {
            aus += Ersatzzeichen[c];
        } else {
            aus += 'x';
            aus += HexZiffern[c >> 4];
            aus += HexZiffern[c & 0x0F];
        }
        frei = ++i;
    }
    aus.append(feld.data() + frei, n - frei);
}

int HexWert(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// Unescapes one field into `ziel`. Returns npos, or the place of a backslash that starts no valid
// escape.
std::size_t FeldDemaskieren(std::string_view roh, std::string& ziel) {
    ziel.clear();
    std::size_t frei = 0;
    for (auto bs = roh.find('\\'); bs != std::string_view::npos; bs = roh.find('\\', frei)) {
        ziel.append(roh.data() + frei, bs - frei);
        if (bs + 1 >= roh.size())
            return bs;
        frei = bs + 2;
        switch (roh[bs + 1]) {
        case '\\': ziel += '\\'; break;
        case 't': ziel += '\t'; break;
        case 'n': ziel += '\n'; break;
        case 'r': ziel += '\r'; break;
        case '0': ziel += '\0'; break;
        case 'x': {
            const int hoch = bs + 2 < roh.size() ? HexWert(roh[bs + 2]) : -1;
            const int tief = bs + 3 < roh.size() ? HexWert(roh[bs + 3]) : -1;
            if (hoch < 0 || tief < 0)
                return bs;
            ziel += static_cast<char>(hoch * 16 + tief);
            frei = bs + 4;
            break;
        }
        default: return bs;
        }
    }
    ziel.append(roh.data() + frei, roh.size() - frei);
    return std::string_view::npos;
}

// A name beside the target, unique within the process and hidden from file dialogs.
std::filesystem::path TempPfad(const std::filesystem::path& ziel) {
    static std::atomic<unsigned> zähler{0};
    const auto takt = std::chrono::steady_clock::now().time_since_epoch().count();
    return ziel.parent_path() / ("." + ziel.filename().string() + "." + std::to_string(takt) + "-" +
                                 std::to_string(zähler++) + ".tmp");
}

} // namespace

Tabellenformat TabellenformatAusEndung(const std::filesystem::path& datei) {
    const std::string endung = Kleinbuchstaben(datei.extension().string());
    if (endung == ".fil")
        return Tabellenformat::Fil;
    if (endung == ".tsv")
        return Tabellenformat::Tsv;
    throw Fehler("Die Tabellendatei " + Genannt(datei) +
                 " hat ein unbekanntes Format: erwartet wird die Endung \".fil\" oder \".tsv\"!");
}

// ---------------------------------------------------------------------------------------- writer

TabellendateiSchreiber::TabellendateiSchreiber(std::filesystem::path datei,
                                               std::span<const TabellenSpalte> spalten)
    : TabellendateiSchreiber(datei, spalten, TabellenformatAusEndung(datei)) {}

TabellendateiSchreiber::TabellendateiSchreiber(std::filesystem::path datei,
                                               std::span<const TabellenSpalte> spalten,
                                               Tabellenformat format)
    : m_ziel(std::move(datei)), m_temp(TempPfad(m_ziel)), m_format(format),
      m_spaltenzahl(spalten.size()) {
    if (format == Tabellenformat::Tsv && spalten.size() == 1 && spalten.front().schlüssel.empty())
        throw Fehler("Die Tabellendatei " + Genannt(m_ziel) +
                     " kann keine einzelne Spalte ohne Schlüssel halten!");
    m_puffer.reserve(Schreibpuffer + Schreibpuffer / 8);
    if (format == Tabellenformat::Fil) {
        m_puffer.append(Kennung).append("\t").append(Version).append("\n");
        m_puffer.append("spalten\t").append(std::to_string(spalten.size())).append("\n");
        for (const auto& spalte : spalten) {
            FeldMaskieren(spalte.schlüssel, m_puffer);
            m_puffer += '\t';
            FeldMaskieren(spalte.überschrift, m_puffer);
            m_puffer.append("\t").append(std::to_string(spalte.breite));
            m_puffer.append(spalte.sichtbar ? "\t1\t" : "\t0\t");
            m_puffer.append(std::to_string(spalte.position)).append("\n");
        }
        m_puffer.append("zeilen\t");
        // Nothing is written before the header is complete, so the place in the buffer is the
        // place in the file.
        m_zählerStelle = static_cast<long>(m_puffer.size());
        m_puffer.append(ZählerStellen, '0').append("\n");
    } else {
        for (std::size_t i = 0; i < spalten.size(); ++i) {
            if (i > 0)
                m_puffer += '\t';
            FeldMaskieren(spalten[i].schlüssel, m_puffer);
        }
        m_puffer += '\n';
    }
    m_datei.reset(std::fopen(m_temp.c_str(), "wb"));
    if (!m_datei)
        throw Fehler("Die Tabellendatei " + Genannt(m_ziel) + " kann nicht angelegt werden!");
}

TabellendateiSchreiber::~TabellendateiSchreiber() {
    m_datei.reset();
    if (!m_abgeschlossen) {
        std::error_code ec;
        std::filesystem::remove(m_temp, ec);
    }
}

void TabellendateiSchreiber::SchreibFehler() const {
    throw Fehler("Die Tabellendatei " + Genannt(m_ziel) + " kann nicht geschrieben werden!");
}

void TabellendateiSchreiber::PufferSchreiben() {
    if (!m_puffer.empty() &&
        std::fwrite(m_puffer.data(), 1, m_puffer.size(), m_datei.get()) != m_puffer.size())
        SchreibFehler();
    m_puffer.clear();
}

template <class Zelle> void TabellendateiSchreiber::ZeileSchreiben(std::span<const Zelle> zellen) {
    if (!m_datei)
        throw Fehler("Die Tabellendatei " + Genannt(m_ziel) + " ist bereits abgeschlossen!");
    if (zellen.size() != m_spaltenzahl)
        throw Fehler("Die Tabellendatei " + Genannt(m_ziel) + " hat " +
                     std::to_string(m_spaltenzahl) + " Spalten, die Zeile " +
                     std::to_string(m_zeilen + 1) + " aber " + std::to_string(zellen.size()) +
                     " Zellen!");
    for (std::size_t i = 0; i < zellen.size(); ++i) {
        if (i > 0)
            m_puffer += '\t';
        FeldMaskieren(zellen[i], m_puffer);
    }
    m_puffer += '\n';
    ++m_zeilen;
    if (m_puffer.size() >= Schreibpuffer)
        PufferSchreiben();
}

void TabellendateiSchreiber::Zeile(std::span<const std::string_view> zellen) {
    ZeileSchreiben(zellen);
}
void TabellendateiSchreiber::Zeile(std::span<const std::string> zellen) { ZeileSchreiben(zellen); }

void TabellendateiSchreiber::Abschließen() {
    if (m_abgeschlossen)
        return;
    if (!m_datei)
        SchreibFehler(); // an earlier Abschließen() failed half-way
    PufferSchreiben();
    if (m_format == Tabellenformat::Fil) {
        std::array<char, ZählerStellen> ziffern{};
        const auto [ende, ec] =
            std::to_chars(ziffern.data(), ziffern.data() + ziffern.size(), m_zeilen);
        std::array<char, ZählerStellen> zähler{};
        zähler.fill('0');
        std::copy(ziffern.data(), ende, zähler.end() - (ende - ziffern.data()));
        if (ec != std::errc{} || std::fseek(m_datei.get(), m_zählerStelle, SEEK_SET) != 0 ||
            std::fwrite(zähler.data(), 1, zähler.size(), m_datei.get()) != zähler.size())
            SchreibFehler();
    }
    // fclose flushes: its result is the last word on whether the bytes reached the file.
    if (std::fclose(m_datei.release()) != 0)
        SchreibFehler();
    std::error_code ec;
    std::filesystem::rename(m_temp, m_ziel, ec);
    if (ec)
        SchreibFehler();
    m_abgeschlossen = true;
}

// ---------------------------------------------------------------------------------------- reader

TabellendateiLeser::TabellendateiLeser(const std::filesystem::path& datei)
    : TabellendateiLeser(datei, TabellenformatAusEndung(datei)) {}

TabellendateiLeser::TabellendateiLeser(const std::filesystem::path& datei, Tabellenformat format)
    : m_pfad(datei), m_format(format), m_puffer(Lesestück) {
    m_datei.reset(std::fopen(datei.c_str(), "rb"));
    if (!m_datei)
        throw Fehler("Die Tabellendatei " + Genannt(m_pfad) + " kann nicht geöffnet werden!");
    if (format == Tabellenformat::Fil)
        FilKopfLesen();
    else
        TsvKopfLesen();
    m_zellen.resize(m_spalten.size());
}

void TabellendateiLeser::Fehlerhaft(std::string_view was) const {
    throw Fehler("Fehler in der Tabellendatei " + Genannt(m_pfad) + ", Zeile " +
                 std::to_string(m_zeilenNr) + ": " + std::string(was) + "!");
}

bool TabellendateiLeser::ZeileHolen(std::string_view& zeile, bool& mitZeilenende) {
    std::size_t gesucht = m_anfang; // the bytes before this hold no LF
    for (;;) {
        if (gesucht < m_füllung) {
            const void* lf = std::memchr(m_puffer.data() + gesucht, '\n', m_füllung - gesucht);
            if (lf != nullptr) {
                const auto ende =
                    static_cast<std::size_t>(static_cast<const char*>(lf) - m_puffer.data());
                zeile = {m_puffer.data() + m_anfang, ende - m_anfang};
                m_anfang = ende + 1;
                mitZeilenende = true;
                ++m_zeilenNr;
                return true;
            }
        }
        if (m_dateiende) {
            if (m_anfang == m_füllung)
                return false;
            zeile = {m_puffer.data() + m_anfang, m_füllung - m_anfang};
            m_anfang = m_füllung;
            mitZeilenende = false;
            ++m_zeilenNr;
            return true;
        }
        // Keep the unread rest, move it to the front, grow only when one line fills the buffer.
        gesucht = m_füllung - m_anfang;
        if (m_anfang > 0) {
            std::memmove(m_puffer.data(), m_puffer.data() + m_anfang, gesucht);
            m_füllung = gesucht;
            m_anfang = 0;
        }
        if (m_füllung == m_puffer.size())
            m_puffer.resize(m_puffer.size() * 2);
        const std::size_t gelesen =
            std::fread(m_puffer.data() + m_füllung, 1, m_puffer.size() - m_füllung, m_datei.get());
        m_füllung += gelesen;
        if (std::ferror(m_datei.get()))
            throw Fehler("Die Tabellendatei " + Genannt(m_pfad) + " kann nicht gelesen werden!");
        if (gelesen == 0 || std::feof(m_datei.get()))
            m_dateiende = true;
    }
}

std::string_view TabellendateiLeser::PflichtZeile() {
    std::string_view zeile;
    bool mitZeilenende = false;
    if (!ZeileHolen(zeile, mitZeilenende)) {
        ++m_zeilenNr; // the line that is missing
        Fehlerhaft("die Datei ist abgeschnitten, die Zeile fehlt");
    }
    if (!mitZeilenende)
        Fehlerhaft("die Datei ist abgeschnitten, die Zeile endet nicht");
    return zeile;
}

void TabellendateiLeser::FeldDemaskieren(std::string_view roh, std::string& ziel) const {
    const std::size_t fehler = flurix::FeldDemaskieren(roh, ziel);
    if (fehler != std::string_view::npos)
        Fehlerhaft("ungültige Maskierung \"" + Ausschnitt(roh.substr(fehler, 4)) + "\"");
}

std::string_view TabellendateiLeser::ErsteZeile(std::string_view wennLeer, bool& mitZeilenende) {
    std::string_view zeile;
    if (!ZeileHolen(zeile, mitZeilenende)) {
        ++m_zeilenNr;
        Fehlerhaft(wennLeer);
    }
    return zeile;
}

std::uint64_t TabellendateiLeser::Zählerzeile(std::string_view wort) {
    const auto felder = Teilen(PflichtZeile(), '\t');
    std::optional<std::uint64_t> zahl;
    if (felder.size() == 2 && felder[0] == wort)
        zahl = GanzeZahl<std::uint64_t>(felder[1]);
    if (!zahl)
        Fehlerhaft("erwartet wird \"" + std::string(wort) + "\" und eine Zahl");
    return *zahl;
}

void TabellendateiLeser::FilKopfLesen() {
    bool mitZeilenende = false;
    auto felder = Teilen(ErsteZeile("die Datei ist leer", mitZeilenende), '\t');
    if (felder.front() != Kennung)
        Fehlerhaft("keine Flurix-Tabellendatei, die Kennung \"" + std::string(Kennung) +
                   "\" fehlt");
    if (!mitZeilenende)
        Fehlerhaft("die Datei ist abgeschnitten, die Zeile endet nicht");
    if (felder.size() != 2 || felder[1] != Version)
        Fehlerhaft("die Version \"" + Ausschnitt(felder.size() > 1 ? felder[1] : "") +
                   "\" wird nicht unterstützt, nur die Version " + std::string(Version));

    // No reserve(): the count is only believed as far as lines for it follow.
    const std::uint64_t spaltenzahl = Zählerzeile("spalten");
    for (std::uint64_t i = 0; i < spaltenzahl; ++i) {
        felder = Teilen(PflichtZeile(), '\t');
        if (felder.size() != 5)
            Fehlerhaft("eine Spaltenzeile hat " + std::to_string(felder.size()) +
                       " Felder statt 5");
        TabellenSpalte spalte;
        FeldDemaskieren(felder[0], spalte.schlüssel);
        FeldDemaskieren(felder[1], spalte.überschrift);
        const auto breite = GanzeZahl<int>(felder[2]);
        const auto position = GanzeZahl<int>(felder[4]);
        if (!breite || !position)
            Fehlerhaft("Breite und Position müssen ganze Zahlen sein");
        if (felder[3] != "0" && felder[3] != "1")
            Fehlerhaft("die Sichtbarkeit muss 0 oder 1 sein");
        spalte.breite = *breite;
        spalte.sichtbar = felder[3] == "1";
        spalte.position = *position;
        m_spalten.push_back(std::move(spalte));
    }

    m_angekündigt = Zählerzeile("zeilen");
}

void TabellendateiLeser::TsvKopfLesen() {
    bool mitZeilenende = false;
    std::string_view zeile = ErsteZeile("die Datei ist leer, die Kopfzeile fehlt", mitZeilenende);
    if (zeile.ends_with('\r'))
        zeile.remove_suffix(1);
    if (zeile.empty())
        return;
    int position = 0;
    for (const auto feld : Teilen(zeile, '\t')) {
        TabellenSpalte spalte;
        FeldDemaskieren(feld, spalte.schlüssel);
        spalte.überschrift = spalte.schlüssel;
        spalte.position = position++;
        m_spalten.push_back(std::move(spalte));
    }
}

void TabellendateiLeser::ZellenTeilen(std::string_view zeile) {
    const std::size_t soll = m_spalten.size();
    const auto zellenText = [&] {
        const auto ist =
            zeile.empty() && soll == 0 ? 0 : std::count(zeile.begin(), zeile.end(), '\t') + 1;
        return std::to_string(ist) + " Zellen statt " + std::to_string(soll);
    };
    if (soll == 0) {
        if (!zeile.empty())
            Fehlerhaft(zellenText());
        return;
    }
    std::size_t i = 0;
    for (std::size_t anfang = 0;;) {
        const auto tab = zeile.find('\t', anfang);
        if (i == soll)
            Fehlerhaft(zellenText());
        FeldDemaskieren(zeile.substr(anfang, tab == std::string_view::npos ? tab : tab - anfang),
                        m_zellen[i++]);
        if (tab == std::string_view::npos)
            break;
        anfang = tab + 1;
    }
    if (i != soll)
        Fehlerhaft(zellenText());
}

std::optional<std::span<const std::string>> TabellendateiLeser::NächsteZeile() {
    if (m_fertig)
        return std::nullopt;
    std::string_view zeile;
    bool mitZeilenende = false;
    if (m_format == Tabellenformat::Fil) {
        if (m_gelesen == *m_angekündigt) {
            if (ZeileHolen(zeile, mitZeilenende))
                Fehlerhaft("mehr Zeilen als die angekündigten " + std::to_string(*m_angekündigt));
            m_fertig = true;
            return std::nullopt;
        }
        if (!ZeileHolen(zeile, mitZeilenende)) {
            ++m_zeilenNr;
            Fehlerhaft("die Datei ist abgeschnitten, " + std::to_string(m_gelesen) + " von " +
                       std::to_string(*m_angekündigt) + " Zeilen gelesen");
        }
        if (!mitZeilenende)
            Fehlerhaft("die Datei ist abgeschnitten, die Zeile endet nicht");
    } else {
        if (!ZeileHolen(zeile, mitZeilenende)) {
            m_fertig = true;
            return std::nullopt;
        }
        if (zeile.ends_with('\r'))
            zeile.remove_suffix(1);
    }
    ZellenTeilen(zeile);
    ++m_gelesen;
    return std::span<const std::string>(m_zellen);
}

// -------------------------------------------------------------------------------------- wfs.key

std::pair<std::string, std::string> WfsSchlüsselLesen(const std::filesystem::path& datei) {
    TabellendateiLeser leser(datei, Tabellenformat::Fil);
    const auto& spalten = leser.Spalten();
    const auto index = [&](std::string_view schlüssel) {
        const auto it = std::find_if(spalten.begin(), spalten.end(), [&](const TabellenSpalte& s) {
            return s.schlüssel == schlüssel;
        });
        if (it == spalten.end())
            throw Fehler("In der Key-Datei " + Genannt(datei) + " fehlt die Spalte \"" +
                         std::string(schlüssel) + "\"!");
        return static_cast<std::size_t>(it - spalten.begin());
    };
    const std::size_t benutzer = index("user");
    const std::size_t passwort = index("pw");
    const auto zeile = leser.NächsteZeile();
    if (!zeile)
        throw Fehler("Die Key-Datei " + Genannt(datei) + " enthält keine Zeile!");
    return {std::string(TrimmeLeerzeichen(Verschleiern((*zeile)[benutzer], WfsSchlüssel))),
            std::string(TrimmeLeerzeichen(Verschleiern((*zeile)[passwort], WfsSchlüssel)))};
}

void WfsSchlüsselSchreiben(const std::filesystem::path& datei, std::string_view benutzer,
                           std::string_view passwort) {
    const TabellenSpalte spalten[] = {{"user", "user", SchlüsselBreite, true, 0},
                                      {"pw", "pw", SchlüsselBreite, true, 1}};
    TabellendateiSchreiber schreiber(datei, spalten, Tabellenformat::Fil);
    const std::string zellen[] = {Verschleiern(benutzer, WfsSchlüssel),
                                  Verschleiern(passwort, WfsSchlüssel)};
    schreiber.Zeile(zellen);
    schreiber.Abschließen();
}

} // namespace flurix
