#include "shell/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>

#include "base/DoubleText.h"
#include "base/Json.h"
#include "model/RecordJson.h"
#include "parsing/QuickTaskParser.h"
#include "parsing/VoiceTaskParser.h"
#include "persistence/AtomicFile.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/TaskDataExport.h"
#include "shell/DayText.h"

namespace daywyn {

namespace {

constexpr const char* kUsage =
    "Usage: daywyn [VERB] [ARGUMENTS]\n"
    "\n"
    "With no verb, starts Daywyn (or shows its drawer when it is already running).\n"
    "\n"
    "Verbs:\n"
    "  add TEXT...          add a task; day, time and estimate are taken out of the text\n"
    "                       (\"Call Ama tomorrow at 10 for 20 minutes\")\n"
    "  today                today's plan: priorities, today, carried over, upcoming, done\n"
    "  done ID              complete a task (ID: any unambiguous start of its id)\n"
    "  reopen ID            mark a completed task as open again\n"
    "  start ID             start the task's timer (stopping any other)\n"
    "  stop [ID]            stop the running timer\n"
    "  pin ID               pin a task as one of three priorities, or unpin it\n"
    "  delete ID            delete a task\n"
    "  export --json PATH   save all tasks and reports as JSON (--csv PATH: a spreadsheet)\n"
    "  report               write the end-of-day report that is due (--list: saved reports)\n"
    "  split TEXT...        show the tasks that voice capture would make of a spoken list\n"
    "  transcribe FILE      turn a WAV voice memo into text (--tasks: the tasks in it)\n"
    "  quick-add            open the Quick Add panel of the running app (starting it if\n"
    "                       needed); bind it to a desktop shortcut where Ctrl+Alt+Space\n"
    "                       cannot be grabbed\n"
    "\n"
    "Run 'daywyn VERB --help' for a verb's options. 'daywyn --version' prints the version.\n";

struct VerbHelp {
    const char* verb;
    const char* text;
};

constexpr VerbHelp kVerbHelp[] = {
    {"add", "Usage: daywyn add [--dry-run] [--json] TEXT...\n\n"
            "Adds a task. A day (\"today\", \"tomorrow\"), a time (\"at 10\", \"at 7:30pm\") and\n"
            "an estimate (\"for 20 minutes\", \"for 2 hours\") are taken out of the text.\n\n"
            "  --dry-run   show what would be added and save nothing\n"
            "  --json      print the task as one JSON object\n"},
    {"today", "Usage: daywyn today [--json]\n\n"
              "Shows today's plan in the drawer's sections. --json prints an object with the\n"
              "keys priorities, today, carryOver, upcoming and completedToday.\n"},
    {"done", "Usage: daywyn done ID\n\nCompletes the task whose id starts with ID.\n"},
    {"reopen", "Usage: daywyn reopen ID\n\nMarks the completed task whose id starts with ID as "
               "open again.\n"},
    {"start", "Usage: daywyn start ID\n\nStarts the timer of the task whose id starts with ID; "
              "a running timer of another task stops.\n"},
    {"stop", "Usage: daywyn stop [ID]\n\nStops the running timer (or the timer of the task "
             "whose id starts with ID).\n"},
    {"pin", "Usage: daywyn pin ID\n\nPins the task as a priority (at most three), or unpins "
            "it when it is pinned.\n"},
    {"delete", "Usage: daywyn delete ID\n\nDeletes the task whose id starts with ID.\n"},
    {"export", "Usage: daywyn export (--json|--csv) PATH\n\n"
               "Saves all tasks and reports as JSON, or a one-row-per-task spreadsheet as CSV.\n"
               "Neither includes account credentials.\n"},
    {"report", "Usage: daywyn report [--list] [--json]\n\n"
               "Writes the end-of-day report that is due now and prints it. --list prints the\n"
               "saved reports, newest day first; --json prints them as JSON.\n"},
    {"quick-add", "Usage: daywyn quick-add\n\nOpens the Quick Add panel of the running app, "
                  "starting Daywyn first when it is not running.\n"},
    {"split", "Usage: daywyn split [--json] TEXT...\n\n"
              "Shows the task candidates that voice capture makes of a spoken list. Say\n"
              "\"next task\" or pause between items. --json prints an array of objects with\n"
              "title, scheduledDay and scheduledStart.\n"},
};

const char* helpFor(std::string_view verb) {
    for (const auto& h : kVerbHelp) {
        if (verb == h.verb) {
            return h.text;
        }
    }
    return nullptr;
}

CommandOutput success(std::string out) {
    return CommandOutput{0, std::move(out), {}};
}
CommandOutput failure(std::string sentence) {
    return CommandOutput{1, {}, sentence + "\n"};
}
CommandOutput usageError(std::string_view verb, std::string sentence) {
    return CommandOutput{2,
                         {},
                         "daywyn " + std::string(verb) + ": " + sentence + " Run 'daywyn " +
                             std::string(verb) + " --help' for usage.\n"};
}

// The arguments after the verb, split into known flags and the rest.
struct Arguments {
    std::vector<std::string> flags;
    std::vector<std::string> words;
    std::optional<std::string> unknownFlag;
    bool has(std::string_view flag) const {
        return std::find(flags.begin(), flags.end(), flag) != flags.end();
    }
};

// "-x" and "--name" are options; "-5 push-ups", "- buy milk" and "-" are text.
bool looksLikeOption(const std::string& a) {
    return a.size() > 1 && a[0] == '-' &&
           (a[1] == '-' || std::isalpha(static_cast<unsigned char>(a[1])));
}

// The options each verb knows.
std::vector<std::string_view> optionsOf(std::string_view verb) {
    if (verb == "add") {
        return {"--dry-run", "--json"};
    }
    if (verb == "today" || verb == "split") {
        return {"--json"};
    }
    if (verb == "export") {
        return {"--json", "--csv"};
    }
    if (verb == "report") {
        return {"--list", "--json"};
    }
    return {};
}

Arguments splitArguments(const std::vector<std::string>& args) {
    const std::vector<std::string_view> known = optionsOf(args[0]);
    Arguments parsed;
    bool onlyWords = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!onlyWords && a == "--") {
            onlyWords = true;
        } else if (!onlyWords && looksLikeOption(a)) {
            if (std::find(known.begin(), known.end(), a) != known.end()) {
                parsed.flags.push_back(a);
            } else if (!parsed.unknownFlag) {
                parsed.unknownFlag = a;
            }
        } else {
            parsed.words.push_back(a);
        }
    }
    return parsed;
}

