#pragma once

#include <string>
#include <vector>

namespace daywyn::test {

// Recordings made at test time with flite's "rms" voice (the one the recogniser reads
// well), converted to 16 kHz mono 16-bit without dither so they are the same on every
// run. Each returns the path of a WAV file in a fresh temporary folder.
std::string spokenPhrase(const std::string& text);
// The phrases one after another with `pauseSeconds` of silence between them.
std::string spokenList(const std::vector<std::string>& phrases, double pauseSeconds);
// pocketsphinx's own test recording "go forward ten meters" as a WAV file.
std::string goForwardRecording();
// Whether flite and sox are installed (the voice tests are skipped otherwise).
bool canMakeSpokenPhrases();

} // namespace daywyn::test
