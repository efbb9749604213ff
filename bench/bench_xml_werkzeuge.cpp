// Benchmark of the NAS XML tools: MB/s of "ALKIS-XML-Merge" over two generated files (a tenth
// of the second file's identifiers repeat the first's) and of "XML-Ausdünnen" over the merged
// file, with the peak memory of the process.
//   bench_xml_werkzeuge [ordner] [--mb <MB>] [--warm]
// The input is 1000 MB in all when a folder is given, else 200 MB under the system's temp dir;
// --mb sets it. The files are written to disk and dropped from the page cache before each tool
// runs, so that the tools read from the disk as a user's run does; --warm keeps them cached (the
// tools' own speed). Every file is made in a folder of its own and deleted at the end.
#include "bench/messen.hpp"
#include "core/oberflaeche_batch.hpp"
#include "nas/xml_werkzeuge.hpp"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using flurix::bench::Sekunden;

double MB(std::uintmax_t bytes) { return static_cast<double>(bytes) / 1e6; }

// The 16 characters of the n-th identifier: "DEBE" and twelve digits of base 62.
std::string Kennung(std::uint64_t n) {
    static constexpr std::string_view ziffern =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::string id = "DEBE000000000000";
    for (std::size_t i = id.size(); i-- > 4 && n > 0; n /= 62)
        id[i] = ziffern[n % 62];
    return id;
}

// One feature in its member tags; the kinds take turns, parcels with a ring of 40 points.
void ObjektAnfügen(std::uint64_t nummer, std::string& aus) {
    const std::string id = Kennung(nummer);
    const auto zahl = [&](std::uint64_t faktor) {
        return std::to_string(100000 + (nummer * faktor) % 800000);
    };
    aus += "\t\t\t<gml:featureMember>\n";
    switch (nummer % 4) {
    case 0:
        aus +=
            "\t\t\t\t<AX_Flurstueck gml:id=\"" + id +
            "\">\n\t\t\t\t\t<gml:identifier codeSpace=\"http://www.adv-online.de/\">urn:adv:oid:" +
            id +
            "</"
            "gml:identifier>\n\t\t\t\t\t<lebenszeitintervall><AA_Lebenszeitintervall><beginnt>2024-"
            "03-01T10:00:00Z</beginnt></AA_Lebenszeitintervall></lebenszeitintervall>\n"
            "\t\t\t\t\t<position><gml:Surface gml:id=\"" +
            id +
            "_S\" "
            "srsName=\"urn:adv:crs:ETRS89_UTM32\"><gml:patches><gml:PolygonPatch><gml:exterior><"
            "gml:Ring><gml:curveMember><gml:Curve><gml:segments><gml:LineStringSegment><gml:"
            "posList>";
        for (int p = 0; p < 40; ++p)
            aus += "3" + zahl(7 + p) + ".125 55" + zahl(11 + p) + ".250 ";
        aus +=
            "</gml:posList></gml:LineStringSegment></gml:segments></gml:Curve></gml:curveMember></"
            "gml:Ring></gml:exterior></gml:PolygonPatch></gml:patches></gml:Surface></position>\n"
            "\t\t\t\t\t<flurstueckskennzeichen>07123400100" +
            zahl(3) +
            "0000__</flurstueckskennzeichen>\n"
            "\t\t\t\t\t<amtlicheFlaeche uom=\"m2\">" +
            zahl(5) +
            "</amtlicheFlaeche>\n"
            "\t\t\t\t\t<istGebucht xlink:href=\"urn:adv:oid:" +
            Kennung(nummer + 3) + "\"/>\n\t\t\t\t</AX_Flurstueck>\n";
        break;
    case 1:
        aus +=
            "\t\t\t\t<AX_Gebaeude gml:id=\"" + id +
            "\">\n\t\t\t\t\t<gml:identifier codeSpace=\"http://www.adv-online.de/\">urn:adv:oid:" +
            id + "</gml:identifier>\n\t\t\t\t\t<position><gml:Polygon gml:id=\"" + id +
            "_P\"><gml:exterior><gml:LinearRing><gml:posList>";
        for (int p = 0; p < 12; ++p)
            aus += "3" + zahl(13 + p) + ".5 55" + zahl(17 + p) + ".5 ";
        aus += "</gml:posList></gml:LinearRing></gml:exterior></gml:Polygon></position>\n"
               "\t\t\t\t\t<gebaeudefunktion>2000</gebaeudefunktion>\n\t\t\t\t</AX_Gebaeude>\n";
        break;
    case 2:
        aus += "\t\t\t\t<AX_Person gml:id=\"" + id +
               "\">\n\t\t\t\t\t<nachnameOderFirma>Müller-Lüdenscheidt " + zahl(19) +
               "</nachnameOderFirma>\n\t\t\t\t\t<vorname>Jürgen</vorname>\n\t\t\t\t\t<hat "
               "xlink:href=\"urn:adv:oid:" +
               Kennung(nummer + 5) + "\"/>\n\t\t\t\t</AX_Person>\n";
        break;
    default:
        aus += "\t\t\t\t<AX_Buchungsstelle gml:id=\"" + id +
               "\">\n\t\t\t\t\t<buchungsart>1100</buchungsart>\n\t\t\t\t\t<laufendeNummer>" +
               zahl(23) +
               "</laufendeNummer>\n\t\t\t\t\t<istBestandteilVon xlink:href=\"urn:adv:oid:" +
               Kennung(nummer + 7) + "\"/>\n\t\t\t\t</AX_Buchungsstelle>\n";
        break;
    }
    aus += "\t\t\t</gml:featureMember>\n";
}

