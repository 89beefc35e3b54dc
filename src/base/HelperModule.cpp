#include "base/HelperModule.h"

#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace daywyn {

namespace {

std::string programFolder() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string self =
        length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
    return self.substr(0, self.rfind('/'));
}

} // namespace

void* openHelperModule(const std::string& fileName, std::string& failure) {
    std::string folders[] = {programFolder(), DAYWYN_MODULE_BUILD_DIR};
    for (const std::string& folder : folders) {
        const std::string path = folder + "/" + fileName;
        if (::access(path.c_str(), R_OK) != 0) {
            continue;
        }
        if (void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            return module;
        }
        const char* why = ::dlerror();
        failure = why != nullptr ? why : path;
        return nullptr;
    }
    failure = fileName + " is not installed beside " + folders[0];
    return nullptr;
}

void* helperModuleFunction(void* module, const char* name) {
    return module != nullptr ? ::dlsym(module, name) : nullptr;
}

} // namespace daywyn
