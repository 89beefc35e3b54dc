// Arbitrary bytes as a release manifest: checking never crashes or hangs, and a
// manifest that passes offers only trusted downloads, sorted newest first, with the
// offered release among them. The first bytes also serve as two versions to compare,
// which must order consistently both ways round.
#include <cstdlib>
#include <string>
#include <string_view>

#include "updates/AppVersion.h"
#include "updates/UpdateRules.h"

namespace {

using namespace daywyn;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

VersionOrder flipped(VersionOrder order) {
    return order == VersionOrder::less      ? VersionOrder::greater
           : order == VersionOrder::greater ? VersionOrder::less
                                            : VersionOrder::equal;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string> host = std::string("updates.daywyn.org");
    const auto outcome = checkManifest(bytes, host);
    if (const auto* checked = std::get_if<CheckedManifest>(&outcome)) {
        bool offered = false;
        for (std::size_t index = 0; index < checked->releases.size(); ++index) {
            const AppRelease& release = checked->releases[index];
            require(!validateRelease(release, host));
            offered = offered || release == checked->latestRelease;
            if (index > 0) {
                require(AppVersion::compare(checked->releases[index - 1].version,
                                            release.version) != VersionOrder::less);
            }
        }
        require(offered);
    }

    const auto split = bytes.find('\n');
    const std::string_view a = bytes.substr(0, split);
    const std::string_view b =
        split == std::string_view::npos ? std::string_view() : bytes.substr(split + 1);
    require(AppVersion::compare(a, b) == flipped(AppVersion::compare(b, a)));
    require(AppVersion::compare(a, a) == VersionOrder::equal);
    return 0;
}
