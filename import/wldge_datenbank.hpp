#pragma once
// The staging database of the complete WLDGE reader: a SQLite file "tmp_flurix" in the working
// directory with the tables of owners (tblBestand, tblAdresse), parcel entries (tblFlurstück) and
// the Gemarkung/Flur pairs (tblGemFlur). It lives for one import.

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace flurix {
class Datenbank;
}

namespace flurix::import {

/// The file name of the staging database in the working directory.
inline constexpr std::string_view StagingDateiname = "tmp_flurix";

/// The fields of tblBestand and tblAdresse, in their order.
const std::vector<std::string_view>& BestandFelder();
/// The fields of tblFlurstück, in their order.
const std::vector<std::string_view>& FlurstückFelder();

/// Deletes an old staging database and creates the tables in the order tblBestand, tblFlurstück,
/// tblAdresse, tblGemFlur with their indexes. Returns the open database. Throws Fehler when the old
/// file can't be deleted (the caller shows the message for a program opened twice) or the new one
/// can't be made.
std::unique_ptr<Datenbank> StagingAnlegen(const std::filesystem::path& datei);

} // namespace flurix::import
