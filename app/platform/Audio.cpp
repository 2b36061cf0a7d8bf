#include "Audio.h"

#include <QFile>
#include <QSoundEffect>
#include <QUrl>

namespace {
class SoundEffectPlayer : public AudioPlayer {
public:
    explicit SoundEffectPlayer(const QString& path) {
        if (QFile::exists(path)) {
            m_effect.setSource(QUrl(QStringLiteral("qrc") + path));
        } else {
            qWarning("The sound %s is missing", qPrintable(path));
        }
    }
    void prepareToPlay() override {}
    void setNumberOfLoops(int loops) override { m_effect.setLoopCount(loops <= 0 ? 1 : loops + 1); }
    void setVolume(float volume) override { m_effect.setVolume(volume); }
    float volume() const override { return m_effect.volume(); }
    void play() override { m_effect.play(); }
    bool isPlaying() const override { return m_effect.isPlaying(); }

private:
    QSoundEffect m_effect;
};
} // namespace

std::unique_ptr<AudioPlayer> QtAudio::createPlayer(const QString& path) {
    return std::make_unique<SoundEffectPlayer>(path);
}
