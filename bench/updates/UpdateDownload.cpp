// What verifying a download costs: the same 100 MB package fetched over HTTPS on
// loopback, once as a raw transfer streamed to a file and once through AppUpdateManager,
// which also computes its SHA-256 over the stream and moves the file into place.
// VerificationOverhead reports the medians and the overheads in percent.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <string>
#include <unistd.h>
#include <vector>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include "../../tests/updates/qt/LocalHttpsServer.h"
#include "updates/qt/AppUpdateManager.h"
#include "updates/qt/Sha256Stream.h"

namespace {

using daywyn::AppUpdateManager;
using daywyn::test::LocalHttpsServer;

constexpr qint64 packageBytes = 100LL * 1024 * 1024;

struct Setup {
    LocalHttpsServer server;
    QTemporaryDir folder;
    QByteArray package;
    QUrl packageURL;
    std::unique_ptr<AppUpdateManager> manager;
    QNetworkAccessManager network;
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();

    Setup() {
        if (!server.start()) {
            qFatal("The local HTTPS server did not start.");
        }
        // Served from memory, so neither run pays for making the bytes.
        package = LocalHttpsServer::generatedChunk(0, packageBytes);
        const QByteArray sha256 =
            QCryptographicHash::hash(package, QCryptographicHash::Sha256).toHex();
        LocalHttpsServer::Reply reply;
        reply.body = package;
        server.setReply(QStringLiteral("/daywyn.deb"), reply);
        packageURL = server.url(QStringLiteral("localhost"), QStringLiteral("/daywyn.deb"));
        LocalHttpsServer::Reply manifest;
        manifest.body = R"({"schemaVersion": 1, "latest": "9.0", "releases": [{"version": "9.0",
            "build": 1, "publishedAt": "", "minimumMacOS": "", "downloadURL": ")" +
                        packageURL.toString().toUtf8() + R"(", "sha256": ")" + sha256 +
                        R"(", "notes": []}]})";
        server.setReply(QStringLiteral("/manifest.json"), manifest);

        AppUpdateManager::Options options;
        options.manifestURL =
            server.url(QStringLiteral("localhost"), QStringLiteral("/manifest.json"));
        options.extraCaCertificates = {server.certificate()};
        options.downloadFolder = folder.path();
        manager = std::make_unique<AppUpdateManager>(options);
        QSignalSpy checked(manager.get(), &AppUpdateManager::checkFinished);
        manager->checkForUpdates();
        checked.wait(30'000);
        if (!manager->latestRelease()) {
            qFatal("The update check failed: %s", qPrintable(manager->statusMessage()));
        }
        tls.addCaCertificates({server.certificate()});
    }
};

Setup& setup() {
    static Setup instance;
    return instance;
}

// The transfer alone: the same request settings and read buffer, each chunk written to a
// file as it arrives, and with `hashed` SHA-256 over the stream as the download computes
// it, nothing else. True when every byte arrived.
bool rawTransferOnce(Setup& s, bool hashed) {
    daywyn::Sha256Stream hash;
    QFile file(QDir(s.folder.path()).filePath(QStringLiteral("raw.part")));
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    QNetworkRequest request(s.packageURL);
    request.setSslConfiguration(s.tls);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    QNetworkReply* reply = s.network.get(request);
    reply->setReadBufferSize(256 * 1024);
    qint64 received = 0;
    QObject::connect(reply, &QNetworkReply::readyRead, [&] {
        while (reply->bytesAvailable() > 0) {
            const QByteArray chunk = reply->read(256 * 1024);
            file.write(chunk);
            if (hashed) {
                hash.addData(chunk.constData(), static_cast<std::size_t>(chunk.size()));
            }
            received += chunk.size();
        }
    });
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    while (reply->bytesAvailable() > 0) {
        received += file.write(reply->readAll());
    }
    file.flush();
    ::fsync(file.handle());
    reply->deleteLater();
    file.remove();
    return received == packageBytes;
}

// The real download: transfer, SHA-256 over the stream, and the move into place.
bool verifiedDownloadOnce(Setup& s) {
    QSignalSpy finished(s.manager.get(), &AppUpdateManager::downloadFinished);
    s.manager->downloadLatest();
    finished.wait(120'000);
    const QString saved = s.manager->downloadedInstallerPath();
    QFile::remove(saved);
    return !saved.isEmpty();
}

double processCpuMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Three ways to fetch the package, run in rotation (the order shifts every round) so a
// machine whose load drifts weighs on all alike: the raw transfer, the raw transfer with
// SHA-256 over the stream, and AppUpdateManager's download. Reports the medians of wall
// time and of the whole process's CPU time (server, TLS and network thread included), and
// the overhead of each over the raw transfer in percent.
void VerificationOverhead(benchmark::State& state) {
    Setup& s = setup();
    constexpr int rounds = 9;
    const char* names[] = {"raw", "hashed", "verified"};
    for (auto _ : state) {
        std::vector<double> wall[3];
        std::vector<double> cpu[3];
        for (int round = 0; round < rounds; ++round) {
            for (int turn = 0; turn < 3; ++turn) {
                const int kind = (round + turn) % 3;
                const auto wallStart = std::chrono::steady_clock::now();
                const double cpuStart = processCpuMilliseconds();
                const bool ok = kind == 2 ? verifiedDownloadOnce(s) : rawTransferOnce(s, kind == 1);
                cpu[kind].push_back(processCpuMilliseconds() - cpuStart);
                wall[kind].push_back(std::chrono::duration<double, std::milli>(
                                         std::chrono::steady_clock::now() - wallStart)
                                         .count());
                if (!ok) {
                    state.SkipWithError("a download failed");
                    return;
                }
            }
        }
        for (int kind = 0; kind < 3; ++kind) {
            const std::string name = names[kind];
            state.counters[name + "_wall_ms"] = median(wall[kind]);
            state.counters[name + "_cpu_ms"] = median(cpu[kind]);
            if (kind > 0) {
                state.counters[name + "_wall_pct"] =
                    100.0 * (median(wall[kind]) / median(wall[0]) - 1.0);
                state.counters[name + "_cpu_pct"] =
                    100.0 * (median(cpu[kind]) / median(cpu[0]) - 1.0);
            }
        }
    }
}

// SHA-256 alone over the same bytes in the download's chunk size: the hash the download
// uses, and Qt's for comparison.
void Sha256Only(benchmark::State& state) {
    Setup& s = setup();
    constexpr qint64 chunk = 256 * 1024;
    for (auto _ : state) {
        daywyn::Sha256Stream hash;
        for (qint64 offset = 0; offset < packageBytes; offset += chunk) {
            hash.addData(s.package.constData() + offset,
                         static_cast<std::size_t>(std::min(chunk, packageBytes - offset)));
        }
        benchmark::DoNotOptimize(hash.hexDigest());
    }
    state.SetBytesProcessed(state.iterations() * packageBytes);
}

void QtSha256Only(benchmark::State& state) {
    Setup& s = setup();
    constexpr qint64 chunk = 256 * 1024;
    for (auto _ : state) {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        for (qint64 offset = 0; offset < packageBytes; offset += chunk) {
            hash.addData(
                QByteArrayView(s.package).sliced(offset, std::min(chunk, packageBytes - offset)));
        }
        benchmark::DoNotOptimize(hash.result());
    }
    state.SetBytesProcessed(state.iterations() * packageBytes);
}

// It takes its own medians, so it runs once whatever --benchmark_repetitions says.
BENCHMARK(VerificationOverhead)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(1);
BENCHMARK(Sha256Only)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(QtSha256Only)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
