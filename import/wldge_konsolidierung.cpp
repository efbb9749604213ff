#include "import/wldge_konsolidierung.hpp"

#include "core/datenbank.hpp"
#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/spaltenansicht.hpp"
#include "import/wldge_komplett.hpp"

#include <cmath>
#include <set>

namespace flurix::import {

void WldgeZusammenführen(Datenbank& db, Kataster& kataster,
                         const std::filesystem::path& ansichtsdatei, std::string_view ansicht,
                         Oberfläche& ui, WldgeKomplettBericht& bericht) {
    ui.Status(1, "Datenbank wird restrukturiert   ");
    db.Ausführen("INSERT INTO tblGemFlur SELECT DISTINCT Gemarkung,Flur FROM tblFlurstück");
    {
        auto paare = db.Vorbereiten("SELECT Gemarkung, Flur FROM tblGemFlur");
        while (paare.Schritt())
            bericht.gemarkungFlur.push_back(std::string(paare.Text(0)) + ", Flur: " +
                                            std::string(paare.Text(1)));
    }

    const std::string bedingung =
        " FROM tblFlurstück, tblBestand  WHERE tblFlurstück.IDKeyGb = MID(tblBestand.IDKeyGb,1,13)";
    long long gesamt = 1;
    {
        auto zählen = db.Vorbereiten("SELECT COUNT(*)" + bedingung);
        if (zählen.Schritt())
            gesamt = std::max<long long>(1, zählen.Ganzzahl(0));
    }
    auto verbund = db.Vorbereiten("SELECT *" + bedingung);
    const auto flurstückFelder = db.Spaltennamen("tblFlurstück");
    const std::set<std::string> aufFlurstückSeite(flurstückFelder.begin(), flurstückFelder.end());

    kataster.Leeren();
    std::vector<bool> istZahl;
    for (int i = 0; i < verbund.Spaltenanzahl(); ++i) {
        std::string name(verbund.Spaltenname(i));
        if (verbund.Spaltentabelle(i) == "tblBestand" && aufFlurstückSeite.contains(name))
            name += "_aus_Bestandsdaten";
        const int breite = static_cast<int>(std::lround(KatalogSpalteFür(name).breite * 1.2));
        kataster.SpalteHinzufügen({name, name, breite});
        istZahl.push_back(verbund.Spaltenname(i) == "IDlfd_Nr");
    }
    KatasterSpalte markierung = KatalogSpalteFür("checkdruck");
    markierung.überschrift = ""; // as this reader has always shown it: no sign above the marks
    kataster.SpalteHinzufügen(std::move(markierung));

    std::vector<std::string> zellen(kataster.Spaltenzahl());
    std::vector<std::string_view> ansichten(kataster.Spaltenzahl());
    long long zeilen = 0;
    while (verbund.Schritt()) {
        for (int i = 0; i < verbund.Spaltenanzahl(); ++i) {
            // The running ids are doubles in the database; the table shows them as whole numbers.
            zellen[i] = istZahl[i] && !verbund.IstNull(i)
                            ? std::to_string(std::llround(verbund.Zahl(i)))
                            : std::string(verbund.Text(i));
            ansichten[i] = zellen[i];
        }
        ansichten.back() = {};
        kataster.ZeileHinzufügen(ansichten);
        if (++zeilen % 20 == 0)
            ui.Status(1, std::to_string(zeilen * 100 / gesamt / 2 + 50) +
                             "% von Datenbank erzeugt   ");
    }

    ui.Status(1, "100% von Datenbank erzeugt   ");
    ALBDatenColFormatierung(kataster);
    kataster.Sortieren(StandardSortierung);
    ComboColVis(kataster, ansicht, ansichtsdatei);
}

} // namespace flurix::import
