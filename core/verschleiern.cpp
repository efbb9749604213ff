#include "core/verschleiern.hpp"

namespace flurix {

std::string Verschleiern(std::string_view text, std::string_view schlüssel) {
    std::string ergebnis(text);
    if (schlüssel.empty())
        return ergebnis;
    for (std::size_t i = 0; i < ergebnis.size(); ++i)
        ergebnis[i] =
            static_cast<char>(static_cast<unsigned char>(text[i]) ^
                              static_cast<unsigned char>(schlüssel[i % schlüssel.size()]));
    return ergebnis;
}

} // namespace flurix
