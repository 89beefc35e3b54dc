#include "store/AddFromLine.h"

#include "parsing/QuickTaskParser.h"

namespace daywyn {

Result<LineAdded> addDraft(TodayTaskStore& store, const TaskDraft& draft, Instant now,
                           const Calendar& calendar) {
    if (auto message = store.addTaskReliably(draft, now, calendar)) {
        return Error{*message};
    }
    return LineAdded{store.tasks().back(), draft};
}

Result<LineAdded> addFromLine(TodayTaskStore& store, std::string_view text, Instant now,
                              const Calendar& calendar) {
    return addDraft(store, QuickTaskParser::draft(text, now, calendar), now, calendar);
}

} // namespace daywyn
