#pragma once
// Helpers every test program shares: a scratch folder of its own, files written and read as bytes.

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix::test {

/// A fresh empty folder under the system's temp dir, removed again with the object.
class TempOrdner {
public:
    TempOrdner();
    TempOrdner(const TempOrdner&) = delete;
    TempOrdner& operator=(const TempOrdner&) = delete;
    TempOrdner(TempOrdner&&) = delete;
    TempOrdner& operator=(TempOrdner&&) = delete;
    ~TempOrdner();

    const std::filesystem::path& pfad() const { return m_pfad; }
    std::filesystem::path operator/(std::string_view name) const { return m_pfad / name; }

private:
    std::filesystem::path m_pfad;
};

/// Writes the bytes as they are; creates missing folders.
void DateiSchreiben(const std::filesystem::path& pfad, std::string_view inhalt);
/// The bytes of a file; throws when it can't be read.
std::string DateiLesen(const std::filesystem::path& pfad);

/// Folder of the fixtures in the source tree.
std::filesystem::path Testdaten();
/// The shared test data beside the repository (may be absent).
std::filesystem::path GemeinsameTestdaten();

} // namespace flurix::test
