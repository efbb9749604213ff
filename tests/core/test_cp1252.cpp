#include "core/cp1252.hpp"

#include <gtest/gtest.h>

namespace flurix {
namespace {

TEST(Cp1252, UmlauteUndSonderzeichenHinUndZurück) {
    struct Fall {
        std::string cp1252;
        std::string utf8;
    };
    const Fall fälle[] = {
        {"Flurst\xFC" "ck", "Flurstück"},
        {"\xC4\xD6\xDC\xE4\xF6\xFC\xDF", "ÄÖÜäöüß"},
        {"\x80 \x84\x93\x94", "€ „“”"},
        {"\x96\x97\x85", "–—…"},
        {"plain ASCII", "plain ASCII"},
        {"", ""},
    };
    for (const auto& f : fälle) {
        EXPECT_EQ(Cp1252NachUtf8(f.cp1252), f.utf8);
        EXPECT_EQ(Utf8NachCp1252(f.utf8), f.cp1252);
    }
}

TEST(Cp1252, AlleBytesÜberlebenDenWegDurchUtf8) {
    std::string alle;
    for (int b = 0; b < 256; ++b)
        alle += static_cast<char>(b);
    EXPECT_TRUE(IstGültigesUtf8(Cp1252NachUtf8(alle)));
    EXPECT_EQ(Utf8NachCp1252(Cp1252NachUtf8(alle)), alle);
}

TEST(Cp1252, WasNichtPasstWirdFragezeichen) {
    EXPECT_EQ(Utf8NachCp1252("Łódź"), "?\xF3" "d?");
    EXPECT_EQ(Utf8NachCp1252("€ 😀"), "\x80 ?");
    EXPECT_EQ(Utf8NachCp1252("a\xFF" "b"), "a?b");     // invalid lead byte
    EXPECT_EQ(Utf8NachCp1252("a\xC3"), "a?");          // cut sequence
    EXPECT_EQ(Utf8NachCp1252("\xC0\xAF"), "??");       // overlong form
}

TEST(Cp1252, DateitextWirdErkannt) {
    EXPECT_EQ(DateitextNachUtf8("Pr\xFC" "fe"), "Prüfe");
    EXPECT_EQ(DateitextNachUtf8("Prüfe"), "Prüfe");
    EXPECT_EQ(DateitextNachUtf8("\xEF\xBB\xBFPrüfe"), "Prüfe");
}

} // namespace
} // namespace flurix
