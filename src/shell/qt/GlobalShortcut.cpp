#include "shell/qt/GlobalShortcut.h"

#include <QGuiApplication>

#include "shell/qt/GlobalShortcutX11.h"

namespace daywyn {
namespace {

// A session without X11 (Wayland without XWayland, the offscreen platform): nothing to
// grab, so the settings page can tell the user to bind `daywyn quick-add` instead.
class NoGlobalShortcut final : public GlobalShortcut {
public:
    ShortcutRegistration grab() override { return {ShortcutRegistration::Outcome::unsupported, 0}; }
    void release() override {}
};

} // namespace

std::unique_ptr<GlobalShortcut> GlobalShortcut::forThisSession() {
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        return std::make_unique<GlobalShortcutX11>();
    }
    return std::make_unique<NoGlobalShortcut>();
}

} // namespace daywyn
