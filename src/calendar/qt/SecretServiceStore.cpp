#include "calendar/qt/SecretServiceStore.h"

#include <libsecret/secret.h>

#include "calendar/GoogleCalendarRules.h"

namespace daywyn {

namespace {

const SecretSchema* schema() {
    static const SecretSchema kSchema = {"com.daywyn.Secret",
                                         SECRET_SCHEMA_DONT_MATCH_NAME,
                                         {
                                             {"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                             {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                             {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                         },
                                         0,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr};
    return &kSchema;
}

} // namespace

SecretServiceStore::SecretServiceStore(std::string service, std::string account,
                                       std::optional<SecretItemTexts> texts)
    : service_(std::move(service))
    , account_(std::move(account))
    , texts_(texts ? std::move(*texts)
                   : SecretItemTexts{"Daywyn Google accounts", std::string(kGoogleSaveFailed),
                                     std::string(kGoogleUpdateFailed)}) {}

SecretRead SecretServiceStore::read() {
    SecretRead result;
    GError* error = nullptr;
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &error);
    if (service == nullptr) {
        g_clear_error(&error);
        return result;
    }
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(attributes, const_cast<char*>("service"), service_.data());
    g_hash_table_insert(attributes, const_cast<char*>("account"), account_.data());
    // Without SECRET_SEARCH_UNLOCK a locked item is listed but keeps its secret.
    GList* items = secret_service_search_sync(
        service, schema(), attributes, static_cast<SecretSearchFlags>(SECRET_SEARCH_LOAD_SECRETS),
        nullptr, &error);
    g_hash_table_unref(attributes);
    if (error != nullptr) {
        g_clear_error(&error);
        g_object_unref(service);
        return result;
    }
    if (items == nullptr) {
        result.outcome = SecretRead::Outcome::missing;
    } else {
        auto* item = static_cast<SecretItem*>(items->data);
        SecretValue* value = secret_item_get_locked(item) ? nullptr : secret_item_get_secret(item);
        if (value == nullptr) {
            result.outcome = SecretRead::Outcome::locked;
        } else {
            gsize length = 0;
            const gchar* bytes = secret_value_get(value, &length);
            result.secret.assign(bytes, length);
            result.outcome = SecretRead::Outcome::found;
            secret_value_unref(value);
        }
    }
    g_list_free_full(items, g_object_unref);
    g_object_unref(service);
    return result;
}

Status SecretServiceStore::write(const std::string& secret) {
    const bool existed = read().outcome != SecretRead::Outcome::missing;
    GError* error = nullptr;
    const gboolean stored = secret_password_store_sync(
        schema(), SECRET_COLLECTION_DEFAULT, texts_.label.c_str(), secret.c_str(), nullptr, &error,
        "service", service_.c_str(), "account", account_.c_str(), nullptr);
    if (!stored) {
        g_clear_error(&error);
        return Status::failure(existed ? texts_.updateFailed : texts_.saveFailed);
    }
    return {};
}

Status SecretServiceStore::remove() {
    GError* error = nullptr;
    secret_password_clear_sync(schema(), nullptr, &error, "service", service_.c_str(), "account",
                               account_.c_str(), nullptr);
    if (error != nullptr) {
        g_clear_error(&error);
        return Status::failure("Could not remove \"" + texts_.label + "\" from the keyring.");
    }
    return {};
}

} // namespace daywyn
