#pragma once
// What the benchmarks share: a scratch folder of their own, seconds since a moment, the peak
// memory of the process.

#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>

#include <sys/resource.h>
#include <unistd.h>

namespace flurix::bench {

inline double Sekunden(std::chrono::steady_clock::time_point seit) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - seit).count();
}

/// The largest resident size the process has had so far, in MB.
inline long SpitzeMB() {
    rusage nutzung{};
    getrusage(RUSAGE_SELF, &nutzung);
    return nutzung.ru_maxrss / 1024;
}

/// A folder under the system's temp dir, named after the benchmark and the process, removed at the end.
class Ordner {
public:
    explicit Ordner(const std::string& name)
        : m_pfad(std::filesystem::temp_directory_path() / (name + "_" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(m_pfad);
    }
    Ordner(const Ordner&) = delete;
    Ordner& operator=(const Ordner&) = delete;
    ~Ordner() {
        std::error_code ec;
        std::filesystem::remove_all(m_pfad, ec);
    }
    const std::filesystem::path& pfad() const { return m_pfad; }

private:
    std::filesystem::path m_pfad;
};

} // namespace flurix::bench
