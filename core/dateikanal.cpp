#include "core/dateikanal.hpp"

#include "core/fehler.hpp"

#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace flurix {

namespace {

/// The cause of a failed system call in the words of the messages.
std::string Grund(int fehler) {
    switch (fehler) {
    case ENOENT:
        return "nicht gefunden";
    case EACCES:
    case EPERM:
        return "keine Berechtigung";
    case EISDIR:
        return "ist ein Ordner";
    case ENOSPC:
        return "kein Platz auf dem Datenträger";
    case EDQUOT:
        return "Kontingent erschöpft";
    case EROFS:
        return "Datenträger ist schreibgeschützt";
    default:
        return "Systemfehler " + std::to_string(fehler);
    }
}

} // namespace

void DateiFehler(const std::filesystem::path& pfad, std::string_view was, int fehler) {
    throw Fehler("Die Datei \"" + pfad.string() + "\" kann nicht " + std::string(was) +
                 " werden (" + Grund(fehler) + ")!");
}

Dateikanal::Dateikanal(const std::filesystem::path& pfad, Zweck zweck,
                       const std::filesystem::path& name)
    : m_pfad(name.empty() ? pfad : name) {
    const int art = zweck == Zweck::Lesen ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    do {
        m_fd = ::open(pfad.c_str(), art | O_CLOEXEC, 0666);
    } while (m_fd < 0 && errno == EINTR);
    if (m_fd < 0)
        DateiFehler(m_pfad, zweck == Zweck::Lesen ? "geöffnet" : "angelegt", errno);
    if (zweck == Zweck::Lesen)
        ::posix_fadvise(m_fd, 0, 0, POSIX_FADV_SEQUENTIAL);
}

Dateikanal::~Dateikanal() {
    if (m_fd >= 0)
        ::close(m_fd);
}

std::size_t Dateikanal::Lesen(char* puffer, std::size_t n) {
    std::size_t gelesen = 0;
    while (gelesen < n) {
        const ssize_t r = ::read(m_fd, puffer + gelesen, n - gelesen);
        if (r == 0)
            break;
        if (r < 0) {
            if (errno == EINTR)
                continue;
            DateiFehler(m_pfad, "gelesen", errno);
        }
        gelesen += static_cast<std::size_t>(r);
    }
    return gelesen;
}

void Dateikanal::Schreiben(const char* daten, std::size_t n) {
    while (n > 0) {
        const ssize_t w = ::write(m_fd, daten, n);
        if (w <= 0) {
            if (w < 0 && errno == EINTR)
                continue;
            DateiFehler(m_pfad, "geschrieben", w < 0 ? errno : ENOSPC);
        }
        daten += w;
        n -= static_cast<std::size_t>(w);
    }
}

void Dateikanal::Schließen() {
    const int fd = std::exchange(m_fd, -1);
    if (::close(fd) != 0 && errno != EINTR)
        DateiFehler(m_pfad, "geschrieben", errno);
}

} // namespace flurix
