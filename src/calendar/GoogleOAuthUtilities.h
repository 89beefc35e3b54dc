#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace daywyn {

// The sentences of a sign-in that failed, as the settings page shows them.
inline constexpr std::string_view kGoogleRandomFailed =
    "Could not create a secure sign-in request.";
inline constexpr std::string_view kGoogleNotGranted =
    "Google access was not granted. You can reconnect at any time.";
inline constexpr std::string_view kGoogleSignInTimedOut =
    "Sign-in timed out. Connect again when you\u2019re ready.";
inline constexpr std::string_view kGoogleCallbackUnavailable =
    "Could not open the local sign-in callback. Please try again.";
inline constexpr std::string_view kGoogleBrowserUnavailable =
    "Could not open your browser for Google sign-in.";
inline constexpr std::string_view kGoogleNoOfflineAccess =
    "Google did not provide offline access. Please reconnect and approve access.";

// The pieces of the installed-app sign-in with PKCE that need no network: the secret
// verifier and state, the challenge derived from the verifier, form bodies, the
// authorization address and the check of the browser's callback.
struct GoogleOAuthUtilities {
    // 32 bytes from the kernel's secure random source as unpadded base64url: 43
    // characters. Fails with "Could not create a secure sign-in request." when the
    // kernel gives none.
    static Result<std::string> random();
    // The same text from given bytes (exposed so the encoding can be checked).
    static std::string base64Url(std::string_view bytes);
    // SHA-256 of the verifier's bytes as unpadded base64url (the "S256" method).
    static std::string challenge(std::string_view verifier);
    // Letters, digits and "-._~" stay; every other byte becomes %XX (upper case).
    static std::string percentEncoded(std::string_view text);
    // An application/x-www-form-urlencoded body, keys in ascending order.
    static std::string form(const std::map<std::string, std::string>& fields);
    // The browser address that asks for consent, with its query items in Google's
    // documented order. `authBase` is the endpoint without a query.
    static std::string authorizationUrl(std::string_view authBase, std::string_view clientId,
                                        std::string_view redirectUri, std::string_view state,
                                        std::string_view challenge);
    // The code carried by the callback's request target ("/?state=…&code=…"), or
    // nothing when the target is refused: a path other than "/", not exactly one state
    // equal to `state`, or not exactly one non-empty code.
    static std::optional<std::string> callbackCode(std::string_view target, std::string_view state);
};

// The three read-only scopes, separated by blanks.
inline constexpr std::string_view kGoogleScopes =
    "https://www.googleapis.com/auth/calendar.calendarlist.readonly "
    "https://www.googleapis.com/auth/calendar.events.readonly "
    "https://www.googleapis.com/auth/userinfo.email";

} // namespace daywyn
