#include "kernhilfen.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <sstream>

namespace flurix::test {
namespace {

// Reads the arguments of `Name(a, "b", ...) -> ...` from `pos` (behind "(") and leaves `pos`
// behind ") -> ". False when the line is not of that form.
bool ArgumenteLesen(const std::string& zeile, std::size_t& pos, Argumente& argumente) {
    const auto zeichen = [&](char c) { return pos < zeile.size() && zeile[pos] == c; };
    while (zeichen(' '))
        ++pos;
    while (pos < zeile.size() && !zeichen(')')) {
        std::string wert;
        if (zeichen('"')) {
            for (++pos; pos < zeile.size() && !zeichen('"'); ++pos) {
                if (!zeichen('\\') || ++pos >= zeile.size()) {
                    wert += zeile[pos];
                } else if (zeichen('x') && pos + 2 < zeile.size()) {
                    wert += static_cast<char>(std::stoi(zeile.substr(pos + 1, 2), nullptr, 16));
                    pos += 2;
                } else {
                    const char c = zeile[pos];
                    wert += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c == '0' ? '\0' : c;
                }
            }
            if (pos++ >= zeile.size())
                return false;
        } else {
            for (; pos < zeile.size() && !zeichen(',') && !zeichen(')'); ++pos)
                wert += zeile[pos];
        }
        argumente.push_back(wert);
        while (zeichen(' ') || zeichen(','))
            ++pos;
    }
    if (zeile.compare(pos, 5, ") -> ") != 0)
        return false;
    pos += 5;
    return true;
}

} // namespace

std::string Zitat(std::string_view text) {
    std::string z = "\"";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t n = c >= 0xC2 && c <= 0xF4 ? 2 + (c >= 0xE0) + (c >= 0xF0) : 0; // a UTF-8 sequence, if whole
        if (n > 0 && i + n <= text.size() && IstGültigesUtf8(text.substr(i, n))) {
            z += text.substr(i, n);
            i += n - 1;
        } else if (c == '"' || c == '\\') {
            z += '\\', z += static_cast<char>(c);
        } else if (c == '\t' || c == '\n' || c == '\r' || c == '\0') {
            z += c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\0";
        } else if (c < 0x20 || c >= 0x7F) {
            z += "\\x", z += "0123456789ABCDEF"[c >> 4], z += "0123456789ABCDEF"[c & 15];
        } else {
            z += static_cast<char>(c);
        }
    }
    return z + "\"";
}

std::string Liste(const std::vector<std::string>& texte) {
    std::string text;
    for (const auto& t : texte)
        text += (text.empty() ? "" : ", ") + Zitat(t);
    return "[" + text + "]";
}

std::string Wertetabelle(const std::string& name, const std::map<std::string, Tabellenfunktion>& funktionen,
                         const std::filesystem::path& ordner) {
    const auto datei = Testdaten() / "core" / name;
    std::istringstream zeilen(std::filesystem::exists(datei) ? DateiLesen(datei) : "");
    std::string ist, zeile;
    for (int nr = 1; std::getline(zeilen, zeile); ++nr) {
        std::size_t pos = zeile.find('(') + 1;
        Argumente argumente;
        if (zeile.empty() || zeile[0] == '#') {
            ist += zeile + "\n";
            continue;
        }
        const auto funktion = funktionen.find(zeile.substr(0, pos - 1));
        if (pos == 0 || !ArgumenteLesen(zeile, pos, argumente) || funktion == funktionen.end())
            return name + ", Zeile " + std::to_string(nr) + ": keine Zeile Name(...) -> ... mit bekanntem Namen";
        for (auto& argument : argumente)
            if (!ordner.empty())
                argument = Ersetzt(argument, "<ordner>", ordner.string());
        std::string ergebnis;
        try {
            ergebnis = funktion->second(argumente);
        } catch (const Fehler& fehler) {
            ergebnis = "Fehler " + Zitat(fehler.what());
        }
        ist += zeile.substr(0, pos) + (ordner.empty() ? ergebnis : Ersetzt(ergebnis, ordner.string(), "<ordner>"));
        ist += "\n";
    }
    return GoldenVergleich(ist, datei);
}

std::string Verlauf(const SkriptOberfläche& ui, bool einzeilig) {
    static const char* arten[] = {"Meldung [", "Frage [", "Status ", "Protokoll "};
    std::string text;
    for (const auto& e : ui.Ereignisse()) {
        const auto art = static_cast<std::size_t>(e.art);
        text += (einzeilig ? " | " : "") + std::string(arten[art]) +
                (art < 2 ? e.titel + "] " : art == 2 ? std::to_string(e.panel) + " " : "") + Zitat(e.text) +
                (einzeilig ? "" : "\n");
    }
    return text;
}

std::string FehlerText(const std::function<void()>& arbeit) {
    try {
        arbeit();
    } catch (const Fehler& fehler) {
        return fehler.what();
    }
    return {};
}

Kataster Tabelle(std::string_view kopf, const std::vector<std::string>& zeilen) {
    Kataster k;
    for (const std::string_view schlüssel : Teilen(kopf, '\t'))
        k.SpalteHinzufügen({std::string(schlüssel), std::string(schlüssel)});
    for (const auto& zeile : zeilen)
        k.ZeileHinzufügen(zeile);
    return k;
}

std::vector<std::string> Spalte(const Kataster& kataster, std::string_view schlüssel, bool nurGewählte) {
    std::vector<std::string> werte;
    for (std::size_t z = 0; z < kataster.Zeilenzahl(); ++z)
        if (!nurGewählte || kataster.Ausgewählt(z))
            werte.emplace_back(kataster.Zelle(z, schlüssel));
    return werte;
}

std::vector<std::string> SichtbareSpalten(const Kataster& kataster) {
    std::vector<std::string> schlüssel;
    for (const std::size_t s : kataster.Anzeigereihenfolge())
        if (kataster.Spalte(s).sichtbar)
            schlüssel.push_back(kataster.Spalte(s).schlüssel);
    return schlüssel;
}

std::string Ersetzt(std::string text, std::string_view alt, std::string_view neu) {
    for (auto stelle = text.find(alt); stelle != std::string::npos; stelle = text.find(alt, stelle + neu.size()))
        text.replace(stelle, alt.size(), neu);
    return text;
}

std::string AlleBytes() {
    std::string s;
    for (int b = 0; b < 256; ++b)
        s += static_cast<char>(b);
    return s;
}

} // namespace flurix::test
