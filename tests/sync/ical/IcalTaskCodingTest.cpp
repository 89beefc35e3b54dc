#include "sync/ical/IcalTaskCoding.h"

#include <gtest/gtest.h>

#include "model/RecordFields.h"
#include "support/TaskBuilder.h"
#include "sync/TaskMerge.h"

namespace daywyn::test {

using sync::IcalTaskCoding;

namespace {

const IcalTaskCoding coding;

// Every field of the record set, in a calendar's wall-clock times around its
// daylight-saving change in March.
TaskItem everyField(const Calendar& c, int dstDay) {
    TaskItem task = TaskBuilder("Write the \"Q1\" summary; then, call\nthe bank — ünïcode \\ done")
                        .createdAt(at(c, 2026, 3, dstDay - 1, 22, 5, 9))
                        .estimate(45)
                        .reminder(at(c, 2026, 3, dstDay, 3, 50))
                        .startingAt(at(c, 2026, 3, dstDay, 4))
                        .plannedFor(at(c, 2026, 3, dstDay))
                        .endingAt(at(c, 2026, 3, dstDay, 4, 45))
                        .session(at(c, 2026, 3, dstDay, 1, 30), at(c, 2026, 3, dstDay, 3, 10))
                        .session(at(c, 2026, 3, 1, 9), at(c, 2026, 3, 1, 8))
                        .running(at(c, 2026, 3, dstDay, 4, 1))
                        .checklistItem("Outline, first", true)
                        .checklistItem("Numbers;\nall of them")
                        .repeating(TaskRecurrence::weekdays)
                        .pinned(2);
    task.scheduledBudgetAlerts = {BudgetAlertKind::approaching, BudgetAlertKind::exceeded};
    task.scheduledReminderDate = at(c, 2026, 3, dstDay, 3, 50);
    task.notifiedOverdueEnd = at(c, 2026, 3, dstDay, 4, 45);
    task.nextOccurrenceCreated = false;
    task.completedAt = at(c, 2026, 3, dstDay, 5);
    return task;
}

TaskItem roundTrip(const TaskItem& task, const Calendar& calendar, std::string* text = nullptr) {
    const std::string ics = coding.encode(task, {}, {}, task.createdAt + 60, calendar);
    if (text != nullptr) {
        *text = ics;
    }
    auto decoded = coding.decode(ics, calendar);
    EXPECT_TRUE(decoded.ok()) << (decoded.ok() ? "" : decoded.error()) << "\n" << ics;
    return decoded.ok() ? decoded->task : TaskItem{};
}

} // namespace

TEST(IcalTaskCoding, KeepsEveryFieldExactlyAcrossDaylightSavingChanges) {
    for (const auto& [calendar, dstDay] : {std::pair{newYork(), 8}, std::pair{berlin(), 29}}) {
        SCOPED_TRACE(calendar.zoneId());
        const TaskItem full = everyField(calendar, dstDay);
        // Every field but this machine's reminder bookkeeping, which stays out of the text.
        std::string fullText;
        EXPECT_EQ(roundTrip(full, calendar, &fullText),
                  sync::withMachineLocalFieldsOf(full, nullptr));
        EXPECT_EQ(fullText.find("SCHEDULED-REMINDER"), std::string::npos) << fullText;
        EXPECT_EQ(fullText.find("BUDGET-ALERTS"), std::string::npos) << fullText;
        EXPECT_EQ(fullText.find("OVERDUE"), std::string::npos) << fullText;

        // Values the standard properties cannot say alone: a repeat of "none", a rank
        // outside 1-3, a planned day that is not the start of a day, an empty checklist.
        TaskItem odd = TaskBuilder("Odd")
                           .createdAt(Instant{0})
                           .plannedFor(at(calendar, 2026, 3, dstDay, 12))
                           .repeating(TaskRecurrence::none)
                           .pinned(7)
                           .emptyChecklist();
        odd.isComplete = true;
        EXPECT_EQ(roundTrip(odd, calendar), odd);

        // The planned day alone, on the day the clocks change.
        const TaskItem planned = TaskBuilder("Planned")
                                     .createdAt(at(calendar, 2026, 3, 1))
                                     .plannedFor(at(calendar, 2026, 3, dstDay));
        std::string text;
        EXPECT_EQ(roundTrip(planned, calendar, &text), planned);
        EXPECT_NE(text.find("DTSTART;VALUE=DATE:20260" + std::to_string(300 + dstDay)),
                  std::string::npos)
            << text;
        EXPECT_EQ(text.find("X-DAYWYN-SCHEDULED-DAY"), std::string::npos) << text;
    }
}

TEST(IcalTaskCoding, KeepsTheRepeatedHourOfAnAutumnChange) {
    const Calendar ny = newYork();
    // 01:30 happens twice on 1 November 2026 in New York; both instants survive.
    const Instant first = at(ny, 2026, 11, 1, 1, 30);
    for (const Instant reminder : {first, first + 3600}) {
        const TaskItem task =
            TaskBuilder("Autumn").createdAt(first - 86400).reminder(reminder).startingAt(reminder);
        EXPECT_EQ(roundTrip(task, ny), task);
    }
}

TEST(IcalTaskCoding, WritesWhatOtherTaskClientsRead) {
    const Calendar ny = newYork();
    TaskItem task = everyField(ny, 8);
    task.isComplete = true;
    std::string text;
    roundTrip(task, ny, &text);
    for (const std::string& expected :
         {"UID:" + task.id.text(),
          std::string("SUMMARY:Write the \"Q1\" summary\\; then\\, call\\n"),
          std::string("DTSTART:20260308T080000Z"), std::string("DUE:20260308T084500Z"),
          std::string("STATUS:COMPLETED"), std::string("COMPLETED:20260308T090000Z"),
          std::string("PRIORITY:2"), std::string("RRULE:FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR"),
          std::string("TRIGGER;VALUE=DATE-TIME:20260308T075000Z"),
          std::string("CREATED:20260308T030509Z"), std::string("X-DAYWYN-ESTIMATED-MINUTES:45"),
          std::string("LAST-MODIFIED:"), std::string("DTSTAMP:")}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
    }
}

TEST(IcalTaskCoding, WritesEachRepeatAsARule) {
    const Calendar ny = newYork();
    const std::pair<TaskRecurrence, std::string> cases[] = {
        {TaskRecurrence::daily, "RRULE:FREQ=DAILY\r\n"},
        {TaskRecurrence::weekdays, "RRULE:FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR\r\n"},
        {TaskRecurrence::weekly, "RRULE:FREQ=WEEKLY\r\n"},
        {TaskRecurrence::monthly, "RRULE:FREQ=MONTHLY\r\n"},
    };
    for (const auto& [recurrence, rule] : cases) {
        SCOPED_TRACE(rule);
        const TaskItem task = TaskBuilder("Repeat")
                                  .createdAt(at(ny, 2026, 1, 1))
                                  .startingAt(at(ny, 2026, 1, 2, 9))
                                  .repeating(recurrence);
        std::string text;
        EXPECT_EQ(roundTrip(task, ny, &text), task);
        EXPECT_NE(text.find(rule), std::string::npos) << text;
    }
}

namespace {

// Written by another client: a zone of its own, a relative alarm and several properties
// Daywyn does not use, a UID that is not a UUID, a due date without a time.
const char* const kForeign = "BEGIN:VCALENDAR\r\n"
                             "VERSION:2.0\r\n"
                             "PRODID:-//Example Corp.//Phone Tasks//EN\r\n"
                             "BEGIN:VTIMEZONE\r\n"
                             "TZID:Eastern\r\n"
                             "BEGIN:STANDARD\r\n"
                             "DTSTART:19701101T020000\r\n"
                             "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU\r\n"
                             "TZOFFSETFROM:-0400\r\n"
                             "TZOFFSETTO:-0500\r\n"
                             "END:STANDARD\r\n"
                             "BEGIN:DAYLIGHT\r\n"
                             "DTSTART:19700308T020000\r\n"
                             "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\r\n"
                             "TZOFFSETFROM:-0500\r\n"
                             "TZOFFSETTO:-0400\r\n"
                             "END:DAYLIGHT\r\n"
                             "END:VTIMEZONE\r\n"
                             "BEGIN:VTODO\r\n"
                             "UID:phone-task-42@example.com\r\n"
                             "DTSTAMP:20260301T120000Z\r\n"
                             "CREATED:20260301T115900Z\r\n"
                             "LAST-MODIFIED:20260301T120000Z\r\n"
                             "SUMMARY:Buy paint\r\n"
                             "DESCRIPTION:White\\, matte\\nTwo litres\r\n"
                             "CATEGORIES:Home,Errands\r\n"
                             "RELATED-TO;RELTYPE=PARENT:renovation-1@example.com\r\n"
                             "DTSTART;TZID=Eastern:20260309T090000\r\n"
                             "DUE;VALUE=DATE:20260310\r\n"
                             "PRIORITY:5\r\n"
                             "STATUS:IN-PROCESS\r\n"
                             "X-PHONE-COLOR:teal\r\n"
                             "BEGIN:VALARM\r\n"
                             "ACTION:DISPLAY\r\n"
                             "DESCRIPTION:Paint\r\n"
                             "TRIGGER:-PT15M\r\n"
                             "END:VALARM\r\n"
                             "END:VTODO\r\n"
                             "END:VCALENDAR\r\n";

} // namespace

TEST(IcalTaskCoding, ReadsATaskFromAnotherClient) {
    const Calendar ny = newYork();
    auto decoded = coding.decode(kForeign, ny);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    const TaskItem& task = decoded->task;
    EXPECT_EQ(decoded->uid, "phone-task-42@example.com");
    EXPECT_EQ(task.id, sync::taskIdForUid("phone-task-42@example.com"));
    EXPECT_EQ(task.title, "Buy paint");
    EXPECT_EQ(task.scheduledStart, at(ny, 2026, 3, 9, 9));
    EXPECT_EQ(task.reminderDate, at(ny, 2026, 3, 9, 8, 45));
    EXPECT_EQ(task.scheduledEnd, at(ny, 2026, 3, 11));
    EXPECT_EQ(task.createdAt, at(utc(), 2026, 3, 1, 11, 59));
    EXPECT_EQ(decoded->lastModified, at(utc(), 2026, 3, 1, 12));
    EXPECT_FALSE(task.isComplete);
    EXPECT_EQ(task.priorityRank, std::nullopt);
    EXPECT_EQ(task.recurrence, std::nullopt);
    EXPECT_TRUE(task.sessions.empty());
}

TEST(IcalTaskCoding, KeepsWhatAnotherClientWroteWhenTheTaskChanges) {
    const Calendar ny = newYork();
    TaskItem task = coding.decode(kForeign, ny)->task;
    task.title = "Buy paint and brushes";
    task.estimatedMinutes = 30;
    const std::string text = coding.encode(task, {}, kForeign, at(ny, 2026, 3, 2), ny);
    for (const char* kept :
         {"UID:phone-task-42@example.com", "DESCRIPTION:White\\, matte\\nTwo litres",
          // libical writes a list of categories as one property per category.
          "CATEGORIES:Home\r\n", "CATEGORIES:Errands\r\n",
          "RELATED-TO;RELTYPE=PARENT:renovation-1@example.com",
          "DTSTART;TZID=Eastern:20260309T090000", "DUE;VALUE=DATE:20260310", "PRIORITY:5",
          "STATUS:IN-PROCESS", "X-PHONE-COLOR:teal", "TRIGGER:-PT15M", "TZID:Eastern",
          "PRODID:-//Example Corp.//Phone Tasks//EN", "CREATED:20260301T115900Z"}) {
        EXPECT_NE(text.find(kept), std::string::npos) << kept << "\n" << text;
    }
    EXPECT_NE(text.find("SUMMARY:Buy paint and brushes"), std::string::npos);
    EXPECT_NE(text.find("LAST-MODIFIED:20260302T050000Z"), std::string::npos) << text;
    EXPECT_EQ(coding.decode(text, ny)->task, task);
}

TEST(IcalTaskCoding, MovesARelativeAlarmOnlyAsFarAsTheReminderMoves) {
    const Calendar ny = newYork();
    TaskItem task = coding.decode(kForeign, ny)->task;
    // A later start leaves the reminder where it was: the alarm becomes absolute.
    task.scheduledStart = at(ny, 2026, 3, 9, 11);
    std::string text = coding.encode(task, {}, kForeign, at(ny, 2026, 3, 2), ny);
    EXPECT_EQ(coding.decode(text, ny)->task, task);
    EXPECT_EQ(text.find("TRIGGER:-PT15M"), std::string::npos) << text;

    // Clearing the reminder removes the alarm.
    task.reminderDate.reset();
    text = coding.encode(task, {}, text, at(ny, 2026, 3, 2), ny);
    EXPECT_EQ(coding.decode(text, ny)->task, task);
    EXPECT_EQ(text.find("BEGIN:VALARM"), std::string::npos) << text;
}

TEST(IcalTaskCoding, ReadsFloatingTimesInTheUsersCalendarAndCompletionWithoutStatus) {
    const Calendar berlinCalendar = berlin();
    const auto decoded = coding.decode("BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nUID:a\r\n"
                                       "DTSTART:20260329T030000\r\nCOMPLETED:20260329T120000Z\r\n"
                                       "END:VTODO\r\nEND:VCALENDAR\r\n",
                                       berlinCalendar);
    ASSERT_TRUE(decoded.ok());
    EXPECT_EQ(decoded->task.scheduledStart, at(berlinCalendar, 2026, 3, 29, 3));
    EXPECT_TRUE(decoded->task.isComplete);
}

TEST(IcalTaskCoding, RefusesTextThatHoldsNoTaskInASentence) {
    const Calendar ny = newYork();
    const std::pair<const char*, const char*> cases[] = {
        {"", "The task is not iCalendar text."},
        {"BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:x\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
         "The calendar object holds no task."},
        {"BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY:x\r\nEND:VTODO\r\nEND:VCALENDAR\r\n",
         "The task has no UID."},
    };
    for (const auto& [text, sentence] : cases) {
        const auto decoded = coding.decode(text, ny);
        ASSERT_FALSE(decoded.ok()) << text;
        EXPECT_EQ(decoded.error(), sentence);
    }
}

TEST(IcalTaskCoding, DropsLibicalsParseNotesAndKeepsTheRest) {
    const Calendar ny = newYork();
    const char* broken = "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nUID:b\r\nDTSTART:garbage\r\n"
                         "X-OTHER:kept\r\nSUMMARY:Broken\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    TaskItem task = coding.decode(broken, ny)->task;
    EXPECT_EQ(task.title, "Broken");
    task.title = "Mended";
    const std::string text = coding.encode(task, {}, broken, at(ny, 2026, 3, 2), ny);
    EXPECT_EQ(text.find("X-LIC-ERROR"), std::string::npos) << text;
    EXPECT_NE(text.find("X-OTHER:kept"), std::string::npos) << text;
    EXPECT_EQ(coding.decode(text, ny)->task, task);
}

TEST(IcalTaskCoding, WritesATaskFoundOutsideACalendarIntoOneWithItsZone) {
    const Calendar ny = newYork();
    std::string misspelt = kForeign;
    misspelt.replace(misspelt.find("BEGIN:VCALENDAR"), 15, "BEGIN:VCALENDRA");
    misspelt.replace(misspelt.find("END:VCALENDAR"), 13, "END:VCALENDRA");
    const TaskItem task = coding.decode(misspelt, ny)->task;
    const std::string text = coding.encode(task, {}, misspelt, at(ny, 2026, 3, 2), ny);
    EXPECT_EQ(text.rfind("BEGIN:VCALENDAR", 0), 0u) << text;
    EXPECT_NE(text.find("TZID:Eastern"), std::string::npos) << text;
    EXPECT_EQ(coding.decode(text, ny)->task, task);
}

} // namespace daywyn::test

