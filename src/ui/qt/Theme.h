#pragma once

#include <QColor>
#include <QObject>

namespace daywyn {

// The palette the screens draw with, light or dark, chosen at start: dark follows the
// desktop unless the "appearance" setting says "light" or "dark".
class Theme : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark CONSTANT)
    Q_PROPERTY(QColor ink READ ink CONSTANT)
    Q_PROPERTY(QColor mint READ mint CONSTANT)
    Q_PROPERTY(QColor coral READ coral CONSTANT)
    Q_PROPERTY(QColor surface READ surface CONSTANT)
    Q_PROPERTY(QColor raised READ raised CONSTANT)
    Q_PROPERTY(QColor separator READ separator CONSTANT)
    Q_PROPERTY(QColor text READ text CONSTANT)
    Q_PROPERTY(QColor secondaryText READ secondaryText CONSTANT)
    Q_PROPERTY(QColor focusRing READ focusRing CONSTANT)
    Q_PROPERTY(QColor selection READ selection CONSTANT)

public:
    explicit Theme(bool dark, QObject* parent = nullptr);

    // "light", "dark" or anything else for the desktop's choice.
    static bool resolveDark(const QString& appearanceSetting);

    bool isDark() const { return dark_; }
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

private:
    bool dark_;
};

} // namespace daywyn
