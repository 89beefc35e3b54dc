#include "app/qt/ScreenEngine.h"

#include <QJSEngine>
#include <QtGlobal>

// Made by the QML module's type registrar. Naming it here keeps its object file, and
// with it the module's registration, in every program that links the app library.
void qml_register_types_Daywyn();

namespace daywyn {

ScreenEngine::ScreenEngine(ScreenServices services, QObject* parent)
    : QQmlEngine(parent)
    , services_(services) {
    static void (*volatile const keepRegistration)() = &qml_register_types_Daywyn;
    static_cast<void>(keepRegistration);
    // The module's qmldir and compiled screens live in the resources under this folder.
    addImportPath(QStringLiteral("qrc:/qt/qml"));
}

QObject* ScreenEngine::handOut(QObject* part) {
    if (!part) {
        qWarning("A screen asked for a part this engine was not given.");
        return nullptr;
    }
    // The composition root owns every part; the engine must never delete one.
    QJSEngine::setObjectOwnership(part, QJSEngine::CppOwnership);
    return part;
}

} // namespace daywyn
