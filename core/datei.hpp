#pragma once
// File helpers of the core: existence, whole-file reads, text lines, path normalisation.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {

/// True when the file's length can be read without an error (a regular file that is there).
bool DateiVorhanden(const std::filesystem::path& pfad);

/// The whole content of a file as bytes; "" when it is missing or can't be read.
std::string DateiKomplettLesen(const std::filesystem::path& pfad);

/// Writes the bytes to the file, replacing it whole: under a temporary name beside it, renamed when
/// complete, so that a failure leaves an older file as it was. Throws Fehler naming the file when
/// that fails.
void DateiSchreiben(const std::filesystem::path& pfad, std::string_view inhalt);

/// The lines of a text, split at LF with a CR before it removed; a last empty piece after a final
/// line end is not a line.
std::vector<std::string_view> TextZeilen(std::string_view text);

/// A path in the form the program keeps: absolute and lexically normal. The Windows program also
/// lower-cased paths and mapped network shares to drive letters; Linux file names are case-sensitive
/// and shares are mounted where the site wants them, so neither is done here.
std::filesystem::path PfadNormalisieren(const std::filesystem::path& pfad);

/// True for a work file another running process holds: its name ends in "<time stamp>_<process
/// id>" (with "-<n>" behind it, before the extension) and that process is alive.
bool VonLaufendemProzess(std::string_view name);

/// Deletes the files of `ordner` whose names match `muster`, where "*" stands for any run of
/// characters ("_tmpDAOdbFile*.*"). Files that can't be deleted are passed over, and so are
/// those of another running process (VonLaufendemProzess): a second program's end must not pull
/// the work database from under a run still going.
void DateienLöschen(const std::filesystem::path& ordner, std::string_view muster);

/// True when `name` matches a pattern with "*" wildcards (case-sensitive).
bool PasstZuMuster(std::string_view name, std::string_view muster);

} // namespace flurix
