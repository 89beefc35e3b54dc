// daywyn-transcribe: the speech recogniser behind `daywyn transcribe`, a program of its
// own so that pocketsphinx and the maths libraries it needs are mapped only by the one
// verb that decodes audio, not by every `daywyn` run.
//
// Usage (by daywyn only): daywyn-transcribe NOW transcribe [OPTIONS] FILE
// NOW is the caller's instant in ISO 8601, so that both agree on "today".
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "voice/sphinx/TranscribeCommand.h"

int main(int argc, char** argv) {
    const auto now = argc > 2 ? daywyn::parseIsoText(argv[1]) : std::nullopt;
    if (!now) {
        std::fprintf(stderr, "daywyn-transcribe is run by 'daywyn transcribe'; use that.\n");
        return 2;
    }
    const std::vector<std::string> args(argv + 2, argv + argc);
    return daywyn::runTranscribeCommand(args, *now, daywyn::Calendar(), std::cout, std::cerr);
}
