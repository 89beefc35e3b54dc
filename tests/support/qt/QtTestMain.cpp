// The entry point of the Qt test programs: a QApplication (menus and the tray need
// widgets) with Qt Quick drawing in software, so no GPU or display driver is needed.
// Like the core tests it runs only inside scripts/hermetic-test.sh.
#include <QApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <gtest/gtest.h>

#include "support/HermeticGuard.h"

int main(int argc, char** argv) {
    if (!daywyn::test::runningHermetically()) {
        return 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
