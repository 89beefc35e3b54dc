// The verb table and the verbs' handlers. A new verb is one row in verbTable() and
// its handler; parsing, help, the manual page, shell completion and forwarding to the
// running app follow from the row.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "base/Json.h"
#include "calendar/CalendarReading.h"
#include "calendar/CalendarsCommand.h"
#include "cli/SyncStatus.h"
#include "cli/Verb.h"
#include "model/RecordJson.h"
#include "parsing/QuickTaskParser.h"
#include "parsing/VoiceTaskParser.h"
#include "persistence/AtomicFile.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/TaskDataExport.h"
#include "shell/DayText.h"
#include "store/AddFromLine.h"
#include "store/TodayTaskStore.h"
#include "sync/SyncStateFile.h"

namespace daywyn {

namespace {

CommandOutput success(std::string out) {
    return CommandOutput{0, std::move(out), {}};
}
CommandOutput failure(std::string sentence) {
    return CommandOutput{1, {}, sentence + "\n"};
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

std::string compactJson(const auto& write) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    write(w);
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

// ---- add ----

// Reads the text once, before the store is opened: a line without a title (or a
// start that is not a time) is refused without touching the file.
std::optional<CommandOutput> checkAdd(VerbLine& line, Instant now, const Calendar& calendar) {
    TaskDraft draft;
    if (line.has("--literal")) {
        draft.title = line.text();
    } else {
        draft = QuickTaskParser::draft(line.text(), now, calendar);
    }
    if (const std::string* start = line.value("--at")) {
        const auto at = parseIsoText(*start);
        if (!at) {
            return CommandOutput{
                2, {}, "daywyn add: The start time must look like 2026-03-04T08:15:00Z.\n"};
        }
        draft.hasScheduledStart = true;
        draft.scheduledStart = *at;
    }
    if (auto message = draft.validationMessage()) {
        return failure(*message);
    }
    line.draft = std::move(draft);
    return std::nullopt;
}

CommandOutput runAdd(VerbLine& line, VerbContext& c) {
    TaskItem task;
    const TaskDraft& draft = *line.draft;
    const bool dryRun = line.has("--dry-run");
    if (dryRun) {
        task.id = Uuid::random();
        task.createdAt = c.now;
        draft.applyTo(task, c.calendar);
    } else {
        auto added = addDraft(*c.store, draft, c.now, c.calendar);
        if (!added) {
            return failure(added.error());
        }
        task = std::move(added.value().task);
    }
    if (line.has("--json")) {
        return success(encodeTaskLine(task) + "\n");
    }
    std::string out = (dryRun ? "Would add " : "Added ") + task.title + " to Daywyn.\n";
    if (!line.has("--literal")) {
        out += recognisedText(draft, c.now, c.calendar) + "\n";
    }
    return success(out);
}

// ---- today ----

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

// Today's events of the chosen calendars, and the sentences that say why some are
// missing; nothing while calendar events are off.
struct TodayEvents {
    std::vector<CalendarEventItem> items;
    std::vector<std::string> notes;
};

TodayEvents readTodayEvents(const VerbContext& c) {
    const AppPreferences& preferences = c.store->preferences();
    const auto day = calendarDay(c.now, c.calendar);
    if (!preferences.calendarIntegrationEnabled || !c.calendars || !day) {
        return {};
    }
    const auto& selected = preferences.selectedCalendarIdentifiers;
    const CalendarSnapshot snapshot = c.calendars->readCalendars(CalendarQuery{*day, selected});
    TodayEvents events;
    if (snapshot.status == CalendarAccessStatus::fullAccess) {
        events.items =
            dayEventItems(snapshot, selected, *day, [] { return Uuid::random().text(); });
    }
    events.notes =
        calendarExplanations(snapshot.status, true, calendarChoices(snapshot.calendars), selected);
    if (snapshot.errorMessage) {
        events.notes.push_back(*snapshot.errorMessage);
    }
    return events;
}

void encodeEvent(CompactJsonWriter& w, const CalendarEventItem& event) {
    w.StartObject();
    writeKey(w, "calendarIdentifier");
    writeString(w, event.calendarIdentifier);
    writeKey(w, "calendarTitle");
    writeString(w, event.calendarTitle);
    writeKey(w, "colorHex");
    writeString(w, event.colorHex);
    writeKey(w, "end");
    writeDate(w, event.end, DateCoding::iso8601);
    writeKey(w, "eventIdentifier");
    writeString(w, event.eventIdentifier);
    writeKey(w, "id");
    writeString(w, event.id);
    writeKey(w, "isAllDay");
    w.Bool(event.isAllDay);
    writeKey(w, "start");
    writeDate(w, event.start, DateCoding::iso8601);
    writeKey(w, "title");
    writeString(w, event.title);
    if (event.url) {
        writeKey(w, "url");
        writeString(w, *event.url);
    }
    w.EndObject();
}

CommandOutput runToday(VerbLine& line, VerbContext& c) {
    const TodayTaskStore& store = *c.store;
    const TodayEvents events = readTodayEvents(c);
    const TaskDaySections sections = store.taskSections(c.now, c.calendar);
    const std::pair<const char*, const std::vector<const TaskItem*>*> lists[] = {
        {"priorities", &sections.priorities},
        {"today", &sections.today},
        {"carryOver", &sections.carryOver},
        {"upcoming", &sections.upcoming},
        {"completedToday", &sections.completedToday}};
    if (line.has("--json")) {
        return success(compactJson([&lists, &events](CompactJsonWriter& w) {
            w.StartObject();
            // Keys in sorted order, like every object Daywyn writes.
            for (int index : {2, 4, -1, 0, 1, 3}) {
                if (index < 0) {
                    writeKey(w, "events");
                    w.StartArray();
                    for (const auto& event : events.items) {
                        encodeEvent(w, event);
                    }
                    w.EndArray();
                    continue;
                }
                writeKey(w, lists[index].first);
                w.StartArray();
                for (const TaskItem* task : *lists[index].second) {
                    encodeRecord(w, *task, DateCoding::iso8601);
                }
                w.EndArray();
            }
            w.EndObject();
        }));
    }
    const char* headings[] = {"Priorities", "Today", "Carried over", "Upcoming", "Completed today"};
    std::string out = longDayText(c.now, c.calendar) + " · " +
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
            appendTaskLine(out, *task, c.now, c.calendar, i == 2 || i == 3);
        }
    }
    if (!events.items.empty() || !events.notes.empty()) {
        any = any || !events.items.empty();
        out += "\nEvents (" + std::to_string(events.items.size()) + ")\n";
        for (const auto& event : events.items) {
            out += "  " + eventTimeSpanText(event, c.calendar) + "  " + event.title + "  (" +
                   event.calendarTitle + ")";
            if (auto link = meetingLink(event)) {
                out += "  " + *link;
            }
            out += "\n";
        }
        for (const auto& note : events.notes) {
            out += "  " + note + "\n";
        }
    }
    if (!any) {
        out += "\nNothing planned for today. Add a task with: daywyn add \"Call Ama at 10\"\n";
    }
    return success(out);
}

// ---- done, reopen, start, stop, pin, delete: one task by id prefix ----

// The task the line names, or the failure to print.
Result<TaskItem> namedTask(const VerbLine& line, const TodayTaskStore& store) {
    auto found = findByPrefix(store, line.words[0]);
    if (!found) {
        return Error{found.error()};
    }
    return *found.value();
}

// Finishes a task verb: the store's own save failure wins over the sentence.
CommandOutput saved(const TodayTaskStore& store, const std::string& message) {
    if (auto error = saveFailure(store)) {
        return failure(*error);
    }
    return success(message + "\n");
}

CommandOutput runDone(VerbLine& line, VerbContext& c) {
    auto task = namedTask(line, *c.store);
    if (!task) {
        return failure(task.error());
    }
    if (task.value().isComplete) {
        return success(task.value().title + " is already done.\n");
    }
    c.store->completeTask(task.value().id, c.now, c.calendar);
    return saved(*c.store, "Done: " + task.value().title + ".");
}

CommandOutput runReopen(VerbLine& line, VerbContext& c) {
    auto task = namedTask(line, *c.store);
    if (!task) {
        return failure(task.error());
    }
    if (!task.value().isComplete) {
        return success(task.value().title + " is already open.\n");
    }
    c.store->toggleComplete(task.value().id, c.now, c.calendar);
    return saved(*c.store, "Reopened " + task.value().title + ".");
}

CommandOutput runStart(VerbLine& line, VerbContext& c) {
    auto found = namedTask(line, *c.store);
    if (!found) {
        return failure(found.error());
    }
    const TaskItem& task = found.value();
    if (task.isComplete) {
        return failure(task.title + " is completed; reopen it before timing it.");
    }
    if (task.isRunning()) {
        return success(task.title + " is already running.\n");
    }
    const TaskItem* other = c.store->activeTask();
    const std::string stopped = other ? "Stopped " + other->title + ". " : "";
    c.store->toggleTimer(task.id, c.now);
    return saved(*c.store, stopped + "Started " + task.title + ".");
}

CommandOutput runStop(VerbLine& line, VerbContext& c) {
    if (line.words.empty()) {
        const TaskItem* active = c.store->activeTask();
        if (!active) {
            return success("No timer is running.\n");
        }
        const std::string title = active->title;
        c.store->toggleTimer(active->id, c.now);
        return saved(*c.store, "Stopped " + title + ".");
    }
    auto task = namedTask(line, *c.store);
    if (!task) {
        return failure(task.error());
    }
    if (!task.value().isRunning()) {
        return success(task.value().title + " is not running.\n");
    }
    c.store->toggleTimer(task.value().id, c.now);
    return saved(*c.store, "Stopped " + task.value().title + ".");
}

CommandOutput runPin(VerbLine& line, VerbContext& c) {
    auto task = namedTask(line, *c.store);
    if (!task) {
        return failure(task.error());
    }
    const std::string& title = task.value().title;
    // Say why a completed task cannot be pinned; the store only says it is unavailable.
    if (task.value().isComplete) {
        return failure(title + " is completed; reopen it before pinning it.");
    }
    if (auto error = c.store->togglePriority(task.value().id)) {
        return failure(*error);
    }
    const TaskItem* after = c.store->task(task.value().id);
    return saved(*c.store, after && after->priorityRank
                               ? "Pinned " + title + " as priority " +
                                     std::to_string(*after->priorityRank) + "."
                               : "Unpinned " + title + ".");
}

CommandOutput runDelete(VerbLine& line, VerbContext& c) {
    auto task = namedTask(line, *c.store);
    if (!task) {
        return failure(task.error());
    }
    if (auto error = c.store->deleteTask(task.value().id, c.now)) {
        return failure(*error);
    }
    return saved(*c.store, "Deleted " + task.value().title + ".");
}

// ---- export ----

std::optional<CommandOutput> checkExport(VerbLine& line, Instant, const Calendar&) {
    if (line.has("--json") == line.has("--csv") || line.words.size() != 1) {
        return CommandOutput{2,
                             {},
                             "daywyn export: Give either --json or --csv, and one file path. Run "
                             "'daywyn export --help' for usage.\n"};
    }
    return std::nullopt;
}

CommandOutput runExport(VerbLine& line, VerbContext& c) {
    const TaskDataExport data{1, c.now, c.store->tasks(), c.store->reports()};
    const std::string bytes = line.has("--csv") ? data.csv() : data.json();
    const std::string& path = line.words[0];
    PosixFileSystem fileSystem;
    if (auto written = writeFileAtomically(fileSystem, path, bytes); !written) {
        return failure(exportFailedMessage(written.error()));
    }
    return success(exportSavedMessage(path) + "\n");
}

// ---- report ----

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

CommandOutput runReport(VerbLine& line, VerbContext& c) {
    TodayTaskStore& store = *c.store;
    if (line.has("--list")) {
        if (line.has("--json")) {
            return success(compactJson([&store](CompactJsonWriter& w) {
                w.StartArray();
                for (const auto& r : store.reports()) {
                    encodeRecord(w, r, DateCoding::iso8601);
                }
                w.EndArray();
            }));
        }
        if (store.reports().empty()) {
            return success("No daily reviews yet. A local summary appears after the configured "
                           "review time.\n");
        }
        std::string out;
        for (const auto& r : store.reports()) {
            out += out.empty() ? "" : "\n";
            appendReport(out, r, c.calendar);
        }
        return success(out);
    }
    const auto report = store.generateDueReportIfNeeded(c.now, c.calendar);
    // Only a generated report was saved; without one, an older error is not this verb's.
    if (auto error = report ? saveFailure(store) : std::nullopt) {
        return failure(*error);
    }
    if (!report) {
        return success(line.has("--json") ? "null\n" : "No report is due.\n");
    }
    if (line.has("--json")) {
        return success(compactJson(
            [&report](CompactJsonWriter& w) { encodeRecord(w, *report, DateCoding::iso8601); }));
    }
    std::string out;
    appendReport(out, *report, c.calendar);
    return success(out);
}

// ---- split ----

CommandOutput runSplit(VerbLine& line, VerbContext& c) {
    const auto candidates = VoiceTaskParser::candidates(line.text(), c.now, c.calendar);
    if (line.has("--json")) {
        return success(compactJson([&candidates](CompactJsonWriter& w) {
            w.StartArray();
            for (const auto& candidate : candidates) {
                w.StartObject();
                for (const auto& [key, value] :
                     {std::pair{"scheduledDay", candidate.scheduledDay},
                      std::pair{"scheduledStart", candidate.scheduledStart}}) {
                    writeKey(w, key);
                    if (value) {
                        writeDate(w, *value, DateCoding::iso8601);
                    } else {
                        w.Null();
                    }
                }
                writeKey(w, "title");
                writeString(w, candidate.title);
                w.EndObject();
            }
            w.EndArray();
        }));
    }
    if (candidates.empty()) {
        return success("No tasks heard. Say \"next task\" or pause between items.\n");
    }
    std::string out;
    int n = 0;
    for (const auto& candidate : candidates) {
        out += std::to_string(++n) + ". " + candidate.title;
        if (candidate.scheduledStart) {
            out += "  (" + relativeDayText(*candidate.scheduledStart, c.now, c.calendar) + " " +
                   timeOfDayText(*candidate.scheduledStart, c.calendar) + ")";
        } else if (candidate.scheduledDay) {
            out += "  (" + relativeDayText(*candidate.scheduledDay, c.now, c.calendar) + ")";
        }
        out += "\n";
    }
    return success(out);
}

// ---- transcribe ----

CommandOutput runTranscribe(VerbLine& line, VerbContext& c) {
    if (!c.transcriber) {
        return failure("'daywyn transcribe' needs the speech recogniser of the daywyn program.");
    }
    std::vector<std::string> args{std::string(line.verb->name)};
    args.insert(args.end(), line.flags.begin(), line.flags.end());
    args.insert(args.end(), line.words.begin(), line.words.end());
    return c.transcriber->transcribe(args, c.now, c.calendar);
}

// ---- calendars ----

CalendarsRequest calendarsRequest(const VerbLine& line) {
    return CalendarsRequest{line.words, line.has("--all"), line.has("--json")};
}

std::optional<CommandOutput> checkCalendars(VerbLine& line, Instant, const Calendar&) {
    if (auto problem = calendarsCommandUsageProblem(calendarsRequest(line))) {
        return CommandOutput{
            2, {}, "daywyn calendars: " + *problem + " Run 'daywyn calendars --help' for usage.\n"};
    }
    return std::nullopt;
}

CommandOutput runCalendars(VerbLine& line, VerbContext& c) {
    const CalendarsRequest request = calendarsRequest(line);
    // Switching needs no list; showing and choosing do.
    std::optional<CalendarSnapshot> listing;
    const bool switching =
        !request.words.empty() && (request.words[0] == "on" || request.words[0] == "off");
    if (c.calendars && !switching) {
        const auto day = calendarDay(c.now, c.calendar);
        listing = c.calendars->readCalendars(CalendarQuery{day.value_or(DayInterval{}), {}});
    }
    auto result = runCalendarsCommand(*c.store, request, listing);
    if (!result.succeeded) {
        return CommandOutput{1, {}, result.err};
    }
    if (auto error = saveFailure(*c.store); error && !request.words.empty()) {
        return failure(*error);
    }
    return success(result.out);
}

// ---- sync ----

std::optional<CommandOutput> checkSync(VerbLine& line, Instant, const Calendar&) {
    const auto usage = [](const std::string& sentence) {
        return CommandOutput{
            2, {}, "daywyn sync: " + sentence + " Run 'daywyn sync --help' for usage.\n"};
    };
    const auto& words = line.words;
    const bool setup = !words.empty() && words[0] == "setup";
    if (setup && words.size() != 2) {
        return usage("Give the server's address after setup.");
    }
    if (!setup && (words.size() > 1 || (words.size() == 1 && words[0] != "status"))) {
        return usage("Give setup URL, status, or nothing.");
    }
    if (!setup && (line.value("--user") || line.value("--list") || line.has("--password-stdin"))) {
        return usage("--user, --list and --password-stdin go with setup.");
    }
    return std::nullopt;
}

CommandOutput runSync(VerbLine& line, VerbContext& c) {
    if (!line.words.empty() && line.words[0] == "status") {
        auto path = sync::SyncStateFile::defaultPath();
        if (!path) {
            return failure(path.error());
        }
        auto state = readSyncStateForStatus(path.value());
        if (!state) {
            return failure(state.error());
        }
        return success(line.has("--json") ? syncStatusJson(state.value())
                                          : syncStatusText(state.value(), c.now, c.calendar));
    }
    if (!c.syncer) {
        return failure("Tasks sync from the command line while the Daywyn app is closed; quit "
                       "Daywyn and run 'daywyn sync' again.");
    }
    std::vector<std::string> args{std::string(line.verb->name)};
    for (const auto& [option, value] : line.values) {
        args.insert(args.end(), {option, value});
    }
    args.insert(args.end(), line.flags.begin(), line.flags.end());
    if (!line.words.empty()) {
        args.push_back("--");
        args.insert(args.end(), line.words.begin(), line.words.end());
    }
    return c.syncer->sync(args, c.now);
}

// ---- the app's windows ----

template <void (AppWindows::*action)()>
CommandOutput runWindowVerb(VerbLine& line, VerbContext& c) {
    if (!c.windows) {
        return failure("'daywyn " + std::string(line.verb->name) +
                       "' acts on the desktop app, which is not running here.");
    }
    (c.windows->*action)();
    return success({});
}

} // namespace

