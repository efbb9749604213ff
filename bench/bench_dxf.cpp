// The DXF writer on a large drawing: 1,000,000 entities (points, lines, closed polylines of four
// vertices, arcs, texts, symbol inserts in turn) over a district of 10 km. Prints the seconds, the
// file's megabytes and the peak memory before and after, which must stay flat: the writer holds
// one buffer, never the drawing.

#include "export/dxf_schreiber.hpp"

#include "messen.hpp"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

int main() {
    using namespace flurix;
    constexpr long Objekte = 1000000;
    bench::Ordner ordner("bench_dxf");
    const auto ziel = ordner.pfad() / "karte.dxf";
    const long spitzeVorher = bench::SpitzeMB();
    const auto anfang = std::chrono::steady_clock::now();
    {
        ausgabe::DxfSchreiber dxf(ziel);
        dxf.Anfang(350000, 5600000, 360000, 5610000);
        std::string nummer;
        for (long i = 0; i < Objekte; ++i) {
            const double x = 350000 + static_cast<double>(i % 1000) * 10.125;
            const double y = 5600000 + static_cast<double>(i / 1000) * 10.0625;
            switch (i % 6) {
            case 0:
                dxf.Punkt("PUNKTE_EINGELESEN", 1, x, y);
                break;
            case 1:
                dxf.Linie("FLURSTUECKE", "FLSTGRENZE", 3, x, y, x + 5.25, y + 2.5);
                break;
            case 2:
                dxf.Polylinie("AMTL_GEBAEUDE", "GEBAEUDE", 7);
                dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, x, y);
                dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, x + 4.5, y);
                dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, x + 4.5, y + 3.25);
                dxf.Vertex("AMTL_GEBAEUDE", "GEBAEUDE", 7, x, y + 3.25);
                dxf.Seqend("AMTL_GEBAEUDE", "GEBAEUDE", 7);
                break;
            case 3:
                dxf.Bogen("TOPOGRAFIE_LK", "NUTZUNGSART", 7, x, y, 2.5, 10, 80);
                break;
            case 4:
                nummer = std::to_string(i % 5000) + "/" + std::to_string(i % 17);
                dxf.Text("AMTLTXT_FLURSTUECK", 3,
                         {.x = x, .y = y, .höhe = 1.5, .winkel = static_cast<double>(i % 400),
                          .text = nummer, .stil = "ISO8"});
                break;
            default:
                dxf.Einfügen("AMTLPKT_GRENZP", 3, i % 12 == 5 ? "S3125" : "S4", x, y);
                break;
            }
        }
        dxf.Abschließen();
    }
    const double sekunden = bench::Sekunden(anfang);
    std::printf("DXF %ld Objekte: %.2f s, %.0f MB, Spitze %ld MB vorher, %ld MB nachher\n", Objekte,
                sekunden, static_cast<double>(std::filesystem::file_size(ziel)) / 1e6, spitzeVorher,
                bench::SpitzeMB());
    return 0;
}
