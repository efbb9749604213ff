#include "cli/cli.hpp"

#include <clocale>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

int main(int argc, char** argv) {
    // Take the user's locale like every program of the desktop; the start-up's decimal separator
    // check then sets the point for numbers when that locale writes a comma.
    std::setlocale(LC_ALL, "");
    std::vector<std::string> argumente(argv + 1, argv + argc);
    flurix::cli::Umgebung umgebung;
    umgebung.fortschritt = ::isatty(1) && ::isatty(2);
    return flurix::cli::Ausführen(argumente, std::cout, std::cerr, umgebung);
}
