#include "calendar/GoogleOAuthUtilities.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <sys/random.h>

#include "base/Sha.h"

namespace daywyn {

namespace {

constexpr char kBase64UrlAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

bool unreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// A URL parser refuses spaces, controls, bytes beyond ASCII and a handful of
// delimiters anywhere in a request target; so does the callback check.
bool allowedInTarget(unsigned char c) {
    if (c <= 0x20 || c >= 0x7F) {
        return false;
    }
    return c != '"' && c != '<' && c != '>' && c != '\\' && c != '^' && c != '`' && c != '{' &&
           c != '|' && c != '}';
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size()) {
            return std::nullopt;
        }
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

struct QueryItem {
    std::string name;
    std::optional<std::string> value;
};

} // namespace

std::string GoogleOAuthUtilities::base64Url(std::string_view bytes) {
    std::string out;
    out.reserve((bytes.size() * 4 + 2) / 3);
    std::size_t i = 0;
    const auto byte = [&](std::size_t at) {
        return static_cast<unsigned char>(bytes[at]);
    };
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t v = (byte(i) << 16) | (byte(i + 1) << 8) | byte(i + 2);
        out += kBase64UrlAlphabet[(v >> 18) & 63];
        out += kBase64UrlAlphabet[(v >> 12) & 63];
        out += kBase64UrlAlphabet[(v >> 6) & 63];
        out += kBase64UrlAlphabet[v & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest == 1) {
        const std::uint32_t v = byte(i) << 16;
        out += kBase64UrlAlphabet[(v >> 18) & 63];
        out += kBase64UrlAlphabet[(v >> 12) & 63];
    } else if (rest == 2) {
        const std::uint32_t v = (byte(i) << 16) | (byte(i + 1) << 8);
        out += kBase64UrlAlphabet[(v >> 18) & 63];
        out += kBase64UrlAlphabet[(v >> 12) & 63];
        out += kBase64UrlAlphabet[(v >> 6) & 63];
    }
    return out;
}

Result<std::string> GoogleOAuthUtilities::random() {
    std::array<char, 32> bytes{};
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return Result<std::string>::failure(std::string(kGoogleRandomFailed));
        }
        filled += static_cast<std::size_t>(got);
    }
    return base64Url(std::string_view(bytes.data(), bytes.size()));
}

std::string GoogleOAuthUtilities::challenge(std::string_view verifier) {
    const auto digest = sha256(verifier);
    return base64Url(std::string_view(reinterpret_cast<const char*>(digest.data()), digest.size()));
}

std::string GoogleOAuthUtilities::percentEncoded(std::string_view text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (unreserved(c)) {
            out += ch;
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

std::string GoogleOAuthUtilities::form(const std::map<std::string, std::string>& fields) {
    std::string body;
    for (const auto& [key, value] : fields) {
        if (!body.empty()) {
            body += '&';
        }
        body += percentEncoded(key);
        body += '=';
        body += percentEncoded(value);
    }
    return body;
}

std::string GoogleOAuthUtilities::authorizationUrl(std::string_view authBase,
                                                   std::string_view clientId,
                                                   std::string_view redirectUri,
                                                   std::string_view state,
                                                   std::string_view challenge) {
    const std::pair<std::string_view, std::string_view> items[] = {
        {"client_id", clientId},
        {"redirect_uri", redirectUri},
        {"response_type", "code"},
        {"scope", kGoogleScopes},
        {"state", state},
        {"code_challenge", challenge},
        {"code_challenge_method", "S256"},
        {"access_type", "offline"},
        {"prompt", "consent select_account"},
    };
    std::string url(authBase);
    char separator = '?';
    for (const auto& [key, value] : items) {
        url += separator;
        url += key;
        url += '=';
        url += percentEncoded(value);
        separator = '&';
    }
    return url;
}

std::optional<std::string> GoogleOAuthUtilities::callbackCode(std::string_view target,
                                                              std::string_view state) {
    // Read as "http://127.0.0.1" + target: anything but an absolute path would change
    // the authority or fail to parse.
    if (target.empty() || target.front() != '/') {
        return std::nullopt;
    }
    for (char c : target) {
        if (!allowedInTarget(static_cast<unsigned char>(c))) {
            return std::nullopt;
        }
    }
    if (target.size() > 1 && target[1] == '/') {
        return std::nullopt;
    }
    if (const auto hash = target.find('#'); hash != std::string_view::npos) {
        target = target.substr(0, hash);
    }
    const auto question = target.find('?');
    const std::string_view path = target.substr(0, question);
    if (path != "/") {
        return std::nullopt;
    }
    std::vector<QueryItem> items;
    if (question != std::string_view::npos) {
        std::string_view query = target.substr(question + 1);
        while (true) {
            const auto amp = query.find('&');
            const std::string_view part = query.substr(0, amp);
            const auto equals = part.find('=');
            QueryItem item;
            const auto name = percentDecoded(part.substr(0, equals));
            if (!name) {
                return std::nullopt;
            }
            item.name = *name;
            if (equals != std::string_view::npos) {
                item.value = percentDecoded(part.substr(equals + 1));
                if (!item.value) {
                    return std::nullopt;
                }
            }
            items.push_back(std::move(item));
            if (amp == std::string_view::npos) {
                break;
            }
            query.remove_prefix(amp + 1);
        }
    }
    const QueryItem* stateItem = nullptr;
    const QueryItem* codeItem = nullptr;
    int states = 0;
    int codes = 0;
    for (const QueryItem& item : items) {
        if (item.name == "state") {
            stateItem = &item;
            ++states;
        } else if (item.name == "code") {
            codeItem = &item;
            ++codes;
        }
    }
    if (states != 1 || !stateItem->value || *stateItem->value != state) {
        return std::nullopt;
    }
    if (codes != 1 || !codeItem->value || codeItem->value->empty()) {
        return std::nullopt;
    }
    return *codeItem->value;
}

} // namespace daywyn
