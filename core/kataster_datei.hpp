#pragma once
// The cadastre table in and out of table files: the saved table ".fil" (every column with its
// header, width, visibility and place, every cell) and the machine form ".tsv" of the command line.

#include <filesystem>

namespace flurix {

class Kataster;

/// Writes the whole table, all rows and columns whatever the selection and visibility; the format
/// follows the extension (".fil" or ".tsv"). Throws Fehler naming the file when that fails; an old
/// file of that name is then left as it was.
void KatasterSpeichern(const Kataster& kataster, const std::filesystem::path& datei);

/// Replaces the table by the one in the file (format by extension). Columns come back with their
/// header, width, visibility and place; `checkdruck` is a check box column again. Throws Fehler
/// naming the file and line when it can't be read; the table is then left as it was (the file is
/// read into a table of its own, which replaces the caller's only when it is whole).
void KatasterLaden(Kataster& kataster, const std::filesystem::path& datei);

} // namespace flurix
