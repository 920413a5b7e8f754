#include "ChildProcess.h"

#include <chrono>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kilnova::bench {

ChildCost runChild(const std::vector<std::string>& arguments, const std::string& outputFile,
                   const std::vector<std::string>& environment)
{
    ChildCost cost;
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int out = ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out >= 0) {
            ::dup2(out, STDOUT_FILENO);
            ::close(out);
        }
        for (const std::string& variable : environment)
            ::putenv(const_cast<char*>(variable.c_str()));
        std::vector<char*> argv;
        for (const std::string& a : arguments)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    cost.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    cost.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    cost.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                      static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    cost.peakKilobytes = usage.ru_maxrss;
    return cost;
}

} // namespace kilnova::bench
