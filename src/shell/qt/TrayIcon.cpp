#include "shell/qt/TrayIcon.h"

#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QSystemTrayIcon>

#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"

namespace daywyn {
namespace {

// The logo drawn in code: an ink rounded square with a mint sun rising over a coral
// horizon line. No image file to ship or to fail to load.
QIcon logoIcon() {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const qreal s = size;
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x25, 0x12, 0x2F));
        p.drawRoundedRect(QRectF(0, 0, s, s), s * 0.22, s * 0.22);
        p.setBrush(QColor(0xB9, 0xF4, 0xD2));
        QPainterPath sun;
        sun.addEllipse(QPointF(s / 2, s * 0.64), s * 0.26, s * 0.26);
        QPainterPath above;
        above.addRect(QRectF(0, 0, s, s * 0.64));
        p.drawPath(sun.intersected(above));
        p.setBrush(QColor(0xFF, 0x68, 0x42));
        p.drawRoundedRect(QRectF(s * 0.16, s * 0.68, s * 0.68, s * 0.08), s * 0.04, s * 0.04);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

TrayIcon::TrayIcon(EdgePanelController& drawer, QObject* parent)
    : QObject(parent) {
    menu_ = new QMenu();
    menu_->addAction(QStringLiteral("Show drawer"), &drawer, &EdgePanelController::show);
    quickAdd_ = menu_->addAction(QStringLiteral("Quick Add"), &drawer,
                                 &EdgePanelController::showForQuickAdd);
    // Settings come with their own pages; until they are set, the entry says so instead
    // of opening an empty window.
    settings_ = menu_->addAction(QStringLiteral("Settings"));
    settings_->setEnabled(false);
    settings_->setToolTip(QStringLiteral("Settings are not available in this version yet."));
    menu_->addSeparator();
    menu_->addAction(QStringLiteral("Quit"), qApp, &QCoreApplication::quit);

    // Every window (drawer, settings, welcome, Quick Add) shows the logo, not a
    // generic icon, in the window manager's lists.
    QGuiApplication::setWindowIcon(logoIcon());
    icon_ = new QSystemTrayIcon(logoIcon(), this);
    icon_->setToolTip(QStringLiteral("Daywyn"));
    icon_->setContextMenu(menu_);
    connect(icon_, &QSystemTrayIcon::activated, &drawer,
            [&drawer](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    drawer.toggle();
                }
            });
    icon_->show();
}

TrayIcon::~TrayIcon() {
    delete menu_;
}

void TrayIcon::setQuickCapture(QuickCaptureController& quickCapture) {
    disconnect(quickAdd_, &QAction::triggered, nullptr, nullptr);
    connect(quickAdd_, &QAction::triggered, &quickCapture, &QuickCaptureController::show);
}

void TrayIcon::setSettingsOpener(std::function<void()> open) {
    disconnect(settings_, &QAction::triggered, nullptr, nullptr);
    connect(settings_, &QAction::triggered, this, [open = std::move(open)] { open(); });
    settings_->setEnabled(true);
    settings_->setToolTip({});
}

} // namespace daywyn
