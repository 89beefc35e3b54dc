#include "voice/sphinx/PocketSphinxDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <pocketsphinx.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace daywyn {

namespace {

bool exists(const std::string& path) {
    struct stat info {};
    return !path.empty() && ::stat(path.c_str(), &info) == 0;
}

} // namespace

struct PocketSphinxDecoder::Handle {
    ps_decoder_t* decoder = nullptr;
    ~Handle() {
        if (decoder) {
            ps_free(decoder);
        }
    }
};

PocketSphinxDecoder::PocketSphinxDecoder(std::unique_ptr<Handle> handle)
    : handle_(std::move(handle)) {}

PocketSphinxDecoder::~PocketSphinxDecoder() {
    if (inUtterance_) {
        ps_end_utt(handle_->decoder);
    }
}

Result<std::unique_ptr<PocketSphinxDecoder>> PocketSphinxDecoder::open(const SpeechModel& model) {
    if (!model.isInstalled()) {
        return Result<std::unique_ptr<PocketSphinxDecoder>>::failure(
            "The speech model is not installed (apt install pocketsphinx-en-us).");
    }
    // Silence is kept (-remove_silence no) so that pauses between tasks keep their
    // length in the word times; the log goes nowhere, since the decoder chatters.
    std::vector<std::string> words = {
        "-hmm",   model.acousticModel, "-dict",           model.dictionary,
        "-lm",    model.languageModel, "-remove_silence", "no",
        "-logfn", "/dev/null"};
    words.insert(words.end(), model.options.begin(), model.options.end());
    std::vector<char*> argv;
    for (auto& w : words) {
        argv.push_back(w.data());
    }
    cmd_ln_t* config =
        cmd_ln_parse_r(nullptr, ps_args(), static_cast<int32>(argv.size()), argv.data(), TRUE);
    if (!config) {
        return Result<std::unique_ptr<PocketSphinxDecoder>>::failure(
            "The speech recogniser could not be configured.");
    }
    auto handle = std::make_unique<Handle>();
    handle->decoder = ps_init(config);
    cmd_ln_free_r(config);
    if (!handle->decoder) {
        return Result<std::unique_ptr<PocketSphinxDecoder>>::failure(
            "The speech model could not be loaded.");
    }
    if (!model.taskLanguageModel.empty() && exists(model.taskLanguageModel)) {
        // The task phrases weigh in alongside the generic model rather than replace
        // it, so words outside the task vocabulary can still be heard.
        ps_decoder_t* ps = handle->decoder;
        ngram_model_t* generic = ps_get_lm(ps, ps_get_search(ps));
        ngram_model_t* tasks = ngram_model_read(ps_get_config(ps), model.taskLanguageModel.c_str(),
                                                NGRAM_AUTO, ps_get_logmath(ps));
        if (generic && tasks) {
            ngram_model_t* models[] = {ngram_model_retain(generic), tasks};
            char genericName[] = "generic";
            char tasksName[] = "tasks";
            char* names[] = {genericName, tasksName};
            const float32 weights[] = {1.0F - model.taskWeight, model.taskWeight};
            ngram_model_t* mixture =
                ngram_model_set_init(ps_get_config(ps), models, names, weights, 2);
            if (mixture && ps_set_lm(ps, "mixture", mixture) == 0) {
                ps_set_search(ps, "mixture");
            }
        } else if (tasks) {
            ngram_model_free(tasks);
        }
    }
    return std::unique_ptr<PocketSphinxDecoder>(new PocketSphinxDecoder(std::move(handle)));
}

void PocketSphinxDecoder::startUtterance() {
    if (inUtterance_) {
        ps_end_utt(handle_->decoder);
    }
    ps_start_utt(handle_->decoder);
    inUtterance_ = true;
}

void PocketSphinxDecoder::process(std::span<const std::int16_t> samples) {
    if (!inUtterance_ || samples.empty()) {
        return;
    }
    ps_process_raw(handle_->decoder, samples.data(), samples.size(), FALSE, FALSE);
}

std::optional<std::string> spokenWord(std::string_view word) {
    if (word.empty() || word.front() == '<' || word.front() == '[' || word.starts_with("++")) {
        return std::nullopt;
    }
    if (const auto open = word.find('(');
        open != std::string_view::npos && open > 0 && word.back() == ')') {
        word = word.substr(0, open);
    }
    return std::string(word);
}

std::string PocketSphinxDecoder::partialHypothesis() {
    if (!inUtterance_) {
        return {};
    }
    int32 score = 0;
    const char* hypothesis = ps_get_hyp(handle_->decoder, &score);
    if (!hypothesis) {
        return {};
    }
    // The hypothesis is already words separated by spaces; fillers rarely appear in
    // it, but are dropped the same way as in the final segments.
    std::string text;
    std::string_view rest(hypothesis);
    while (!rest.empty()) {
        const auto space = rest.find(' ');
        const auto word = rest.substr(0, space);
        if (auto spoken = spokenWord(word)) {
            if (!text.empty()) {
                text += ' ';
            }
            text += *spoken;
        }
        if (space == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(space + 1);
    }
    return text;
}

namespace {

std::vector<TranscriptSegment> timedWords(ps_decoder_t* decoder) {
    std::vector<TranscriptSegment> segments;
    constexpr double framesPerSecond = 100.0;
    for (ps_seg_t* seg = ps_seg_iter(decoder); seg; seg = ps_seg_next(seg)) {
        int startFrame = 0;
        int endFrame = 0;
        ps_seg_frames(seg, &startFrame, &endFrame);
        if (auto word = spokenWord(ps_seg_word(seg))) {
            segments.push_back({*word, startFrame / framesPerSecond,
                                (endFrame - startFrame + 1) / framesPerSecond});
        }
    }
    return segments;
}

} // namespace

std::vector<TranscriptSegment> PocketSphinxDecoder::partialSegments() {
    if (!inUtterance_) {
        return {};
    }
    // The segment iterator walks the best path of the hypothesis just computed.
    int32 score = 0;
    if (!ps_get_hyp(handle_->decoder, &score)) {
        return {};
    }
    return timedWords(handle_->decoder);
}

std::vector<TranscriptSegment> PocketSphinxDecoder::finishUtterance() {
    if (!inUtterance_) {
        return {};
    }
    ps_end_utt(handle_->decoder);
    inUtterance_ = false;
    return timedWords(handle_->decoder);
}

std::vector<TranscriptSegment> decodeRecording(PocketSphinxDecoder& decoder,
                                               std::span<const std::int16_t> samples) {
    decoder.startUtterance();
    for (std::size_t at = 0; at < samples.size(); at += PocketSphinxDecoder::chunkSamples) {
        decoder.process(
            samples.subspan(at, std::min(PocketSphinxDecoder::chunkSamples, samples.size() - at)));
    }
    return decoder.finishUtterance();
}

} // namespace daywyn
