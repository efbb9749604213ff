#include "gemeinsam/testumgebung.hpp"

#include <atomic>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace flurix::test {

TempOrdner::TempOrdner() {
    static std::atomic<int> zähler{0};
    m_pfad = std::filesystem::temp_directory_path() /
             ("flurix-test-" + std::to_string(::getpid()) + "-" + std::to_string(zähler++));
    std::filesystem::remove_all(m_pfad);
    std::filesystem::create_directories(m_pfad);
}

TempOrdner::~TempOrdner() {
    std::error_code ec;
    std::filesystem::permissions(m_pfad, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(m_pfad, ec);
}

void DateiSchreiben(const std::filesystem::path& pfad, std::string_view inhalt) {
    if (pfad.has_parent_path())
        std::filesystem::create_directories(pfad.parent_path());
    std::ofstream aus(pfad, std::ios::binary | std::ios::trunc);
    aus.write(inhalt.data(), static_cast<std::streamsize>(inhalt.size()));
    if (!aus)
        throw std::runtime_error("cannot write " + pfad.string());
}

std::string DateiLesen(const std::filesystem::path& pfad) {
    std::ifstream ein(pfad, std::ios::binary);
    if (!ein)
        throw std::runtime_error("cannot read " + pfad.string());
    std::ostringstream puffer;
    puffer << ein.rdbuf();
    return puffer.str();
}

std::filesystem::path Testdaten() { return FLURIX_TESTDATEN; }
std::filesystem::path GemeinsameTestdaten() { return FLURIX_GEMEINSAM "/testdata"; }

} // namespace flurix::test
