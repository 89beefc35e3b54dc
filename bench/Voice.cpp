// Speech recognition speed on one core: how much faster than real time a ten-second
// spoken list decodes, and how long the final transcript takes once Stop is pressed
// (the end of the utterance, after the decoder has kept up with the speaker). Each is
// measured with the generic language model alone (0) and mixed with the task model (1).
// The recording is spoken by flite's "rms" voice into $DAYWYN_BENCH_DIR on first use.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "voice/WavAudio.h"
#include "voice/sphinx/PocketSphinxDecoder.h"

namespace daywyn {
namespace {

const std::vector<std::int16_t>& tenSecondList() {
    static const std::vector<std::int16_t> audio = [] {
        const char* dir = std::getenv("DAYWYN_BENCH_DIR");
        const std::filesystem::path folder = dir ? dir : "/var/tmp/daywyn-bench";
        std::filesystem::create_directories(folder);
        const auto wav = folder / "spoken-list.wav";
        if (!std::filesystem::exists(wav)) {
            const std::string f = folder.string();
            const std::string script =
                "set -e; cd '" + f +
                "'; "
                "flite -voice rms -t 'call the dentist at five pm' -o a.wav; "
                "flite -voice rms -t 'buy milk and bread' -o b.wav; "
                "flite -voice rms -t 'write the report for twenty minutes' -o c.wav; "
                "sox -D -n -r 16000 -c 1 -b 16 gap.wav trim 0 1.5; "
                "sox -D a.wav gap.wav b.wav gap.wav c.wav -r 16000 -c 1 -b 16 joined.wav; "
                "sox -D joined.wav spoken-list.wav pad 0.5 0.5";
            if (std::system(("sh -c \"" + script + "\"").c_str()) != 0) {
                throw std::runtime_error("flite and sox are needed for the voice benchmark");
            }
        }
        std::ifstream file(wav, std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                              std::istreambuf_iterator<char>()};
        return recognizerAudioFromWav(bytes).value();
    }();
    return audio;
}

std::unique_ptr<PocketSphinxDecoder> openDecoder(bool withTaskModel) {
    SpeechModel model = SpeechModel::installed();
    if (!withTaskModel) {
        model.taskLanguageModel.clear();
    }

    auto opened = PocketSphinxDecoder::open(model);
    if (!opened) {
        throw std::runtime_error(opened.error());
    }
    return std::move(opened.value());
}

void feed(PocketSphinxDecoder& decoder, std::span<const std::int16_t> audio) {
    for (std::size_t at = 0; at < audio.size(); at += PocketSphinxDecoder::chunkSamples) {
        decoder.process(
            audio.subspan(at, std::min(PocketSphinxDecoder::chunkSamples, audio.size() - at)));
    }
}

void BM_DecodeSpokenList(benchmark::State& state) {
    const auto& audio = tenSecondList();
    auto decoder = openDecoder(state.range(0) != 0);
    std::size_t words = 0;
    for (auto _ : state) {
        decoder->startUtterance();
        feed(*decoder, audio);
        words = decoder->finishUtterance().size();
        benchmark::DoNotOptimize(words);
    }
    const double seconds = double(audio.size()) / recognizerSampleRate;
    state.counters["audio_s"] = seconds;
    state.counters["words"] = double(words);
    // Seconds of audio decoded per second of processor time: times faster than real time.
    state.counters["x_realtime"] =
        benchmark::Counter(seconds * double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DecodeSpokenList)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FinalTranscriptAfterStop(benchmark::State& state) {
    const auto& audio = tenSecondList();
    auto decoder = openDecoder(state.range(0) != 0);
    // The last buffer the microphone delivered is still decoded after Stop.
    const std::size_t tail = PocketSphinxDecoder::chunkSamples;
    const std::span<const std::int16_t> all(audio);
    for (auto _ : state) {
        state.PauseTiming();
        decoder->startUtterance();
        feed(*decoder, all.first(all.size() - tail));
        state.ResumeTiming();
        decoder->process(all.last(tail));
        benchmark::DoNotOptimize(decoder->finishUtterance());
    }
}
// A fixed count: each iteration first decodes ten untimed seconds of speech.
BENCHMARK(BM_FinalTranscriptAfterStop)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
} // namespace daywyn
