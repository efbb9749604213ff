#include "gemeinsam/testumgebung.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
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

std::string GoldenVergleich(std::string_view ist, const std::filesystem::path& erwartet) {
    const char* neu = std::getenv("FLURIX_GOLDEN_NEU");
    if (neu && std::string_view(neu) == "1") {
        DateiSchreiben(erwartet, ist);
        return {};
    }
    if (!std::filesystem::exists(erwartet))
        return erwartet.string() + " fehlt (FLURIX_GOLDEN_NEU=1 schreibt sie)";
    const std::string soll = DateiLesen(erwartet);
    if (soll == ist)
        return {};
    // The first line that differs, counted from 1, with both versions.
    std::size_t anfang = 0, zeile = 1;
    while (anfang < soll.size() && anfang < ist.size()) {
        const std::size_t ende = std::min(soll.find('\n', anfang), soll.size());
        if (soll.compare(anfang, ende - anfang + 1, ist, anfang, ende - anfang + 1) != 0)
            break;
        anfang = ende + 1;
        ++zeile;
    }
    const auto Zeile = [&](const std::string& text) {
        if (anfang >= text.size())
            return std::string("<Dateiende>");
        return text.substr(anfang, std::min(text.find('\n', anfang), text.size()) - anfang);
    };
    return erwartet.filename().string() + ", Zeile " + std::to_string(zeile) + "\n  erwartet: " +
           Zeile(soll) + "\n  erhalten: " + Zeile(std::string(ist));
}

std::filesystem::path Testdaten() { return FLURIX_TESTDATEN; }
std::filesystem::path GemeinsameTestdaten() { return FLURIX_GEMEINSAM "/testdata"; }

bool ImSuchpfad(std::string_view programm) {
    const char* pfad = std::getenv("PATH");
    std::string_view rest = pfad ? pfad : "/usr/bin:/bin";
    while (!rest.empty()) {
        const auto ende = rest.find(':');
        const std::filesystem::path ordner(rest.substr(0, ende));
        rest = ende == std::string_view::npos ? std::string_view{} : rest.substr(ende + 1);
        if (!ordner.empty() && ::access((ordner / programm).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

std::string Wort(const std::filesystem::path& pfad) {
    std::string aus = "'";
    for (const char c : pfad.string())
        aus += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return aus + "'";
}

Programmlauf Ausführen(const std::string& befehl) {
    Programmlauf lauf;
    FILE* rohr = ::popen(befehl.c_str(), "r");
    if (!rohr)
        return lauf;
    std::array<char, 65536> puffer{};
    std::size_t n = 0;
    while ((n = std::fread(puffer.data(), 1, puffer.size(), rohr)) > 0)
        lauf.ausgabe.append(puffer.data(), n);
    lauf.status = ::pclose(rohr);
    return lauf;
}

} // namespace flurix::test
