#include "core/verschleiern.hpp"

#include <gtest/gtest.h>

#include <string>

namespace flurix {
namespace {

using namespace std::string_literals;

TEST(Verschleiern, ExklusivOderMitWiederholtemSchlüssel) {
    struct Fall {
        std::string text, schlüssel, erwartet;
    };
    const Fall fälle[] = {
        {"AB", "\x01\x02", "@@"},      // 0x41^0x01, 0x42^0x02
        {"abc", "\x01", "`cb"},        // a one-byte key is repeated
        {"abcd", "\x01\x02", "``bf"},  // key 01 02 01 02
        {"Kxv", "Kxv", "\0\0\0"s},     // text equal to the key gives NUL bytes
        {"\xC3\xBC", " ", "\xE3\x9C"}, // works on the bytes of UTF-8 ("ü")
        {"", "Schlüssel", ""},
        {"unverändert", "", "unverändert"}, // an empty key leaves the text as it is
    };
    for (const auto& f : fälle)
        EXPECT_EQ(Verschleiern(f.text, f.schlüssel), f.erwartet) << f.text;
}

TEST(Verschleiern, IstSeineEigeneUmkehrung) {
    const std::string texte[] = {"Benutzer", "Passwort mit Blanks  ", "Größe\tund\nZeilen",
                                 "\0\xFF\x7F"s, std::string(1000, 'x')};
    for (const std::string_view schlüssel :
         {std::string_view("k"), WfsSchlüssel, std::string_view("\xFF\x00", 2)})
        for (const auto& text : texte) {
            const std::string verschleiert = Verschleiern(text, schlüssel);
            EXPECT_EQ(verschleiert.size(), text.size());
            EXPECT_EQ(Verschleiern(verschleiert, schlüssel), text);
        }
    EXPECT_NE(Verschleiern("Passwort", WfsSchlüssel), "Passwort");
}

} // namespace
} // namespace flurix
