#include "reminders/PendingNotificationFile.h"

#include "base/JsonFields.h"

namespace daywyn {

template <>
struct JsonRecord<PendingNotificationEntry> {
    using E = PendingNotificationEntry;
    static constexpr std::string_view noun = "pending notification";
    static constexpr auto fields =
        std::tuple(jsonField("body", &E::body, FieldRule::lenient),
                   jsonField("category", &E::category, FieldRule::optional),
                   jsonField("fireAt", &E::fireAt, FieldRule::required),
                   jsonField("identifier", &E::identifier, FieldRule::required),
                   jsonField("taskID", &E::taskId, FieldRule::optional),
                   jsonField("title", &E::title, FieldRule::lenient));
};

template <>
struct JsonRecord<ShownNotificationEntry> {
    using E = ShownNotificationEntry;
    static constexpr std::string_view noun = "shown notification";
    static constexpr auto fields =
        std::tuple(jsonField("id", &E::id, FieldRule::required),
                   jsonField("identifier", &E::identifier, FieldRule::lenient),
                   jsonField("server", &E::server, FieldRule::required),
                   jsonField("taskID", &E::taskId, FieldRule::optional));
};

namespace {

// The entries of a list that decode; a fault of the text itself fails the whole.
template <typename Entry>
bool readEntries(JsonDecoder& d, JsonValue& v, std::vector<Entry>& out) {
    return readJsonArray(d, v, [&](JsonValue& element) {
        Entry entry;
        if (decodeFields(d, element, entry)) {
            out.push_back(std::move(entry));
            return true;
        }
        return !d.hasSyntaxError();
    });
}

} // namespace

std::string PendingNotificationFile::encode() const {
    JsonBuffer buffer;
    PrettyJsonWriter w(buffer);
    useTwoSpaceIndent(w);
    w.StartObject();
    writeKey(w, "pending");
    writeJson(w, pending, DateCoding::iso8601);
    writeKey(w, "shown");
    writeJson(w, shown, DateCoding::iso8601);
    w.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize());
}

Result<PendingNotificationFile> PendingNotificationFile::decode(std::string_view text) {
    JsonInput input(text);
    JsonDecoder d;
    simdjson::ondemand::document document;
    JsonValue root;
    PendingNotificationFile file;
    bool pendingSeen = false;
    bool shownSeen = false;
    const bool read = input.iterate(d, document) && d.checkSyntax(document.get_value().get(root)) &&
                      readJsonObject(d, root, [&](std::string_view key, JsonValue& value) {
                          if (key == "pending" && !pendingSeen) {
                              pendingSeen = true;
                              return readEntries(d, value, file.pending) ||
                                     (!d.hasSyntaxError() && skipJson(d, value));
                          }
                          if (key == "shown" && !shownSeen) {
                              shownSeen = true;
                              return readEntries(d, value, file.shown) ||
                                     (!d.hasSyntaxError() && skipJson(d, value));
                          }
                          return skipJson(d, value);
                      });
    if (!read) {
        return Error{d.hasSyntaxError() ? d.error() : "The file does not hold a JSON object."};
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    return file;
}

} // namespace daywyn
