#include "core/jet_sql.hpp"

#include "core/cp1252.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <map>
#include <unordered_set>

namespace flurix {
namespace {

// ---------------------------------------------------------------------------------------------
// UTF-8, one character at a time

// Code points above Unicode stand for a byte that begins no valid sequence: such a byte counts
// as one character of its own and compares only with itself.
constexpr char32_t FremdesByte = 0x110000;

struct Zeichen {
    char32_t wert;
    std::size_t länge;
};

Zeichen ZeichenBei(std::string_view text, std::size_t pos) {
    const auto erstes = static_cast<unsigned char>(text[pos]);
    if (erstes < 0x80)
        return {erstes, 1};
    const Zeichen fremd{FremdesByte + erstes, 1};
    std::size_t länge = 0;
    char32_t wert = 0;
    if ((erstes & 0xE0) == 0xC0) {
        länge = 2;
        wert = erstes & 0x1Fu;
    } else if ((erstes & 0xF0) == 0xE0) {
        länge = 3;
        wert = erstes & 0x0Fu;
    } else if ((erstes & 0xF8) == 0xF0) {
        länge = 4;
        wert = erstes & 0x07u;
    } else {
        return fremd;
    }
    if (pos + länge > text.size())
        return fremd;
    for (std::size_t k = 1; k < länge; ++k) {
        const auto folge = static_cast<unsigned char>(text[pos + k]);
        if ((folge & 0xC0) != 0x80)
            return fremd;
        wert = (wert << 6) | (folge & 0x3Fu);
    }
    constexpr std::array<char32_t, 5> kleinsterWert = {0, 0, 0x80, 0x800, 0x10000};
    if (wert < kleinsterWert[länge] || wert > 0x10FFFF || (wert >= 0xD800 && wert <= 0xDFFF))
        return fremd;
    return {wert, länge};
}

// Lower case as Jet's text comparison sees it: ASCII and the Latin-1 capitals (Ä Ö Ü ...).
char32_t Klein(char32_t c) {
    if (c >= 'A' && c <= 'Z')
        return c + 0x20;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7)
        return c + 0x20;
    return c;
}

std::vector<char32_t> Zeichenfolge(std::string_view text, bool klein) {
    std::vector<char32_t> folge;
    folge.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const auto z = ZeichenBei(text, pos);
        folge.push_back(klein ? Klein(z.wert) : z.wert);
        pos += z.länge;
    }
    return folge;
}

std::string AsciiKlein(std::string_view text) {
    std::string ergebnis(text);
    for (char& c : ergebnis)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 0x20);
    return ergebnis;
}

bool GleichOhneAsciiFall(std::string_view a, std::string_view b) {
    return a.size() == b.size() && AsciiKlein(a) == AsciiKlein(b);
}

// ---------------------------------------------------------------------------------------------
// Tokens

enum class Art {
    Leer,        // blanks, tabs, line ends
    Kommentar,   // -- to the line end, /* ... */
    Text,        // 'abc'
    JetText,     // "abc": a string in Jet
    Klammername, // [name]
    Zitiertname, // `name`
    Wort,        // a name or a keyword
    Zahl,        // 12, 1.5, 1e3, 0x1F
    Parameter,   // ?, ?3, :name, @name, $name
    Zeichen,     // an operator or a punctuation mark
};

struct Token {
    Art art;
    std::string_view text;
    bool offen = false; // a quote without its closing mark
};

bool IstWortzeichen(char c) {
    const auto b = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$' || b >= 0x80;
}

bool IstWortanfang(char c) { return IstWortzeichen(c) && c != '$' && !(c >= '0' && c <= '9'); }

bool IstZiffer(char c) { return c >= '0' && c <= '9'; }

