#include "shell/LaunchAtLoginEntry.h"

namespace daywyn {

std::string LaunchAtLoginEntry::execArgument(std::string_view argument) {
    // Two layers: inside double quotes the Exec grammar escapes " ` $ \ with a
    // backslash, and then the string value type escapes every backslash again. A
    // per cent sign would start a field code, so it is doubled.
    std::string quoted = "\"";
    for (const char c : argument) {
        switch (c) {
        case '"':
        case '`':
        case '$':
            quoted += "\\\\";
            quoted += c;
            break;
        case '\\':
            quoted += "\\\\\\\\";
            break;
        case '%':
            quoted += "%%";
            break;
        default:
            quoted += c;
        }
    }
    quoted += '"';
    return quoted;
}

std::string LaunchAtLoginEntry::text(std::string_view executablePath) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Daywyn\n"
           "Comment=Your day beside everything else\n"
           "Exec=" +
           execArgument(executablePath) +
           "\n"
           "Icon=daywyn\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

std::string LaunchAtLoginEntry::errorMessage(std::string_view reason) {
    return "Launch at login could not be changed: " + std::string(reason);
}

} // namespace daywyn
