#include "core/datei.hpp"

#include "core/fehler.hpp"
#include "core/zieldatei.hpp"

#include <cerrno>
#include <charconv>
#include <fstream>
#include <sstream>

#include <signal.h>
#include <unistd.h>

namespace flurix {

bool DateiVorhanden(const std::filesystem::path& pfad) {
    std::error_code ec;
    const auto länge = std::filesystem::file_size(pfad, ec);
    return !ec && länge != static_cast<std::uintmax_t>(-1);
}

std::string DateiKomplettLesen(const std::filesystem::path& pfad) {
    std::ifstream ein(pfad, std::ios::binary);
    if (!ein)
        return {};
    std::ostringstream puffer;
    puffer << ein.rdbuf();
    return std::move(puffer).str();
}

void DateiSchreiben(const std::filesystem::path& pfad, std::string_view inhalt) {
    Zieldatei datei(pfad);
    datei.Schreiben(inhalt);
    datei.Abschließen();
}

std::vector<std::string_view> TextZeilen(std::string_view text) {
    std::vector<std::string_view> zeilen;
    while (!text.empty()) {
        const auto lf = text.find('\n');
        std::string_view zeile = text.substr(0, lf);
        if (zeile.ends_with('\r'))
            zeile.remove_suffix(1);
        zeilen.push_back(zeile);
        if (lf == std::string_view::npos)
            break;
        text.remove_prefix(lf + 1);
    }
    return zeilen;
}

std::filesystem::path PfadNormalisieren(const std::filesystem::path& pfad) {
    std::error_code ec;
    auto absolut = std::filesystem::absolute(pfad, ec);
    return (ec ? pfad : absolut).lexically_normal();
}

bool PasstZuMuster(std::string_view name, std::string_view muster) {
    // Greedy match with backtracking to the last "*": linear enough for file names.
    std::size_t n = 0, m = 0, stern = std::string_view::npos, merke = 0;
    while (n < name.size()) {
        if (m < muster.size() && muster[m] == '*') {
            stern = m++;
            merke = n;
        } else if (m < muster.size() && muster[m] == name[n]) {
            ++m, ++n;
        } else if (stern != std::string_view::npos) {
            m = stern + 1;
            n = ++merke;
        } else {
            return false;
        }
    }
    while (m < muster.size() && muster[m] == '*')
        ++m;
    return m == muster.size();
}

bool VonLaufendemProzess(std::string_view name) {
    // "<stem><time stamp>_<pid>.<ext>" or "..._<pid>-<n>.<ext>": the digits after the last "_",
    // behind the time stamp's digits (a "_1" behind a word is a counter, not a process).
    const auto strich = name.rfind('_');
    if (strich == std::string_view::npos || strich < 8)
        return false;
    for (std::size_t i = strich - 8; i < strich; ++i)
        if (name[i] < '0' || name[i] > '9')
            return false;
    long pid = 0;
    const char* anfang = name.data() + strich + 1;
    const auto [ende, fehler] = std::from_chars(anfang, name.data() + name.size(), pid);
    if (fehler != std::errc() || ende == anfang || (*ende != '.' && *ende != '-') || pid <= 0 ||
        pid == ::getpid())
        return false;
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

void DateienLöschen(const std::filesystem::path& ordner, std::string_view muster) {
    std::error_code ec;
    for (const auto& eintrag : std::filesystem::directory_iterator(ordner, ec)) {
        std::error_code ec2;
        const std::string name = eintrag.path().filename().string();
        if (eintrag.is_regular_file(ec2) && PasstZuMuster(name, muster) && !VonLaufendemProzess(name))
            std::filesystem::remove(eintrag.path(), ec2);
    }
}

} // namespace flurix
