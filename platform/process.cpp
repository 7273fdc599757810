#include "platform/process.h"

#include <csignal>
#include <cstdio>

#include <sys/wait.h>

namespace curvebank::platform {

ProgramEnd run_program(const std::string &name, const std::string &input)
{
    constexpr int not_found = 127;
    const auto on_broken_pipe = std::signal(SIGPIPE, SIG_IGN);
    int status = -1;
    if (FILE *pipe = popen(("command -v " + name + " >/dev/null || exit 127; exec " + name).c_str(), "w")) {
        std::fwrite(input.data(), 1, input.size(), pipe);
        status = pclose(pipe);
    }
    std::signal(SIGPIPE, on_broken_pipe);
    if (status == 0) return ProgramEnd::success;
    return WIFEXITED(status) && WEXITSTATUS(status) == not_found ? ProgramEnd::not_found : ProgramEnd::failure;
}

}  // namespace curvebank::platform
