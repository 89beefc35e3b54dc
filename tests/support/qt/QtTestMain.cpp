// The entry point of the Qt test programs: a QApplication (menus and the tray need
// widgets) with Qt Quick drawing in software, so no GPU or display driver is needed.
// Like the core tests it runs only inside scripts/hermetic-test.sh.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const char* hermetic = std::getenv("DAYWYN_HERMETIC");
    const char* data = std::getenv("XDG_DATA_HOME");
    if (!hermetic || std::strcmp(hermetic, "1") != 0 || !data ||
        !std::strstr(data, "daywyn-test.")) {
        std::fprintf(stderr, "These tests run only inside scripts/hermetic-test.sh (ctest does "
                             "that), never against your real data folder.\n");
        return 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
