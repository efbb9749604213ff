#pragma once
// The local date and time in the forms the files' heads show them.

#include <string>

namespace flurix {

struct Zeitangabe {
    std::string datum;   ///< "24.11.2026"
    std::string uhrzeit; ///< "22:05:00"
};

/// Now, in the local time zone.
Zeitangabe JetztLokal();

} // namespace flurix
