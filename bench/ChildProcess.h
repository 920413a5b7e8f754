#pragma once

#include <string>
#include <vector>

namespace kilnova::bench {

/// What a whole program run cost, as the operating system counted it.
struct ChildCost {
    int status = -1;
    double cpuSeconds = 0.0; ///< user + system time of the child
    double wallSeconds = 0.0;
    long peakKilobytes = 0; ///< its largest resident set
};

/// Runs `arguments` (the program first) with standard output to `outputFile` and the environment
/// variables `environment` ("NAME=value") added, and waits for it.
ChildCost runChild(const std::vector<std::string>& arguments, const std::string& outputFile,
                   const std::vector<std::string>& environment = {});

} // namespace kilnova::bench
