// daywyn-command-line.so: the command line as the daywyn program loads it for a verb.
// The program itself links nothing but the C library, so that `daywyn --version` and
// `daywyn` with no verb start as fast as any small program; this module brings the core,
// ICU and simdjson only when a verb needs them.
#include <ctime>
#include <string>
#include <vector>

#include "cli/bus/CommandLineClient.h"

// ICU's reads of the C library's time zone variables, redirected here at build time (see
// app.cmake): a copy, refreshed whenever ICU asks the C library to read the zone again.
extern "C" {
__attribute__((visibility("hidden"))) long daywynIcuTimezone = 0;
__attribute__((visibility("hidden"))) char* daywynIcuTzname[2] = {nullptr, nullptr};

__attribute__((visibility("hidden"))) void daywynIcuTzset() {
    ::tzset();
    daywynIcuTimezone = ::timezone;
    daywynIcuTzname[0] = ::tzname[0];
    daywynIcuTzname[1] = ::tzname[1];
}
}

// The verb line as main received it (argv[0] the program). Returns the exit status.
extern "C" __attribute__((visibility("default"))) int daywynRunCommandLine(int argc, char** argv) {
    // Filled before ICU first looks, whichever of its paths reads them.
    daywynIcuTzset();
    return daywyn::runCommandLine(std::vector<std::string>(argv + 1, argv + argc),
                                  daywyn::systemClock);
}
