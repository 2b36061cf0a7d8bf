#pragma once

#include "platform/Audio.h"

#include <QString>
#include <memory>
#include <vector>

// The game's short sound effects: every effect is loaded once, at first use, and each play is gated by the
// sound switch of the settings. There is no music.
class SoundFactory {
public:
    static SoundFactory& sharedInstance();
    void loadData();
    // Takes the volume of the settings into every effect at once, each at its own share of it.

    std::unique_ptr<AudioPlayer> createSoundPlayerWithFileOfType(const QString& stem, const QString& type);

    void playMenuTap() { playOn(soundPlayerMenuTap.get()); }
    void playLetterTap() { playOn(soundPlayerLetterTap.get()); }
    void playSuccess() { playOn(soundPlayerSuccess.get()); }
    void playFail() { playOn(soundPlayerFail.get()); }
    void playPurchase() { playOn(purchaseSound.get()); }
    void playTickTock() { playOn(tickTockSound.get()); }
    void playGameFinish() { playOn(gameFinishSound.get()); }
    void playGameOver() { playOn(gameOverSound.get()); }
    void playTap() { playOn(tapSound.get()); }
    void playTap2() { playOn(tapSound2.get()); }
    void playTap3() { playOn(tapSound3.get()); }
    void playIncorrect() { playOn(incorrectSound.get()); }
    void playCountdown() { playOn(countdownSound.get()); }
    void playMessageAlert() { playOn(messageAlertSound.get()); }
    void playClick1() { playOn(click1.get()); }
    void playClick2() { playOn(click2.get()); }
    void playEnterLevel() { playOn(enterLevel.get()); }
    void playExtraWord() { playOn(extraWord.get()); }
    void playFinalWord() { playOn(finalWord.get()); }
    void playFinishLevel() { playOn(finishLevel.get()); }
    void playInfo() { playOn(info.get()); }
    void playRightAnswer() { playOn(rightAnswer.get()); }
    void playWrongAnswer() { playOn(wrongAnswer.get()); }
    void playShuffle() { playOn(shuffle.get()); }
    void playMusicNote(qint64 note);

    std::unique_ptr<AudioPlayer> soundPlayerMenuTap, soundPlayerLetterTap, soundPlayerSuccess,
        soundPlayerFail, purchaseSound, tickTockSound, gameFinishSound, gameOverSound, tapSound, tapSound2,
        tapSound3, incorrectSound, countdownSound, messageAlertSound, click1, click2, enterLevel, extraWord,
        finalWord, finishLevel, info, n1, n2, n3, n4, n5, n6, n7, rightAnswer, wrongAnswer, shuffle;

private:
    void playOn(AudioPlayer* player);
    float m_volume = 0.25f;
};
