#pragma once
// The command-line program flurix as a function, so that tests call it without a process.

#include <iosfwd>
#include <string>
#include <vector>

namespace flurix::cli {

/// Runs one command line (without the program name). Returns the exit code:
/// 0 done, 1 the work failed, 2 bad arguments. Output goes to `aus`, messages to `fehler`.
int Ausführen(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler);

} // namespace flurix::cli
