#include "calendar/GoogleAccount.h"

#include <simdjson.h>

#include "base/Json.h"

namespace daywyn {

namespace {

namespace od = simdjson::ondemand;

template <typename Writer>
void writeOptionalString(Writer& w, std::string_view key, const std::optional<std::string>& value) {
    if (value) {
        writeKey(w, key);
        writeString(w, *value);
    }
}

// Stops at the first problem; the message names the member, never a value, since
// values include tokens.
struct BlobReader {
    std::optional<std::string> problem;

    bool fail(std::string message) {
        if (!problem) {
            problem = std::move(message);
        }
        return false;
    }

    bool text(od::value value, std::string& out, std::string_view key) {
        std::string_view view;
        if (value.get_string().get(view)) {
            return fail("\"" + std::string(key) + "\" is not a string");
        }
        out.assign(view);
        return true;
    }

    bool optionalText(od::value value, std::optional<std::string>& out, std::string_view key) {
        bool isNull = false;
        if (!value.is_null().get(isNull) && isNull) {
            out.reset();
            return true;
        }
        std::string t;
        if (!text(value, t, key)) {
            return false;
        }
        out = std::move(t);
        return true;
    }

    bool choice(od::value value, GoogleCalendarChoice& out) {
        od::object object;
        if (value.get_object().get(object)) {
            return fail("a calendar is not an object");
        }
        bool hasId = false;
        for (auto field : object) {
            std::string_view key;
            if (field.unescaped_key().get(key)) {
                return fail("a calendar key is not readable");
            }
            od::value member;
            if (field.value().get(member)) {
                return fail("a calendar value is not readable");
            }
            bool ok = true;
            if (key == "id") {
                ok = text(member, out.id, "id");
                hasId = true;
            } else if (key == "summary") {
                ok = optionalText(member, out.summary, "summary");
            } else if (key == "backgroundColor") {
                ok = optionalText(member, out.backgroundColor, "backgroundColor");
            }
            if (!ok) {
                return false;
            }
        }
        return hasId || fail("a calendar lacks its \"id\"");
    }

    bool account(od::value value, GoogleAccount& out) {
        od::object object;
        if (value.get_object().get(object)) {
            return fail("an account is not an object");
        }
        unsigned seen = 0;
        for (auto field : object) {
            std::string_view key;
            if (field.unescaped_key().get(key)) {
                return fail("an account key is not readable");
            }
            od::value member;
            if (field.value().get(member)) {
                return fail("an account value is not readable");
            }
            bool ok = true;
            if (key == "id") {
                ok = text(member, out.id, key);
                seen |= 1U;
            } else if (key == "email") {
                ok = text(member, out.email, key);
                seen |= 2U;
            } else if (key == "accessToken") {
                ok = text(member, out.accessToken, key);
                seen |= 4U;
            } else if (key == "refreshToken") {
                ok = text(member, out.refreshToken, key);
                seen |= 8U;
            } else if (key == "expiresAt") {
                double seconds = 0;
                if (member.get_double().get(seconds)) {
                    ok = fail("\"expiresAt\" is not a number");
                } else {
                    out.expiresAt = Instant{seconds + kReferenceDateOffset};
                }
                seen |= 16U;
            } else if (key == "calendars") {
                od::array array;
                if (member.get_array().get(array)) {
                    return fail("\"calendars\" is not an array");
                }
                for (auto element : array) {
                    od::value item;
                    if (element.get(item)) {
                        return fail("a calendar is not readable");
                    }
                    GoogleCalendarChoice c;
                    if (!choice(item, c)) {
                        return false;
                    }
                    out.calendars.push_back(std::move(c));
                }
                seen |= 32U;
            } else if (key == "selected") {
                od::array array;
                if (member.get_array().get(array)) {
                    return fail("\"selected\" is not an array");
                }
                for (auto element : array) {
                    std::string_view id;
                    if (element.get_string().get(id)) {
                        return fail("a selected calendar id is not a string");
                    }
                    out.selected.emplace(id);
                }
                seen |= 64U;
            } else if (key == "didLoadCalendars") {
                bool isNull = false;
                if (!member.is_null().get(isNull) && isNull) {
                    out.didLoadCalendars.reset();
                } else {
                    bool loaded = false;
                    if (member.get_bool().get(loaded)) {
                        ok = fail("\"didLoadCalendars\" is not a boolean");
                    } else {
                        out.didLoadCalendars = loaded;
                    }
                }
            }
            if (!ok) {
                return false;
            }
        }
        if (problem) {
            return false;
        }
        return seen == 127U || fail("an account lacks a required key");
    }
};

} // namespace

std::string GoogleAccount::encodeAll(const std::vector<GoogleAccount>& accounts) {
    JsonBuffer buffer;
    PrettyJsonWriter w(buffer);
    useTwoSpaceIndent(w);
    w.StartArray();
    for (const GoogleAccount& account : accounts) {
        w.StartObject();
        writeKey(w, "accessToken");
        writeString(w, account.accessToken);
        writeKey(w, "calendars");
        w.StartArray();
        for (const GoogleCalendarChoice& calendar : account.calendars) {
            w.StartObject();
            writeOptionalString(w, "backgroundColor", calendar.backgroundColor);
            writeKey(w, "id");
            writeString(w, calendar.id);
            writeOptionalString(w, "summary", calendar.summary);
            w.EndObject();
        }
        w.EndArray();
        if (account.didLoadCalendars) {
            writeKey(w, "didLoadCalendars");
            w.Bool(*account.didLoadCalendars);
        }
        writeKey(w, "email");
        writeString(w, account.email);
        writeKey(w, "expiresAt");
        writeDate(w, account.expiresAt, DateCoding::referenceSeconds);
        writeKey(w, "id");
        writeString(w, account.id);
        writeKey(w, "refreshToken");
        writeString(w, account.refreshToken);
        writeKey(w, "selected");
        w.StartArray();
        for (const std::string& id : account.selected) {
            writeString(w, id);
        }
        w.EndArray();
        w.EndObject();
    }
    w.EndArray();
    return std::string(buffer.GetString(), buffer.GetSize());
}

Result<std::vector<GoogleAccount>> GoogleAccount::decodeAll(std::string_view json) {
    using Accounts = std::vector<GoogleAccount>;
    const simdjson::padded_string padded(json);
    od::parser parser;
    od::document document;
    if (const auto error = parser.iterate(padded).get(document); error) {
        return Result<Accounts>::failure(std::string("The saved accounts are not JSON: ") +
                                         simdjson::error_message(error));
    }
    BlobReader reader;
    Accounts accounts;
    od::array array;
    if (document.get_array().get(array)) {
        return Result<Accounts>::failure("The saved accounts are not a JSON array.");
    }
    for (auto element : array) {
        od::value value;
        if (element.get(value)) {
            reader.fail("an account is not readable");
            break;
        }
        GoogleAccount account;
        if (!reader.account(value, account)) {
            break;
        }
        accounts.push_back(std::move(account));
    }
    if (!reader.problem) {
        const char* location = nullptr;
        if (document.current_location().get(location) != simdjson::OUT_OF_BOUNDS) {
            reader.fail("there is content after the list");
        }
    }
    if (reader.problem) {
        return Result<Accounts>::failure("The saved accounts are not valid: " + *reader.problem +
                                         ".");
    }
    return accounts;
}

} // namespace daywyn
