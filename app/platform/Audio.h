#pragma once

#include <QString>
#include <memory>

// One short sound effect, loaded once and played on demand.
class AudioPlayer {
public:
    virtual ~AudioPlayer() = default;
    virtual void prepareToPlay() = 0;
    virtual void setNumberOfLoops(int loops) = 0;
    virtual void setVolume(float volume) = 0;
    virtual float volume() const = 0;
    virtual void play() = 0;
    virtual bool isPlaying() const = 0;
};

// Makes players for the game's sound resources.
class Audio {
public:
    virtual ~Audio() = default;
    // A player for the resource at `path` (":/sounds/NAME.wav"); a missing file gives a player that stays
    // silent.
    virtual std::unique_ptr<AudioPlayer> createPlayer(const QString& path) = 0;
};

// Qt Multimedia's low-latency effects (uncompressed WAV).
class QtAudio : public Audio {
public:
    std::unique_ptr<AudioPlayer> createPlayer(const QString& path) override;
};
