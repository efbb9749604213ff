#include "nas/element_leser.hpp"

#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"
#include "nas/geometrie.hpp"
#include "nas/konfig_suche.hpp"

#include <pugixml.hpp>

#include <cstring>
#include <unordered_map>

namespace flurix::nas {
namespace {

// One step of a child path; "[0]" keeps the first of each parent.
struct Schritt {
    std::string name;
    bool nurErster = false;
};

std::vector<Schritt> PfadZerlegen(std::string_view pfad, std::string_view präfix) {
    std::vector<Schritt> schritte;
    for (auto teil : Teilen(pfad, '/')) {
        if (teil.empty())
            continue;
        Schritt schritt;
        if (teil.ends_with("[0]")) {
            schritt.nurErster = true;
            teil.remove_suffix(3);
        }
        // Elements of the NAS namespace carry the file's prefix; gml:, xlink: ... keep their own.
        if (teil.find(':') == std::string_view::npos)
            schritt.name = std::string(präfix);
        schritt.name += teil;
        schritte.push_back(std::move(schritt));
    }
    return schritte;
}

void Wählen(pugi::xml_node kontext, const std::vector<Schritt>& schritte, std::size_t stufe,
            std::vector<pugi::xml_node>& aus) {
    if (stufe == schritte.size()) {
        aus.push_back(kontext);
        return;
    }
    const Schritt& schritt = schritte[stufe];
    for (pugi::xml_node kind = kontext.child(schritt.name.c_str()); kind;
         kind = kind.next_sibling(schritt.name.c_str())) {
        Wählen(kind, schritte, stufe + 1, aus);
        if (schritt.nurErster)
            break;
    }
}

std::string_view Getrimmt(const char* text) {
    std::string_view wert(text);
    const auto anfang = wert.find_first_not_of(" \t\r\n");
    if (anfang == std::string_view::npos)
        return {};
    const auto ende = wert.find_last_not_of(" \t\r\n");
    return wert.substr(anfang, ende - anfang + 1);
}

bool IstText(pugi::xml_node knoten) {
    return knoten.type() == pugi::node_pcdata || knoten.type() == pugi::node_cdata;
}

// The text of a node: its own text pieces and those of its descendants, trimmed, one blank
// between them.
void TextAnhängen(pugi::xml_node knoten, std::string& aus) {
    if (IstText(knoten)) {
        const auto stück = Getrimmt(knoten.value());
        if (!stück.empty()) {
            if (!aus.empty())
                aus += ' ';
            aus += stück;
        }
        return;
    }
    for (pugi::xml_node kind = knoten.first_child(); kind; kind = kind.next_sibling())
        TextAnhängen(kind, aus);
}

std::string Text(pugi::xml_node knoten) {
    std::string text;
    TextAnhängen(knoten, text);
    return text;
}

std::string HinterLetztemDoppelpunkt(std::string_view wert) {
    const auto pos = wert.rfind(':');
    return std::string(pos == std::string_view::npos ? wert : wert.substr(pos + 1));
}

bool EnthältDoppelkodierung(std::string_view text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '\xC3' && (text[i + 1] == '\x83' || text[i + 1] == '\x82'))
            return true;
    return false;
}

enum class Umwandlung { Keine, Linie, Bogen, Fachdatenobjekt };

// How the further references of one feature in one relation element are kept.
enum class Mehrfach { Anhängen, Ersetzen, Verwerfen };

Mehrfach MehrfachRegel(std::string_view klasse, std::string_view tabelle) {
    if (klasse == "AX_LagebezeichnungOhneHausnummer" ||
        tabelle == "AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer" ||
        tabelle == "AX_Flurstueck_zeigtAuf#ori_LagebezeichnungOhneHausnummer" ||
        tabelle == "AX_Buchungsstelle_an#ori_Buchungsstelle" ||
        tabelle == "AX_Buchungsstelle_zu#ori_Buchungsstelle")
        return Mehrfach::Anhängen;
    if (klasse != "AX_Flurstueck" && klasse != "AX_Buchungsstelle")
        return Mehrfach::Ersetzen;
    return Mehrfach::Verwerfen;
}

constexpr std::string_view Fachdatenobjekt = "zeigtAufExternes/AA_Fachdatenverbindung/fachdatenobjekt";

} // namespace

