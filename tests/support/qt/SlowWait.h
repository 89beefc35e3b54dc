#pragma once

#include <functional>

#include "support/qt/QtTestSupport.h"

namespace daywyn::test {

// waitUntil with a longer safety net, for work that loads the speech model or speaks
// a recording in real time on a busy two-core machine.
inline bool waitLongUntil(const std::function<bool()>& condition, int fiveSecondSpans = 8) {
    for (int i = 0; i < fiveSecondSpans; ++i) {
        if (waitUntil(condition)) {
            return true;
        }
    }
    return false;
}

} // namespace daywyn::test
