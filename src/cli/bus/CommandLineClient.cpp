#include "cli/bus/CommandLineClient.h"

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <type_traits>
#include <unistd.h>

#include "base/Calendar.h"
#include "base/Version.h"
#include "cli/BusAddress.h"
#include "cli/CommandLine.h"
#include "cli/VerbHelp.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "voice/sphinx/TranscribeCommand.h"

namespace daywyn {

namespace {

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

// How long the running app may take to answer a handed-over verb. DAYWYN_BUS_TIMEOUT_MS
// shortens it for the tests of an app that never answers.
std::uint64_t answerTimeoutMicroseconds() {
    if (const char* text = std::getenv("DAYWYN_BUS_TIMEOUT_MS")) {
        if (const long long ms = std::atoll(text); ms > 0) {
            return static_cast<std::uint64_t>(ms) * 1000;
        }
    }
    return 10'000'000;
}

// A repository that loads but never writes: reading verbs must not change the file,
// not even by the store's start-up save after a migration.
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

int print(const CommandOutput& output) {
    std::fputs(output.out.c_str(), stdout);
    std::fputs(output.err.c_str(), stderr);
    return output.status;
}

// sd-bus, loaded only by the verbs that talk to the app, so that the others (and
// --version) do not pay for mapping libsystemd and the libraries it needs.
struct SdBus {
    decltype(&sd_bus_open_user) openUser = nullptr;
    decltype(&sd_bus_flush_close_unref) flushCloseUnref = nullptr;
    decltype(&sd_bus_message_unref) messageUnref = nullptr;
    decltype(&sd_bus_call_method) callMethod = nullptr;
    decltype(&sd_bus_message_read) messageRead = nullptr;
    decltype(&sd_bus_error_free) errorFree = nullptr;
    decltype(&sd_bus_message_new_method_call) newMethodCall = nullptr;
    decltype(&sd_bus_message_set_auto_start) setAutoStart = nullptr;
    decltype(&sd_bus_message_append_strv) appendStrv = nullptr;
    decltype(&sd_bus_call) call = nullptr;