std::string Dokumentkopf(std::string_view präfix, std::string_view mitgliedTag) {
    std::string kopf = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n<";
    kopf += präfix;
    kopf += "AX_Bestandsdatenauszug "
            "xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
            "xmlns:adv=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
            "xmlns:gco=\"http://www.isotc211.org/2005/gco\" "
            "xmlns:gmd=\"http://www.isotc211.org/2005/gmd\" "
            "xmlns:gml=\"http://www.opengis.net/gml/3.2\" "
            "xmlns:ows=\"http://www.opengis.net/ows\" "
            "xmlns:wfs=\"http://www.adv-online.de/namespaces/adv/gid/wfs\" "
            "xmlns:wfsext=\"http://www.adv-online.de/namespaces/adv/gid/wfsext\" "
            "xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
            "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xmlns:ogc=\"http://www.adv-online.de/namespaces/adv/gid/ogc\" "
            "xmlns:gds=\"http://www.adv-online.de/namespaces/adv/gid/5.1.1/gds\" "
            "xsi:schemaLocation=\"http://www.adv-online.de/namespaces/adv/gid/6.0 "
            "NAS-Operationen.xsd\">\r\n<";
    kopf += mitgliedTag;
    kopf += ">\r\n";
    return kopf;
}

struct ElementLeser::Klasse {
    struct Feld {
        const KnotenFeld* knoten = nullptr;
        std::vector<Schritt> schritte;
        std::vector<std::vector<Schritt>> auch; // further paths into the same column
        int spalte = -1; // attribute and geometry fields
        Umwandlung umwandlung = Umwandlung::Keine;
        bool kennzeichen = false; // flurstueckskennzeichen: "_" becomes "0"
        bool srs = false;
        int relation = -1;
        int geometrie = -1; // geometry fields: the number of their tag in the document's finds
    };
    struct Relation {
        std::string tabelle;
        std::string element;
        std::vector<Schritt> schritte; // to the element
        std::string attribut;
        Mehrfach mehrfach = Mehrfach::Verwerfen;
        bool jedeEigeneZeile = false; // istGebucht: every reference is a row
        std::unique_ptr<Anweisung> einfügen;
    };

    const KnotenKlasse* knoten = nullptr;
    std::string tag;
    std::vector<Schritt> oben; // path prefix + tag[0]
    std::vector<Feld> felder;
    std::vector<std::string> spalten;
    std::vector<bool> kurz; // column of 255 characters
    std::vector<Relation> relationen;
    std::unique_ptr<Anweisung> einfügen;
};

// Per document: the elements of every class tag and geometry tag, in document order.
struct ElementLeser::Fund {
    std::vector<pugi::xml_node> knoten;
};

struct ElementLeser::Intern {
    pugi::xml_document dokument;
    std::unordered_map<std::string, std::size_t> tagNummer; // class tags and geometry tags
    std::vector<Fund> funde;
    std::vector<std::vector<std::size_t>> klassenJeTag;
    bool ersteZeichen[256] = {};
    std::vector<pugi::xml_node> oben; // the feature elements of the class being read
    std::vector<pugi::xml_node> auswahl;
    std::vector<std::string> werte;
    std::vector<std::pair<std::string, std::string>> relationszeilen;

    std::size_t TagNummer(const std::string& tag) {
        const auto [it, neu] = tagNummer.emplace(tag, funde.size());
        if (neu) {
            funde.emplace_back();
            klassenJeTag.emplace_back();
            ersteZeichen[static_cast<unsigned char>(tag.front())] = true;
        }
        return it->second;
    }

    void Sammeln(pugi::xml_node knoten) {
        for (pugi::xml_node kind = knoten.first_child(); kind; kind = kind.next_sibling()) {
            if (kind.type() != pugi::node_element)
                continue;
            const char* name = kind.name();
            if (ersteZeichen[static_cast<unsigned char>(name[0])]) {
                if (auto it = tagNummer.find(name); it != tagNummer.end())
                    funde[it->second].knoten.push_back(kind);
            }
            Sammeln(kind);
        }
    }
};

