#include "core/jetzt.hpp"

#include <ctime>

namespace flurix {

Zeitangabe JetztLokal() {
    const std::time_t jetzt = std::time(nullptr);
    std::tm zeit{};
    ::localtime_r(&jetzt, &zeit);
    char datum[16], uhrzeit[16];
    std::strftime(datum, sizeof datum, "%d.%m.%Y", &zeit);
    std::strftime(uhrzeit, sizeof uhrzeit, "%H:%M:%S", &zeit);
    return {datum, uhrzeit};
}

} // namespace flurix
