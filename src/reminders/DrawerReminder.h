#pragma once

#include <string>

#include "base/Instant.h"
#include "base/Json.h"
#include "base/Result.h"

namespace daywyn {

// One in-app pop-out beside the drawer. The id is stable for one occurrence of one
// reminder, so a reminder once shown is recognised again by it.
struct DrawerReminder {
    std::string id;
    std::string title;
    std::string detail;
    // The moment it became due.
    Instant due;

    bool operator==(const DrawerReminder&) const = default;
};

// JSON coding with the keys "detail", "due", "id", "title" (written sorted).
template <typename Writer>
void encodeDrawerReminder(Writer& w, const DrawerReminder& reminder, DateCoding dates) {
    w.StartObject();
    writeKey(w, "detail");
    writeString(w, reminder.detail);
    writeKey(w, "due");
    writeDate(w, reminder.due, dates);
    writeKey(w, "id");
    writeString(w, reminder.id);
    writeKey(w, "title");
    writeString(w, reminder.title);
    w.EndObject();
}

// All four keys are required; a missing or mistyped one fails with a sentence
// naming it.
Result<DrawerReminder> decodeDrawerReminder(const rapidjson::Value& v, DateCoding dates);

} // namespace daywyn
