#pragma once

#include <string>

namespace daywyn {

// One of Daywyn's own loadable modules (daywyn-calendars.so, daywyn-speech.so), which
// carry libraries a start-up should not map. They sit beside daywyn-app, in the build
// tree and once installed; a program elsewhere in the build tree (a test) finds them in
// the folder they were built in. Loaded once and never closed (GLib's types cannot be
// unloaded); null, with `failure` saying why, when it cannot be loaded.
void* openHelperModule(const std::string& fileName, std::string& failure);

// The function `name` of a module opened by openHelperModule, or null.
void* helperModuleFunction(void* module, const char* name);

} // namespace daywyn
