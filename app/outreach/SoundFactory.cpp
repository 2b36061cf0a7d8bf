#include "SoundFactory.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "progress/SettingsManager.h"

SoundFactory& SoundFactory::sharedInstance() {
    return Shared<SoundFactory>::instance();
}

std::unique_ptr<AudioPlayer> SoundFactory::createSoundPlayerWithFileOfType(const QString& stem,
                                                                           const QString& type) {
    auto player = Platform::shared().audio().createPlayer(QStringLiteral(":/sounds/%1.%2").arg(stem, type));
    player->prepareToPlay();
    player->setNumberOfLoops(0);
    player->setVolume(m_volume);
    return player;
}

void SoundFactory::loadData() {
    m_volume = SettingsManager::sharedInstance().soundVolume();
    // Every effect ships as uncompressed WAV, the one type the effect player plays without a codec; the stems
    // are the effects' names.
    const QString wav = QStringLiteral("wav");
    auto make = [&](const char* stem, float factor = 1.0f) {
        auto p = createSoundPlayerWithFileOfType(QString::fromLatin1(stem), wav);
        if (factor != 1.0f) {
            p->setVolume(m_volume * factor);
        }
        return p;
    };
    soundPlayerMenuTap = make("tap5", 0.6f);
    purchaseSound = make("iap", 0.3f);
    tickTockSound = make("ticktock");
    gameFinishSound = make("cheer1", 0.1f);
    gameOverSound = make("gameover", 0.25f);
    tapSound = make("tap1", 0.7f);
    tapSound2 = make("tap2");
    tapSound3 = make("tap3");
    incorrectSound = make("incorrect");
    countdownSound = make("countdown");
    messageAlertSound = make("message");
    click1 = make("click1");
    click2 = make("click2");
    enterLevel = make("enterlevel");
    extraWord = make("extraword");
    finalWord = make("finalword");
    finishLevel = make("finishlevel");
    info = make("info");
    n1 = make("n1");
    n2 = make("n2");
    n3 = make("n3");
    n4 = make("n4");
    n5 = make("n5");
    n6 = make("n6");
    n7 = make("n7");
    rightAnswer = make("right-answer");
    wrongAnswer = make("wrong-answer");
    shuffle = make("shuffle");
    // The letter-tap, success and fail effects have no sound of their own: their plays stay silent.
}

void SoundFactory::playOn(AudioPlayer* player) {
    if (!SettingsManager::sharedInstance().isSoundOn() || !player) {
        return;
    }
    if (player->isPlaying()) {
        // A repeat while the effect still sounds has no new effect.
        return;
    }
    player->play();
}

void SoundFactory::playMusicNote(qint64 note) {
    AudioPlayer* notes[] = {n1.get(), n2.get(), n3.get(), n4.get(), n5.get(), n6.get(), n7.get()};
    if (note >= 1 && note <= 7) {
        playOn(notes[note - 1]);
    }
}
