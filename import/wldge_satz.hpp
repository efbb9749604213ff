#pragma once
// The fixed-column records of WLDGE files. A line is Windows-1252 bytes after the character
// correction; fields are cut on those bytes by 1-based columns and only then turned into UTF-8.

#include <string>
#include <string_view>

namespace flurix::import {

/// Columns `von` to `bis` (1-based, both included) of a 1252 line, as UTF-8. Columns past the end
/// of the line are empty, so a short line gives a short or empty field.
std::string FeldText(std::string_view zeile, std::size_t von, std::size_t bis);
/// Column `von` to the end of the line, as UTF-8.
std::string FeldBisEnde(std::string_view zeile, std::size_t von);
/// One column as the raw byte ("" past the end).
char Spalte(std::string_view zeile, std::size_t spalte);

/// The whole number at the start of a field as the register writes it ("00231" → 231, " 12a" →
/// 12); no number gives 0.
long long FeldZahl(std::string_view text);

/// A number as text without leading zeros ("0" for zero).
std::string ZahlOhneNullen(std::string_view text);

/// Columns `von` to `bis` (1-based, both included) as the raw 1252 bytes, for texts that are worked
/// on before they are turned into UTF-8. Columns past the end of the line are empty.
std::string_view FeldRoh(std::string_view zeile, std::size_t von,
                         std::size_t bis = std::string_view::npos);

/// An owner's name of the register split at ",": with four or more pieces (surname, first name,
/// -, title) it becomes "title surname, first name", or with `umdrehen` "title first name
/// surname"; with fewer pieces the whole text, trimmed. Never fails.
std::string NameAusStücken(std::string_view text, bool umdrehen);

} // namespace flurix::import
