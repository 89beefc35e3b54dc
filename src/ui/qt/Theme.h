#pragma once

#include <QColor>
#include <QObject>

namespace daywyn {

// The palette the screens draw with, light or dark: dark follows the desktop unless
// the "appearance" setting says "light" or "dark". A change repaints every screen.
class Theme : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(QColor ink READ ink NOTIFY changed)
    Q_PROPERTY(QColor mint READ mint NOTIFY changed)
    Q_PROPERTY(QColor coral READ coral NOTIFY changed)
    Q_PROPERTY(QColor surface READ surface NOTIFY changed)
    Q_PROPERTY(QColor raised READ raised NOTIFY changed)
    Q_PROPERTY(QColor separator READ separator NOTIFY changed)
    Q_PROPERTY(QColor text READ text NOTIFY changed)
    Q_PROPERTY(QColor secondaryText READ secondaryText NOTIFY changed)
    Q_PROPERTY(QColor focusRing READ focusRing NOTIFY changed)
    Q_PROPERTY(QColor selection READ selection NOTIFY changed)

public:
    explicit Theme(bool dark, QObject* parent = nullptr);

    // "light", "dark" or anything else for the desktop's choice.
    static bool resolveDark(const QString& appearanceSetting);

    bool isDark() const { return dark_; }
    void setDark(bool dark);
    QColor ink() const { return QColor(0x25, 0x12, 0x2F); }
    QColor mint() const { return QColor(0xB9, 0xF4, 0xD2); }
    QColor coral() const { return QColor(0xFF, 0x68, 0x42); }
    QColor surface() const { return dark_ ? QColor(0x1B, 0x0E, 0x22) : QColor(Qt::white); }
    QColor raised() const { return dark_ ? QColor(0x2A, 0x18, 0x33) : QColor(0xF6, 0xF4, 0xF8); }
    QColor separator() const { return dark_ ? QColor(0x3B, 0x29, 0x46) : QColor(0xE6, 0xE1, 0xEA); }
    QColor text() const { return dark_ ? QColor(0xF4, 0xEF, 0xF7) : ink(); }
    QColor secondaryText() const {
        return dark_ ? QColor(0xB8, 0xAB, 0xC0) : QColor(0x6B, 0x5E, 0x73);
    }
    QColor focusRing() const { return dark_ ? mint() : ink(); }
    // The focused row's calm highlight: mint on light, a mint-tinted card on dark.
    QColor selection() const { return dark_ ? QColor(0x2F, 0x4A, 0x40) : mint(); }

Q_SIGNALS:
    void changed();

private:
    bool dark_;
};

} // namespace daywyn
