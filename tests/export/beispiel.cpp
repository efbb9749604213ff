#include "beispiel.hpp"

#include "gemeinsam/testumgebung.hpp"

namespace flurix::test {

Kataster Beispieltabelle() {
    Kataster k;
    k.SpalteHinzufügen({"Gemarkung", "Gemarkung", 1200});
    k.SpalteHinzufügen({"Flur", "Flur", 600});
    k.SpalteHinzufügen({"Flurstück", "Flurstück", 1000});
    k.SpalteHinzufügen({"Name", "Eigentümer", 2400});
    k.SpalteHinzufügen({"Geheim", "Geheim", 800});
    KatasterSpalte markierung("checkdruck", " ", 600);
    markierung.kontrollkästchen = true;
    k.SpalteHinzufügen(markierung);
    k.Spalte(4).sichtbar = false;
    k.SpalteVerschieben(3, 0);
    k.ZeileHinzufügen(std::vector<std::string_view>{"Musterhausen", "007", "00231/0001",
                                                    "Meier & <Söhne> \"Erben\"", "x", "1"});
    k.ZeileHinzufügen(
        std::vector<std::string_view>{"Süd", "001", "00012/0000", "Tab\there$dollar", "y", ""});
    k.ZeileHinzufügen(std::vector<std::string_view>{"Łódź €", "010", "00001/0000",
                                                    "Zeile1\r\nZeile2", "z", "1"});
    return k;
}

std::vector<std::pair<std::string, std::string>> Fragen(const SkriptOberfläche& ui) {
    std::vector<std::pair<std::string, std::string>> fragen;
    for (const auto& e : ui.Ereignisse())
        if (e.art == Ereignis::Art::Frage)
            fragen.emplace_back(e.text, e.titel);
    return fragen;
}

std::optional<std::string> Befehl(const std::string& befehl) {
    auto lauf = Ausführen(befehl);
    return lauf.status == 0 ? std::optional(std::move(lauf.ausgabe)) : std::nullopt;
}

std::string Python() {
    return std::filesystem::exists("/usr/bin/python3") ? "/usr/bin/python3" : "";
}

Zellen Zerlegen(std::string_view ausgabe) {
    Zellen zeilen;
    std::vector<std::string> zeile;
    std::string zelle;
    for (const char c : ausgabe) {
        if (c == '\x1f') {
            zeile.push_back(std::move(zelle));
            zelle.clear();
        } else if (c == '\x1e') {
            zeilen.push_back(std::move(zeile));
            zeile.clear();
        } else {
            zelle += c;
        }
    }
    return zeilen;
}

} // namespace flurix::test
