#pragma once

#include <functional>

#include "base/Instant.h"

namespace daywyn {

// Where "now" comes from. The app's composition root holds the one real clock (the
// wall clock) and hands it down; tests hand a fixed or stepping one.
using Clock = std::function<Instant()>;

} // namespace daywyn