bool IstLeerzeichen(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

// End of a quoted token that starts at `anfang`; a doubled closing mark stands for itself.
// npos when the closing mark is missing.
std::size_t ZitatEnde(std::string_view sql, std::size_t anfang, char schluss) {
    for (std::size_t i = anfang + 1; i < sql.size(); ++i) {
        if (sql[i] != schluss)
            continue;
        if (i + 1 < sql.size() && sql[i + 1] == schluss) {
            ++i;
            continue;
        }
        return i + 1;
    }
    return std::string_view::npos;
}

std::size_t ZahlEnde(std::string_view sql, std::size_t i) {
    const auto n = sql.size();
    if (sql[i] == '0' && i + 2 < n && (sql[i + 1] == 'x' || sql[i + 1] == 'X')) {
        i += 2;
        while (i < n && std::isxdigit(static_cast<unsigned char>(sql[i])))
            ++i;
        return i;
    }
    while (i < n && IstZiffer(sql[i]))
        ++i;
    if (i < n && sql[i] == '.')
        for (++i; i < n && IstZiffer(sql[i]);)
            ++i;
    if (i < n && (sql[i] == 'e' || sql[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < n && (sql[j] == '+' || sql[j] == '-'))
            ++j;
        if (j < n && IstZiffer(sql[j])) {
            for (i = j; i < n && IstZiffer(sql[i]);)
                ++i;
        }
    }
    return i;
}

std::vector<Token> Zerlegen(std::string_view sql) {
    std::vector<Token> token;
    const auto n = sql.size();
    std::size_t i = 0;
    auto hinzu = [&](Art art, std::size_t ende, bool offen = false) {
        token.push_back({art, sql.substr(i, ende - i), offen});
        i = ende;
    };
    auto zitat = [&](Art art, char schluss) {
        const auto ende = ZitatEnde(sql, i, schluss);
        hinzu(art, ende == std::string_view::npos ? n : ende, ende == std::string_view::npos);
    };
    while (i < n) {
        const char c = sql[i];
        const char danach = i + 1 < n ? sql[i + 1] : '\0';
        if (IstLeerzeichen(c)) {
            auto ende = i;
            while (ende < n && IstLeerzeichen(sql[ende]))
                ++ende;
            hinzu(Art::Leer, ende);
        } else if (c == '-' && danach == '-') {
            hinzu(Art::Kommentar, std::min(sql.find('\n', i), n));
        } else if (c == '/' && danach == '*') {
            const auto schluss = sql.find("*/", i + 2);
            hinzu(Art::Kommentar, schluss == std::string_view::npos ? n : schluss + 2);
        } else if (c == '\'') {
            zitat(Art::Text, '\'');
        } else if (c == '"') {
            zitat(Art::JetText, '"');
        } else if (c == '`') {
            zitat(Art::Zitiertname, '`');
        } else if (c == '[') {
            zitat(Art::Klammername, ']');
        } else if (IstZiffer(c) || (c == '.' && IstZiffer(danach))) {
            hinzu(Art::Zahl, ZahlEnde(sql, i));
        } else if (IstWortanfang(c)) {
            auto ende = i + 1;
            while (ende < n && IstWortzeichen(sql[ende]))
                ++ende;
            hinzu(Art::Wort, ende);
        } else if (c == '?' || ((c == ':' || c == '@' || c == '$') && IstWortzeichen(danach))) {
            auto ende = i + 1;
            while (ende < n && IstWortzeichen(sql[ende]))
                ++ende;
            hinzu(Art::Parameter, ende);
        } else {
            static constexpr std::array<std::string_view, 10> mehrzeichen = {
                "->>", "||", "<=", ">=", "<>", "!=", "==", "<<", ">>", "->"};
            std::size_t länge = 1;
            for (const auto op : mehrzeichen) {
                if (sql.substr(i, op.size()) == op) {
                    länge = op.size();
                    break;
                }
            }
            hinzu(Art::Zeichen, i + länge);
        }
    }
    return token;
}

// The value of a closed quoted token: without the marks, doubled marks made single.
std::string Zitatinhalt(std::string_view text) {
    const char schluss = text.front() == '[' ? ']' : text.front();
    std::string inhalt;
    inhalt.reserve(text.size());
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        inhalt += text[i];
        if (text[i] == schluss)
            ++i;
    }
    return inhalt;
}

// Keywords at which an operand of `&` ends: what may stand beside an expression of arithmetic.
// Other keywords (NULL, CAST, REPLACE, LEFT and RIGHT as function names, ...) can be part of an
// operand.
bool IstGrenzwort(std::string_view wort) {
    static const std::unordered_set<std::string> grenzen = {
        "all",    "and",     "as",     "asc",       "between",  "by",        "case",   "collate",
        "cross",  "default", "delete", "desc",      "distinct", "else",      "end",    "escape",
        "except", "exists",  "filter", "from",      "full",     "glob",      "group",  "having",
        "in",     "inner",   "insert", "intersect", "into",     "is",        "isnull", "join",
        "like",   "limit",   "match",  "natural",   "not",      "notnull",   "offset", "on",
        "or",     "order",   "outer",  "over",      "regexp",   "returning", "select", "set",
        "then",   "union",   "update", "using",     "values",   "when",      "where",  "window"};
    return grenzen.contains(AsciiKlein(wort));
}

// ---------------------------------------------------------------------------------------------
// A LIKE pattern of Jet in SQLite's form

std::string MusterÜbersetzen(std::string_view jet) {
    std::string muster;
    bool escape = false;
    auto literal = [&](std::string_view zeichen) {
        if (zeichen == "%" || zeichen == "_" || zeichen == "\\") {
            muster += '\\';
            escape = true;
        }
        muster += zeichen;
    };
    for (std::size_t i = 0; i < jet.size();) {
        const char c = jet[i];
        if (c == '*') {
            muster += '%';
            ++i;
        } else if (c == '?') {
            muster += '_';
            ++i;
        } else if (c == '#') {
            throw Fehler("LIKE-Muster \"" + std::string(jet) +
                         "\": das Zeichen # (eine Ziffer) wird nicht unterstützt");
        } else if (c == '[') {
            // Only a bracket around one character is taken: it stands for that character.
            const auto schluss = i + 1 < jet.size() ? jet.find(']', i + 2) : std::string_view::npos;
            const auto inhalt = schluss == std::string_view::npos
                                    ? std::string_view()
                                    : jet.substr(i + 1, schluss - i - 1);
            if (inhalt.empty() || inhalt.front() == '!' ||
                ZeichenBei(inhalt, 0).länge != inhalt.size())
                throw Fehler("LIKE-Muster \"" + std::string(jet) +
                             "\": Zeichenlisten in [ ] werden nicht unterstützt");
            literal(inhalt);
            i = schluss + 1;
        } else {
            const auto länge = ZeichenBei(jet, i).länge;
            literal(jet.substr(i, länge));
            i += länge;
        }
    }
    return SqlText(muster) + (escape ? " ESCAPE '\\'" : "");
}

// ---------------------------------------------------------------------------------------------
// The translation of one statement

constexpr std::size_t Keins = static_cast<std::size_t>(-1);

class Übersetzung {
public:
    Übersetzung(std::string_view anweisung, const Namensverzeichnis* namen)
        : m_anweisung(anweisung), m_token(Zerlegen(anweisung)) {
        for (std::size_t i = 0; i < m_token.size(); ++i) {
            m_aus.emplace_back(m_token[i].text);
            if (m_token[i].art != Art::Leer && m_token[i].art != Art::Kommentar)
                m_sig.push_back(i);
        }
        PartnerSuchen();
        for (std::size_t k = 0; k < m_sig.size(); ++k)
            TokenÜbersetzen(k, namen != nullptr && !IstTabellendefinition() ? namen : nullptr);
        KettenSuchen();
    }

    std::string Ergebnis() const {
        return m_token.empty() ? std::string() : Ausgeben(0, m_token.size() - 1);
    }

private:
    struct Kette {
        std::vector<std::pair<std::size_t, std::size_t>> operanden; // significant indices
    };

    const Token& Sig(std::size_t k) const { return m_token[m_sig[k]]; }
    bool IstZeichen(std::size_t k, std::string_view z) const {
        return k < m_sig.size() && Sig(k).art == Art::Zeichen && Sig(k).text == z;
    }
    bool IstWort(std::size_t k, std::string_view w) const {
        return k < m_sig.size() && Sig(k).art == Art::Wort && GleichOhneAsciiFall(Sig(k).text, w);
    }
    bool IstName(std::size_t k) const {
        if (k >= m_sig.size())
            return false;
        const auto art = Sig(k).art;
        return (art == Art::Wort && !IstGrenzwort(Sig(k).text)) || art == Art::Klammername ||
               art == Art::Zitiertname;
    }
    bool IstLiteral(std::size_t k) const {
        const auto art = Sig(k).art;
        return art == Art::Text || art == Art::JetText || art == Art::Zahl;
    }
    bool IstRechenzeichen(std::size_t k) const {
        return IstZeichen(k, "+") || IstZeichen(k, "-") || IstZeichen(k, "*") ||
               IstZeichen(k, "/") || IstZeichen(k, "%");
    }
    bool IstVorzeichen(std::size_t k) const { return IstZeichen(k, "+") || IstZeichen(k, "-"); }

    // CREATE TABLE and ALTER TABLE name new things: their words are kept as written.
    bool IstTabellendefinition() const {
        if (IstWort(0, "ALTER"))
            return true;
        return IstWort(0, "CREATE") &&
               (IstWort(1, "TABLE") || IstWort(2, "TABLE") || IstWort(3, "TABLE"));
    }

    // Matching brackets, and CASE with its END.
    void PartnerSuchen() {
        m_partner.assign(m_sig.size(), Keins);
        std::vector<std::size_t> stapel;
        for (std::size_t k = 0; k < m_sig.size(); ++k) {
            const bool öffnet = IstZeichen(k, "(") || IstWort(k, "CASE");
            const bool schließt = IstZeichen(k, ")") || IstWort(k, "END");
            if (öffnet) {
                stapel.push_back(k);
            } else if (schließt && !stapel.empty() &&
                       IstZeichen(stapel.back(), "(") == IstZeichen(k, ")")) {
                m_partner[k] = stapel.back();
                m_partner[stapel.back()] = k;
                stapel.pop_back();
            }
        }
    }

    void TokenÜbersetzen(std::size_t k, const Namensverzeichnis* namen) {
        const auto& t = Sig(k);
        auto& aus = m_aus[m_sig[k]];
        const bool muster = k > 0 && IstWort(k - 1, "LIKE") && !IstWort(k + 1, "ESCAPE");
        switch (t.art) {
        case Art::Klammername:
            if (!t.offen)
                aus = Bezeichner(Zitatinhalt(t.text));
            break;
        case Art::Text:
        case Art::JetText:
            if (t.offen)
                break;
            if (muster)
                aus = MusterÜbersetzen(Zitatinhalt(t.text));
            else if (t.art == Art::JetText)
                aus = SqlText(Zitatinhalt(t.text));
            break;
        case Art::Wort:
            if (namen != nullptr && !IstZeichen(k + 1, "(") && !(k > 0 && IstWort(k - 1, "AS")) &&
                sqlite3_keyword_check(t.text.data(), static_cast<int>(t.text.size())) == 0) {
                const auto echt = namen->Auflösen(t.text);
                if (echt && !GleichOhneAsciiFall(*echt, t.text))
                    aus = Bezeichner(*echt);
            }
            break;
        default:
            break;
        }
    }

    // --- operands of & ---

    // Last index of the primary expression that starts at k, or Keins.
    std::size_t PrimärRechts(std::size_t k) const {
        if (k >= m_sig.size())
            return Keins;
        if (IstZeichen(k, "(") || IstWort(k, "CASE"))
            return m_partner[k];
        if (IstLiteral(k) || Sig(k).art == Art::Parameter)
            return k;
        if (!IstName(k))
            return Keins;
        if (Sig(k).art == Art::Wort && IstZeichen(k + 1, "("))
            return m_partner[k + 1];
        auto ende = k;
        while (IstZeichen(ende + 1, ".") && IstName(ende + 2))
            ende += 2;
        return ende;
    }

    // First index of the primary expression that ends at k, or Keins.
    std::size_t PrimärLinks(std::size_t k) const {
        if (k >= m_sig.size())
            return Keins;
        if (IstZeichen(k, ")")) {
            const auto auf = m_partner[k];
            if (auf != Keins && auf > 0 && Sig(auf - 1).art == Art::Wort && IstName(auf - 1))
                return auf - 1;
            return auf;
        }
        if (IstWort(k, "END"))
            return m_partner[k];
        if (IstLiteral(k) || Sig(k).art == Art::Parameter)
            return k;
        if (!IstName(k))
            return Keins;
        auto anfang = k;
        while (anfang >= 2 && IstZeichen(anfang - 1, ".") && IstName(anfang - 2))
            anfang -= 2;
        return anfang;
    }

    bool EndetAusdruck(std::size_t k) const { return PrimärLinks(k) != Keins; }

    // An operand of & is a run of primaries joined by arithmetic, which binds tighter than &
    // in Jet, with signs in front.
    std::size_t OperandRechts(std::size_t k) const {
        for (;;) {
            while (IstVorzeichen(k))
                ++k;
            const auto ende = PrimärRechts(k);
            if (ende == Keins)
                return Keins;
            if (!IstRechenzeichen(ende + 1) || ende + 2 >= m_sig.size())
                return ende;
            k = ende + 2;
        }
    }

    std::size_t OperandLinks(std::size_t k) const {
        for (;;) {
            auto anfang = PrimärLinks(k);
            if (anfang == Keins)
                return Keins;
            while (anfang > 0 && IstVorzeichen(anfang - 1) &&
                   !(anfang >= 2 && EndetAusdruck(anfang - 2)))
                --anfang;
            if (anfang < 2 || !IstRechenzeichen(anfang - 1) || !EndetAusdruck(anfang - 2))
                return anfang;
            k = anfang - 2;
        }
    }

    [[noreturn]] void OperandFehlt() const {
        throw Fehler(
            "SQL-Anweisung: ein Operand des Operators & fehlt oder ist nicht zu erkennen: " +
            std::string(m_anweisung));
    }

    void KettenSuchen() {
        std::vector<bool> vergeben(m_sig.size(), false);
        for (std::size_t k = 0; k < m_sig.size(); ++k) {
            if (!IstZeichen(k, "&") || vergeben[k])
                continue;
            const auto links = k > 0 ? OperandLinks(k - 1) : Keins;
            if (links == Keins)
                OperandFehlt();
            Kette kette;
            kette.operanden.emplace_back(links, k - 1);
            for (auto p = k;;) {
                vergeben[p] = true;
                const auto ende = OperandRechts(p + 1);
                if (ende == Keins)
                    OperandFehlt();
                kette.operanden.emplace_back(p + 1, ende);
                if (!IstZeichen(ende + 1, "&"))
                    break;
                p = ende + 1;
            }
            m_kettenAnfang[m_sig[links]] = m_ketten.size();
            m_ketten.push_back(std::move(kette));
        }
    }

    // --- output ---

    std::string Ausgeben(std::size_t von, std::size_t bis) const {
        std::string text;
        for (auto i = von; i <= bis;) {
            const auto kette = m_kettenAnfang.find(i);
            if (kette != m_kettenAnfang.end() &&
                m_sig[m_ketten[kette->second].operanden.back().second] <= bis) {
                const auto& k = m_ketten[kette->second];
                text += KetteAusgeben(k);
                i = m_sig[k.operanden.back().second] + 1;
            } else {
                text += m_aus[i];
                ++i;
            }
        }
        return text;
    }

    // Jet's & : NULL counts as "", numbers as Basic writes them; NULL only when all sides are.
    std::string KetteAusgeben(const Kette& kette) const {
        std::string verbunden;
        std::string alle;
        bool nieNull = false;
        for (const auto& [anfang, ende] : kette.operanden) {
            const auto text = Ausgeben(m_sig[anfang], m_sig[ende]);
            const bool textLiteral =
                anfang == ende && (Sig(anfang).art == Art::Text || Sig(anfang).art == Art::JetText);
            nieNull = nieNull || (anfang == ende && IstLiteral(anfang));
            if (!verbunden.empty()) {
                verbunden += " || ";
                alle += ", ";
            }
            verbunden += textLiteral ? text : "JETTEXT(" + text + ")";
            alle += text;
        }
        if (nieNull)
            return "(" + verbunden + ")";
        return "(CASE WHEN COALESCE(" + alle + ") IS NULL THEN NULL ELSE " + verbunden + " END)";
    }

    std::string_view m_anweisung;
    std::vector<Token> m_token;
    std::vector<std::string> m_aus; // output text per token
    std::vector<std::size_t> m_sig; // indices of the tokens that are not blanks or comments
    std::vector<std::size_t> m_partner;
    std::vector<Kette> m_ketten;
    std::map<std::size_t, std::size_t> m_kettenAnfang; // token index -> chain
};

} // namespace