struct Erzeugt {
    std::uint64_t bytes = 0;
    std::uint64_t objekte = 0;
};

// A NAS file of about `bytes` with the features from number `erste` on.
Erzeugt Erzeugen(const fs::path& datei, std::uint64_t bytes, std::uint64_t erste) {
    std::ofstream aus(datei, std::ios::binary);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<AX_Bestandsdatenauszug "
                       "xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
                       "xmlns:gml=\"http://www.opengis.net/gml/3.2\" "
                       "xmlns:wfs=\"http://www.adv-online.de/namespaces/adv/gid/wfs\" "
                       "xmlns:xlink=\"http://www.w3.org/1999/xlink\">\n"
                       "\t<enthaelt>\n\t\t<wfs:FeatureCollection gml:id=\"BENCH\">\n";
    Erzeugt e;
    for (std::uint64_t n = erste; e.bytes + text.size() < bytes; ++n) {
        ObjektAnfügen(n, text);
        ++e.objekte;
        if (text.size() > (4u << 20)) {
            aus.write(text.data(), static_cast<std::streamsize>(text.size()));
            e.bytes += text.size();
            text.clear();
        }
    }
    text += "\t\t</wfs:FeatureCollection>\n\t</enthaelt>\n</AX_Bestandsdatenauszug>\n";
    aus.write(text.data(), static_cast<std::streamsize>(text.size()));
    e.bytes += text.size();
    if (!aus)
        throw std::runtime_error("nicht geschrieben: " + datei.string());
    return e;
}

// Writes the file's pages to disk and drops them from the page cache: the next read comes from the
// disk.
void AusDemCache(const fs::path& datei) {
    const int fd = ::open(datei.c_str(), O_RDONLY);
    if (fd < 0)
        return;
    ::fdatasync(fd);
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ::close(fd);
}

struct Optionen {
    long long mb = 200;
    fs::path ordner = fs::temp_directory_path();
    bool warm = false;
};

