#pragma once
// What the benchmarks share: a scratch folder of their own, seconds since a moment, the peak
// memory of the process.

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include <sys/resource.h>
#include <sys/wait.h>
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

/// Runs `arbeit` (returns true when it succeeded) in a child process and returns the child's peak
/// resident size in MB, or -1 when it failed: the peak of that work alone, so that two sizes run
/// one after the other show how memory grows with the input.
template <class Arbeit>
long SpitzeImKindMB(Arbeit&& arbeit) {
    std::fflush(nullptr);
    const pid_t kind = ::fork();
    if (kind == 0) {
        // Nothing may leave the child but its exit code: the parent's handlers are not its own.
        int code = 1;
        try {
            code = arbeit() ? 0 : 1;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s\n", e.what());
        }
        std::fflush(nullptr);
        ::_exit(code);
    }
    int status = 0;
    rusage nutzung{};
    if (kind < 0 || ::wait4(kind, &status, 0, &nutzung) != kind || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0)
        return -1;
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