namespace daywyn::test {

namespace {

// The text with the first property starting with `prefix` (folded lines and all)
// replaced by `line`, as another program would edit it.
std::string withLine(std::string text, std::string_view prefix, std::string_view line) {
    const auto start = text.find("\r\n" + std::string(prefix));
    EXPECT_NE(start, std::string::npos) << prefix << "\n" << text;
    if (start == std::string::npos) {
        return text;
    }
    auto end = text.find("\r\n", start + 2);
    while (end != std::string::npos && end + 2 < text.size() && text[end + 2] == ' ') {
        end = text.find("\r\n", end + 2);
    }
    return text.replace(start + 2, end - start - 2, line);
}

} // namespace

// The fields of a task that sync: all but the machine-local ones.
constexpr std::size_t kSyncedFields =
    std::tuple_size_v<decltype(JsonRecord<TaskItem>::fields)> - sync::kMachineLocalFields.size();

TEST(IcalTaskCoding, ReadsNoOtherMachinesReminderBookkeepingAndDropsItWhenWriting) {
    const Calendar ny = newYork();
    const TaskItem task = TaskBuilder("Call the bank")
                              .createdAt(at(utc(), 2026, 3, 1))
                              .reminder(at(utc(), 2026, 3, 9, 15));
    // As a version that still sent them wrote it: another machine's bookkeeping.
    std::string text = coding.encode(task, {}, {}, at(utc(), 2026, 3, 2), ny);
    const std::string own = "X-DAYWYN-SCHEDULED-REMINDER-DATE:\"2026-03-09T15:00:00Z\"\r\n"
                            "X-DAYWYN-SCHEDULED-BUDGET-ALERTS:[\"approaching\"]\r\n"
                            "X-DAYWYN-NOTIFIED-OVERDUE-END:\"2026-03-09T16:00:00Z\"\r\n";
    text.insert(text.find("END:VTODO"), own);
    auto decoded = coding.decode(text, ny);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    EXPECT_EQ(decoded->task, task);
    EXPECT_EQ(decoded->task.reminderDate, at(utc(), 2026, 3, 9, 15));

    TaskItem mine = task;
    mine.title = "Call the bank today";
    mine.scheduledReminderDate = at(utc(), 2026, 3, 9, 15);
    mine.scheduledBudgetAlerts = {BudgetAlertKind::exceeded};
    const std::string written = coding.encode(mine, {}, text, at(utc(), 2026, 3, 3), ny);
    EXPECT_EQ(written.find("X-DAYWYN-SCHEDULED"), std::string::npos) << written;
    EXPECT_EQ(written.find("X-DAYWYN-NOTIFIED"), std::string::npos) << written;
    EXPECT_NE(written.find("BEGIN:VALARM"), std::string::npos) << written;
}

TEST(IcalTaskCoding, CarriesEachFieldsChangeTimeWhileNoOtherProgramEditsTheField) {
    const Calendar ny = newYork();
    const TaskItem task = everyField(ny, 8);
    const Instant written = at(utc(), 2026, 3, 9, 18);
    const sync::FieldTimes given{{"title", at(utc(), 2026, 3, 9, 15)},
                                 {"estimatedMinutes", at(utc(), 2026, 3, 9, 17)}};
    const std::string text = coding.encode(task, given, {}, written, ny);
    auto decoded = coding.decode(text, ny);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    // The fields given keep their times; every other one is at the time of the write.
    EXPECT_EQ(decoded->fieldTimes.at("title"), at(utc(), 2026, 3, 9, 15));
    EXPECT_EQ(decoded->fieldTimes.at("estimatedMinutes"), at(utc(), 2026, 3, 9, 17));
    EXPECT_EQ(decoded->fieldTimes.at("checklist"), written);
    EXPECT_EQ(decoded->fieldTimes.size(), kSyncedFields);

    // Another program renames the task and says so in LAST-MODIFIED only: the title
    // loses its time (LAST-MODIFIED stands for it), the other fields keep theirs.
    const std::string renamed = withLine(withLine(text, "SUMMARY", "SUMMARY:Renamed on the phone"),
                                         "LAST-MODIFIED", "LAST-MODIFIED:20260309T200000Z");
    decoded = coding.decode(renamed, ny);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    EXPECT_FALSE(decoded->fieldTimes.contains("title"));
    EXPECT_EQ(decoded->fieldTimes.at("estimatedMinutes"), at(utc(), 2026, 3, 9, 17));
    EXPECT_EQ(decoded->fieldTimes.at("checklist"), written);
    EXPECT_EQ(decoded->lastModified, at(utc(), 2026, 3, 9, 20));

    // Written over that text with a new estimate: the title takes the other program's
    // LAST-MODIFIED, the untouched fields keep their times, the estimate gets the new one.
    TaskItem edited = decoded->task;
    edited.estimatedMinutes = 50;
    const std::string again =
        coding.encode(edited, {{"estimatedMinutes", at(utc(), 2026, 3, 9, 21)}}, renamed,
                      at(utc(), 2026, 3, 9, 21), ny);
    decoded = coding.decode(again, ny);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    EXPECT_EQ(decoded->task, sync::atWholeSeconds(edited));
    EXPECT_EQ(decoded->fieldTimes.at("title"), at(utc(), 2026, 3, 9, 20));
    EXPECT_EQ(decoded->fieldTimes.at("estimatedMinutes"), at(utc(), 2026, 3, 9, 21));
    EXPECT_EQ(decoded->fieldTimes.at("checklist"), written);
    EXPECT_EQ(decoded->fieldTimes.size(), kSyncedFields);
}

TEST(IcalTaskCoding, GivesNoFieldTimesForAMangledOrForeignTimesProperty) {
    const Calendar ny = newYork();
    const TaskItem task = TaskBuilder("Plan trip").createdAt(at(utc(), 2026, 3, 1)).estimate(60);
    const std::string text =
        coding.encode(task, {{"title", at(utc(), 2026, 3, 2)}}, {}, at(utc(), 2026, 3, 3), ny);
    ASSERT_EQ(coding.decode(text, ny)->fieldTimes.at("title"), at(utc(), 2026, 3, 2));
    for (const char* mangled : {"X-DAYWYN-FIELD-TIMES:", "X-DAYWYN-FIELD-TIMES:yesterday",
                                "X-DAYWYN-FIELD-TIMES:2026-03-03T00:00:00Z#zz title@x#1",
                                "X-DAYWYN-FIELD-TIMES:2026-13-03T00:00:00Z#00000000 @ title@"}) {
        SCOPED_TRACE(mangled);
        const auto decoded = coding.decode(withLine(text, "X-DAYWYN-FIELD-TIMES", mangled), ny);
        ASSERT_TRUE(decoded.ok()) << decoded.error();
        EXPECT_EQ(decoded->task, task);
        EXPECT_TRUE(decoded->fieldTimes.empty());
    }
    // The fingerprint of the shared time covers every field it stands for: one of them
    // edited elsewhere takes the time from all of them, the listed title keeps its own.
    const auto edited = coding.decode(
        withLine(text, "X-DAYWYN-ESTIMATED-MINUTES", "X-DAYWYN-ESTIMATED-MINUTES:90"), ny);
    ASSERT_TRUE(edited.ok());
    EXPECT_EQ(edited->task.estimatedMinutes, 90);
    EXPECT_EQ(edited->fieldTimes, (sync::FieldTimes{{"title", at(utc(), 2026, 3, 2)}}));
}

} // namespace daywyn::test
