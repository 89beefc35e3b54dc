#include "support/FakeMicrophoneSource.h"

namespace daywyn::test {

std::optional<std::string> FakeMicrophoneSource::start(BufferHandler handler) {
    ++starts;
    if (startFailure) {
        return startFailure;
    }
    handler_ = std::move(handler);
    running = true;
    return std::nullopt;
}

void FakeMicrophoneSource::stop() {
    ++stops;
    running = false;
    handler_ = {};
}

void FakeMicrophoneSource::deliver(const std::vector<std::int16_t>& samples) {
    if (running && handler_) {
        handler_(samples);
    }
}

std::vector<std::int16_t> FakeMicrophoneSource::bufferWithPeak(std::int16_t peak,
                                                               std::size_t count) {
    std::vector<std::int16_t> samples(count, 0);
    samples[count / 2] = peak;
    return samples;
}

} // namespace daywyn::test
