#include "shell/qt/QuickCaptureFocus.h"

#include <QGuiApplication>

#include "shell/qt/QuickCaptureFocusX11.h"

namespace daywyn {
namespace {

class NoQuickCaptureFocus final : public QuickCaptureFocus {
public:
    std::uint32_t activeWindow() override { return 0; }
    bool isOwnWindow(std::uint32_t) override { return false; }
    void activate(std::uint32_t) override {}
};

} // namespace

std::unique_ptr<QuickCaptureFocus> QuickCaptureFocus::forThisSession() {
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        return std::make_unique<QuickCaptureFocusX11>();
    }
    return std::make_unique<NoQuickCaptureFocus>();
}

} // namespace daywyn
