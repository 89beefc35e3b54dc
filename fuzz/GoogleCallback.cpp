// Arbitrary bytes as what a browser (or anything else on this machine) sends to the
// sign-in callback, arriving in two pieces: reading never crashes or runs past its
// bound, a head is decided as soon as it is whole, and a code is only ever handed out
// for the expected state, as one non-empty value.
#include <cstdlib>
#include <string>
#include <string_view>

#include "calendar/GoogleLoopbackRequest.h"
#include "calendar/GoogleOAuthUtilities.h"

namespace {

using namespace daywyn;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t cut = size == 0 ? 0 : data[0] % (size + 1);
    const auto first = LoopbackRequestHead::parse(bytes.substr(0, cut));
    const auto whole = LoopbackRequestHead::parse(bytes);
    // A decided head stays decided as more bytes arrive.
    if (first.state != LoopbackRequestHead::State::incomplete) {
        require(whole.state == first.state);
        require(whole.target == first.target);
    }
    if (whole.state == LoopbackRequestHead::State::incomplete) {
        require(size < kLoopbackMaxHeadBytes);
    }
    if (whole.state == LoopbackRequestHead::State::complete) {
        require(whole.target.size() < kLoopbackMaxHeadBytes);
    }

    constexpr std::string_view kState = "s7Xq";
    const std::string_view target = whole.state == LoopbackRequestHead::State::complete
                                        ? std::string_view(whole.target)
                                        : bytes;
    if (const auto code = GoogleOAuthUtilities::callbackCode(target, kState)) {
        require(!code->empty());
        require(target.front() == '/');
        require(target.find("state=") != std::string_view::npos);
        require(GoogleOAuthUtilities::callbackCode(target, "other") == std::nullopt);
    }
    return 0;
}
