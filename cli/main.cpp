#include "cli/cli.hpp"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    std::vector<std::string> argumente(argv + 1, argv + argc);
    return flurix::cli::Ausführen(argumente, std::cout, std::cerr);
}
