#include "tools/SettingsScreenshots.h"

#include <cstdio>
#include <functional>
#include <memory>

#include <QCoreApplication>
#include <QDir>
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

} // namespace daywyn