// What is wrong with a known verb's arguments, if anything. Checked before the store
// is opened, so that a mistyped command never takes the lock or touches the file.
std::optional<CommandOutput> usageProblem(const std::vector<std::string>& args) {
    const std::string& verb = args[0];
    const Arguments a = splitArguments(args);
    if (a.unknownFlag) {
        return usageError(verb, "Unknown option " + *a.unknownFlag + ".");
    }
    if ((verb == "today" || verb == "report" || verb == "quick-add") && !a.words.empty()) {
        return usageError(verb, "It takes no words.");
    }
    if (verb == "export" && (a.has("--json") == a.has("--csv") || a.words.size() != 1)) {
        return usageError(verb, "Give either --json or --csv, and one file path.");
    }
    const bool taskVerb = verb == "done" || verb == "reopen" || verb == "start" || verb == "stop" ||
                          verb == "pin" || verb == "delete";
    if (taskVerb && a.words.size() > 1) {
        return usageError(verb, "It takes one task id.");
    }
    if (taskVerb && a.words.empty() && verb != "stop") {
        return usageError(verb, "Give the start of a task id (see 'daywyn today').");
    }
    return std::nullopt;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const auto& w : words) {
        if (!text.empty()) {
            text += ' ';
        }
        text += w;
    }
    return text;
}

std::string shortId(const Uuid& id) {
    return id.text().substr(0, 8);
}

std::string minutesText(double seconds) {
    const long long minutes = static_cast<long long>(std::floor(std::max(0.0, seconds) / 60.0));
    return std::to_string(minutes) + " min";
}

std::string clockText(double seconds) {
    const long long total = static_cast<long long>(std::floor(std::max(0.0, seconds)));
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld:%02lld", total / 3600, total / 60 % 60,
                  total % 60);
    return buffer;
}

