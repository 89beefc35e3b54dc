#pragma once

#include <map>
#include <string>
#include <vector>

namespace daywyn::test {

// What a finished child process printed and how it ended.
struct ProcessResult {
    int status = -1; // exit status, or -1 when it did not exit normally
    std::string out;
    std::string err;
};

// Runs a program with the test's environment plus `environment` (an empty value
// unsets the variable), waits for it and captures both output streams.
ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::string>& environment = {});

// A fresh empty folder under the test's XDG_DATA_HOME.
std::string makeTempFolder();

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

} // namespace daywyn::test
