#pragma once

namespace daywyn::voicetext {

// The sentences voice capture shows. Where a sentence names the other desktop's
// settings, it names this desktop's privacy settings instead.
inline constexpr const char* permissionsReady =
    "Microphone and Speech Recognition access are ready.";
inline constexpr const char* permissionsNotRequested =
    "Voice permissions have not been requested yet.";
inline constexpr const char* permissionsNeedAttention =
    "Voice access needs attention in your desktop's privacy settings.";
inline constexpr const char* microphoneRequired =
    "Microphone access is required for voice capture. You can enable it in your desktop's "
    "privacy settings.";
inline constexpr const char* speechRequired =
    "Speech Recognition access is required for voice capture. You can enable it in your "
    "desktop's privacy settings.";
inline constexpr const char* couldNotStart = "Voice capture could not start: ";
inline constexpr const char* notAvailable = "Speech Recognition is not currently available.";
inline constexpr const char* stopped = "Voice capture stopped: ";
inline constexpr const char* endedBeforeFinal =
    "Speech Recognition ended before a final update; review the captured text before saving.";
inline constexpr const char* finalWasEmpty =
    "The final speech update was empty; review the earlier captured text before saving.";
inline constexpr const char* nothingRecognized =
    "No task titles were recognized. Try again and speak after Listening appears.";
inline constexpr const char* finalDidNotArrive =
    "The final speech update did not arrive; review the captured text before saving.";

} // namespace daywyn::voicetext
