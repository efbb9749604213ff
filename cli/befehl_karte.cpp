// flurix karte: one map picture without a window, as the map window would request and compose it.
#include "cli/argumente.hpp"
#include "cli/befehle.hpp"
#include "cli/sitzung.hpp"
#include "core/text.hpp"
#include "core/datei.hpp"
#include "core/fehler.hpp"
#include "map/dienstkatalog.hpp"
#include "map/kartenabruf.hpp"
#include "map/zugang.hpp"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageWriter>

#include <array>
#include <memory>
#include <ostream>

namespace flurix::cli {
namespace {

constexpr char Name[] = "flurix karte: ";

// Pictures need a QGuiApplication for their plugins and fonts; without a display it runs on the
// offscreen platform. A caller that has one (the desktop program, a test) keeps its own.
std::unique_ptr<QGuiApplication> BildsystemStarten() {
    if (QCoreApplication::instance())
        return nullptr;
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "flurix";
    static char* argv[] = {name, nullptr};
    return std::make_unique<QGuiApplication>(argc, argv);
}

// "1000x750" into its two numbers; nothing when the text isn't of that form.
std::optional<std::pair<int, int>> GrößeLesen(const std::string& text) {
    const auto x = text.find('x');
    if (x == std::string::npos)
        return std::nullopt;
    const int breite = static_cast<int>(ZahlLesen(text.substr(0, x)));
    const int höhe = static_cast<int>(ZahlLesen(text.substr(x + 1)));
    if (breite <= 0 || höhe <= 0 || breite > 20000 || höhe > 20000)
        return std::nullopt;
    return std::pair{breite, höhe};
}

// The picture encoded in memory and written as every user file is (temporary name, renamed).
bool BildSpeichern(const QImage& bild, const std::filesystem::path& ziel) {
    QByteArray inhalt;
    QBuffer puffer(&inhalt);
    puffer.open(QIODevice::WriteOnly);
    QImageWriter schreiber(&puffer, QByteArray::fromStdString(Kleinbuchstaben(ziel.extension().string()).substr(1)));
    if (!schreiber.write(bild))
        return false;
    try {
        DateiSchreiben(ziel, std::string_view(inhalt.constData(), static_cast<std::size_t>(inhalt.size())));
    } catch (const Fehler&) {
        return false;
    }
    return true;
}

} // namespace

int BefehlKarte(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente, {"--neu", "--protokoll"},
                                     {"--zentrum", "--massstab", "--epsg", "--dienst", "--groesse",
                                      "--faktor", "--out", "--katalog", "--temp", "--zeitlimit"},
                                     fehler);
    if (!args)
        return 2;
    const auto out = args->Wert("--out");
    const auto größe = GrößeLesen(args->Wert("--groesse").value_or("1000x750"));
    if (!out || !args->positionen.empty() || !größe) {
        fehler << Name << "Bitte --out <bild.png|.jpg|.bmp|.tif> angeben (und --groesse als "
                          "<breite>x<höhe>). Hilfe: flurix karte --help\n";
        return 2;
    }
    const auto bildsystem = BildsystemStarten();
    const std::string endung = Kleinbuchstaben(std::filesystem::path(*out).extension().string());
    if (endung.size() < 2 ||
        !QImageWriter::supportedImageFormats().contains(QByteArray::fromStdString(endung.substr(1)))) {
        fehler << Name << "Das Bildformat \"" << endung << "\" kann nicht geschrieben werden.\n";
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    auto start = karte::StartzustandLesen(sitzung.zustand.einstellungen, std::nullopt,
                                          args->Wert("--epsg").value_or(""));
    karte::MapReferenz& ref = start.referenz;
    if (const auto epsg = args->Wert("--epsg"))
        ref.EPSG = *epsg;
    const std::string zentrum = args->Wert("--zentrum").value_or(ref.Referenzkoordinaten);
    if (zentrum.empty()) {
        fehler << Name << "Bitte --zentrum <rechtswert;hochwert> angeben (oder "
                          "StartMapWebServiceKoo in Flurix.dat).\n";
        return sitzung.Beenden(2);
    }
    if (!karte::NeueReferenz(ref, zentrum, sitzung.ui))
        return sitzung.Beenden(1);
    if (const auto maßstab = args->Wert("--massstab"))
        ref.MaßstabEingeben(ZahlLesen(*maßstab));
    if (const auto faktor = args->Wert("--faktor"))
        ref.BitmapFaktorSetzen(*faktor);

    karte::Kartenwahl wahl;
    const std::string dienste = args->Wert("--dienst").value_or(start.dienst);
    const auto teile = Teilen(dienste, '/');
    for (std::size_t i = 0; i < std::min<std::size_t>(teile.size(), 3); ++i)
        wahl.dienste[i] = teile[i].empty() ? "ohne" : std::string(teile[i]);

    karte::Kartenumgebung kartenumgebung;
    kartenumgebung.tempOrdner = args->Wert("--temp").value_or(sitzung.zustand.arbeitsverzeichnis.string());
    kartenumgebung.konfig = sitzung.zustand.installation.Konfig();
    kartenumgebung.besitzer = karte::Besitzer();
    kartenumgebung.neuLaden = args->Hat("--neu");
    kartenumgebung.protokoll = args->Hat("--protokoll") || sitzung.zustand.protokollMapAnfrage;
    if (const auto sekunden = args->Wert("--zeitlimit"))
        kartenumgebung.zeitlimit = std::chrono::milliseconds(static_cast<long long>(ZahlLesen(*sekunden) * 1000));

    std::optional<karte::Kartenbild> bild;
    sitzung.Versuchen([&] {
        const auto katalog = karte::KatalogLesen(
            args->Wert("--katalog").value_or(sitzung.zustand.dienstkatalog.string()));
        bild = karte::MapLoad(ref, katalog, wahl, größe->first, größe->second, kartenumgebung, sitzung.ui);
    });
    if (!bild || !bild->ok)
        return sitzung.Beenden(1);
    if (!BildSpeichern(bild->bild, *out)) {
        fehler << Name << "Die Datei " << *out << " kann nicht geschrieben werden.\n";
        return sitzung.Beenden(1);
    }
    aus << *out << '\t' << bild->bild.width() << 'x' << bild->bild.height() << '\t' << ref.AnzMaßstab
        << '\t' << bild->downloads << (bild->downloads == 1 ? " Download" : " Downloads") << '\n';
    const bool alleEbenen = std::none_of(bild->ebenen.begin(), bild->ebenen.end(),
                                         [](const auto& e) { return e.Aktiv() && e.abbruch; });
    return sitzung.Beenden(alleEbenen ? 0 : 1);
}

} // namespace flurix::cli
