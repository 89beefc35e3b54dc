// Arbitrary bytes as a task on the sync server: libical's parse and Daywyn's reading of
// the VTODO never crash or hang, and a task read from them is written back over the same
// text and reads back as itself (nothing of it is lost on the way to the server).
#include <cstdint>
#include <cstdlib>
#include <string>

#include "sync/TaskMerge.h"
#include "sync/ical/IcalTaskCoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace daywyn;
    static const Calendar calendar("America/New_York");
    static const sync::IcalTaskCoding coding;
    const std::string text(reinterpret_cast<const char*>(data), size);
    auto decoded = coding.decode(text, calendar);
    if (!decoded) {
        return 0;
    }
    const TaskItem& task = decoded->task;
    const std::string written = coding.encode(task, text, task.createdAt, calendar);
    auto again = coding.decode(written, calendar);
    if (!again || !sync::sameAtWholeSeconds(again->task, sync::atWholeSeconds(task))) {
        std::abort();
    }
    return 0;
}
