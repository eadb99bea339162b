#include <malloc.h>
#include <unistd.h>

#include <iostream>

#include "cli/cli.h"

int main(int argc, char** argv) {
    // A large chat's million message texts are allocated on every core; the
    // heaps grow by 32 MB at a time instead of 128 kB, a system call each.
    mallopt(M_TOP_PAD, 32 << 20);
    std::vector<std::string> args(argv + 1, argv + argc);
    return kinfolio::cli::run(args, std::cout, std::cerr, ::isatty(STDERR_FILENO) != 0, true);
}

// fontconfig keeps its configuration for the life of the process, allocated
// in ways LeakSanitizer reports as lost at exit; only sanitizer builds call this.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}
