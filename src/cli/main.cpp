#include <unistd.h>

#include <iostream>

#include "cli/cli.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return kinfolio::cli::run(args, std::cout, std::cerr, ::isatty(STDERR_FILENO) != 0);
}
