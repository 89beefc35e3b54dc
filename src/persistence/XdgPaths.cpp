#include "persistence/XdgPaths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace daywyn {
namespace {

std::string homeFolder(const XdgEnvironment& environment) {
    if (const char* home = environment("HOME"); home && *home) {
        return home;
    }
    // No HOME (started by a service manager, say): ask the user database.
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir && *found->pw_dir) {
        return found->pw_dir;
    }
    return {};
}

} // namespace

Result<std::string> daywynFolder(XdgBase base, const XdgEnvironment& environment) {
    const XdgEnvironment lookup = environment ? environment : [](const char* name) -> const char* {
        return std::getenv(name);
    };
    const char* variable = "XDG_DATA_HOME";
    const char* fallback = "/.local/share";
    switch (base) {
    case XdgBase::data:
        break;
    case XdgBase::config:
        variable = "XDG_CONFIG_HOME";
        fallback = "/.config";
        break;
    case XdgBase::state:
        variable = "XDG_STATE_HOME";
        fallback = "/.local/state";
        break;
    }
    std::string folder;
    // The base directory rules ignore a relative path as invalid.
    if (const char* xdg = lookup(variable); xdg && xdg[0] == '/') {
        folder = xdg;
    } else {
        const std::string home = homeFolder(lookup);
        if (home.empty()) {
            return Error{"Daywyn could not find your home folder."};
        }
        folder = home + fallback;
    }
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return folder + "/Daywyn";
}

} // namespace daywyn
