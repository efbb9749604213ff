// The form of a NAS file from its head: extract, WFS collection (either member element, any
// prefix), update delivery, and what is none of them.

#include "nas/nas_form.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace flurix::nas {
namespace {

TEST(NasForm, AusDemKopf) {
    struct Fall {
        const char* kopf;
        NasForm form;
        const char* präfix;
        const char* name;
        std::vector<std::string> weitere = {};
    };
    const Fall fälle[] = {
        {R"(<AX_Bestandsdatenauszug xmlns="http://www.adv-online.de/namespaces/adv/gid/6.0">)",
         NasForm::Bestandsdatenauszug, "", "NAS-Bestandsdatenauszug (GID 6.0)"},
        {R"(<!-- kein AX_Bestandsdatenauszug --><adv:AX_Bestandsdatenauszug xmlns:adv="http://www.adv-online.de/namespaces/adv/gid/7.1">)",
         NasForm::Bestandsdatenauszug, "adv:", "NAS-Bestandsdatenauszug (GID 7.1)"},
        {R"(<wfs:FeatureCollection xmlns="http://www.adv-online.de/namespaces/adv/gid/6.0"><wfs:boundedBy/>
<wfs:member>
<AX_Flurstueck gml:id="DEBBAL010007T8Vo">)",
         NasForm::WfsSammlung, "", "WFS-Sammlung (GID 6.0)"},
        {R"(<wfs:FeatureCollection xmlns:adv="http://www.adv-online.de/namespaces/adv/gid/6.0.1">
<gml:featureMember><adv:AX_Gebaeude gml:id="DENW000001">)",
         NasForm::WfsSammlung, "adv:", "WFS-Sammlung (GID 6.0.1)"},
        {R"(<AX_NutzerbezogeneBestandsdatenaktualisierung_NBA xmlns="http://www.adv-online.de/namespaces/adv/gid/6.0"
 xmlns:advext="http://www.adv-online.de/namespaces/adv/gid/6.0/ext" xmlns:wfs="http://www.adv-online.de/namespaces/adv/gid/wfs">)",
         NasForm::Aktualisierung, "", "NBA-Aktualisierung (GID 6.0)"},
        // Two versions in one head: the first names the file, the other is kept for a hint.
        {R"(<AX_Bestandsdatenauszug xmlns="http://www.adv-online.de/namespaces/adv/gid/6.0" xmlns:b="http://www.adv-online.de/namespaces/adv/gid/7.1">)",
         NasForm::Bestandsdatenauszug,
         "",
         "NAS-Bestandsdatenauszug (GID 6.0)",
         {"7.1"}},
        // A collection of other features is no NAS, nor is a Web-XML extract.
        {R"(<wfs:FeatureCollection><wfs:member><ns:Baum gml:id="b1">)", NasForm::Unbekannt, "",
         "unbekannte Form"},
        {R"(<Flurstuecksnachweis><Flurstueck>)", NasForm::Unbekannt, "", "unbekannte Form"},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.kopf);
        const NasFormbefund befund = NasFormErkennen(f.kopf);
        EXPECT_EQ(befund.form, f.form);
        EXPECT_EQ(befund.präfix, f.präfix);
        EXPECT_EQ(befund.Name(), f.name);
        EXPECT_EQ(befund.weitereVersionen, f.weitere);
    }
}

} // namespace
} // namespace flurix::nas
