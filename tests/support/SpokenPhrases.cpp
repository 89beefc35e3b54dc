#include "support/SpokenPhrases.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/Process.h"

namespace daywyn::test {

namespace {

void run(const std::vector<std::string>& argv) {
    const auto result = runProcess(argv);
    if (result.status != 0) {
        ADD_FAILURE() << argv[0] << " failed: " << result.err;
    }
}

std::string speak(const std::string& folder, const std::string& text, int index) {
    const std::string raw = folder + "/raw-" + std::to_string(index) + ".wav";
    const std::string wav = folder + "/phrase-" + std::to_string(index) + ".wav";
    run({"/usr/bin/flite", "-voice", "rms", "-t", text, "-o", raw});
    run({"/usr/bin/sox", "-D", raw, "-r", "16000", "-c", "1", "-b", "16", wav});
    return wav;
}

} // namespace

bool canMakeSpokenPhrases() {
    return std::filesystem::exists("/usr/bin/flite") && std::filesystem::exists("/usr/bin/sox");
}

std::string spokenPhrase(const std::string& text) {
    return speak(makeTempFolder(), text, 0);
}

std::string spokenList(const std::vector<std::string>& phrases, double pauseSeconds) {
    const std::string folder = makeTempFolder();
    std::vector<std::string> argv = {"/usr/bin/sox", "-D"};
    const std::string silence = folder + "/silence.wav";
    run({"/usr/bin/sox", "-D", "-n", "-r", "16000", "-c", "1", "-b", "16", silence, "trim", "0",
         std::to_string(pauseSeconds)});
    for (std::size_t i = 0; i < phrases.size(); ++i) {
        if (i > 0) {
            argv.push_back(silence);
        }
        argv.push_back(speak(folder, phrases[i], static_cast<int>(i)));
    }
    const std::string out = folder + "/list.wav";
    argv.push_back(out);
    run(argv);
    return out;
}

std::string goForwardRecording() {
    const std::string out = makeTempFolder() + "/goforward.wav";
    run({"/usr/bin/sox", "-D", "-r", "16000", "-e", "signed", "-b", "16", "-c", "1",
         "/usr/share/pocketsphinx/test/data/goforward.raw", out});
    return out;
}

} // namespace daywyn::test
