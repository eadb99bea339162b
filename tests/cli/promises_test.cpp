// What the README promises, checked on the real program: a saved PDF is
// either the old one or a whole new one.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

const std::string kProgram = KINFOLIO_CLI_BINARY;

// How a child ended, as a person would say it.
std::string ending(int status) {
    if (WIFEXITED(status)) return "exit " + std::to_string(WEXITSTATUS(status));
    if (WIFSIGNALED(status)) return std::string("killed: ") + ::strsignal(WTERMSIG(status));
    return "status " + std::to_string(status);
}

// Starts `args` with its output going to `log` and, if `stderrFd` is not -1,
// its standard error to that descriptor.
pid_t start(const std::vector<std::string>& args, const std::string& log, int stderrFd = -1) {
    std::vector<char*> argv;
    for (const auto& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = ::fork();
    if (pid != 0) return pid;
    int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(stderrFd >= 0 ? stderrFd : out, STDERR_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
}

// An export killed while it draws its pages leaves the file of the last
// export as it was and nothing beside it, and the next export replaces that
// file whole.
TEST(Promises, AnExportKilledWhileDrawingLeavesTheOldFile) {
    testing::ScopedHome home;
    testing::TempFolder materials, output, work;
    std::string chat;
    for (int i = 0; i < 2000; ++i) {  // 80 a day, about 150 pages
        char line[80];
        std::snprintf(line, sizeof line, "[%02d/01/2024, %02d:%02d:00] %s: Message number %d\n",
                      1 + i / 80, 9 + i % 80 / 60, i % 80 % 60, i % 2 ? "Sam Lee" : "Alex Morgan",
                      i);
        chat += line;
    }
    materials.write("_chat.txt", chat);
    std::string target = output.write("Evidence.pdf", "the document of last week");
    std::vector<std::string> args = {kProgram, "export", materials.path(),    "-o",
                                     target,   "--set",  "messagesPerMonth=0"};

    // On a terminal the program says how many pages it has drawn.
    int terminal = -1, screen = -1;
    ASSERT_EQ(::openpty(&terminal, &screen, nullptr, nullptr, nullptr), 0);
    pid_t pid = start(args, work.path() + "/log.txt", screen);
    ::close(screen);
    std::string shown;
    pollfd ready{terminal, POLLIN, 0};
    while (shown.find("Drawing pages: 50 of") == std::string::npos &&
           ::poll(&ready, 1, 60000) > 0) {
        char buffer[256];
        ssize_t n = ::read(terminal, buffer, sizeof buffer);
        if (n <= 0) break;
        shown.append(buffer, static_cast<size_t>(n));
    }
    ::kill(pid, SIGKILL);
    int status = 0;
    ::waitpid(pid, &status, 0);
    ::close(terminal);
    ASSERT_EQ(ending(status), "killed: Killed") << shown;
    ASSERT_NE(shown.find("Drawing pages: 50 of"), std::string::npos) << shown;  // mid-way

    EXPECT_EQ(testing::readFile(target), "the document of last week");
    auto count = [&] {
        return std::distance(fs::directory_iterator(output.path()), fs::directory_iterator());
    };
    EXPECT_EQ(count(), 1);
    ::waitpid(start(args, work.path() + "/log.txt"), &status, 0);
    EXPECT_EQ(ending(status), "exit 0");
    EXPECT_TRUE(testing::qpdfCheckPasses(testing::readFile(target)));
    EXPECT_EQ(count(), 1);
}

}  // namespace
}  // namespace kinfolio
