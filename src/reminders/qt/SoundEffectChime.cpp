#include "reminders/qt/SoundEffectChime.h"

#include <QSoundEffect>
#include <QUrl>

namespace daywyn {

SoundEffectChime::SoundEffectChime() = default;

SoundEffectChime::~SoundEffectChime() = default;

void SoundEffectChime::play() {
    if (!effect_) {
        effect_ = std::make_unique<QSoundEffect>();
        effect_->setSource(QUrl(QStringLiteral("qrc:/daywyn/sounds/chime.wav")));
        // Soft: the chime accompanies a quiet pop-out, it does not announce an alarm.
        effect_->setVolume(0.6f);
    }
    effect_->play();
}

void SoundEffectChime::stop() {
    if (effect_) {
        effect_->stop();
    }
}

} // namespace daywyn