// ---------------------------------------------------------------------------------------------

std::string NameFalten(std::string_view name) {
    std::string gefaltet;
    gefaltet.reserve(name.size());
    for (std::size_t pos = 0; pos < name.size();) {
        const auto z = ZeichenBei(name, pos);
        if (z.wert >= FremdesByte)
            gefaltet += name[pos];
        else if (z.wert == 0xDF || z.wert == 0x1E9E) // ß and its capital
            gefaltet += "ss";
        else
            Utf8Anhängen(gefaltet, Klein(z.wert));
        pos += z.länge;
    }
    return gefaltet;
}

void Namensverzeichnis::Hinzufügen(std::string_view name) {
    if (!m_sqliteForm.emplace(AsciiKlein(name), name).second)
        return;
    m_gefaltet[NameFalten(name)].emplace_back(name);
}

void Namensverzeichnis::Leeren() {
    m_gefaltet.clear();
    m_sqliteForm.clear();
}

std::optional<std::string> Namensverzeichnis::Auflösen(std::string_view wort) const {
    if (const auto gleich = m_sqliteForm.find(AsciiKlein(wort)); gleich != m_sqliteForm.end())
        return gleich->second;
    const auto gefaltet = m_gefaltet.find(NameFalten(wort));
    if (gefaltet == m_gefaltet.end() || gefaltet->second.size() != 1)
        return std::nullopt;
    return gefaltet->second.front();
}

