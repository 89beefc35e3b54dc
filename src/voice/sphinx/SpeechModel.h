#pragma once

#include <string>
#include <vector>

namespace daywyn {

// Where the US English speech model and our task-phrase language model live.
struct SpeechModel {
    std::string acousticModel;     // folder with mdef, means, …
    std::string dictionary;        // pronunciations
    std::string languageModel;     // the generic model (en-us.lm.bin)
    std::string taskLanguageModel; // ARPA text; empty: the generic model alone
    // Share of the task model in the mixture with the generic one (0 … 1).
    float taskWeight = 0.7F;
    // Further decoder options ("-beam", "1e-40", …), after ours.
    std::vector<std::string> options;

    // The installed model: $DAYWYN_SPEECH_MODEL_DIR or Debian's pocketsphinx-en-us
    // folder, with the task model found beside the program (or $DAYWYN_TASK_LM).
    static SpeechModel installed();
    // Whether the acoustic model, dictionary and generic language model exist.
    bool isInstalled() const;
};

} // namespace daywyn
