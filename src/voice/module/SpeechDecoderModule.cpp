// daywyn-speech.so: the speech decoder for the desktop app. pocketsphinx brings BLAS,
// LAPACK and Fortran's runtime; the app loads this module with dlopen when voice capture
// first needs the decoder, so that no start-up maps them.
#include <memory>
#include <string>

#include "voice/sphinx/PocketSphinxDecoder.h"

// Opens a decoder for `model` (about a second): the decoder, or null with `failure` set to
// a sentence for the user.
extern "C" __attribute__((visibility("default"))) daywyn::SpeechDecoder*
daywynOpenSpeechDecoder(const daywyn::SpeechModel& model, std::string& failure) {
    auto opened = daywyn::PocketSphinxDecoder::open(model);
    if (!opened) {
        failure = opened.error();
        return nullptr;
    }
    return opened.value().release();
}
