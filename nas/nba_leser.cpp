#include "nas/nba_leser.hpp"

#include "core/fehler.hpp"

#include <array>

namespace flurix::nas {
namespace {

constexpr std::size_t Block = 1u << 20;

struct Form {
    std::string_view start; ///< "<" and the element name
    NbaOperation::Art art;
};
constexpr std::array<Form, 5> Formen = {{{"<wfs:Insert", NbaOperation::Art::Einfügen},
                                         {"<wfsext:Replace", NbaOperation::Art::Ersetzen},
                                         {"<wfs:Replace", NbaOperation::Art::Ersetzen},
                                         {"<wfs:Delete", NbaOperation::Art::Löschen},
                                         {"<wfs:Update", NbaOperation::Art::Ändern}}};

bool NamensEnde(char c) {
    return c == ' ' || c == '>' || c == '/' || c == '\t' || c == '\n' || c == '\r';
}

// The value of attribute `name` in a start tag; "" when it has none.
std::string Attribut(std::string_view tag, std::string_view name) {
    for (auto pos = tag.find(name); pos != std::string_view::npos; pos = tag.find(name, pos + 1)) {
        // A whole attribute name: a blank before it, "=" and a quote after it.
        if (pos == 0 || (tag[pos - 1] != ' ' && tag[pos - 1] != '\t' && tag[pos - 1] != '\n' &&
                         tag[pos - 1] != '\r'))
            continue;
        auto rest = tag.substr(pos + name.size());
        if (!rest.starts_with("=\"") && !rest.starts_with("='"))
            continue;
        const char quote = rest[1];
        rest.remove_prefix(2);
        return std::string(rest.substr(0, rest.find(quote)));
    }
    return {};
}

// The element name that begins at `lt` ("<AX_Flurstueck gml:id=..." gives "AX_Flurstueck").
std::string_view Elementname(std::string_view text, std::size_t lt) {
    std::size_t ende = lt + 1;
    while (ende < text.size() && !NamensEnde(text[ende]))
        ++ende;
    return text.substr(lt + 1, ende - lt - 1);
}

NbaOperation Zerlegen(std::string_view text, NbaOperation::Art art) {
    NbaOperation op;
    op.art = art;
    const std::string_view starttag = text.substr(0, text.find('>') + 1);
    op.typName = Attribut(starttag, "typeName");
    op.ignorierbar = Attribut(starttag, "safeToIgnore") == "true";
    std::size_t nachObjekt = starttag.size();
    if (art == NbaOperation::Art::Einfügen || art == NbaOperation::Art::Ersetzen) {
        // The feature is the first element inside the operation.
        const auto lt = text.find('<', starttag.size());
        if (lt != std::string_view::npos && text.substr(lt).size() > 1 && text[lt + 1] != '/') {
            const std::string_view name = Elementname(text, lt);
            const std::string ende = "</" + std::string(name) + ">";
            const auto schluss = text.find(ende, lt);
            if (schluss != std::string_view::npos) {
                op.objekt = std::string(text.substr(lt, schluss + ende.size() - lt));
                nachObjekt = schluss + ende.size();
                const auto doppelpunkt = name.find(':');
                op.typName = std::string(
                    doppelpunkt == std::string_view::npos ? name : name.substr(doppelpunkt + 1));
                op.neueKennung = Attribut(text.substr(lt, text.find('>', lt) - lt), "gml:id");
            }
        }
    }
    // The object an operation acts on: the FeatureId of its filter.
    if (const auto filter = text.find("FeatureId", nachObjekt); filter != std::string_view::npos)
        op.kennung = Attribut(text.substr(filter - 1, text.find('>', filter) - filter + 1), "fid");
    return op;
}

} // namespace

std::string_view Objektkennung(std::string_view kennung) { return kennung.substr(0, 16); }

NbaLeser::NbaLeser(const std::filesystem::path& datei) : m_datei(datei, std::ios::binary) {
    if (!m_datei)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht gelesen werden.");
}

bool NbaLeser::Nachlesen() {
    if (m_dateiende)
        return false;
    if (m_anfang > 0) {
        m_puffer.erase(0, m_anfang);
        m_anfang = 0;
    }
    const std::size_t alt = m_puffer.size();
    m_puffer.resize(alt + Block);
    m_datei.read(m_puffer.data() + alt, static_cast<std::streamsize>(Block));
    m_puffer.resize(alt + static_cast<std::size_t>(m_datei.gcount()));
    m_dateiende = !m_datei;
    return m_puffer.size() > alt;
}

std::optional<NbaOperation> NbaLeser::Nächste() {
    for (;;) {
        const std::string_view text(m_puffer);
        std::size_t pos = std::string_view::npos;
        const Form* form = nullptr;
        for (const Form& f : Formen)
            for (auto p = text.find(f.start, m_anfang); p != std::string_view::npos && p < pos;
                 p = text.find(f.start, p + 1))
                if (p + f.start.size() < text.size() && NamensEnde(text[p + f.start.size()])) {
                    pos = p;
                    form = &f;
                    break;
                }
        if (form == nullptr) {
            // Keep a tail that may hold the start of a tag cut by the block's end.
            m_anfang = m_puffer.size() > 64 ? std::max(m_anfang, m_puffer.size() - 64) : m_anfang;
            if (!Nachlesen())
                return std::nullopt;
            continue;
        }
        const std::string_view name = form->start.substr(1);
        const auto tagende = text.find('>', pos);
        std::size_t schluss = std::string_view::npos;
        std::size_t länge = 0;
        if (tagende != std::string_view::npos && text[tagende - 1] == '/') {
            schluss = tagende;
            länge = 1;
        } else if (tagende != std::string_view::npos) {
            const std::string ende = "</" + std::string(name) + ">";
            schluss = text.find(ende, tagende);
            länge = ende.size();
        }
        if (schluss == std::string_view::npos) {
            m_anfang = pos;
            if (!Nachlesen()) {
                m_abgeschnitten = true;
                return std::nullopt;
            }
            continue;
        }
        m_anfang = schluss + länge;
        return Zerlegen(text.substr(pos, schluss + länge - pos), form->art);
    }
}

} // namespace flurix::nas