// What the quick parser recognised, for the line under "Added …".
std::string recognisedText(const TaskDraft& draft, Instant now, const Calendar& calendar) {
    std::vector<std::string> parts;
    if (draft.hasScheduledDay) {
        parts.push_back("day " + relativeDayText(draft.scheduledDay, now, calendar));
    }
    if (draft.hasScheduledStart) {
        std::string start = "start " + timeOfDayText(draft.scheduledStart, calendar);
        if (!draft.hasScheduledDay) {
            start += " " + relativeDayText(draft.scheduledStart, now, calendar);
        }
        parts.push_back(start);
    }
    if (draft.hasEstimate) {
        parts.push_back("estimate " + std::to_string(draft.estimatedMinutes) + " min");
    }
    if (parts.empty()) {
        return "Recognised no day, time or estimate.";
    }
    std::string text = "Recognised ";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : (i + 1 == parts.size() ? " and " : ", ")) + parts[i];
    }
    return text + ".";
}

// A task found by an unambiguous, case-insensitive start of its id (hyphens optional).
Result<const TaskItem*> findByPrefix(const TodayTaskStore& store, std::string_view prefix) {
    std::string wanted;
    for (char c : prefix) {
        if (c != '-') {
            wanted += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    if (wanted.empty()) {
        return Error{"Give the start of a task id (see 'daywyn today')."};
    }
    const TaskItem* found = nullptr;
    std::size_t matches = 0;
    for (const auto& task : store.tasks()) {
        std::string id = task.id.text();
        id.erase(std::remove(id.begin(), id.end(), '-'), id.end());
        if (id.compare(0, wanted.size(), wanted) == 0) {
            found = &task;
            ++matches;
        }
    }
    if (matches == 0) {
        return Error{"No task has an id starting with \"" + std::string(prefix) + "\"."};
    }
    if (matches > 1) {
        return Error{"\"" + std::string(prefix) + "\" is the start of " + std::to_string(matches) +
                     " task ids; type more of it."};
    }
    return found;
}

// Called right after an operation that saved: the store keeps a change in memory when
// its save fails and reports it here. A successful save clears the error, so one that
// is still present is this save's, even when an earlier save failed the same way.
std::optional<std::string> saveFailure(const TodayTaskStore& store) {
    return store.persistenceError();
}

// ---- verbs ----

CommandOutput runAdd(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                     const Calendar& calendar) {
    const Arguments a = splitArguments(args);
    const TaskDraft draft = QuickTaskParser::draft(joined(a.words), now, calendar);
    if (auto message = draft.validationMessage()) {
        return failure(*message);
    }
    TaskItem task;
    if (a.has("--dry-run")) {
        task.id = Uuid::random();
        task.createdAt = now;
        draft.applyTo(task, calendar);
    } else {
        if (auto message = store.addTaskReliably(draft, now, calendar)) {
            return failure(*message);
        }
        task = store.tasks().back();
    }
    if (a.has("--json")) {
        return success(encodeTaskLine(task) + "\n");
    }
    const std::string verb = a.has("--dry-run") ? "Would add " : "Added ";
    return success(verb + task.title + " to Daywyn.\n" + recognisedText(draft, now, calendar) +
                   "\n");
}

void appendTaskLine(std::string& out, const TaskItem& task, Instant now, const Calendar& calendar,
                    bool showPlan) {
    out += "  ";
    out += task.isComplete ? "[x] " : "[ ] ";
    out += task.title;
    std::vector<std::string> details;
    if (task.priorityRank) {
        details.push_back("priority " + std::to_string(*task.priorityRank));
    }
    if (task.scheduledStart) {
        std::string when = timeOfDayText(*task.scheduledStart, calendar);
        if (showPlan || !calendar.isSameDay(*task.scheduledStart, now)) {
            when = relativeDayText(*task.scheduledStart, now, calendar) + " " + when;
        }
        details.push_back(when);
    } else if (task.scheduledDay && showPlan) {
        details.push_back(relativeDayText(*task.scheduledDay, now, calendar));
    }
    if (task.checklist && !task.checklist->empty()) {
        const auto done = std::count_if(task.checklist->begin(), task.checklist->end(),
                                        [](const ChecklistItem& i) { return i.isComplete; });
        details.push_back(std::to_string(done) + "/" + std::to_string(task.checklist->size()) +
                          " checked");
    }
    double recorded = task.recordedDuration();
    if (task.liveSessionStartedAt) {
        recorded += std::max(0.0, now - *task.liveSessionStartedAt);
    }
    if (task.estimatedMinutes) {
        details.push_back(minutesText(recorded) + " of " + std::to_string(*task.estimatedMinutes) +
                          " min");
    } else if (recorded > 0) {
        details.push_back(minutesText(recorded) + " recorded");
    }
    if (task.liveSessionStartedAt) {
        details.push_back("running " + clockText(now - *task.liveSessionStartedAt));
    }
    if (!details.empty()) {
        out += "  (";
        for (std::size_t i = 0; i < details.size(); ++i) {
            out += (i ? ", " : "") + details[i];
        }
        out += ")";
    }
    out += "  " + shortId(task.id) + "\n";
}

CommandOutput runToday(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                       const Calendar& calendar) {
    const Arguments a = splitArguments(args);
    const TaskDaySections sections = store.taskSections(now, calendar);
    const std::pair<const char*, const std::vector<const TaskItem*>*> lists[] = {
        {"priorities", &sections.priorities},
        {"today", &sections.today},
        {"carryOver", &sections.carryOver},
        {"upcoming", &sections.upcoming},
        {"completedToday", &sections.completedToday}};
    if (a.has("--json")) {
        JsonBuffer buffer;
        CompactJsonWriter w(buffer);
        w.StartObject();
        // Keys in sorted order, like every object Daywyn writes.
        const int order[] = {2, 4, 0, 1, 3};
        for (int index : order) {
            writeKey(w, lists[index].first);
            w.StartArray();
            for (const TaskItem* task : *lists[index].second) {
                encodeRecord(w, *task, DateCoding::iso8601);
            }
            w.EndArray();
        }
        w.EndObject();
        return success(std::string(buffer.GetString(), buffer.GetSize()) + "\n");
    }
    const char* headings[] = {"Priorities", "Today", "Carried over", "Upcoming", "Completed today"};
    std::string out = longDayText(now, calendar) + " · " +
                      std::to_string(store.unfinishedTaskCount()) + " open\n";
    bool any = false;
    for (std::size_t i = 0; i < 5; ++i) {
        if (lists[i].second->empty()) {
            continue;
        }
        any = true;
        out += "\n" + std::string(headings[i]) + " (" + std::to_string(lists[i].second->size()) +
               ")\n";
        for (const TaskItem* task : *lists[i].second) {
            appendTaskLine(out, *task, now, calendar, i == 2 || i == 3);
        }
    }
    if (!any) {
        out += "\nNothing planned for today. Add a task with: daywyn add \"Call Ama at 10\"\n";
    }
    return success(out);
}

// done, reopen, start, stop, pin, delete: one task by id prefix.
CommandOutput runTaskVerb(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                          const Calendar& calendar) {
    const std::string& verb = args[0];
    const Arguments a = splitArguments(args);
    if (a.words.empty()) { // only "stop" may leave the task out
        const TaskItem* active = store.activeTask();
        if (!active) {
            return success("No timer is running.\n");
        }
        const std::string title = active->title;
        store.toggleTimer(active->id, now);
        if (auto error = saveFailure(store)) {
            return failure(*error);
        }
        return success("Stopped " + title + ".\n");
    }
    auto found = findByPrefix(store, a.words[0]);
    if (!found) {
        return failure(found.error());
    }
    const TaskItem task = *found.value();
    std::string message;
    if (verb == "done") {
        if (task.isComplete) {
            return success(task.title + " is already done.\n");
        }
        store.completeTask(task.id, now, calendar);
        message = "Done: " + task.title + ".";
    } else if (verb == "reopen") {
        if (!task.isComplete) {
            return success(task.title + " is already open.\n");
        }
        store.toggleComplete(task.id, now, calendar);
        message = "Reopened " + task.title + ".";
    } else if (verb == "start") {
        if (task.isComplete) {
            return failure(task.title + " is completed; reopen it before timing it.");
        }
        if (task.isRunning()) {
            return success(task.title + " is already running.\n");
        }
        const TaskItem* other = store.activeTask();
        const std::string stopped = other ? "Stopped " + other->title + ". " : "";
        store.toggleTimer(task.id, now);
        message = stopped + "Started " + task.title + ".";
    } else if (verb == "stop") {
        if (!task.isRunning()) {
            return success(task.title + " is not running.\n");
        }
        store.toggleTimer(task.id, now);
        message = "Stopped " + task.title + ".";
    } else if (verb == "pin") {
        // Say why a completed task cannot be pinned; the store only says it is unavailable.
        if (task.isComplete) {
            return failure(task.title + " is completed; reopen it before pinning it.");
        }
        if (auto error = store.togglePriority(task.id)) {
            return failure(*error);
        }
        const TaskItem* after = store.task(task.id);
        message = after && after->priorityRank ? "Pinned " + task.title + " as priority " +
                                                     std::to_string(*after->priorityRank) + "."
                                               : "Unpinned " + task.title + ".";
    } else { // delete
        if (auto error = store.deleteTask(task.id, now)) {
            return failure(*error);
        }
        message = "Deleted " + task.title + ".";
    }
    if (auto error = saveFailure(store)) {
        return failure(*error);
    }
    return success(message + "\n");
}

CommandOutput runExport(TodayTaskStore& store, const std::vector<std::string>& args, Instant now) {
    const Arguments a = splitArguments(args);
    const TaskDataExport data{1, now, store.tasks(), store.reports()};
    const std::string bytes = a.has("--csv") ? data.csv() : data.json();
    const std::string& path = a.words[0];
    PosixFileSystem fileSystem;
    if (auto written = writeFileAtomically(fileSystem, path, bytes); !written) {
        return failure(exportFailedMessage(written.error()));
    }
    return success(exportSavedMessage(path) + "\n");
}

void appendReport(std::string& out, const DailyReport& report, const Calendar& calendar) {
    out += "Daily review · " + longDayText(report.day, calendar) + "\n";
    const auto completed = report.completedItems();
    const auto unfinished = report.unfinishedItems();
    double total = 0;
    for (const auto& s : report.tasks) {
        total += s.actualSeconds;
    }
    out += "  " + std::to_string(completed.size()) + " done, " + std::to_string(unfinished.size()) +
           " open, " + minutesText(total) + " recorded\n";
    for (const auto& s : report.tasks) {
        out += std::string("  ") + (s.wasComplete ? "[x] " : "[ ] ") + s.title + "  (" +
               minutesText(s.actualSeconds);
        if (s.estimatedMinutes) {
            out += " of " + std::to_string(*s.estimatedMinutes) + " min";
        }
        out += ")\n";
    }
}

std::string reportsJson(const std::vector<DailyReport>& reports) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    w.StartArray();
    for (const auto& r : reports) {
        encodeRecord(w, r, DateCoding::iso8601);
    }
    w.EndArray();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

CommandOutput runReport(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                        const Calendar& calendar) {
    const Arguments a = splitArguments(args);
    if (a.has("--list")) {
        if (a.has("--json")) {
            return success(reportsJson(store.reports()));
        }
        if (store.reports().empty()) {
            return success("No daily reviews yet. A local summary appears after the configured "
                           "review time.\n");
        }
        std::string out;
        for (const auto& r : store.reports()) {
            out += out.empty() ? "" : "\n";
            appendReport(out, r, calendar);
        }
        return success(out);
    }
    const auto report = store.generateDueReportIfNeeded(now, calendar);
    // Only a generated report was saved; without one, an older error is not this verb's.
    if (auto error = report ? saveFailure(store) : std::nullopt) {
        return failure(*error);
    }
    if (!report) {
        return success(a.has("--json") ? "null\n" : "No report is due.\n");
    }
    if (a.has("--json")) {
        JsonBuffer buffer;
        CompactJsonWriter w(buffer);
        encodeRecord(w, *report, DateCoding::iso8601);
        return success(std::string(buffer.GetString(), buffer.GetSize()) + "\n");
    }
    std::string out;
    appendReport(out, *report, calendar);
    return success(out);
}

CommandOutput runSplit(const std::vector<std::string>& args, Instant now,
                       const Calendar& calendar) {
    const Arguments a = splitArguments(args);
    const auto candidates = VoiceTaskParser::candidates(joined(a.words), now, calendar);
    if (a.has("--json")) {
        JsonBuffer buffer;
        CompactJsonWriter w(buffer);
        w.StartArray();
        for (const auto& c : candidates) {
            w.StartObject();
            for (const auto& [key, value] : {std::pair{"scheduledDay", c.scheduledDay},
                                             std::pair{"scheduledStart", c.scheduledStart}}) {
                writeKey(w, key);
                if (value) {
                    writeDate(w, *value, DateCoding::iso8601);
                } else {
                    w.Null();
                }
            }
            writeKey(w, "title");
            writeString(w, c.title);
            w.EndObject();
        }
        w.EndArray();
        return success(std::string(buffer.GetString(), buffer.GetSize()) + "\n");
    }
    if (candidates.empty()) {
        return success("No tasks heard. Say \"next task\" or pause between items.\n");
    }
    std::string out;
    int n = 0;
    for (const auto& c : candidates) {
        out += std::to_string(++n) + ". " + c.title;
        if (c.scheduledStart) {
            out += "  (" + relativeDayText(*c.scheduledStart, now, calendar) + " " +
                   timeOfDayText(*c.scheduledStart, calendar) + ")";
        } else if (c.scheduledDay) {
            out += "  (" + relativeDayText(*c.scheduledDay, now, calendar) + ")";
        }
        out += "\n";
    }
    return success(out);
}

} // namespace

VerbAccess verbAccess(const std::vector<std::string>& args) {
    if (args.empty()) {
        return VerbAccess::reading;
    }
    // Only options before "--" count: after it every argument is a word of the text,
    // so "add -- --help" adds a task called "--help".
    const auto optionsEnd = std::find(args.begin() + 1, args.end(), "--");
    const auto has = [&args, optionsEnd](std::string_view flag) {
        return std::find(args.begin() + 1, optionsEnd, flag) != optionsEnd;
    };
    if (has("--help") || has("-h")) {
        return VerbAccess::reading;
    }
    const std::string& verb = args[0];
    if (verb == "report") {
        return has("--list") ? VerbAccess::reading : VerbAccess::writing;
    }
    // A dry run saves nothing, so it must not take the lock or create the file either.
    if (verb == "add") {
        return has("--dry-run") ? VerbAccess::reading : VerbAccess::writing;
    }
    for (const char* writing : {"done", "reopen", "start", "stop", "pin", "delete"}) {
        if (verb == writing) {
            return VerbAccess::writing;
        }
    }
    // Reading verbs, and unknown ones, which are refused before the store is touched.
    return VerbAccess::reading;
}

std::optional<CommandOutput> checkWithoutStore(const std::vector<std::string>& args, Instant now,
                                               const Calendar& calendar) {
    if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
        if (args.size() >= 2 && helpFor(args[1])) {
            return success(helpFor(args[1]));
        }
        return success(kUsage);
    }
    const std::string& verb = args[0];
    const char* help = helpFor(verb);
    if (!help) {
        return CommandOutput{2,
                             {},
                             "daywyn: unknown verb \"" + verb +
                                 "\". Run 'daywyn --help' for the list of verbs.\n"};
    }
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--") {
            break;
        }
        if (args[i] == "--help" || args[i] == "-h") {
            return success(help);
        }
    }
    if (auto problem = usageProblem(args)) {
        return problem;
    }
    if (verb == "add") {
        const Arguments a = splitArguments(args);
        if (auto message =
                QuickTaskParser::draft(joined(a.words), now, calendar).validationMessage()) {
            return failure(*message);
        }
    }
    return std::nullopt;
}

CommandOutput runCommand(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar) {
    if (auto early = checkWithoutStore(args, now, calendar)) {
        return *early;
    }
    const std::string& verb = args[0];
    if (verb == "add") {
        return runAdd(store, args, now, calendar);
    }
    if (verb == "today") {
        return runToday(store, args, now, calendar);
    }
    if (verb == "export") {
        return runExport(store, args, now);
    }
    if (verb == "report") {
        return runReport(store, args, now, calendar);
    }
    if (verb == "split") {
        return runSplit(args, now, calendar);
    }
    if (verb == "quick-add") {
        // The panel lives in the desktop app; the command-line process asks it over D-Bus.
        return failure("Quick Add opens in the desktop app: run 'daywyn quick-add' there.");
    }
    return runTaskVerb(store, args, now, calendar);
}

} // namespace daywyn
