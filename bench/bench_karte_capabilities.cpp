// The capabilities reader on a large answer: a WMS 1.1.1 document of about 5 MB (group layers of
// 50 layers each, every layer with its SRS list, bounding boxes, a style with legend and a scale
// hint), as services with many thematic layers send them. Prints the document's size, the seconds
// of WebServiceAnfrage (parse, layer list, legend, scale) and the layer count. The target is under
// 0.5 s. The size in MB is the first argument (default 5).

#include "core/oberflaeche_skript.hpp"
#include "map/capabilities.hpp"
#include "messen.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string Dokument(std::size_t zielBytes) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<WMT_MS_Capabilities version=\"1.1.1\">\n<Service><Name>OGC:WMS</Name>"
                       "<Title>Groß</Title></Service>\n<Capability>\n<Request><GetMap>"
                       "<Format>image/png</Format></GetMap></Request>\n<Layer>\n<Name>alle</Name>"
                       "<Title>Alle Themen</Title>\n";
    std::size_t n = 0;
    while (text.size() < zielBytes) {
        const std::string gruppe = std::to_string(n / 50);
        if (n % 50 == 0)
            text += (n ? "</Layer>\n" : "") + std::string("<Layer><Name>gruppe_") + gruppe +
                    "</Name><Title>Gruppe " + gruppe + "</Title>\n";
        const std::string nr = std::to_string(n);
        text +=
            "  <Layer queryable=\"1\" opaque=\"0\">\n"
            "    <Name>thema_" +
            nr +
            "</Name>\n"
            "    <Title>Thema " +
            nr +
            " Flurstücke und Gebäude</Title>\n"
            "    <Abstract>Darstellung der tatsächlichen Nutzung, Blatt " +
            nr +
            "</Abstract>\n"
            "    <SRS>EPSG:25832</SRS><SRS>EPSG:25833</SRS><SRS>EPSG:4258</SRS>"
            "<SRS>EPSG:4326</SRS><SRS>EPSG:31467</SRS>\n"
            "    <LatLonBoundingBox minx=\"5.8\" miny=\"47.2\" maxx=\"15.1\" maxy=\"55.1\"/>\n"
            "    <BoundingBox SRS=\"EPSG:25832\" minx=\"280000\" miny=\"5230000\" "
            "maxx=\"920000\" maxy=\"6110000\"/>\n"
            "    <Style><Name>default</Name><Title>Standard</Title>\n"
            "      <LegendURL width=\"200\" height=\"40\"><Format>image/png</Format>"
            "<OnlineResource xmlns:xlink=\"http://www.w3.org/1999/xlink\" xlink:type=\"simple\" "
            "xlink:href=\"http://karte.example/wms?REQUEST=GetLegendGraphic&amp;LAYER=thema_" +
            nr +
            "&amp;FORMAT=image/png\"/></LegendURL>\n    </Style>\n"
            "    <ScaleHint min=\"0\" max=\"" +
            std::to_string(1 + n % 7) +
            ".5\"/>\n"
            "  </Layer>\n";
        ++n;
    }
    text += "</Layer>\n</Layer>\n</Capability>\n</WMT_MS_Capabilities>\n";
    return text;
}

} // namespace

int main(int argc, char** argv) {
    const double mb = argc > 1 ? std::atof(argv[1]) : 5.0;
    const std::string dokument = Dokument(static_cast<std::size_t>(mb * 1024 * 1024));
    flurix::SkriptOberfläche ui;
    const auto start = std::chrono::steady_clock::now();
    const auto inhalt = flurix::karte::WebServiceAnfrage(dokument, "bench", ui);
    const double sekunden = flurix::bench::Sekunden(start);
    std::printf("Capabilities %.1f MB: %.3f s, %zu Layer, Maßstab \"%s\"%s\n",
                static_cast<double>(dokument.size()) / (1024.0 * 1024.0), sekunden,
                inhalt.layerAnzahl, inhalt.maßstab.c_str(),
                inhalt.gelesen ? "" : " (nicht gelesen!)");
    return inhalt.gelesen && inhalt.layerAnzahl > 0 ? 0 : 1;
}
