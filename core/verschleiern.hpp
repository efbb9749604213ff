#pragma once
// Scrambling of stored logins: the web key file wfs.key keeps user name and password this way, so
// that they can't be read at a glance. It is not encryption: anyone with the program can undo it.

#include <string>
#include <string_view>

namespace flurix {

/// The fixed key that scrambles both cells of wfs.key. It is part of the file format: every wfs.key
/// ever written depends on it, so it must never change.
inline constexpr std::string_view WfsSchlüssel = "Grk-Flusen";

/// `text` combined byte by byte with `schlüssel` by exclusive or, the key repeated to the text's
/// length. The same call scrambles and unscrambles: Verschleiern(Verschleiern(t, s), s) == t.
/// It works on the bytes of the UTF-8 text. The result has the text's length and may hold any byte,
/// NUL, tab and line ends included (an ASCII character XOR an ASCII key character is often a
/// control character), so a caller that stores it must escape it; the table files do
/// (core/tabellendatei.hpp). An empty key leaves the text as it is. Never fails.
std::string Verschleiern(std::string_view text, std::string_view schlüssel);

} // namespace flurix