std::string JetNachSqlite(std::string_view anweisung, const Namensverzeichnis* namen) {
    return Übersetzung(anweisung, namen).Ergebnis();
}

std::string JetBezeichner(std::string_view name) {
    std::string text = "[";
    for (const char c : name) {
        text += c;
        if (c == ']')
            text += ']';
    }
    return text + "]";
}

std::string JetMid(std::string_view text, std::int64_t start, std::optional<std::int64_t> länge) {
    if (start < 1)
        throw Fehler("MID: die Startposition " + std::to_string(start) + " ist kleiner als 1");
    if (länge && *länge < 0)
        throw Fehler("MID: die Länge " + std::to_string(*länge) + " ist negativ");
    std::size_t anfang = 0;
    for (std::int64_t n = 1; n < start && anfang < text.size(); ++n)
        anfang += ZeichenBei(text, anfang).länge;
    if (!länge)
        return std::string(text.substr(anfang));
    auto ende = anfang;
    for (std::int64_t n = 0; n < *länge && ende < text.size(); ++n)
        ende += ZeichenBei(text, ende).länge;
    return std::string(text.substr(anfang, ende - anfang));
}

std::int64_t JetInstr(std::int64_t start, std::string_view text, std::string_view suche,
                      bool textvergleich) {
    if (start < 1)
        throw Fehler("Instr: die Startposition " + std::to_string(start) + " ist kleiner als 1");
    if (text.empty())
        return 0;
    const auto heu = Zeichenfolge(text, textvergleich);
    const auto länge = static_cast<std::int64_t>(heu.size());
    if (suche.empty())
        return start <= länge + 1 ? start : 0;
    if (start > länge)
        return 0;
    const auto nadel = Zeichenfolge(suche, textvergleich);
    const auto von = heu.begin() + (start - 1);
    const auto treffer = std::search(von, heu.end(), nadel.begin(), nadel.end());
    return treffer == heu.end() ? 0 : (treffer - heu.begin()) + 1;
}

std::string_view JetTrim(std::string_view text) {
    const auto anfang = text.find_first_not_of(' ');
    if (anfang == std::string_view::npos)
        return {};
    return text.substr(anfang, text.find_last_not_of(' ') - anfang + 1);
}

std::string JetZahlText(double zahl) {
    if (zahl == 0)
        return "0"; // also for -0
    char puffer[64];
    const auto [ende, fehler] =
        std::to_chars(puffer, puffer + sizeof puffer, zahl, std::chars_format::general, 15);
    (void)fehler; // 64 characters hold every double at 15 digits
    std::string text(puffer, ende);
    std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
}

} // namespace flurix
