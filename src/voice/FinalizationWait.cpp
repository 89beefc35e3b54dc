#include "voice/FinalizationWait.h"

namespace daywyn {

FinalizationWait::FinalizationWait(const VoiceCaptureSession& session)
    : generation_(session.generation()) {}

FinalizationWait::Outcome FinalizationWait::advance(VoiceCaptureSession& session) {
    if (session.generation() != generation_) {
        return Outcome::superseded;
    }
    if (session.hasRunningRecognition()) {
        if (waits_ < maximumWaits) {
            ++waits_;
            return Outcome::keepWaiting;
        }
        session.invalidateAfterMissingFinalResult();
        return Outcome::ready;
    }
    if (!session.didReceiveFinalResult()) {
        session.invalidateAfterMissingFinalResult();
    }
    return Outcome::ready;
}

} // namespace daywyn
