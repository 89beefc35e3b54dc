#include "base/Json.h"

namespace daywyn {

void useTwoSpaceIndent(PrettyJsonWriter& writer) {
    writer.SetIndent(' ', 2);
}

} // namespace daywyn
