#include "tools/SettingsScreenshots.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QStringList>
#include <QTimer>

#include "shell/qt/QuickCaptureController.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SettingsWindow.h"

namespace daywyn {
namespace {

// Long enough for a window's first frames and a page's layout to settle on a loaded
// machine; screenshots are not measurements.
constexpr int settleMilliseconds = 400;

struct Shot {
    QString name;
    std::function<QQuickView*()> show;
};

} // namespace

void captureSettingsScreenshots(QuickCaptureController& quickCapture, SettingsWindow& settings,
                                OnboardingWindow& onboarding, const QString& folder) {
    QDir().mkpath(folder);
    auto shots = std::make_shared<std::vector<Shot>>();
    shots->push_back({QStringLiteral("quick-add"), [&quickCapture] {
                          quickCapture.show();
                          quickCapture.setDraftText(
                              QStringLiteral("Call Ama tomorrow at 10 for 20 minutes"));
                          return quickCapture.panel();
                      }});
    for (const char* page : {"general", "appearance", "notifications", "calendars", "voice",
                             "history", "reports", "about"}) {
        const QString name = QString::fromLatin1(page);
        shots->push_back({QStringLiteral("settings-") + name, [&quickCapture, &settings, name] {
                              quickCapture.dismiss(false);
                              settings.show(name);
                              return settings.window();
                          }});
    }
    shots->push_back({QStringLiteral("onboarding"), [&settings, &onboarding] {
                          if (settings.window()) {
                              settings.window()->hide();
                          }
                          onboarding.showIfNeeded();
                          return onboarding.window();
                      }});

    auto failures = std::make_shared<int>(0);
    auto next = std::make_shared<std::function<void(std::size_t)>>();
    *next = [shots, failures, next, folder](std::size_t index) {
        if (index == shots->size()) {
            QCoreApplication::exit(*failures == 0 ? 0 : 1);
            return;
        }
        QQuickView* window = (*shots)[index].show();
        QTimer::singleShot(settleMilliseconds, [shots, failures, next, folder, index, window] {
            const QString path =
                folder + QLatin1Char('/') + (*shots)[index].name + QLatin1String(".png");
            if (!window || !window->grabWindow().save(path)) {
                std::fprintf(stderr, "Daywyn could not save the screenshot to %s.\n",
                             qPrintable(path));
                ++*failures;
            }
            (*next)(index + 1);
        });
    };
    QTimer::singleShot(0, [next] { (*next)(0); });
}

namespace {

QQuickItem* named(QQuickView& window, const char* name) {
    return window.rootObject() ? window.rootObject()->findChild<QQuickItem*>(QLatin1String(name))
                               : nullptr;
}

// Scrolls the settings page so that `item` is at the top (or the page to its end).
void scrollTo(QQuickView& window, QQuickItem* item, bool toEnd = false) {
    QQuickItem* page = named(window, "settingsPage");
    if (!page || !page->parentItem() || !page->parentItem()->parentItem()) {
        return;
    }
    QQuickItem* flickable = page->parentItem()->parentItem();
    const double most =
        std::max(0.0, QQmlProperty::read(flickable, QStringLiteral("contentHeight")).toDouble() -
                          flickable->height());
    const double y =
        toEnd || !item ? most : std::min(most, item->mapToItem(page, QPointF(0, 0)).y());
    QQmlProperty::write(flickable, QStringLiteral("contentY"), y);
}

struct SyncShot {
    QString name;
    std::function<void(QQuickView&)> act;
    // Polled before the picture is taken (at most 30 s).
    std::function<bool(QQuickView&)> ready;
    // Scrolls the page to what the picture shows.
    std::function<void(QQuickView&)> place;
};

void fill(QQuickView& window, const QString& server, const QString& password) {
    const std::pair<const char*, QString> fields[] = {{"taskSyncServerField", server},
                                                      {"taskSyncUserField", QStringLiteral("ama")},
                                                      {"taskSyncPasswordField", password}};
    for (const auto& [name, text] : fields) {
        if (QQuickItem* field = named(window, name)) {
            field->setProperty("text", text);
        }
    }
}

void invoke(QQuickView& window, const char* function) {
    if (QQuickItem* form = named(window, "taskSyncSetup")) {
        QMetaObject::invokeMethod(form, function);
    }
}

bool stepIs(QQuickView& window, const char* step) {
    QQuickItem* form = named(window, "taskSyncSetup");
    return form && form->property("step").toString() == QLatin1String(step);
}

} // namespace

void captureTaskSyncScreenshots(SettingsWindow& settings, const QString& folder,
                                const QString& server, const QString& silentServer) {
    QDir().mkpath(folder);
    auto shots = std::make_shared<std::vector<SyncShot>>();
    const auto always = [](QQuickView&) {
        return true;
    };
    const auto section = [](QQuickView& window) {
        scrollTo(window, named(window, "taskSyncSection"));
    };
    if (server.isEmpty()) {
        const auto end = [](QQuickView& window) {
            scrollTo(window, nullptr, true);
        };
        shots->push_back({QStringLiteral("task-sync"), section, always, section});
        shots->push_back({QStringLiteral("task-sync-end"), end, always, end});
    } else {
        shots->push_back({QStringLiteral("setup-empty"), section, always, section});
        shots->push_back({QStringLiteral("setup-finding"),
                          [silentServer](QQuickView& window) {
                              fill(window, silentServer, QStringLiteral("secret"));
                              invoke(window, "submit");
                          },
                          [](QQuickView& window) { return stepIs(window, "finding"); }, section});
        shots->push_back({QStringLiteral("setup-failed"),
                          [server](QQuickView& window) {
                              invoke(window, "cancel");
                              fill(window, server, QStringLiteral("not-the-password"));
                              invoke(window, "submit");
                          },
                          [](QQuickView& window) {
                              QQuickItem* error = named(window, "taskSyncSetupError");
                              return stepIs(window, "form") && error && error->isVisible();
                          },
                          section});
        shots->push_back({QStringLiteral("setup-choosing"),
                          [server](QQuickView& window) {
                              fill(window, server, QStringLiteral("secret"));
                              invoke(window, "submit");
                          },
                          [](QQuickView& window) { return stepIs(window, "choosing"); }, section});
        // Start syncing with the list chosen for the user, and the first pass.
        shots->push_back({QStringLiteral("setup-started"),
                          [](QQuickView& window) { invoke(window, "submit"); },
                          [](QQuickView& window) {
                              QQuickItem* button = named(window, "syncNowButton");
                              return button && button->isVisible() && button->isEnabled();
                          },
                          section});
    }

    auto failures = std::make_shared<int>(0);
    auto next = std::make_shared<std::function<void(std::size_t)>>();
    *next = [shots, failures, next, folder, &settings](std::size_t index) {
        if (index == shots->size()) {
            QCoreApplication::exit(*failures == 0 ? 0 : 1);
            return;
        }
        QQuickView* window = settings.window();
        (*shots)[index].act(*window);
        auto waited = std::make_shared<QElapsedTimer>();
        waited->start();
        auto poll = std::make_shared<std::function<void()>>();
        *poll = [shots, failures, next, folder, index, window, waited, poll] {
            const SyncShot& shot = (*shots)[index];
            if (!shot.ready(*window) && waited->elapsed() < 30'000) {
                QTimer::singleShot(100, *poll);
                return;
            }
            // The page lays itself out again after a change: placed once it has.
            QTimer::singleShot(settleMilliseconds, [shots, failures, next, folder, index, window,
                                                    poll] {
                const SyncShot& taken = (*shots)[index];
                taken.place(*window);
                const QString path = folder + QLatin1Char('/') + taken.name + QLatin1String(".png");
                if (!window->grabWindow().save(path)) {
                    std::fprintf(stderr, "Daywyn could not save the screenshot to %s.\n",
                                 qPrintable(path));
                    ++*failures;
                }
                *poll = nullptr;
                (*next)(index + 1);
            });
        };
        QTimer::singleShot(0, *poll);
    };
    settings.show(QStringLiteral("calendars"));
    QTimer::singleShot(settleMilliseconds * 2, [next] { (*next)(0); });
}

} // namespace daywyn
