#include "nas/nas_form.hpp"

#include "core/text.hpp"

#include <algorithm>

namespace flurix::nas {
namespace {

bool Namenszeichen(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.' || c == ':';
}

// The element name that starts at `lt` ("<wfs:member ..." gives "wfs:member").
std::string_view Elementname(std::string_view kopf, std::size_t lt) {
    std::size_t ende = lt + 1;
    while (ende < kopf.size() && Namenszeichen(kopf[ende]))
        ++ende;
    return kopf.substr(lt + 1, ende - lt - 1);
}

// The prefix of the first feature inside a member element: "<wfs:member><adv:AX_Flurstueck" gives
// "adv:". False when no member holds an AX_ or AP_ feature in the head.
bool MerkmalPräfix(std::string_view kopf, std::string& präfix) {
    for (std::string_view mitglied : {"<wfs:member", "<gml:featureMember"}) {
        for (auto pos = kopf.find(mitglied); pos != std::string_view::npos;
             pos = kopf.find(mitglied, pos + 1)) {
            const auto lt = kopf.find('<', pos + 1);
            if (lt == std::string_view::npos)
                break;
            const std::string_view name = Elementname(kopf, lt);
            const auto doppelpunkt = name.rfind(':');
            const std::string_view lokal =
                doppelpunkt == std::string_view::npos ? name : name.substr(doppelpunkt + 1);
            if (lokal.starts_with("AX_") || lokal.starts_with("AP_") || lokal.starts_with("AA_")) {
                präfix = std::string(
                    name.substr(0, doppelpunkt == std::string_view::npos ? 0 : doppelpunkt + 1));
                return true;
            }
        }
    }
    return false;
}

// The versions in the AdV namespaces "http://www.adv-online.de/namespaces/adv/gid/6.0", in the
// order the head names them, each once.
std::vector<std::string> Versionen(std::string_view kopf) {
    constexpr std::string_view ns = "adv-online.de/namespaces/adv/gid/";
    std::vector<std::string> versionen;
    for (auto pos = kopf.find(ns); pos != std::string_view::npos; pos = kopf.find(ns, pos + 1)) {
        const auto anfang = pos + ns.size();
        auto ende = anfang;
        while (ende < kopf.size() &&
               ((kopf[ende] >= '0' && kopf[ende] <= '9') || kopf[ende] == '.'))
            ++ende;
        std::string version(kopf.substr(anfang, ende - anfang));
        while (!version.empty() && version.back() == '.')
            version.pop_back();
        if (!version.empty() &&
            std::find(versionen.begin(), versionen.end(), version) == versionen.end())
            versionen.push_back(std::move(version));
    }
    return versionen;
}

} // namespace

bool NasPräfix(std::string_view kopf, std::string& präfix) {
    constexpr std::string_view wurzel = "AX_Bestandsdatenauszug";
    for (auto pos = kopf.find(wurzel); pos != std::string_view::npos;
         pos = kopf.find(wurzel, pos + 1)) {
        const auto lt = kopf.rfind('<', pos);
        if (lt == std::string_view::npos)
            continue;
        const auto zwischen = TrimmeLeerzeichen(kopf.substr(lt + 1, pos - lt - 1));
        // Only an element name: "<AX_..." or "<adv:AX_...", not a word in a comment.
        if (std::all_of(zwischen.begin(), zwischen.end(), Namenszeichen) &&
            (zwischen.empty() || zwischen.back() == ':')) {
            präfix = std::string(zwischen);
            return true;
        }
    }
    return false;
}

std::string NasFormbefund::Name() const {
    std::string name;
    switch (form) {
    case NasForm::Bestandsdatenauszug:
        name = "NAS-Bestandsdatenauszug";
        break;
    case NasForm::WfsSammlung:
        name = "WFS-Sammlung";
        break;
    case NasForm::Aktualisierung:
        name = "NBA-Aktualisierung";
        break;
    case NasForm::Unbekannt:
        return "unbekannte Form";
    }
    return gid.empty() ? name : name + " (GID " + gid + ")";
}

NasFormbefund NasFormErkennen(std::string_view kopf) {
    NasFormbefund befund;
    std::vector<std::string> versionen = Versionen(kopf);
    if (!versionen.empty()) {
        befund.gid = versionen.front();
        befund.weitereVersionen.assign(versionen.begin() + 1, versionen.end());
    }
    if (kopf.find("AX_NutzerbezogeneBestandsdatenaktualisierung_NBA") != std::string_view::npos) {
        befund.form = NasForm::Aktualisierung;
        NasPräfix(kopf, befund.präfix);
    } else if (NasPräfix(kopf, befund.präfix)) {
        befund.form = NasForm::Bestandsdatenauszug;
    } else if (kopf.find("FeatureCollection") != std::string_view::npos &&
               MerkmalPräfix(kopf, befund.präfix)) {
        befund.form = NasForm::WfsSammlung;
    }
    return befund;
}

} // namespace flurix::nas
