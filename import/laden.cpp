#include "import/laden.hpp"

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche.hpp"
#include "core/programm.hpp"
#include "core/suche.hpp"
#include "import/tabelle_laden.hpp"
#include "import/webxml.hpp"
#include "import/wldge_komplett.hpp"
#include "import/wldge_schnell.hpp"
#include "nas/nas_auftrag.hpp"

namespace flurix::import {
namespace {

/// Passes everything on and keeps the last text of status panel 1, so that the reader's last word
/// ("... Zeilen eingelesen") can stand again after the box was filled.
class Statusgedächtnis final : public Oberfläche {
public:
    explicit Statusgedächtnis(Oberfläche& ui) : m_ui(ui) {}
    void Meldung(std::string_view text, std::string_view titel, Stil stil) override {
        m_ui.Meldung(text, titel, stil);
    }
    Antwort Frage(const Fragestellung& frage) override { return m_ui.Frage(frage); }
    void Status(int panel, std::string_view text) override {
        if (panel == 1)
            m_letzter.assign(text);
        m_ui.Status(panel, text);
    }
    void Fortschritt(long long wert, long long max) override { m_ui.Fortschritt(wert, max); }
    bool AbbruchGewünscht() override { return m_ui.AbbruchGewünscht(); }
    void Protokoll(std::string_view zeile) override { m_ui.Protokoll(zeile); }

    /// Shows the kept text again.
    void Wiederherstellen() { m_ui.Status(1, m_letzter); }

private:
    Oberfläche& m_ui;
    std::string m_letzter;
};

/// How a reader fills the box.
enum class Boxregel {
    Spalten,  ///< from the columns Gemarkung and Flur
    Keine,    ///< the box is emptied
    Eigene,   ///< the reader gives the entries itself (saved tables)
};

class Ladung {
public:
    Ladung(ImportOptionen& optionen, Programmzustand& zustand, const Ladebindung& bindung,
           Kataster& kataster, Oberfläche& ui)
        : m_zustand(zustand), m_bindung(bindung), m_kataster(kataster), m_ui(ui) {
        m_umgebung.optionen = optionen;
        m_umgebung.optionenDialog = bindung.optionenDialog;
    }

    Ladeergebnis Laden(const Ladeauftrag& auftrag) {
        LeserEintragen(auftrag);
        m_ergebnis.ergebnis = ALBDatenLaden(auftrag, m_umgebung, m_ui);
        return std::move(m_ergebnis);
    }
    const ImportOptionen& Optionen() const { return m_umgebung.optionen; }

    Ladeergebnis Füllen(const std::function<Ergebnis(Kataster&, Oberfläche&)>& füllen) {
        m_ergebnis.ergebnis = Einlesen([&](Oberfläche& ui) { return füllen(m_kataster, ui); }, Boxregel::Spalten);
        return std::move(m_ergebnis);
    }

private:
    void Ändern(const std::function<void()>& arbeit) const {
        if (m_bindung.tabelleÄndern)
            m_bindung.tabelleÄndern(arbeit);
        else
            arbeit();
    }

    /// Runs a reader inside a change of the table and fills the box by its rule afterwards.
    Ergebnis Einlesen(const std::function<Ergebnis(Oberfläche&)>& lesen, Boxregel regel) {
        Ergebnis ergebnis;
        Ändern([&] {
            Statusgedächtnis ui(m_ui);
            ergebnis = lesen(ui);
            if (!ergebnis || !m_bindung.gemarkungsbox || regel != Boxregel::Spalten)
                return;
            m_ergebnis.gemarkungsbox.emplace();
            if (!m_kataster.SpaltenIndex("Gemarkung"))
                return;
            m_ergebnis.gemarkungsbox = BoxGemFlurFüllen(m_kataster, ui);
            // Filling the box sorts the table its own way; every reader leaves it in this order.
            m_kataster.Sortieren(StandardSortierung);
            ui.Wiederherstellen();
        });
        if (ergebnis && m_bindung.gemarkungsbox && regel == Boxregel::Keine)
            m_ergebnis.gemarkungsbox.emplace();
        return ergebnis;
    }

