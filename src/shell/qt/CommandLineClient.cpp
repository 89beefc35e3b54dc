#include "shell/qt/CommandLineClient.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QStringList>

#include "base/Calendar.h"
#include "base/Version.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "shell/CommandLine.h"
#include "voice/sphinx/TranscribeCommand.h"

namespace daywyn {

namespace {

constexpr const char* kService = "org.daywyn.Daywyn";
constexpr const char* kPath = "/org/daywyn/Daywyn";
constexpr const char* kInterface = "org.daywyn.Daywyn";

Instant currentInstant() {
    // DAYWYN_NOW fixes the clock for the command-line tests ("2026-03-04T08:15:00Z").
    if (const char* fixed = std::getenv("DAYWYN_NOW")) {
        if (auto at = parseIsoText(fixed)) {
            return *at;
        }
    }
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return Instant{std::chrono::duration<double>(since).count()};
}

// A repository that loads but never writes: reading verbs must not change the file,
// not even by the store's start-up save.
class ReadOnlyRepository : public TaskRepository {
public:
    explicit ReadOnlyRepository(std::unique_ptr<TaskRepository> inner)
        : inner_(std::move(inner)) {}
    Result<std::optional<PersistedState>> load() override {
        auto loaded = inner_->load();
        // Nothing stored yet: an empty plan, not first-run samples whose random ids
        // would exist only in this process and fail in the next "done" or "start".
        if (loaded && !loaded.value()) {
            return std::optional<PersistedState>(PersistedState{});
        }
        return loaded;
    }
    Status save(const PersistedStateView&) override { return {}; }

private:
    std::unique_ptr<TaskRepository> inner_;
};

// Only a bus that is already there is asked; connecting must never start one.
bool sessionBusAvailable() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address) {
        return true;
    }
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ignored;
    return runtime && *runtime && std::filesystem::exists(std::string(runtime) + "/bus", ignored);
}

std::string toUtf8(const QString& text) {
    return text.toUtf8().toStdString();
}

int print(const CommandOutput& output) {
    std::fputs(output.out.c_str(), stdout);
    std::fputs(output.err.c_str(), stderr);
    return output.status;
}

// Asks the running app to run the verb. Absent when no app is running.
std::optional<CommandOutput> forwardToRunningApp(const std::vector<std::string>& args) {
    if (!sessionBusAvailable()) {
        return std::nullopt;
    }
    int argc = 1;
    char name[] = "daywyn";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(QString::fromUtf8(kService))) {
        return std::nullopt;
    }
    QString method = QString::fromStdString(args[0]);
    method[0] = method[0].toUpper();
    QStringList rest;
    for (std::size_t i = 1; i < args.size(); ++i) {
        rest << QString::fromStdString(args[i]);
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall(QString::fromUtf8(kService), QString::fromUtf8(kPath),
                                       QString::fromUtf8(kInterface), method);
    call << rest;
    const QDBusMessage reply = bus.call(call, QDBus::Block, 30000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 3) {
        return CommandOutput{
            1, {}, "Daywyn is running but did not answer: " + toUtf8(reply.errorMessage()) + "\n"};
    }
    const auto values = reply.arguments();
    return CommandOutput{values[0].toInt(), toUtf8(values[1].toString()),
                         toUtf8(values[2].toString())};
}

// Asks the app to open Quick Add; the bus starts Daywyn through its service file when
// it is not running, so the first press after login works too.
int openQuickAdd() {
    if (!sessionBusAvailable()) {
        std::fprintf(stderr, "Quick Add could not be opened: no D-Bus session bus.\n");
        return 1;
    }
    int argc = 1;
    char name[] = "daywyn";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QDBusMessage call =
        QDBusMessage::createMethodCall(QString::fromUtf8(kService), QString::fromUtf8(kPath),
                                       QString::fromUtf8(kInterface), QStringLiteral("QuickAdd"));
    const QDBusMessage reply = bus.call(call, QDBus::Block, 30000);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        std::fprintf(stderr, "Quick Add could not be opened: %s\n",
                     toUtf8(reply.errorMessage()).c_str());
        return 1;
    }
    return 0;
}

int runHere(const std::vector<std::string>& args, VerbAccess access) {
    const Instant now = currentInstant();
    const Calendar calendar;
    auto path = JSONTaskRepository::defaultFilePath();
    if (!path) {
        std::fprintf(stderr, "%s\n", path.error().c_str());
        return 1;
    }
    const JSONTaskRepository::Clock clock = [] {
        return currentInstant();
    };
    auto repository = std::make_unique<JSONTaskRepository>(
        path.value(), std::make_shared<PosixFileSystem>(), clock, clock);
    std::unique_ptr<TaskRepository> storeRepository;
    if (access == VerbAccess::writing) {
        if (auto locked = repository->acquireWriterLock(); !locked) {
            std::fprintf(stderr, "%s\n", locked.error().c_str());
            return 1;
        }
        storeRepository = std::move(repository);
    } else {
        storeRepository = std::make_unique<ReadOnlyRepository>(std::move(repository));
    }
    TodayTaskStore store(std::move(storeRepository), now, calendar);
    if (store.persistenceError()) {
        // The unreadable file was moved aside; say so, then carry on with a fresh one.
        std::fprintf(stderr, "%s\n", store.persistenceError()->c_str());
    }
    return print(runCommand(store, args, now, calendar));
}

} // namespace

int runCommandLine(const std::vector<std::string>& args) {
    if (args.empty()) {
        return 2;
    }
    if (args[0] == "--version" || args[0] == "-v" || args[0] == "version") {
        std::printf("%s\n", versionLine().c_str());
        return 0;
    }
    if (args[0] == "transcribe") {
        return runTranscribeCommand(args, currentInstant(), Calendar(), std::cout, std::cerr);
    }
    if (auto early = checkWithoutStore(args, currentInstant(), Calendar())) {
        return print(*early);
    }
    if (args[0] == "quick-add") {
        return openQuickAdd();
    }
    const VerbAccess access = verbAccess(args);
    if (access == VerbAccess::writing) {
        if (auto forwarded = forwardToRunningApp(args)) {
            return print(*forwarded);
        }
    }
    return runHere(args, access);
}

} // namespace daywyn
