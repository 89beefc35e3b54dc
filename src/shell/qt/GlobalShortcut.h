#pragma once

#include <memory>

#include <QObject>

#include "shell/QuickCaptureShortcutStatus.h"

namespace daywyn {

// The session-wide Ctrl+Alt+Space key: while grabbed, every press anywhere in the session
// emits pressed() on the main thread, whichever application is in front.
class GlobalShortcut : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // The real key for this session: the X server's when Qt runs on xcb, otherwise one
    // whose grab always answers unsupported.
    static std::unique_ptr<GlobalShortcut> forThisSession();

    // Grabs the key combination (again, after a release); says how that went.
    virtual ShortcutRegistration grab() = 0;
    // Gives the key combination back; nothing when it is not grabbed.
    virtual void release() = 0;

Q_SIGNALS:
    void pressed();
};

} // namespace daywyn
