#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "calendar/CalendarSource.h"
#include "model/TaskDraft.h"

namespace daywyn {

class TodayTaskStore;

// What one command-line verb printed and its exit status (0 success, 1 a failure
// the user must see, 2 a usage error).
struct CommandOutput {
    int status = 0;
    std::string out;
    std::string err;
    bool operator==(const CommandOutput&) const = default;
};

// How a verb touches the user's data.
enum class VerbAccess {
    // Reads the store only, or needs none (today, split, export, help): runs in the
    // command-line process and never writes the state file.
    reading,
    // Changes the store (add, done, reopen, start, stop, pin, delete, report): while
    // the desktop app runs these are handed to it, so it stays the only writer.
    writing,
    // Acts on the desktop app's windows (show, quick-add): always handed to the app,
    // which the session bus starts when it is not running.
    window,
};

// The windows of the running desktop app, as verbs may drive them.
class AppWindows {
public:
    virtual ~AppWindows() = default;
    virtual void showDrawer() = 0;
    virtual void hideDrawer() = 0;
    virtual void toggleDrawer() = 0;
    virtual void showQuickAdd() = 0;
};

// Turns a recording into text for `daywyn transcribe`. The command-line program
// supplies the on-device recogniser; the core only routes the verb line to it.
class RecordingTranscriber {
public:
    virtual ~RecordingTranscriber() = default;
    // `args` starts with the verb, as typed.
    virtual CommandOutput transcribe(const std::vector<std::string>& args, Instant now,
                                     const Calendar& calendar) = 0;
};

// Runs `daywyn sync` and `daywyn sync setup`, which talk to a CalDAV server. The
// command-line program supplies its helper program; the core only routes the line.
class TaskSyncRunner {
public:
    virtual ~TaskSyncRunner() = default;
    // `args` starts with the verb, as typed. The helper prints what it has to say itself.
    virtual CommandOutput sync(const std::vector<std::string>& args, Instant now) = 0;
};

// The desktop's calendars, read once for `today` and `calendars`. The command-line
// program supplies the system calendars; the running app what it read last.
class CalendarReader {
public:
    virtual ~CalendarReader() = default;
    // The calendar list, and the occurrences of the query's calendars in its day.
    virtual CalendarSnapshot readCalendars(const CalendarQuery& query) = 0;
};

// One option of a verb: a flag ("--json") or, when `value` names it, an option that
// takes the next argument ("--at TIME").
struct VerbOption {
    std::string_view name = {};
    std::string_view value;
    std::string_view help;
};

// What the words after the options are: shell completion offers task ids for
// `taskId`, file names for `path`.
enum class VerbWords { none, taskId, optionalTaskId, text, path };

struct Verb;

// A verb line split by its verb's options.
struct VerbLine {
    const Verb* verb = nullptr;
    std::vector<std::string> flags;
    std::vector<std::pair<std::string, std::string>> values;
    std::vector<std::string> words;
    // The text of `add`, read once before the store is opened.
    std::optional<TaskDraft> draft;

    bool has(std::string_view option) const;
    const std::string* value(std::string_view option) const;
    // The words joined by single spaces.
    std::string text() const;
};

// What a verb works on. `store` is null for verbs that need no data; `windows` is
// null outside the desktop app; `calendars` is null where no calendar can be read.
struct VerbContext {
    TodayTaskStore* store = nullptr;
    Instant now;
    const Calendar& calendar;
    AppWindows* windows = nullptr;
    RecordingTranscriber* transcriber = nullptr;
    CalendarReader* calendars = nullptr;
    TaskSyncRunner* syncer = nullptr;
};

// One row of the verb table: everything parsing, help, the manual page, shell
// completion, forwarding to the running app and the bus need to know about a verb.
struct Verb {
    std::string_view name = {};
    // After "daywyn NAME" in the usage line ("[--json] TEXT...").
    std::string_view synopsis = {};
    // The verb's line in `daywyn --help`; "\n" continues it on the next line.
    std::string_view summary = {};
    // The paragraph of `daywyn NAME --help` and the manual page.
    std::string_view description = {};
    std::vector<VerbOption> options = {};
    VerbWords words = VerbWords::none;
    VerbAccess access = VerbAccess::reading;
    // A writing verb given this option only reads ("--dry-run", "--list").
    std::string_view readOnlyWith = {};
    // A writing verb given no words only reads (`calendars` shows the choice).
    bool readOnlyWithoutWords = false;
    // A writing verb whose first word is this only reads (`sync status`).
    std::string_view readOnlyWord = {};
    // False for a verb whose data, if any, is opened by a helper program (`sync`).
    bool needsStore = true;
    // Usage checks beyond the options and the number of words, run before the store
    // is opened; may read the line ahead (the draft of `add`). A present output ends
    // the command.
    std::optional<CommandOutput> (*check)(VerbLine& line, Instant now,
                                          const Calendar& calendar) = nullptr;
    CommandOutput (*run)(VerbLine& line, VerbContext& context) = nullptr;
};

// Every verb, in the order `daywyn --help` lists them.
const std::vector<Verb>& verbTable();
const Verb* findVerb(std::string_view name);

} // namespace daywyn
