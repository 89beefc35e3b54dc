#include "voice/sphinx/TranscribeCommand.h"

#include <fstream>
#include <iterator>

#include "base/Json.h"
#include "parsing/VoiceTaskParser.h"
#include "shell/DayText.h"
#include "voice/PauseMarkers.h"
#include "voice/WavAudio.h"
#include "voice/sphinx/PocketSphinxDecoder.h"

namespace daywyn {

namespace {

constexpr const char* kHelp =
    "Usage: daywyn transcribe [--tasks] [--json] FILE\n\n"
    "Turns a voice memo into text on this computer, with the recogniser that voice\n"
    "capture uses. FILE is a WAV recording (16-bit PCM; 16 kHz mono is best, other\n"
    "rates and channel counts are converted). The transcript is printed on one line,\n"
    "with \" | \" where the speaker paused between tasks.\n\n"
    "  --tasks   also list the tasks that voice capture would make of it\n"
    "  --json    print an object with transcript, segments (and candidates)\n";

int usage(std::ostream& err, const std::string& sentence) {
    err << "daywyn transcribe: " << sentence << " Run 'daywyn transcribe --help' for usage.\n";
    return 2;
}

void writeOptionalDate(CompactJsonWriter& w, const char* key, const std::optional<Instant>& at) {
    writeKey(w, key);
    if (at) {
        writeDate(w, *at, DateCoding::iso8601);
    } else {
        w.Null();
    }
}

} // namespace

int runTranscribeCommand(const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar, std::ostream& out, std::ostream& err) {
    bool tasks = false;
    bool json = false;
    bool onlyWords = false;
    std::vector<std::string> files;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!onlyWords && (a == "--help" || a == "-h")) {
            out << kHelp;
            return 0;
        }
        if (!onlyWords && a == "--") {
            onlyWords = true;
        } else if (!onlyWords && a == "--tasks") {
            tasks = true;
        } else if (!onlyWords && a == "--json") {
            json = true;
        } else if (!onlyWords && a.size() > 1 && a[0] == '-') {
            return usage(err, "Unknown option " + a + ".");
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 1) {
        return usage(err, "Give one WAV file.");
    }

    std::ifstream file(files[0], std::ios::binary);
    if (!file) {
        err << "Daywyn could not open " << files[0] << ".\n";
        return 1;
    }
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                          std::istreambuf_iterator<char>()};
    auto audio = recognizerAudioFromWav(bytes);
    if (!audio) {
        err << audio.error() << "\n";
        return 1;
    }
    const SpeechModel model = SpeechModel::installed();
    auto decoder = PocketSphinxDecoder::open(model);
    if (!decoder) {
        err << "Daywyn could not transcribe " << files[0] << ": " << decoder.error() << "\n";
        return 1;
    }
    const auto segments = decodeRecording(*decoder.value(), audio.value());
    const std::string transcript = transcriptWithPauseMarkers(segments);
    const auto candidates = tasks ? VoiceTaskParser::candidates(transcript, now, calendar)
                                  : std::vector<VoiceTaskCandidate>{};

    if (json) {
        JsonBuffer buffer;
        CompactJsonWriter w(buffer);
        w.StartObject();
        writeKey(w, "transcript");
        writeString(w, transcript);
        writeKey(w, "segments");
        w.StartArray();
        for (const auto& s : segments) {
            w.StartObject();
            writeKey(w, "text");
            writeString(w, s.text);
            writeKey(w, "timestamp");
            w.Double(s.timestamp);
            writeKey(w, "duration");
            w.Double(s.duration);
            w.EndObject();
        }
        w.EndArray();
        if (tasks) {
            writeKey(w, "candidates");
            w.StartArray();
            for (const auto& c : candidates) {
                w.StartObject();
                writeKey(w, "title");
                writeString(w, c.title);
                writeOptionalDate(w, "scheduledDay", c.scheduledDay);
                writeOptionalDate(w, "scheduledStart", c.scheduledStart);
                w.EndObject();
            }
            w.EndArray();
        }
        w.EndObject();
        out << std::string(buffer.GetString(), buffer.GetSize()) << "\n";
        return 0;
    }

    out << transcript << "\n";
    if (transcript.empty()) {
        err << "No words were recognised in " << files[0] << ".\n";
    }
    if (tasks) {
        int n = 0;
        for (const auto& c : candidates) {
            out << ++n << ". " << c.title;
            if (c.scheduledStart) {
                out << "  (" << relativeDayText(*c.scheduledStart, now, calendar) << " "
                    << timeOfDayText(*c.scheduledStart, calendar) << ")";
            } else if (c.scheduledDay) {
                out << "  (" << relativeDayText(*c.scheduledDay, now, calendar) << ")";
            }
            out << "\n";
        }
    }
    return 0;
}

} // namespace daywyn
