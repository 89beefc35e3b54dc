#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "voice/MicrophoneSource.h"

namespace daywyn::test {

// A microphone that exists or not, fails to start on demand, and delivers the buffers
// the test hands it.
class FakeMicrophoneSource : public MicrophoneSource {
public:
    bool inputDevice = true;
    std::optional<std::string> startFailure;
    bool running = false;
    int starts = 0;
    int stops = 0;

    bool hasInputDevice() const override { return inputDevice; }
    std::optional<std::string> start(BufferHandler handler) override;
    void stop() override;

    // Delivers one buffer while running (a stopped microphone delivers nothing).
    void deliver(const std::vector<std::int16_t>& samples);
    // A buffer of `count` samples whose loudest one is `peak`.
    static std::vector<std::int16_t> bufferWithPeak(std::int16_t peak, std::size_t count = 1024);

private:
    BufferHandler handler_;
};

} // namespace daywyn::test