std::optional<Optionen> OptionenLesen(int argc, char** argv) {
    Optionen o;
    bool mbGesetzt = false, ordnerGesetzt = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--mb" && i + 1 < argc) {
            o.mb = std::atoll(argv[++i]);
            mbGesetzt = true;
        } else if (a == "--warm") {
            o.warm = true;
        } else if (!a.starts_with("--") && !ordnerGesetzt) {
            o.ordner = a;
            ordnerGesetzt = true;
        } else {
            return std::nullopt;
        }
    }
    if (ordnerGesetzt && !mbGesetzt)
        o.mb = 1000;
    if (o.mb < 2)
        return std::nullopt;
    return o;
}

void Zeile(const char* was, std::uint64_t bytes, double sekunden,
           const flurix::nas::XmlBericht& bericht) {
    std::printf("%-12s %8.1f MB in %6.2f s = %7.1f MB/s; %llu geschrieben, %llu doppelt, %llu "
                "übersprungen; "
                "Spitzen-RSS bisher %ld MB\n",
                was, MB(bytes), sekunden, MB(bytes) / sekunden,
                static_cast<unsigned long long>(bericht.geschrieben),
                static_cast<unsigned long long>(bericht.doppelt),
                static_cast<unsigned long long>(bericht.übersprungen), flurix::bench::SpitzeMB());
}

} // namespace

int main(int argc, char** argv) {
    const auto optionen = OptionenLesen(argc, argv);
    if (!optionen) {
        std::fprintf(stderr, "Aufruf: bench_xml_werkzeuge [ordner] [--mb <MB>] [--warm]\n");
        return 2;
    }
    const auto& o = *optionen;
    const fs::path arbeit = o.ordner / ("flurix-bench-xml-" + std::to_string(::getpid()));
    fs::create_directories(arbeit);
    int rückgabe = 0;
    try {
        const std::uint64_t hälfte = static_cast<std::uint64_t>(o.mb) * 500'000;
        const auto a = arbeit / "a.xml", b = arbeit / "b.xml";
        auto start = std::chrono::steady_clock::now();
        const Erzeugt ea = Erzeugen(a, hälfte, 0);
        // The second file begins with the last tenth of the first file's identifiers.
        const Erzeugt eb = Erzeugen(b, hälfte, ea.objekte - ea.objekte / 10);
        std::printf(
            "Erzeugt: 2 Dateien, %.1f MB, %llu Objekte, %.2f s; %s\n", MB(ea.bytes + eb.bytes),
            static_cast<unsigned long long>(ea.objekte + eb.objekte), Sekunden(start),
            o.warm ? "im Seitencache (--warm)" : "vor jedem Lauf aus dem Seitencache genommen");

        std::ostringstream meldungen;
        flurix::BatchOberfläche ui(meldungen);
        flurix::nas::XmlBericht bericht;
        // What the generator wrote goes to disk first: its write-back is not the tool's time.
        ::sync();
        if (!o.warm) {
            AusDemCache(a);
            AusDemCache(b);
        }
        start = std::chrono::steady_clock::now();
        if (!flurix::nas::XmlZusammenfügen({a, b}, {}, ui, bericht, {.ersetzen = true}))
            throw std::runtime_error("Zusammenfügen: " + meldungen.str());
        Zeile("Zusammenfügen", ea.bytes + eb.bytes, Sekunden(start), bericht);
        fs::remove(a);
        fs::remove(b);

        const fs::path merge = arbeit / "a_MERGE.xml";
        ::sync();
        if (!o.warm)
            AusDemCache(merge);
        start = std::chrono::steady_clock::now();
        if (!flurix::nas::XmlAusdünnen(merge, {"AX_Gebaeude"}, ui, bericht, {.ersetzen = true}))
            throw std::runtime_error("Ausdünnen: " + meldungen.str());
        Zeile("Ausdünnen", fs::file_size(merge), Sekunden(start), bericht);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_xml_werkzeuge: %s\n", e.what());
        rückgabe = 1;
    }
    std::error_code ec;
    fs::remove_all(arbeit, ec);
    return rückgabe;
}
