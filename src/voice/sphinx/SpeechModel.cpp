#include "voice/sphinx/SpeechModel.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>

namespace daywyn {

namespace {

bool exists(const std::string& path) {
    struct stat info {};
    return !path.empty() && ::stat(path.c_str(), &info) == 0;
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// The task model installed beside the program (…/bin/daywyn →
// …/share/daywyn/speech/tasks.lm), else the one of the build tree.
std::string findTaskLanguageModel() {
    if (auto fromEnvironment = environment("DAYWYN_TASK_LM"); !fromEnvironment.empty()) {
        return fromEnvironment == "none" ? std::string() : fromEnvironment;
    }
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        const auto installed =
            program.parent_path().parent_path() / "share" / "daywyn" / "speech" / "tasks.lm";
        if (exists(installed.string())) {
            return installed.string();
        }
    }
#ifdef DAYWYN_BUILD_TASK_LM
    if (exists(DAYWYN_BUILD_TASK_LM)) {
        return DAYWYN_BUILD_TASK_LM;
    }
#endif
    return {};
}

} // namespace

SpeechModel SpeechModel::installed() {
    std::string folder = environment("DAYWYN_SPEECH_MODEL_DIR");
    if (folder.empty()) {
        folder = DAYWYN_SPEECH_MODEL_DIR;
    }
    SpeechModel model;
    model.acousticModel = folder + "/en-us";
    model.dictionary = folder + "/cmudict-en-us.dict";
    model.languageModel = folder + "/en-us.lm.bin";
    model.taskLanguageModel = findTaskLanguageModel();
    // The second (flat) search pass, a wide top-N and an unbounded HMM count cost more
    // than half of the decoding time for little gain on short phrases.
    model.options = {"-fwdflat", "no", "-maxhmmpf", "3000", "-topn", "2"};
    // For measuring other settings ("-beam 1e-60 …"); replaces the ones above.
    if (auto options = environment("DAYWYN_SPEECH_OPTIONS"); !options.empty()) {
        model.options.clear();
        std::istringstream words(options);
        for (std::string w; words >> w;) {
            model.options.push_back(w);
        }
        if (model.options == std::vector<std::string>{"default"}) {
            model.options.clear();
        }
    }
    return model;
}

bool SpeechModel::isInstalled() const {
    return exists(acousticModel + "/mdef") && exists(dictionary) && exists(languageModel);
}

} // namespace daywyn
