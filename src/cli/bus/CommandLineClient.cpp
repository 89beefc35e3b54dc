#include "cli/bus/CommandLineClient.h"

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <optional>
#include <spawn.h>
#include <sys/mman.h>
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
#include "cli/bus/SystemCalendars.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "sync/SyncState.h"
#include "sync/SyncStateFile.h"

namespace daywyn {

namespace {

// How long the running app may take to answer a handed-over verb. DAYWYN_BUS_TIMEOUT_MS
// shortens it for the tests of an app that never answers.
std::uint64_t answerTimeoutMicroseconds(std::uint64_t usual = 10'000'000) {
    if (const char* text = std::getenv("DAYWYN_BUS_TIMEOUT_MS")) {
        if (const long long ms = std::atoll(text); ms > 0) {
            return static_cast<std::uint64_t>(ms) * 1000;
        }
    }
    return usual;
}

// A sync pass handed to the app talks to a server, each request with its own 30 s limit.
constexpr std::uint64_t kSyncAnswerMicroseconds = 300'000'000;

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
                       std::string* errorName = nullptr,
                       std::uint64_t timeout = answerTimeoutMicroseconds()) {
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
    const int r = sd.call(bus, call.get(), timeout, &error, &reply);
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

// The running app's answer to a verb it carries out; nothing when no app is on the bus.
// The verb is sent straight away: asking the bus first whether the app runs cost a
// round trip on every handed-over verb.
std::optional<CommandOutput> runInRunningApp(const std::vector<std::string>& args,
                                             std::uint64_t timeout = answerTimeoutMicroseconds()) {
    Bus bus = sessionBus();
    if (!bus) {
        return std::nullopt;
    }
    std::string errorName;
    CommandOutput answer = runInApp(bus.get(), args, false, &errorName, timeout);
    if (errorName == "org.freedesktop.DBus.Error.NameHasNoOwner" ||
        errorName == "org.freedesktop.DBus.Error.ServiceUnknown") {
        return std::nullopt;
    }
    return answer;
}

// Starts the desktop app detached from this process, for a window verb where the bus
// cannot start it (no service file: run from the build tree, not installed).
bool startAppInBackground() {
    const std::string app = helperProgramPath("daywyn-app");
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

// Runs one of Daywyn's helper programs with the caller's instant and the verb line; it
// shares this process's standard streams and prints what it has to say itself.
CommandOutput runHelperProgram(const std::string& name, Instant now,
                               const std::vector<std::string>& args) {
    const std::string program = helperProgramPath(name);
    if (program.empty()) {
        return CommandOutput{1, {}, "Daywyn could not find " + name + "; is it installed?\n"};
    }
    std::vector<std::string> line{program, isoText(now)};
    line.insert(line.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& arg : line) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    std::fflush(nullptr);
    pid_t child = 0;
    if (const int error =
            ::posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ);
        error != 0) {
        return CommandOutput{
            1, {}, "Daywyn could not start " + program + ": " + std::strerror(error) + "\n"};
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return CommandOutput{WIFEXITED(status) ? WEXITSTATUS(status) : 1, {}, {}};
}

// `daywyn transcribe` through daywyn-transcribe: the recogniser's libraries are loaded
// by that program alone.
class TranscriberProgram : public RecordingTranscriber {
public:
    CommandOutput transcribe(const std::vector<std::string>& args, Instant now,
                             const Calendar&) override {
        return runHelperProgram("daywyn-transcribe", now, args);
    }
};

// `daywyn sync` through daywyn-sync, which loads Qt's network library and libsecret and
// takes the writer lock itself.
class TaskSyncProgram : public TaskSyncRunner {
public:
    CommandOutput sync(const std::vector<std::string>& args, Instant now) override {
        return runHelperProgram("daywyn-sync", now, args);
    }
};

// After a verb changed tasks here: when task sync is set up, the changed tasks are
// noted with the time, so that the next pass sends them and knows which edit is later.
// `syncStatePath` is the state's file, which exists (see existingSyncStatePath).
void noteChangesForSync(const std::string& syncStatePath, const std::vector<TaskItem>& before,
                        const std::vector<TaskItem>& after, Instant now) {
    if (before == after) {
        return;
    }
    sync::SyncStateFile file(syncStatePath, std::make_shared<PosixFileSystem>());
    auto loaded = file.load(now);
    if (!loaded || !loaded.value().state.account) {
        return;
    }
    sync::noteLocalChanges(loaded.value().state, before, after, now);
    if (auto saved = file.save(loaded.value().state); !saved) {
        std::fprintf(stderr, "Daywyn could not note the change for task sync: %s\n",
                     saved.error().c_str());
    }
}

// The sync state's file when there is one; the list of tasks is copied for the notes
// of noteChangesForSync only then.
std::optional<std::string> existingSyncStatePath() {
    auto path = sync::SyncStateFile::defaultPath();
    if (!path || ::access(path.value().c_str(), F_OK) != 0) {
        return std::nullopt;
    }
    return path.value();
}

// A verb that opens the store reads the whole state file into fresh memory and, to
// save, encodes all of it again: some 20 MB for 5,000 tasks, touched once by a process
// that lives for milliseconds. Taken a 4 KiB page at a time, faulting it in cost more
// than the reading and encoding themselves (a virtual machine makes each fault dearer),
// so the heap is grown in one step and put on transparent huge pages, and the large
// buffers come from it instead of a mapping each. One arena: the read-ahead thread's
// records land there too. The kernel gives 4 KiB pages where it has no huge ones.
void useHugePagesForTheHeap() {
    constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
    constexpr int kMmapThreshold = 32 << 20; // the largest glibc allows
    constexpr int kTopPad = 2 * kMmapThreshold;
    ::mallopt(M_ARENA_MAX, 1);
    ::mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
    ::mallopt(M_TRIM_THRESHOLD, 4 * kTopPad);
    ::mallopt(M_TOP_PAD, kTopPad);
    const auto before = reinterpret_cast<std::uintptr_t>(::sbrk(0));
    // Grows the heap by this block and the pad. Its end, where malloc writes the header
    // of the free rest, is the only new page touched before the advice below, so it is
    // placed far up, where a 4 KiB page there costs least. (volatile: a compiler may
    // drop a malloc that is freed unused.)
    void* volatile grown = std::malloc(static_cast<std::size_t>(kMmapThreshold) - 4096);
    std::free(grown);
    const auto after = reinterpret_cast<std::uintptr_t>(::sbrk(0));
    const std::uintptr_t from = (before + kHugePage - 1) & ~(kHugePage - 1);
    if (before != static_cast<std::uintptr_t>(-1) && after > from) {
        ::madvise(reinterpret_cast<void*>(from), after - from, MADV_HUGEPAGE);
    }
}

// The state file's repository; null (the reason printed) when there is no data folder.
std::unique_ptr<JSONTaskRepository> stateRepository(const Clock& clock) {
    auto path = JSONTaskRepository::defaultFilePath();
    if (!path) {
        std::fprintf(stderr, "%s\n", path.error().c_str());
        return nullptr;
    }
    return std::make_unique<JSONTaskRepository>(path.value(), std::make_shared<PosixFileSystem>(),
                                                clock, clock);
}

// The store of a verb that only reads, never taken apart (see runHere).
TodayTaskStore* storeKeptToTheEnd = nullptr;

// Runs the verb in this process. `repository` is the state file's (null for a verb
// that needs no store), holding the writer lock for a writing verb; `locked` says why
// a writing verb could not have it.
int runHere(VerbLine& line, std::unique_ptr<JSONTaskRepository> repository, const Status& locked,
            const Clock& clock) {
    const Instant now = clock();
    const Calendar calendar;
    if (auto refused = prepareCommand(line, now, calendar)) {
        return print(*refused);
    }
    if (!line.verb->needsStore) {
        TranscriberProgram transcriber;
        TaskSyncProgram syncer;
        VerbContext context{nullptr, now, calendar, nullptr, &transcriber, nullptr, &syncer};
        return print(runVerbLine(line, context));
    }
    if (!locked) {
        std::fprintf(stderr, "%s\n", locked.error().c_str());
        return 1;
    }
    std::unique_ptr<TaskRepository> storeRepository;
    if (repository->holdsWriterLock()) {
        storeRepository = std::move(repository);
    } else {
        storeRepository = std::make_unique<ReadOnlyRepository>(std::move(repository));
    }
    // A verb that only reads leaves its store to the end of the process: taking some
    // 5,000 tasks apart one allocation at a time cost `today` more than printing them. A
    // writing verb's store is closed as usual (its file's previous name is removed then).
    auto owned = std::make_unique<TodayTaskStore>(std::move(storeRepository), now, calendar);
    TodayTaskStore& store = *owned;
    if (lineAccess(line) != VerbAccess::writing) {
        storeKeptToTheEnd = owned.release();
    }
    if (store.persistenceError()) {
        // The unreadable file was moved aside; say so, then carry on with a fresh one.
        std::fprintf(stderr, "%s\n", store.persistenceError()->c_str());
    }
    SystemCalendars calendars(calendar);
    VerbContext context{&store, now, calendar, nullptr, nullptr, &calendars};
    const auto syncStatePath =
        lineAccess(line) == VerbAccess::writing ? existingSyncStatePath() : std::nullopt;
    if (!syncStatePath) {
        return print(runVerbLine(line, context));
    }
    const std::vector<TaskItem> before = store.tasks();
    const int status = print(runVerbLine(line, context));
    noteChangesForSync(*syncStatePath, before, store.tasks(), now);
    return status;
}

} // namespace

std::string helperProgramPath(const std::string& name) {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string self =
        length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
    const std::string folder = self.substr(0, self.rfind('/'));
    for (const std::string& program :
         {folder + "/" + name, folder + "/" DAYWYN_LIBEXEC_FROM_BINDIR "/" + name}) {
        if (::access(program.c_str(), X_OK) == 0) {
            return program;
        }
    }
    return {};
}

Instant systemClock() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return Instant{std::chrono::duration<double>(since).count()};
}

int runCommandLine(const std::vector<std::string>& given, const Clock& clock) {
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
    if (!parsed.line.verb->needsStore) {
        // A helper program opens the data of a writing verb (sync); while the app runs,
        // the app is the one writer and carries it out.
        if (access == VerbAccess::writing) {
            if (auto answer =
                    runInRunningApp(args, answerTimeoutMicroseconds(kSyncAnswerMicroseconds))) {
                return print(*answer);
            }
        }
        return runHere(parsed.line, nullptr, {}, clock);
    }
    auto repository = stateRepository(clock);
    if (!repository) {
        return 1;
    }
    Status locked;
    if (access == VerbAccess::writing) {
        // The desktop app holds the writer lock for as long as it runs, so a lock had
        // here means the verb is carried out here, without a word on the bus. When
        // another process holds it and that is the app, the app carries it out.
        locked = repository->acquireWriterLock();
        if (!locked) {
            if (auto answer = runInRunningApp(args)) {
                return print(*answer);
            }
        }
    }
    useHugePagesForTheHeap();
    return runHere(parsed.line, std::move(repository), locked, clock);
}

} // namespace daywyn
