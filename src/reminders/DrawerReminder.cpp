#include "reminders/DrawerReminder.h"

namespace daywyn {

Result<DrawerReminder> decodeDrawerReminder(const rapidjson::Value& v, DateCoding dates) {
    if (!v.IsObject()) {
        return Result<DrawerReminder>::failure("A drawer reminder is not a JSON object.");
    }
    DrawerReminder reminder;
    for (const auto& [key, field] : {std::pair<const char*, std::string*>{"id", &reminder.id},
                                     {"title", &reminder.title},
                                     {"detail", &reminder.detail}}) {
        const rapidjson::Value* member = findMember(v, key);
        auto text = member ? readString(*member) : std::nullopt;
        if (!text) {
            return Result<DrawerReminder>::failure(
                std::string("A drawer reminder lacks a text \"") + key + "\".");
        }
        *field = std::move(*text);
    }
    const rapidjson::Value* due = findMember(v, "due");
    auto date = due ? readDate(*due, dates) : std::nullopt;
    if (!date) {
        return Result<DrawerReminder>::failure("A drawer reminder lacks a valid date \"due\".");
    }
    reminder.due = *date;
    return reminder;
}

} // namespace daywyn
