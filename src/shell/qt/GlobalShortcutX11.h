#pragma once

#include <cstdint>

#include <QAbstractNativeEventFilter>

#include "shell/qt/GlobalShortcut.h"

namespace daywyn {

// Ctrl+Alt+Space grabbed on the X root window over Qt's own xcb connection: four passive
// grabs (with and without Caps Lock and Num Lock) so a lit lock key does not hide the
// press, and a native event filter that turns the grabbed press into pressed(). Needs
// the xcb platform.
class GlobalShortcutX11 final : public GlobalShortcut, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    explicit GlobalShortcutX11(QObject* parent = nullptr);
    ~GlobalShortcutX11() override;

    // Refused (error 10, BadAccess) when another client already grabs any of the four
    // combinations; none of ours is then left behind.
    ShortcutRegistration grab() override;
    void release() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    bool grabbed_ = false;
    std::uint8_t keycode_ = 0;
    std::uint32_t root_ = 0;
};

} // namespace daywyn
