#pragma once

#include <cstdint>

#include "voice/VoiceCaptureSession.h"

namespace daywyn {

// The review's bounded wait for the final result after Stop: checked at once and then
// every 25 ms while the capture's generation is unchanged and its recognition still
// runs, giving up after the 39th wait (just under one second).
class FinalizationWait {
public:
    static constexpr int stepMilliseconds = 25;
    static constexpr int maximumWaits = 39;

    enum class Outcome {
        // Wait another step, then call advance() again.
        keepWaiting,
        // The transcript that stands is ready for review (a missing final result has
        // been turned into the session's notice).
        ready,
        // A new capture began meanwhile: this wait is moot.
        superseded,
    };

    // Remembers the session's generation; call after the session's stop().
    explicit FinalizationWait(const VoiceCaptureSession& session);

    Outcome advance(VoiceCaptureSession& session);
    int waits() const { return waits_; }

private:
    std::uint64_t generation_;
    int waits_ = 0;
};

} // namespace daywyn
