#include "cli/tabelle_schreiben.hpp"

#include "cli/sitzung.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"

namespace flurix::cli {
namespace {

constexpr Exportformat Exportformate[] = {
    {"txt-tab", ausgabe::Speicherformat::TextTab}, {"txt-dollar", ausgabe::Speicherformat::TextDollar},
    {"xlsx", ausgabe::Speicherformat::Excel},      {"xml", ausgabe::Speicherformat::Xml},
    {"fil", ausgabe::Speicherformat::Flurix},      {"sqlite", ausgabe::Speicherformat::Access},
    {"geograf", ausgabe::Speicherformat::Geograf}, {"html", std::nullopt},
    {"tsv", std::nullopt},
};

struct Endungsformat {
    std::string_view endung;
    std::string_view format;
};

constexpr Endungsformat Endungen[] = {
    {".tsv", "tsv"},    {".fil", "fil"},       {".txt", "txt-tab"}, {".xlsx", "xlsx"},
    {".xls", "xlsx"},   {".xml", "xml"},       {".mdb", "sqlite"},  {".sqlite", "sqlite"},
    {".html", "html"},  {".htm", "html"},      {".out", "geograf"},
};

} // namespace

const Exportformat* FormatFinden(std::string_view name) {
    for (const auto& format : Exportformate)
        if (format.name == name)
            return &format;
    return nullptr;
}

const Exportformat* FormatAusEndung(const std::filesystem::path& datei) {
    const std::string endung = datei.extension().string();
    for (const auto& e : Endungen)
        if (e.endung == endung)
            return FormatFinden(e.format);
    return nullptr;
}

std::string_view FormatNamen() { return "txt-tab, txt-dollar, xlsx, xml, fil, sqlite, html, tsv, geograf"; }

Ergebnis TabelleSchreiben(Kataster& kataster, const Exportformat& format,
                          const std::filesystem::path& datei, Sitzung& sitzung) {
    if (format.dialog) {
        const ausgabe::Speicherumgebung ort{sitzung.zustand.arbeitsverzeichnis,
                                            ausgabe::Zielname::WieAngegeben, {}};
        return ausgabe::ALBDatenSpeichernUnter(kataster, *format.dialog, datei, ort, sitzung.ui);
    }
    if (format.name == "html")
        return ausgabe::CreateGridReport(kataster, datei, sitzung.ui);
    if (!sitzung.TabelleSpeichern(kataster, datei))
        return Ergebnis::Fehlschlag("Die Tabelle " + datei.string() + " wurde nicht geschrieben.");
    return Ergebnis::Ok();
}

} // namespace flurix::cli
