#pragma once

#include <memory>

#include "reminders/qt/ReminderChime.h"

class QSoundEffect;

namespace daywyn {

// Daywyn's own chime (qrc:/daywyn/sounds/chime.wav) through Qt Multimedia. Loaded on
// first use; without an audio device it stays silent.
class SoundEffectChime : public ReminderChime {
public:
    SoundEffectChime();
    ~SoundEffectChime() override;
    void play() override;
    void stop() override;

private:
    std::unique_ptr<QSoundEffect> effect_;
};

} // namespace daywyn
