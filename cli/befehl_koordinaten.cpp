#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "map/geodaesie.hpp"

#include <array>
#include <charconv>
#include <iostream>
#include <iterator>
#include <optional>

namespace flurix::cli {
namespace {

using karte::KoordinatenSatz;

/// A coordinate system of the command: a UTM strip by its central meridian, or geographic (0).
struct System {
    int L0 = 0;
    bool geographisch() const { return L0 == 0; }
};

std::optional<System> SystemLesen(std::string_view name) {
    if (name == "25832" || name == "25833")
        return System{karte::MittelmeridianAusEpsg(name)};
    if (name == "geo")
        return System{0};
    return std::nullopt;
}

bool Trenner(char c) { return c == ' ' || c == '\t' || c == ';'; }

/// The two fields of a line, decimal commas made points; nothing when the line holds another count.
std::optional<std::array<std::string, 2>> Felder(std::string_view zeile) {
    std::array<std::string, 2> felder;
    std::size_t anzahl = 0;
    for (std::size_t i = 0; i < zeile.size();) {
        if (Trenner(zeile[i])) {
            ++i;
            continue;
        }
        std::size_t ende = i;
        while (ende < zeile.size() && !Trenner(zeile[ende]))
            ++ende;
        if (anzahl == 2)
            return std::nullopt;
        std::string& feld = felder[anzahl++];
        feld.assign(zeile.substr(i, ende - i));
        for (char& c : feld)
            if (c == ',')
                c = '.';
        i = ende;
    }
    if (anzahl != 2)
        return std::nullopt;
    return felder;
}

bool GanzeZahl(std::string_view text, double& wert) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return fehler == std::errc() && ende == text.data() + text.size();
}

/// An angle field: a decimal degree or degrees, minutes and seconds marked with "°", "'" and
/// '"'. Each piece between the marks must be a whole number text.
std::optional<double> WinkelLesen(std::string_view feld) {
    std::size_t stücke = 0;
    std::size_t i = 0;
    while (i < feld.size()) {
        std::size_t ende = i;
        while (ende < feld.size() && feld[ende] != '\'' && feld[ende] != '"' &&
               !feld.substr(ende).starts_with("\xC2\xB0"))
            ++ende;
        double wert = 0;
        if (ende > i && (++stücke > 3 || !GanzeZahl(feld.substr(i, ende - i), wert)))
            return std::nullopt;
        i = ende;
        if (i < feld.size())
            i += feld[i] == '\xC2' ? 2 : 1;
    }
    // A sign would belong to the degrees alone, so a negative angle in degrees and minutes is
    // refused rather than misread.
    if (stücke == 0 || (stücke > 1 && feld.starts_with('-')))
        return std::nullopt;
    return karte::GradTextNachBogen(feld);
}

std::string Festkomma(double wert, int stellen) {
    char puffer[64];
    const auto [ende, fehler] =
        std::to_chars(puffer, puffer + sizeof puffer, wert, std::chars_format::fixed, stellen);
    return fehler == std::errc() ? std::string(puffer, ende) : "nan";
}

/// One pair from `von` to `nach`; nothing when a field is no number.
std::optional<std::string> Umrechnen(const std::array<std::string, 2>& felder, System von,
                                     System nach) {
    double phi = 0, lambda = 0;
    if (von.geographisch()) {
        const auto breite = WinkelLesen(felder[0]);
        const auto länge = WinkelLesen(felder[1]);
        if (!breite || !länge)
            return std::nullopt;
        phi = *breite;
        lambda = *länge;
    } else {
        KoordinatenSatz satz;
        if (!GanzeZahl(felder[0], satz.Wert1) || !GanzeZahl(felder[1], satz.Wert2))
            return std::nullopt;
        satz = karte::ETRSNachGeographisch(std::move(satz), von.L0);
        phi = satz.Wert1 * karte::Pi / 180.0;
        lambda = satz.Wert2 * karte::Pi / 180.0;
    }
    if (nach.geographisch())
        return Festkomma(phi * 180.0 / karte::Pi, 10) + " " +
               Festkomma(lambda * 180.0 / karte::Pi, 10);
    const auto [ost, nord] = karte::GeographischBogenNachETRS(phi, lambda, nach.L0);
    return Festkomma(ost, 3) + " " + Festkomma(nord, 3);
}

} // namespace

int BefehlKoordinaten(const std::vector<std::string>& argumente, std::ostream& aus,
                      std::ostream& fehler, const Umgebung&) {
    const auto args = ArgumenteLesen(argumente, {}, {"--von", "--nach"}, fehler);
    if (!args)
        return 2;
    const auto von = SystemLesen(args->Wert("--von").value_or(""));
    const auto nach = SystemLesen(args->Wert("--nach").value_or(""));
    if (!von || !nach || args->positionen.size() > 1) {
        fehler
            << "flurix koordinaten: Bitte --von und --nach mit 25832, 25833 oder geo angeben und "
               "höchstens eine Datei. Hilfe: flurix koordinaten --help\n";
        return 2;
    }
    std::string text;
    if (args->positionen.empty()) {
        text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    } else {
        const std::string& datei = args->positionen.front();
        if (!DateiVorhanden(datei)) {
            fehler << "flurix koordinaten: Die Datei " << datei << " ist nicht vorhanden.\n";
            return 1;
        }
        text = DateiKomplettLesen(datei);
    }
    // Windows-1252 files are read too: their "°" is one byte.
    text = DateitextNachUtf8(text);

    int code = 0;
    std::size_t nummer = 0;
    for (const std::string_view zeile : TextZeilen(text)) {
        ++nummer;
        if (zeile.find_first_not_of(" \t") == std::string_view::npos) {
            aus << '\n';
            continue;
        }
        const auto felder = Felder(zeile);
        const auto ergebnis = felder ? Umrechnen(*felder, *von, *nach) : std::nullopt;
        if (!ergebnis) {
            // The line stays in its place as an empty one, so that output and input keep in step.
            fehler << "flurix koordinaten: Zeile " << nummer << " ist kein Koordinatenpaar: \""
                   << zeile << "\"\n";
            aus << '\n';
            code = 1;
            continue;
        }
        aus << *ergebnis << '\n';
    }
    return code;
}

} // namespace flurix::cli
