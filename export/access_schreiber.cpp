#include "export/tabellenschreiber.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/text.hpp"

#include <optional>
#include <set>

namespace flurix::ausgabe {
namespace {

std::string Getrimmt(std::string_view text) {
    const auto anfang = text.find_first_not_of(' ');
    if (anfang == std::string_view::npos)
        return {};
    return std::string(text.substr(anfang, text.find_last_not_of(' ') - anfang + 1));
}

} // namespace

struct AccessSchreiber::Zustand {
    explicit Zustand(std::filesystem::path pfad) : datei(std::move(pfad)), db(datei) {}

    std::filesystem::path datei;
    Datenbank db;
    std::optional<Transaktion> transaktion;
    std::optional<Anweisung> einfügen;
    bool fertig = false;
};

AccessSchreiber::AccessSchreiber(const std::filesystem::path& datenbank,
                                 std::span<const Ausgabespalte> spalten) {
    std::set<std::string> vergeben; // folded, as SQLite compares field names
    for (std::size_t i = 0; i < spalten.size(); ++i) {
        const std::string name = Getrimmt(spalten[i].überschrift);
        if (name.empty())
            continue;
        std::string feld = name;
        for (int n = 2; vergeben.contains(Kleinbuchstaben(feld)); ++n)
            feld = name + "_" + std::to_string(n);
        vergeben.insert(Kleinbuchstaben(feld));
        m_felder.push_back(feld);
        m_quellen.push_back(i);
    }
    if (m_felder.empty())
        throw Fehler("Die Access-Datei " + datenbank.string() +
                     " kann nicht erzeugt werden: keine Spalte hat eine Überschrift!");
    if (std::filesystem::exists(datenbank))
        throw Fehler("Die Access-Datei " + datenbank.string() + " ist schon vorhanden!");

    m_zustand = std::make_unique<Zustand>(datenbank);
    Zustand& z = *m_zustand;
    // A scratch database that is copied at the end: nothing to gain from syncing each page.
    z.db.AusführenNativ("PRAGMA synchronous = OFF");
    z.transaktion.emplace(z.db);
    std::vector<Feld> felder;
    std::string einfügen = "INSERT INTO \"ACCESS\" VALUES (";
    for (const auto& name : m_felder) {
        felder.push_back({name, Feldtyp::Text});
        einfügen += felder.size() == 1 ? "?" : ", ?";
    }
    z.db.TabelleAnlegen("ACCESS", felder);
    z.einfügen.emplace(z.db.VorbereitenNativ(einfügen + ")"));
}

AccessSchreiber::~AccessSchreiber() {
    if (!m_zustand || m_zustand->fertig)
        return;
    const std::filesystem::path datei = m_zustand->datei;
    m_zustand.reset();
    std::error_code ec;
    std::filesystem::remove(datei, ec);
}

void AccessSchreiber::Zeile(std::span<const std::string_view> zellen) {
    Anweisung& einfügen = *m_zustand->einfügen;
    einfügen.Zurücksetzen();
    for (const std::size_t quelle : m_quellen)
        einfügen.Binde(AccessWert(zellen[quelle]));
    einfügen.Schritt();
}

void AccessSchreiber::Abschließen() {
    Zustand& z = *m_zustand;
    z.einfügen.reset();
    z.transaktion->Bestätigen();
    z.transaktion.reset();
    z.fertig = true;
}

} // namespace flurix::ausgabe
