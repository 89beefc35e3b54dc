// Arbitrary bytes as the state file: loading never crashes or hangs, anything that
// does not load ends as the moved-aside error, and whatever loads saves and reads back
// as the same state.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "model/RecordJson.h"
#include "persistence/AtomicFile.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/StateFileDecoding.h"

namespace {

using namespace daywyn;

const std::string& folder() {
    static const std::string path = [] {
        std::string pattern = "/tmp/daywyn-fuzz.XXXXXX";
        if (!::mkdtemp(pattern.data())) {
            std::abort();
        }
        return pattern;
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Instant fixed{1772611200.0};
    auto fs = std::make_shared<PosixFileSystem>();
    const std::string file = folder() + "/daywyn.json";
    const std::string moved = folder() + "/" + JSONTaskRepository::corruptFileName(fixed);
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (!out || std::fwrite(data, 1, size, out) != size || std::fclose(out) != 0) {
        std::abort();
    }
    JSONTaskRepository repository(
        file, fs, [fixed] { return fixed; }, [fixed] { return fixed; });
    auto loaded = repository.load();
    if (!loaded) {
        if (loaded.error() != JSONTaskRepository::corruptFileMessage(lastPathComponent(moved)) ||
            ::access(moved.c_str(), F_OK) != 0 || ::access(file.c_str(), F_OK) == 0) {
            std::abort();
        }
        ::unlink(moved.c_str());
        return 0;
    }
    if (!loaded.value()) {
        std::abort(); // the file was there
    }
    const PersistedState& state = *loaded.value();
    // The current format carries only dates the encoder can write, so it reads back
    // exactly; migrated old files may hold sessions outside the years 0000-9999 (a
    // migrated state has the current version too, so the file's own format decides).
    const auto direct =
        decodeStateFile(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!direct) {
        std::abort(); // it loaded a moment ago
    }
    if (std::holds_alternative<PersistedState>(direct.value())) {
        auto again = decodeStateFile(encodeStateFile(state));
        if (!again || !(std::get<PersistedState>(again.value()) == state)) {
            std::abort();
        }
    }
    return 0;
}