    void LeserEintragen(const Ladeauftrag& auftrag) {
        auto& leser = m_umgebung.leser;
        const std::filesystem::path ansichtsdatei = m_zustand.installation.Spaltenansichten();
        leser.wldgeKomplett = [this, ansichtsdatei](const std::filesystem::path& datei,
                                                    const ImportOptionen& optionen) {
            const WldgeKomplettUmgebung komplett{m_zustand.arbeitsverzeichnis, ansichtsdatei,
                                                 m_bindung.ansicht};
            return Einlesen([&](Oberfläche& ui) {
                return WldgeKomplettLesen(datei, optionen, komplett, m_kataster, ui);
            }, Boxregel::Spalten);
        };
        leser.wldgeSchnell = [this](const std::filesystem::path& datei, const ImportOptionen& optionen) {
            return Einlesen([&](Oberfläche& ui) { return WldgeSchnellLesen(datei, optionen, m_kataster, ui); },
                            optionen.suchbegriffGemarkung ? Boxregel::Spalten : Boxregel::Keine);
        };
        // The window reads a Web-XML file chosen as such behind the rows the replace question left
        // (none after a Yes); the reader then asks itself whether to append.
        const bool webXmlAnfügen =
            m_bindung.anfügen || (m_bindung.interaktiv && auftrag.art == Eingabeart::WebXml);
        leser.webXml = [this, webXmlAnfügen](const std::vector<std::filesystem::path>& dateien,
                                             const ImportOptionen& optionen) {
            return Einlesen([&](Oberfläche& ui) {
                return WebXmlLesen(dateien, optionen, webXmlAnfügen, m_kataster, ui);
            }, Boxregel::Spalten);
        };
        leser.tabelle = [this, ansichtsdatei](const std::filesystem::path& datei) {
            const bool ausKennzeichen = m_umgebung.optionen.suchbegriffGemarkung;
            const TabellenLadeumgebung tabelle{ansichtsdatei, m_bindung.ansicht, ausKennzeichen};
            std::vector<std::string> einträge;
            const Ergebnis ergebnis = Einlesen([&](Oberfläche& ui) {
                return GespeicherteTabelleLaden(datei, tabelle, m_kataster, ui, &einträge);
            }, Boxregel::Eigene);
            if (ergebnis && m_bindung.gemarkungsbox) {
                m_ergebnis.gemarkungsbox = std::move(einträge);
                m_ergebnis.boxAusKennzeichen = ausKennzeichen;
            }
            return ergebnis;
        };
        if (m_bindung.nasFenster) {
            leser.nasFenster = m_bindung.nasFenster;
            return LeerenEintragen();
        }
        // NAS goes the direct way into the table: scan, compilation, transfer.
        leser.nasFenster = [this](const std::filesystem::path& datei) {
            const auto nasAuftrag =
                nas::NasAuftragFür(m_zustand, datei, std::nullopt, m_bindung.ansicht, m_bindung.interaktiv);
            return Einlesen([&](Oberfläche& ui) {
                nas::NasDirektBericht bericht;
                return nas::NasDirektImport(nasAuftrag, m_kataster, ui, bericht);
            }, Boxregel::Spalten);
        };
        LeerenEintragen();
    }

    void LeerenEintragen() {
        // Appending on the command line leaves the replace question out: the table counts as empty.
        if (m_bindung.anfügen)
            m_umgebung.tabellenZeilen = [] { return std::size_t{0}; };
        else
            m_umgebung.tabellenZeilen = [this] { return m_kataster.Zeilenzahl(); };
        m_umgebung.tabelleLeeren = [this] {
            if (m_bindung.vorDemLeeren)
                m_bindung.vorDemLeeren();
            Ändern([this] { m_kataster.Leeren(); });
        };
    }

    Programmzustand& m_zustand;
    const Ladebindung& m_bindung;
    Kataster& m_kataster;
    Oberfläche& m_ui;
    Ladeumgebung m_umgebung;
    Ladeergebnis m_ergebnis;
};

} // namespace

Ladeergebnis DatenLaden(const Ladeauftrag& auftrag, ImportOptionen& optionen, Programmzustand& zustand,
                        const Ladebindung& bindung, Kataster& kataster, Oberfläche& ui) {
    Ladung ladung(optionen, zustand, bindung, kataster, ui);
    Ladeergebnis ergebnis = ladung.Laden(auftrag);
    // What the options dialog chose holds for the search and the next load of this run.
    optionen = ladung.Optionen();
    return ergebnis;
}

Ladeergebnis TabelleFüllen(const std::function<Ergebnis(Kataster&, Oberfläche&)>& füllen,
                           Programmzustand& zustand, const Ladebindung& bindung, Kataster& kataster,
                           Oberfläche& ui) {
    ImportOptionen optionen;
    Ladung ladung(optionen, zustand, bindung, kataster, ui);
    return ladung.Füllen(füllen);
}

} // namespace flurix::import
