#pragma once
// Which form of NAS a file is, from its head: the classic extract (AX_Bestandsdatenauszug), a
// collection of features as the states' WFS services hand them out (wfs:FeatureCollection with
// wfs:member or gml:featureMember), or an update delivery (NBA), and the GeoInfoDok version its
// namespace names. The scan reads the extract and the collection alike (each feature is cut from
// its member element); the form decides the questions before it.

#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {

enum class NasForm {
    Bestandsdatenauszug, ///< AX_Bestandsdatenauszug (or the AX_Person of an older extract)
    WfsSammlung,         ///< wfs:FeatureCollection of AX_ features
    Aktualisierung,      ///< AX_NutzerbezogeneBestandsdatenaktualisierung_NBA
    Unbekannt,
};

struct NasFormbefund {
    NasForm form = NasForm::Unbekannt;
    /// The namespace prefix of the features ("" or e.g. "adv:").
    std::string präfix;
    /// The GeoInfoDok version of the AdV namespace ("6.0", "6.0.1", "7.1"); "" when none is named.
    std::string gid;
    /// Further versions the head names besides `gid` (a file put together from two sources).
    std::vector<std::string> weitereVersionen;

    /// "NAS-Bestandsdatenauszug (GID 6.0)", "WFS-Sammlung (GID 7.1)", "NBA-Aktualisierung",
    /// "unbekannte Form".
    std::string Name() const;
};

/// The namespace prefix of the file's root element ("", "adv:"); false when the head holds no
/// AX_Bestandsdatenauszug element.
bool NasPräfix(std::string_view kopf, std::string& präfix);

/// The form of a NAS file from its head (the first megabyte, say).
NasFormbefund NasFormErkennen(std::string_view kopf);

} // namespace flurix::nas
