#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace daywyn {

// The default audio input, delivering 16 kHz mono 16-bit buffers.
class MicrophoneSource {
public:
    using BufferHandler = std::function<void(std::span<const std::int16_t>)>;

    virtual ~MicrophoneSource() = default;
    // Whether a default input device exists (what counts as microphone permission).
    virtual bool hasInputDevice() const = 0;
    // Starts capturing; buffers go to `handler` on the owner's thread. The
    // description of the failure when capture cannot start.
    virtual std::optional<std::string> start(BufferHandler handler) = 0;
    // Stops capturing; no buffer is delivered afterwards. Harmless when stopped.
    virtual void stop() = 0;
};

} // namespace daywyn
