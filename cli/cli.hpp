#pragma once
// The command-line program flurix as a function, so that tests call it without a process.

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace flurix::cli {

/// What a run of the command line may take from outside; tests set it, the program leaves it empty.
struct Umgebung {
    /// The installation to use; empty: the one of the running program.
    std::optional<std::filesystem::path> installation;
    /// Starts the desktop program with these arguments; returns its exit code. Empty: the program
    /// flurix-gui beside this one replaces the process.
    std::function<int(const std::vector<std::string>&)> oberflächeStarten;
    /// Show progress on stderr (the program does so when stderr is a terminal).
    bool fortschritt = false;
};

/// Runs one command line (without the program name). Returns the exit code:
/// 0 done, 1 the work failed, 2 bad arguments. Output goes to `aus`, messages to `fehler`.
int Ausführen(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
              const Umgebung& umgebung = {});

} // namespace flurix::cli