ElementLeser::ElementLeser(Datenbank& db, const KnotenDatei& knoten, Dateirahmen rahmen,
                           std::function<void(std::string_view)> meldung)
    : m_db(db), m_kopf(Dokumentkopf(rahmen.präfix, rahmen.mitgliedTag)),
      m_fuß("\r\n</" + rahmen.mitgliedTag + ">\r\n</" + rahmen.präfix + "AX_Bestandsdatenauszug>"),
      m_rahmen(std::move(rahmen)), m_meldung(std::move(meldung)), m_intern(std::make_unique<Intern>()) {
    for (const auto& kk : knoten.klassen) {
        auto klasse = std::make_unique<Klasse>();
        klasse->knoten = &kk;
        klasse->tag = m_rahmen.präfix + kk.tabelle;
        klasse->oben = PfadZerlegen(m_rahmen.xPfad, "");
        klasse->oben.push_back({klasse->tag, true});
        for (const auto& kf : kk.felder) {
            Klasse::Feld feld;
            feld.knoten = &kf;
            if (kf.art == Feldart::Relation) {
                Klasse::Relation relation;
                relation.tabelle = kf.RelationsTabelle(kk.tabelle);
                relation.element = kf.element;
                relation.schritte = PfadZerlegen(kf.element, m_rahmen.präfix);
                relation.attribut = kf.attribut;
                relation.mehrfach = MehrfachRegel(kk.tabelle, relation.tabelle);
                relation.jedeEigeneZeile = kf.element == "istGebucht";
                relation.einfügen = std::make_unique<Anweisung>(db.VorbereitenNativ(
                    "INSERT INTO " + Bezeichner(relation.tabelle) + " (\"id\", " +
                    Bezeichner(kf.ziel) + ") VALUES (?, ?)"));
                feld.relation = static_cast<int>(klasse->relationen.size());
                klasse->relationen.push_back(std::move(relation));
            } else if (kf.art != Feldart::Kennung) {
                std::string spalte = m_rahmen.präfix.empty() ? kf.text
                                                             : Ersetzen(kf.text, m_rahmen.präfix, "");
                auto it = std::find(klasse->spalten.begin(), klasse->spalten.end(), spalte);
                feld.spalte = static_cast<int>(it - klasse->spalten.begin());
                if (it == klasse->spalten.end()) {
                    klasse->spalten.push_back(spalte);
                    klasse->kurz.push_back(kf.typ == TypText);
                }
                if (kf.art == Feldart::Geometrie) {
                    feld.geometrie = static_cast<int>(m_intern->TagNummer(kf.text));
                } else {
                    feld.schritte = PfadZerlegen(kf.text, m_rahmen.präfix);
                    for (const auto& pfad : kf.auch)
                        feld.auch.push_back(PfadZerlegen(pfad, m_rahmen.präfix));
                }
                if (kf.text.find("LineStringSegment") != std::string::npos)
                    feld.umwandlung = Umwandlung::Linie;
                else if (kf.text.find("Arc") != std::string::npos)
                    feld.umwandlung = Umwandlung::Bogen;
                else if (kf.text.find(Fachdatenobjekt) != std::string::npos)
                    feld.umwandlung = Umwandlung::Fachdatenobjekt;
                if (kf.text.find("position") != std::string::npos)
                    feld.umwandlung = Umwandlung::Keine;
                feld.kennzeichen = kf.text.find("flurstueckskennzeichen") != std::string::npos;
                feld.srs = kf.text.find("srsName") != std::string::npos;
            }
            klasse->felder.push_back(std::move(feld));
        }
        std::string sql = "INSERT OR IGNORE INTO " + Bezeichner(kk.tabelle) + " (\"id\"";
        for (const auto& spalte : klasse->spalten)
            sql += ", " + Bezeichner(spalte);
        sql += ") VALUES (?";
        for (std::size_t i = 0; i < klasse->spalten.size(); ++i)
            sql += ", ?";
        klasse->einfügen = std::make_unique<Anweisung>(db.VorbereitenNativ(sql + ")"));
        const std::size_t nummer = m_intern->TagNummer(klasse->tag);
        m_intern->klassenJeTag[nummer].push_back(m_klassen.size());
        m_klassen.push_back(std::move(klasse));
    }
}

ElementLeser::~ElementLeser() = default;

std::string_view ElementLeser::Objekt(std::string_view text) {
    ++m_statistik.objekte;
    auto& intern = *m_intern;
    m_dokument.assign(m_kopf);
    if (EnthältDoppelkodierung(text))
        m_dokument += Utf8Reparatur(text);
    else
        m_dokument += text;
    m_dokument += m_fuß;

    // The class of the feature, for the progress: its first element's name.
    m_klassenname.clear();
    if (const auto lt = text.find('<'); lt != std::string_view::npos) {
        const auto ende = text.find_first_of(" \t\r\n/>", lt + 1);
        if (ende != std::string_view::npos)
            m_klassenname = text.substr(lt + 1, ende - lt - 1);
    }

    const auto ergebnis = intern.dokument.load_buffer_inplace(
        m_dokument.data(), m_dokument.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!ergebnis) {
        ++m_statistik.ladefehler;
        // Only a feature that a class would have read is worth a message.
        bool betroffen = false;
        for (const auto& klasse : m_klassen)
            betroffen = betroffen || text.find(klasse->tag) != std::string_view::npos;
        if (betroffen) {
            // The line of the error within the little document, as a parser reports it.
            const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(ergebnis.offset, 0));
            const auto zeile = 1 + std::count(m_dokument.begin(),
                                              m_dokument.begin() + static_cast<std::ptrdiff_t>(
                                                                       std::min(offset, m_dokument.size())),
                                              '\n');
            m_meldung("Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!\nGrund: " +
                      std::string(ergebnis.description()) + "\nZeile: " + std::to_string(zeile));
        }
        return m_klassenname;
    }
    for (auto& fund : intern.funde)
        fund.knoten.clear();
    intern.Sammeln(intern.dokument);
    for (std::size_t nummer = 0; nummer < intern.funde.size(); ++nummer)
        if (!intern.funde[nummer].knoten.empty())
            for (std::size_t k : intern.klassenJeTag[nummer])
                Zeilen(*m_klassen[k], intern.funde[nummer]);
    return m_klassenname;
}