const std::vector<Verb>& verbTable() {
    static const std::vector<Verb> table = {
        {.name = "add",
         .synopsis = "[--dry-run] [--json] [--literal] [--at TIME] TEXT...",
         .summary = "add a task; day, time and estimate are taken out of the text\n"
                    "(\"Call Ama tomorrow at 10 for 20 minutes\")",
         .description = "Adds a task. A day (\"today\", \"tomorrow\"), a time (\"at 10\", \"at "
                        "7:30pm\") and\nan estimate (\"for 20 minutes\", \"for 2 hours\") are "
                        "taken out of the text.",
         .options = {{"--dry-run", "", "show what would be added and save nothing"},
                     {"--json", "", "print the task as one JSON object"},
                     {"--literal", "", "take the text as the title, recognising nothing in it"},
                     {"--at", "TIME", "start the task at TIME (2026-03-04T08:15:00Z)"}},
         .words = VerbWords::text,
         .access = VerbAccess::writing,
         .readOnlyWith = "--dry-run",
         .check = checkAdd,
         .run = runAdd},
        {.name = "today",
         .synopsis = "[--json]",
         .summary = "today's plan: priorities, today, carried over, upcoming, done, events",
         .description = "Shows today's plan in the drawer's sections, then today's events of "
                        "the chosen\ncalendars when calendar events are on. --json prints "
                        "an object with the keys\npriorities, today, carryOver, upcoming, "
                        "completedToday and events.",
         .options = {{"--json", "", "print the sections as one JSON object"}},
         .run = runToday},
        {.name = "done",
         .synopsis = "ID",
         .summary = "complete a task (ID: any unambiguous start of its id)",
         .description = "Completes the task whose id starts with ID.",
         .words = VerbWords::taskId,
         .access = VerbAccess::writing,
         .run = runDone},
        {.name = "reopen",
         .synopsis = "ID",
         .summary = "mark a completed task as open again",
         .description = "Marks the completed task whose id starts with ID as open again.",
         .words = VerbWords::taskId,
         .access = VerbAccess::writing,
         .run = runReopen},
        {.name = "start",
         .synopsis = "ID",
         .summary = "start the task's timer (stopping any other)",
         .description = "Starts the timer of the task whose id starts with ID; a running "
                        "timer of another\ntask stops.",
         .words = VerbWords::taskId,
         .access = VerbAccess::writing,
         .run = runStart},
        {.name = "stop",
         .synopsis = "[ID]",
         .summary = "stop the running timer",
         .description = "Stops the running timer (or the timer of the task whose id starts "
                        "with ID).",
         .words = VerbWords::optionalTaskId,
         .access = VerbAccess::writing,
         .run = runStop},
        {.name = "pin",
         .synopsis = "ID",
         .summary = "pin a task as one of three priorities, or unpin it",
         .description = "Pins the task as a priority (at most three), or unpins it when it is "
                        "pinned.",
         .words = VerbWords::taskId,
         .access = VerbAccess::writing,
         .run = runPin},
        {.name = "delete",
         .synopsis = "ID",
         .summary = "delete a task",
         .description = "Deletes the task whose id starts with ID.",
         .words = VerbWords::taskId,
         .access = VerbAccess::writing,
         .run = runDelete},
        {.name = "export",
         .synopsis = "(--json|--csv) PATH",
         .summary = "save all tasks and reports as JSON (--csv: a spreadsheet)",
         .description = "Saves all tasks and reports as JSON, or a one-row-per-task "
                        "spreadsheet as CSV.\nNeither includes account credentials.",
         .options = {{"--json", "", "write JSON"}, {"--csv", "", "write CSV"}},
         .words = VerbWords::path,
         .check = checkExport,
         .run = runExport},
        {.name = "report",
         .synopsis = "[--list] [--json]",
         .summary = "write the end-of-day report that is due (--list: saved reports)",
         .description = "Writes the end-of-day report that is due now and prints it.",
         .options = {{"--list", "", "print the saved reports, newest day first"},
                     {"--json", "", "print JSON"}},
         .access = VerbAccess::writing,
         .readOnlyWith = "--list",
         .run = runReport},
        {.name = "calendars",
         .synopsis = "[--json] [on|off|select ID...|unselect ID...|select --all|unselect --all]",
         .summary = "list the calendars; calendar events on or off, and the calendars chosen",
         .description = kCalendarsCommandHelp,
         .options = {{"--all", "", "with select or unselect: every calendar"},
                     {"--json", "", "print the calendars and the choice as one JSON object"}},
         .words = VerbWords::text,
         .access = VerbAccess::writing,
         .readOnlyWithoutWords = true,
         .check = checkCalendars,
         .run = runCalendars},
        {.name = "split",
         .synopsis = "[--json] TEXT...",
         .summary = "show the tasks that voice capture would make of a spoken list",
         .description = "Shows the task candidates that voice capture makes of a spoken list. "
                        "Say\n\"next task\" or pause between items.",
         .options = {{"--json", "",
                      "print an array of objects with title, scheduledDay and scheduledStart"}},
         .words = VerbWords::text,
         .needsStore = false,
         .run = runSplit},
        {.name = "transcribe",
         .synopsis = "[--tasks] [--json] FILE",
         .summary = "turn a WAV voice memo into text (--tasks: the tasks in it)",
         .description = "Decodes a WAV recording on this computer with the recogniser of "
                        "voice capture and\nprints its transcript on one line, with \" | \" "
                        "where the speaker paused.\nOther sample rates and channel counts are "
                        "converted.",
         .options = {{"--tasks", "", "also show the tasks the review would offer"},
                     {"--json", "", "print JSON"}},
         .words = VerbWords::path,
         .needsStore = false,
         .run = runTranscribe},
        {.name = "sync",
         .synopsis = "[--json] [setup URL [--user NAME] [--password-stdin] [--list NAME] | "
                     "status]",
         .summary = "sync tasks with your CalDAV server (setup URL: choose the server;\n"
                    "status: the last pass and any conflicts)",
         .description =
             "Runs one two-way pass between this computer's tasks and a task list on a "
             "CalDAV\nserver (Nextcloud, Radicale, Baikal, Fastmail...) and says what moved. "
             "An edit made\non both sides keeps the later one; the other is kept in the "
             "conflict log.\n'daywyn sync setup URL' finds the account's task lists (the one "
             "named by --list,\nelse \"Daywyn\", made when missing) and keeps the password "
             "in the keyring.\n'daywyn sync status' shows the last pass, the changes waiting "
             "and the conflicts.",
         .options = {{"--user", "NAME", "with setup: the account's user name (default: yours)"},
                     {"--password-stdin", "", "with setup: read the password from standard input"},
                     {"--list", "NAME", "with setup: the task list to use"},
                     {"--json", "", "print JSON"}},
         .words = VerbWords::text,
         .access = VerbAccess::writing,
         .readOnlyWord = "status",
         .needsStore = false,
         .check = checkSync,
         .run = runSync},
        {.name = "show",
         .summary = "show the drawer (starting Daywyn first when it is not running)",
         .description = "Shows the drawer of the running app, starting Daywyn first when it "
                        "is not running.",
         .access = VerbAccess::window,
         .needsStore = false,
         .run = runWindowVerb<&AppWindows::showDrawer>},
        {.name = "hide",
         .summary = "hide the drawer",
         .description = "Hides the drawer of the running app.",
         .access = VerbAccess::window,
         .needsStore = false,
         .run = runWindowVerb<&AppWindows::hideDrawer>},
        {.name = "toggle",
         .summary = "show the drawer, or hide it when it is shown",
         .description = "Shows the drawer of the running app, or hides it when it is shown.",
         .access = VerbAccess::window,
         .needsStore = false,
         .run = runWindowVerb<&AppWindows::toggleDrawer>},
        {.name = "quick-add",
         .summary = "open the Quick Add panel of the running app (starting it if\n"
                    "needed); bind it to a desktop shortcut where Ctrl+Alt+Space\n"
                    "cannot be grabbed",
         .description = "Opens the Quick Add panel of the running app, starting Daywyn first "
                        "when it is not running.",
         .access = VerbAccess::window,
         .needsStore = false,
         .run = runWindowVerb<&AppWindows::showQuickAdd>},
    };
    return table;
}

} // namespace daywyn
