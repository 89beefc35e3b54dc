// One refresh of two connected Google accounts with five selected calendars each,
// against a fake Google over TLS on loopback that answers every request after 150 ms.
// Requests of one pass are in flight together: the calendar list of each account,
// then all its calendars' events at once, so a pass costs about two round trips, not
// twelve. The first pass (connections and TLS sessions being set up) is reported apart
// from the warm passes that follow.
#include <memory>

#include <QCoreApplication>
#include <QEventLoop>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>

#include "../tests/support/FakeSecretStore.h"
#include "../tests/support/qt/FakeGoogleServer.h"
#include "calendar/qt/GoogleCalendarManager.h"
#include "calendar/qt/NetworkGoogleHttp.h"

namespace {

using namespace daywyn;

constexpr int kLatencyMilliseconds = 150;
constexpr int kCalendars = 5;

struct Setup {
    QTemporaryDir folder;
    test::FakeGoogleServer google;
    test::FakeSecretStore secrets;
    std::unique_ptr<NetworkGoogleHttp> http;
    std::unique_ptr<GoogleCalendarManager> manager;

    Setup() {
        if (!google.start(folder.path())) {
            qFatal("The fake Google did not start.");
        }
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.addCaCertificate(google.certificate());
        QSslConfiguration::setDefaultConfiguration(tls);
        google.setLatency(kLatencyMilliseconds);
        std::vector<GoogleAccount> accounts;
        for (int index = 0; index < 2; ++index) {
            test::FakeGoogleServer::Account account;
            account.id = QString::number(index + 1);
            account.email = QStringLiteral("user%1@example.com").arg(index + 1);
            account.calendars = kCalendars;
            account.calendarsPerPage = 250;
            account.accessToken = QStringLiteral("at-%1").arg(index + 1);
            google.addAccount(account);
            GoogleAccount stored;
            stored.id = account.id.toStdString();
            stored.email = account.email.toStdString();
            stored.accessToken = account.accessToken.toStdString();
            stored.refreshToken = "rt";
            stored.expiresAt = Instant{4'000'000'000.0};
            accounts.push_back(stored);
        }
        secrets.secret = GoogleAccount::encodeAll(accounts);
        http = std::make_unique<NetworkGoogleHttp>();
        manager = std::make_unique<GoogleCalendarManager>(
            *http, secrets, GoogleEndpoints::under(google.origin().toStdString()), Calendar(),
            [] { return Instant{static_cast<double>(QDateTime::currentSecsSinceEpoch())}; },
            [] {
                return GoogleClientRegistration{"id", "secret"};
            },
            [](const QUrl&) { return false; });
        manager->restore();
    }

    void refreshOnce() {
        QEventLoop loop;
        QObject::connect(manager.get(), &GoogleCalendarManager::eventsChanged, &loop,
                         &QEventLoop::quit);
        QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
        manager->refresh();
        loop.exec();
        if (manager->events().size() != 2 * kCalendars) {
            qFatal("The refresh did not bring every event.");
        }
    }
};

Setup& setup() {
    static Setup instance;
    return instance;
}

void FirstRefreshTwoAccountsFiveCalendars(benchmark::State& state) {
    for (auto _ : state) {
        setup().refreshOnce();
    }
}

void WarmRefreshTwoAccountsFiveCalendars(benchmark::State& state) {
    for (auto _ : state) {
        setup().refreshOnce();
    }
}

} // namespace

BENCHMARK(FirstRefreshTwoAccountsFiveCalendars)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK(WarmRefreshTwoAccountsFiveCalendars)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(9)
    ->ReportAggregatesOnly(false);

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
