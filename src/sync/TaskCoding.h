#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Calendar.h"
#include "base/Result.h"
#include "model/TaskItem.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// A task read from a calendar object.
struct DecodedTask {
    TaskItem task;
    // The object's UID as written (a task id is its canonical text; other programs may
    // use any text, and the task id is then derived from it).
    std::string uid;
    // LAST-MODIFIED, when the object has one.
    std::optional<Instant> lastModified;
    // When fields last changed, as Daywyn wrote them beside the values: only the fields
    // that still hold the value written with their time. Another program's edits leave
    // their fields without a time here, which LAST-MODIFIED then gives.
    FieldTimes fieldTimes;
};

// How a task is written as an iCalendar VTODO and read back. Reading and writing
// agree exactly on every field of a task; what another program wrote and this one
// does not understand is kept when the task is written over its previous text.
class TaskCoding {
public:
    virtual ~TaskCoding() = default;

    // The first VTODO of the object. Dates without a time are days of `calendar`.
    virtual Result<DecodedTask> decode(std::string_view ics, const Calendar& calendar) const = 0;
    // The task as a whole iCalendar object. `previous` is the object's last synced text
    // (empty for a new one): it is edited so that everything this coding does not
    // manage stays as it was, including its UID. LAST-MODIFIED becomes `modifiedAt`.
    // Each field's change time is written beside it: the one in `fieldTimes`, else the
    // one `previous` gives it while its value is unchanged, else `modifiedAt`.
    virtual std::string encode(const TaskItem& task, const FieldTimes& fieldTimes,
                               std::string_view previous, Instant modifiedAt,
                               const Calendar& calendar) const = 0;
};

// The field times of a task as one line of text: the time most fields share with a
// fingerprint of those fields' values, then every other field as
// "name@time#fingerprint" ("2026-03-09T14:00:00Z#1f0c22d9 title@2026-03-09T15:30:00Z#9a41be07").
// A field missing from `times` counts as changed at the shared time.
std::string fieldTimesText(const TaskItem& task, const FieldTimes& times);
// The times of such a text whose fields still hold the values they were written with;
// anything unreadable in it gives no time.
FieldTimes readFieldTimes(std::string_view text, const TaskItem& task);

// The task id for a calendar object's UID: the UID itself when it is a task id, else
// an id derived from its text (always the same for the same text).
Uuid taskIdForUid(std::string_view uid);

} // namespace daywyn::sync