void ElementLeser::Zeilen(Klasse& klasse, const Fund& fund) {
    auto& intern = *m_intern;
    auto& oben = intern.oben;
    oben.clear();
    Wählen(intern.dokument, klasse.oben, 0, oben);

    for (std::size_t k = 0; k < fund.knoten.size(); ++k) {
        const pugi::xml_node merkmal = k < oben.size() ? oben[k] : pugi::xml_node();
        std::string id;
        intern.werte.assign(klasse.spalten.size(), std::string());
        for (const auto& feld : klasse.felder) {
            switch (feld.knoten->art) {
            case Feldart::Kennung:
                if (merkmal)
                    id = IdKennzeichnen(merkmal.attribute("gml:id").value(), "gml:id");
                break;
            case Feldart::Relation: {
                auto& relation = klasse.relationen[static_cast<std::size_t>(feld.relation)];
                intern.auswahl.clear();
                if (merkmal)
                    Wählen(merkmal, relation.schritte, 0, intern.auswahl);
                intern.relationszeilen.clear();
                for (const auto& element : intern.auswahl) {
                    const auto attribut = element.attribute(relation.attribut.c_str());
                    if (!attribut)
                        continue;
                    std::string ziel =
                        IdKennzeichnen(HinterLetztemDoppelpunkt(attribut.value()), "gml:id");
                    if (intern.relationszeilen.empty() || relation.jedeEigeneZeile)
                        intern.relationszeilen.emplace_back(id, std::move(ziel));
                    else if (relation.mehrfach == Mehrfach::Anhängen)
                        intern.relationszeilen.back().second += "; " + ziel;
                    else if (relation.mehrfach == Mehrfach::Ersetzen)
                        intern.relationszeilen.back().second = std::move(ziel);
                }
                for (const auto& [schlüssel, ziel] : intern.relationszeilen) {
                    relation.einfügen->Binde(schlüssel).Binde(ziel);
                    relation.einfügen->Schritt();
                    relation.einfügen->Zurücksetzen();
                }
                break;
            }
            case Feldart::Attribut:
            case Feldart::Geometrie: {
                intern.auswahl.clear();
                const std::vector<pugi::xml_node>* knotenliste = &intern.auswahl;
                if (feld.geometrie >= 0)
                    knotenliste = &intern.funde[static_cast<std::size_t>(feld.geometrie)].knoten;
                else if (merkmal) {
                    Wählen(merkmal, feld.schritte, 0, intern.auswahl);
                    for (const auto& schritte : feld.auch)
                        Wählen(merkmal, schritte, 0, intern.auswahl);
                }
                std::string wert;
                bool erster = true;
                for (const auto& knoten : *knotenliste) {
                    // An element's value is the text of its first child: the value itself, or
                    // the one element below it (gml:exterior holds one gml:Ring).
                    std::string teil = Text(knoten.first_child());
                    switch (feld.umwandlung) {
                    case Umwandlung::Linie:
                        teil = PosUmring(teil);
                        break;
                    case Umwandlung::Bogen:
                        teil = Text(knoten);
                        break;
                    case Umwandlung::Fachdatenobjekt:
                        teil = IdKennzeichnen(TokenNr(teil, 4, ":"), Fachdatenobjekt);
                        break;
                    case Umwandlung::Keine:
                        break;
                    }
                    if (!erster)
                        wert += ';';
                    erster = false;
                    wert += teil;
                }
                if (feld.kennzeichen)
                    std::replace(wert.begin(), wert.end(), '_', '0');
                if (feld.srs)
                    wert = m_rahmen.srsWert;
                auto& spalte = intern.werte[static_cast<std::size_t>(feld.spalte)];
                spalte = std::move(wert);
                // A text column of the default size keeps its first 255 characters.
                if (klasse.kurz[static_cast<std::size_t>(feld.spalte)])
                    spalte.resize(Utf8Anfang(spalte, TextLänge).size());
                break;
            }
            }
        }
        klasse.einfügen->Binde(id);
        for (const auto& wert : intern.werte)
            klasse.einfügen->Binde(wert);
        klasse.einfügen->Schritt();
        klasse.einfügen->Zurücksetzen();
        // The key index refuses a second row with the same key: it is counted, not stored.
        if (m_db.Änderungen() == 0)
            ++m_statistik.doppelteKennungen[klasse.knoten->tabelle];
    }
}

} // namespace flurix::nas
