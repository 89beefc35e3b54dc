#pragma once

#include "sync/TaskCoding.h"

namespace daywyn::sync {

// Tasks as VTODO through libical. UID = the task id, SUMMARY = the title, DTSTART and
// DUE from the scheduled start and end (a planned day without a start is a DATE),
// a VALARM with an absolute trigger for the reminder, STATUS and COMPLETED, PRIORITY
// for the pinned rank, RRULE for the repeat, CREATED and LAST-MODIFIED; the rest of the
// record as X-DAYWYN-* properties, and the fields' change times in X-DAYWYN-FIELD-TIMES.
class IcalTaskCoding final : public TaskCoding {
public:
    Result<DecodedTask> decode(std::string_view ics, const Calendar& calendar) const override;
    std::string encode(const TaskItem& task, const FieldTimes& fieldTimes,
                       std::string_view previous, Instant modifiedAt,
                       const Calendar& calendar) const override;
};

} // namespace daywyn::sync
