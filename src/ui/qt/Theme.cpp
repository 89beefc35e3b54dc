#include "ui/qt/Theme.h"

#include <QGuiApplication>
#include <QPalette>

namespace daywyn {

Theme::Theme(bool dark, QObject* parent)
    : QObject(parent)
    , dark_(dark) {}

void Theme::setDark(bool dark) {
    if (dark != dark_) {
        dark_ = dark;
        Q_EMIT changed();
    }
}

bool Theme::resolveDark(const QString& appearanceSetting) {
    if (appearanceSetting == QLatin1String("dark")) {
        return true;
    }
    if (appearanceSetting == QLatin1String("light")) {
        return false;
    }
    // Qt 6.4 has no colour-scheme hint; the platform theme's window colour carries the
    // desktop's choice (GNOME, KDE and the portal all set it).
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

} // namespace daywyn
