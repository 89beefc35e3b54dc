// The screens' QML against the Qt modules installed on this machine: a module that
// scripts/install-deps.sh forgot only shows when a user opens the screen that needs
// it, so every import is resolved here, and the save dialog is really opened.
#include <QDir>
#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/SettingsModel.h"
#include "ui/qt/SettingsWindow.h"

namespace daywyn {
namespace {

// Every module a file imports by name (relative folder imports are the app's own).
QStringList importedModules(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    static const QRegularExpression line(QStringLiteral(R"(^\s*import\s+([A-Za-z][\w.]*))"),
                                         QRegularExpression::MultilineOption);
    QStringList modules;
    for (auto match = line.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
        modules << match.next().captured(1);
    }
    return modules;
}

TEST(QmlImports, EveryModuleTheScreensImportIsInstalled) {
    const QDir folder(QStringLiteral(DAYWYN_SOURCE_DIR "/src/ui/qml"));
    const QStringList files = folder.entryList({QStringLiteral("*.qml")}, QDir::Files);
    ASSERT_GT(files.size(), 10);
    QQmlEngine engine;
    QStringList modules;
    for (const QString& name : files) {
        modules << importedModules(folder.filePath(name));
    }
    // The non-native file dialog's own page imports this only when it opens.
    if (modules.contains(QStringLiteral("QtQuick.Dialogs"))) {
        modules << QStringLiteral("Qt.labs.folderlistmodel")
                << QStringLiteral("QtQuick.Dialogs.quickimpl");
    }
    modules.removeDuplicates();
    QStringList missing;
    for (const QString& module : modules) {
        QQmlComponent component(&engine);
        component.setData(
            QStringLiteral("import %1\nimport QtQml\nQtObject {}\n").arg(module).toUtf8(),
            QUrl(QStringLiteral("file:///imports.qml")));
        if (component.isError()) {
            missing << component.errorString().trimmed();
        }
    }
    EXPECT_TRUE(missing.isEmpty()) << missing.join(QLatin1Char('\n')).toStdString();
}

TEST(QmlImports, TheExportButtonsOpenTheSaveDialogOrSayWhyNot) {
    AppEnvironment app(nullptr, test::berlin(),
                       test::ManualClock(test::at(test::berlin(), 2026, 11, 21, 9)).function());
    SettingsWindow& settings = app.settingsWindow();
    settings.show(QStringLiteral("reports"));
    QQuickView& window = *settings.window();
    for (const char* button : {"exportJson", "exportCsv"}) {
        SCOPED_TRACE(button);
        QQuickItem* item = nullptr;
        ASSERT_TRUE(test::waitUntil([&] {
            item = test::findItem(window, QString::fromLatin1(button));
            return item && item->width() > 0;
        }));
        QMetaObject::invokeMethod(item, "clicked");
        QObject* dialog = window.rootObject()->findChild<QObject*>(QStringLiteral("exportDialog"));
        ASSERT_NE(dialog, nullptr);
        // Installed as install-deps.sh does, the dialog appears; were it to fail, the
        // page would have to say so.
        EXPECT_TRUE(test::waitUntil([&] { return dialog->property("visible").toBool(); }))
            << app.settingsModel().message().toStdString();
        EXPECT_EQ(app.settingsModel().message(), QString());
        QMetaObject::invokeMethod(dialog, "reject");
    }
}

} // namespace
} // namespace daywyn
