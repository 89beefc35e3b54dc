#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/Calendar.h"
#include "store/TodayTaskStore.h"
#include "support/FakeRepository.h"
#include "support/Process.h"
#include "support/SpokenPhrases.h"
#include "support/qt/QtTestSupport.h"
#include "support/qt/SlowWait.h"
#include "voice/WavAudio.h"
#include "voice/qt/VoiceCaptureManager.h"
#include "voice/qt/VoiceReviewController.h"

extern char** environ;

namespace daywyn {
namespace {

// A private PulseAudio server whose default source is a pipe: what the test writes
// into the pipe is what the app's microphone hears. Qt Multimedia connects to the
// server named by PULSE_SERVER, which is set before anything touches audio.
class VirtualMicrophone {
public:
    VirtualMicrophone() {
        folder_ = test::makeTempFolder();
        fifo_ = folder_ + "/microphone";
        const std::string socket = folder_ + "/native";
        test::writeFile(
            folder_ + "/default.pa",
            "load-module module-native-protocol-unix auth-anonymous=1 socket=" + socket +
                "\nload-module module-pipe-source source_name=virtual_microphone "
                "format=s16le rate=16000 channels=1 file=" +
                fifo_ + "\nset-default-source virtual_microphone\n");
        const std::string script = folder_ + "/default.pa";
        std::vector<std::string> args = {"/usr/bin/pulseaudio",
                                         "-n",
                                         "-F",
                                         script,
                                         "--daemonize=no",
                                         "--exit-idle-time=-1",
                                         "--use-pid-file=no",
                                         "--disable-shm=yes",
                                         "--log-target=stderr",
                                         "--log-level=error"};
        std::vector<char*> argv;
        for (auto& a : args) {
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        ::setenv("PULSE_RUNTIME_PATH", (folder_ + "/runtime").c_str(), 1);
        if (::posix_spawn(&pid_, argv[0], nullptr, nullptr, argv.data(), environ) != 0) {
            pid_ = 0;
            return;
        }
        for (int i = 0; i < 100 && !std::filesystem::exists(socket); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ::setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    }
    ~VirtualMicrophone() {
        if (feeder_.joinable()) {
            feeder_.join();
        }
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    bool running() const { return pid_ > 0 && std::filesystem::exists(fifo_); }

    // Speaks the samples into the microphone at the pace of real time, on a thread
    // of its own, with `silence` seconds before and after.
    void speak(std::vector<std::int16_t> samples, double silence) {
        const auto pad = static_cast<std::size_t>(silence * recognizerSampleRate);
        samples.insert(samples.begin(), pad, 0);
        samples.insert(samples.end(), pad, 0);
        feeder_ = std::thread([this, samples = std::move(samples)] {
            const int fd = ::open(fifo_.c_str(), O_WRONLY);
            if (fd < 0) {
                return;
            }
            constexpr std::size_t chunk = 1600; // 0.1 s
            for (std::size_t at = 0; at < samples.size(); at += chunk) {
                const std::size_t n = std::min(chunk, samples.size() - at);
                [[maybe_unused]] auto written = ::write(fd, samples.data() + at, n * 2);
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
            ::close(fd);
            done_ = true;
        });
    }
    bool doneSpeaking() const { return done_; }

private:
    std::string folder_;
    std::string fifo_;
    pid_t pid_ = 0;
    std::thread feeder_;
    std::atomic<bool> done_ = false;
};

TEST(VirtualMicrophone, ASpokenListThroughTheDesktopMicrophoneBecomesReviewedTasks) {
    if (!std::filesystem::exists("/usr/bin/pulseaudio") || !test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "pulseaudio, flite and sox are needed";
    }
    VirtualMicrophone microphone;
    ASSERT_TRUE(microphone.running());

    Calendar calendar;
    test::ManualClock clock{*parseIsoText("2026-03-04T08:15:00Z")};
    TodayTaskStore store(test::FakeRepository::holding(PersistedState{}), clock.now(), calendar);
    std::unique_ptr<VoiceCaptureManager> voice(VoiceCaptureManager::forThisDesktop(nullptr));
    VoiceReviewController screen(
        *voice,
        [&](const std::vector<VoiceTaskCandidate>& candidates) {
            return store.addVoiceTasks(candidates, clock.now(), calendar);
        },
        calendar, clock.function());

    screen.toggleCapture();
    ASSERT_TRUE(test::waitLongUntil([&] { return screen.phase() != "starting"; }));
    ASSERT_EQ(screen.phase(), "listening") << voice->errorMessage().toStdString();
    EXPECT_EQ(voice->permissionSummary(), "Microphone and Speech Recognition access are ready.");

    std::ifstream file(test::spokenList({"buy milk", "call the dentist at five pm"}, 2.0),
                       std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                          std::istreambuf_iterator<char>()};
    microphone.speak(recognizerAudioFromWav(bytes).value(), 0.5);
    ASSERT_TRUE(test::waitLongUntil([&] { return voice->transcript().contains("milk"); }))
        << "the words appear while speaking; audio detected: " << voice->hasDetectedAudio();
    ASSERT_TRUE(test::waitLongUntil([&] { return microphone.doneSpeaking(); }));
    EXPECT_TRUE(voice->hasDetectedAudio());
    // On a busy machine the decoder may trail the speaker (the model loads while the
    // first words queue); Stop once it has caught up, as a user would after reading
    // the words on the screen.
    ASSERT_TRUE(test::waitLongUntil([&] { return voice->transcript().endsWith("pm"); }))
        << voice->transcript().toStdString();

    screen.toggleCapture();
    ASSERT_TRUE(test::waitLongUntil([&] { return screen.isReviewing(); }));
    // Whether the final result beat the one-second wait depends on the machine's load;
    // either way the pauses are in the transcript (partial results carry word times).
    EXPECT_EQ(voice->transcript(), "buy milk | call the dentist at five pm");
    ASSERT_TRUE(screen.save());
    ASSERT_EQ(store.tasks().size(), 2u);
    EXPECT_EQ(store.tasks()[0].title, "Buy milk");
    EXPECT_EQ(store.tasks()[1].title, "Call the dentist");
}

TEST(VirtualMicrophone, WithoutAnInputDeviceTheMicrophoneSentenceShows) {
    // No PulseAudio server in the sealed test environment: no default input.
    ::setenv("PULSE_SERVER", "unix:/nonexistent/native", 1);
    std::unique_ptr<VoiceCaptureManager> voice(VoiceCaptureManager::forThisDesktop(nullptr));
    voice->preparePermissions(true);
    ASSERT_TRUE(test::waitLongUntil([&] { return !voice->isStarting(); }));
    EXPECT_FALSE(voice->isRecording());
    EXPECT_EQ(voice->errorMessage(),
              "Microphone access is required for voice capture. You can enable it in your "
              "desktop's privacy settings.");
    EXPECT_TRUE(voice->shouldOfferMicrophoneSettings());
}

} // namespace
} // namespace daywyn