    // Null when libsystemd cannot be loaded.
    static const SdBus* load() {
        static const SdBus loaded = [] {
            SdBus bus;
            void* library = ::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
            if (!library) {
                return bus;
            }
            const auto find = [library](auto& function, const char* name) {
                function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
                    ::dlsym(library, name));
                return function != nullptr;
            };
            const bool complete = find(bus.openUser, "sd_bus_open_user") &&
                                  find(bus.flushCloseUnref, "sd_bus_flush_close_unref") &&
                                  find(bus.messageUnref, "sd_bus_message_unref") &&
                                  find(bus.callMethod, "sd_bus_call_method") &&
                                  find(bus.messageRead, "sd_bus_message_read") &&
                                  find(bus.errorFree, "sd_bus_error_free") &&
                                  find(bus.newMethodCall, "sd_bus_message_new_method_call") &&
                                  find(bus.setAutoStart, "sd_bus_message_set_auto_start") &&
                                  find(bus.appendStrv, "sd_bus_message_append_strv") &&
                                  find(bus.call, "sd_bus_call");
            if (!complete) {
                bus.openUser = nullptr;
            }
            return bus;
        }();
        return loaded.openUser ? &loaded : nullptr;
    }
};

struct BusDeleter {
    void operator()(sd_bus* bus) const { SdBus::load()->flushCloseUnref(bus); }
};
struct MessageDeleter {
    void operator()(sd_bus_message* message) const { SdBus::load()->messageUnref(message); }
};
using Bus = std::unique_ptr<sd_bus, BusDeleter>;
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

// The user's session bus, when there is one; connecting never starts a bus.
Bus sessionBus() {
    const SdBus* sd = SdBus::load();
    sd_bus* bus = nullptr;
    if (!sd || sd->openUser(&bus) < 0) {
        return nullptr;
    }
    return Bus(bus);
}

bool appIsRunning(sd_bus* bus) {
    const SdBus& sd = *SdBus::load();
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    int owned = 0;
    const int r =
        sd.callMethod(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                      "NameHasOwner", &error, &reply, "s", kBusName);
    if (r >= 0) {
        sd.messageRead(reply, "b", &owned);
    }
    sd.messageUnref(reply);
    sd.errorFree(&error);
    return owned != 0;
}

// Hands the verb line to the app and returns its answer. `startApp`: let the bus start
// Daywyn through its service file when it is not running.
// `errorName` receives the D-Bus error's name when the call failed.
CommandOutput runInApp(sd_bus* bus, const std::vector<std::string>& args, bool startApp,
                       std::string* errorName = nullptr) {
    const SdBus& sd = *SdBus::load();
    sd_bus_message* raw = nullptr;
    if (sd.newMethodCall(bus, &raw, kBusName, kBusObjectPath, kBusInterface, "Run") < 0) {
        return CommandOutput{1, {}, "Daywyn could not be reached over D-Bus.\n"};
    }
    Message call(raw);
    sd.setAutoStart(call.get(), startApp ? 1 : 0);
    std::vector<const char*> strings;
    for (const auto& arg : args) {
        strings.push_back(arg.c_str());
    }
    strings.push_back(nullptr);
    sd.appendStrv(call.get(), const_cast<char**>(strings.data()));

    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    const int r = sd.call(bus, call.get(), answerTimeoutMicroseconds(), &error, &reply);
    Message answer(reply);
    CommandOutput output;
    if (r == -ETIMEDOUT) {
        // The app may still carry it out: running it here as well could add it twice.
        output = CommandOutput{1,
                               {},
                               "Daywyn is running but did not answer in time; check 'daywyn "
                               "today' before trying again.\n"};
    } else if (r < 0) {
        if (errorName && error.name) {
            *errorName = error.name;
        }
        output = CommandOutput{1,
                               {},
                               std::string("Daywyn could not be reached over D-Bus: ") +
                                   (error.message ? error.message : "no answer") + "\n"};
    } else {
        int status = 1;
        const char* out = "";
        const char* err = "";
        if (sd.messageRead(answer.get(), "iss", &status, &out, &err) < 0) {
            output = CommandOutput{1,
                                   {},
                                   "Daywyn answered in a form this program does not "
                                   "know; are both from the same version?\n"};
        } else {
            output = CommandOutput{status, out, err};
        }
    }
    sd.errorFree(&error);
    return output;
}

// Starts the desktop app detached from this process, for a window verb where the bus
// cannot start it (no service file: run from the build tree, not installed).
bool startAppInBackground() {
    const std::string app = desktopAppPath();
    if (app.empty()) {
        return false;
    }
    const pid_t child = ::fork();
    if (child < 0) {
        return false;
    }
    if (child == 0) {
        ::setsid();
        if (::fork() != 0) {
            ::_exit(0);
        }
        const int null = ::open("/dev/null", O_RDWR);
        // Nothing of this process's output stays open: whoever reads it (a shell
        // pipe, a key binding's launcher) waits for its end, not the app's.
        ::dup2(null, 0);
        ::dup2(null, 1);
        ::dup2(null, 2);
        // Nor any other descriptor this process inherited (a caller's pipe, the bus).
        ::close_range(3, ~0U, 0);
        ::execl(app.c_str(), app.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return true;
}

CommandOutput runWindowVerb(sd_bus* bus, const std::vector<std::string>& args) {
    if (appIsRunning(bus)) {
        return runInApp(bus, args, false);
    }
    std::string errorName;
    CommandOutput activated = runInApp(bus, args, true, &errorName);
    if (errorName != "org.freedesktop.DBus.Error.ServiceUnknown" || !startAppInBackground()) {
        return activated;
    }
    for (int waited = 0; waited < 300 && !appIsRunning(bus); ++waited) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return runInApp(bus, args, false);
}

int runHere(VerbLine& line, VerbAccess access) {
    const Instant now = currentInstant();
    const Calendar calendar;
    if (auto refused = prepareCommand(line, now, calendar)) {
        return print(*refused);
    }
    if (!line.verb->needsStore) {
        PocketSphinxTranscriber transcriber;
        VerbContext context{nullptr, now, calendar, nullptr, &transcriber};
        return print(runVerbLine(line, context));
    }
    auto path = JSONTaskRepository::defaultFilePath();
    if (!path) {
        std::fprintf(stderr, "%s\n", path.error().c_str());
        return 1;
    }
    const Clock clock = [] {
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
    VerbContext context{&store, now, calendar, nullptr};
    return print(runVerbLine(line, context));
}

} // namespace

std::string desktopAppPath() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string self =
        length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
    const std::string folder = self.substr(0, self.rfind('/'));
    for (const std::string& app : {folder + "/daywyn-app", folder + "/" DAYWYN_APP_FROM_BINDIR}) {
        if (::access(app.c_str(), X_OK) == 0) {
            return app;
        }
    }
    return {};
}

int runCommandLine(const std::vector<std::string>& given) {
    if (given.empty()) {
        return 2;
    }
    const std::string& first = given[0];
    if (first == "--version" || first == "-v" || first == "version") {
        std::printf("%s\n", versionLine().c_str());
        return 0;
    }
    // Made at build time for `make install`: the manual page and the completions.
    if (first == "--man") {
        return print(CommandOutput{0, manPage(), {}});
    }
    if (first == "--completion" && given.size() == 2 && !completionScript(given[1]).empty()) {
        return print(CommandOutput{0, completionScript(given[1]), {}});
    }
    std::vector<std::string> args;
    args.reserve(given.size());
    for (const auto& arg : given) {
        args.push_back(validUtf8(arg));
    }
    ParsedCommand parsed = parseCommand(args);
    if (parsed.answer) {
        return print(*parsed.answer);
    }
    const VerbAccess access = lineAccess(parsed.line);
    if (access == VerbAccess::window) {
        Bus bus = sessionBus();
        if (!bus) {
            return print(CommandOutput{
                1, {}, "Daywyn could not be reached: there is no D-Bus session bus.\n"});
        }
        return print(runWindowVerb(bus.get(), args));
    }
    if (access == VerbAccess::writing) {
        if (Bus bus = sessionBus(); bus && appIsRunning(bus.get())) {
            return print(runInApp(bus.get(), args, false));
        }
    }
    return runHere(parsed.line, access);
}

} // namespace daywyn
