#include "map/massstabsleiste.hpp"

#include "map/geodaesie.hpp"
#include "core/text.hpp"

#include <QImage>
#include <QPainter>

#include <charconv>
#include <cmath>
#include <string_view>

namespace flurix::karte {
namespace {

constexpr int Rand = 10;
constexpr int Höhe = 6;

// The number of digits of a whole number (its sign counted as one).
int Stellen(long n) { return static_cast<int>(std::to_string(n).size()); }

// First character of a number's shortest text.
char ErsteZiffer(double wert) {
    char puffer[32];
    const auto [ende, fehler] = std::to_chars(puffer, puffer + sizeof puffer, wert);
    return fehler == std::errc() && ende != puffer ? puffer[0] : '\0';
}

} // namespace

QColor FarbeAusWert(unsigned long wert) {
    return QColor(static_cast<int>(wert & 0xff), static_cast<int>((wert >> 8) & 0xff),
                  static_cast<int>((wert >> 16) & 0xff));
}

Maßstabsleiste MaßstabsleisteBerechnen(long n) {
    Maßstabsleiste leiste;
    const double ziel = 0.1 * n;
    const char d = ErsteZiffer(ziel);
    if (n <= 0 || d < '1' || d > '9')
        return leiste;
    // The program counts the characters of the number's text, which carries a leading blank:
    // that text is one longer than the digits, so k = digits + 1 − 3.
    const double zehnK = std::pow(10.0, Stellen(n) + 1 - 3);
    const int ziffer = d - '0';
    if (ziffer <= 2) {
        leiste.länge = ziffer * zehnK;
        leiste.segmente = 4;
    } else if (ziffer <= 5) {
        leiste.länge = 5 * zehnK;
        leiste.segmente = 5;
    } else {
        leiste.länge = 10 * zehnK;
        leiste.segmente = 4;
    }
    leiste.segmentPixel = MeterNachPunkte(leiste.länge / leiste.segmente) / static_cast<double>(n);
    leiste.beschriftung = leiste.länge < 1000 ? ZahlGerundet(leiste.länge, 2) + " m"
                                              : ZahlGerundet(leiste.länge / 1000, 2) + " km";
    return leiste;
}

Maßstabsleiste LinieMaßstab(QImage& bild, long n, const QColor& textfarbe) {
    const Maßstabsleiste leiste = MaßstabsleisteBerechnen(n);
    if (leiste.segmente == 0 || bild.isNull())
        return leiste;
    QPainter maler;
    if (!maler.begin(&bild))
        return leiste;
    const int oben = bild.height() - Rand - Höhe;
    const auto x = [&](int i) {
        return Rand + static_cast<int>(std::lround(i * leiste.segmentPixel));
    };
    for (int i = 0; i < leiste.segmente; ++i)
        maler.fillRect(QRect(x(i), oben, x(i + 1) - x(i), Höhe),
                       i % 2 == 0 ? FarbeAusWert(255) : QColor(Qt::white));
    maler.setPen(QPen(Qt::black, 1));
    maler.setBrush(Qt::NoBrush);
    maler.drawRect(QRect(x(0), oben, x(leiste.segmente) - x(0) - 1, Höhe - 1));
    maler.setPen(textfarbe);
    const QString text = QString::fromUtf8(leiste.beschriftung);
    maler.drawText(QPoint(Rand, oben - 3 - maler.fontMetrics().descent()), text);
    maler.end();
    return leiste;
}

} // namespace flurix::karte
