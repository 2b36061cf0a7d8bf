#include "Audio.h"

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>
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
// Without an audio output every effect stays silent, and says so once instead of at each load.
class SilentPlayer : public AudioPlayer {
public:
    void prepareToPlay() override {}
    void setNumberOfLoops(int) override {}
    void setVolume(float volume) override { m_volume = volume; }
    float volume() const override { return m_volume; }
    void play() override {}
    bool isPlaying() const override { return false; }

private:
    float m_volume = 1.0f;
};
} // namespace

std::unique_ptr<AudioPlayer> QtAudio::createPlayer(const QString& path) {
    static const bool hasOutput = [] {
        const bool found = !QMediaDevices::defaultAudioOutput().isNull();
        if (!found) {
            qInfo("No audio output was found: the game plays without sound.");
        }
        return found;
    }();
    if (!hasOutput) {
        return std::make_unique<SilentPlayer>();
    }
    return std::make_unique<SoundEffectPlayer>(path);
}
