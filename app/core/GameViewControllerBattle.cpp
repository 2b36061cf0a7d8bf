// The play screen's battle mode: a clock of 40 one-second ticks over the level, leaving counts as a wrong
// answer, and the result goes to the screen that opened the level.
#include "BattleDelegate.h"
#include "GameViewController.h"
#include "LevelManager.h"
#include "LevelsInfoReader.h"

#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/Random.h"
#include "screens/Util.h"

qint64 BattleLevels::newBattleLevel() {
    const qint64 current = LevelManager::sharedInstance().currentLevel();
    // A player who has passed no level yet has nothing to be asked about but the first ones after the two
    // that the game gives away.
    const qint64 pick = current > 0 ? static_cast<qint64>(arc4random() % static_cast<quint64>(current)) : 0;
    return pick + 2;
}

GameViewController* BattleLevels::startBattleGame(qint64 level, qint64 battleGameType,
                                                  BattleDelegate* delegate) {
    GamePtr game = Game::initWithGameLevel(level);
    // Both players rebuild the same level from its number alone.
    auto& reader = LevelsInfoReader::sharedInstance();
    LevelInfoPtr info = reader.getBattleLevelInfo(level);
    if (!info) {
        // The packs are read when the rounds are first shown; a battle may come before that.
        reader.loadAllPacksLevelsWithEnc(QStringLiteral("ok"), false);
        info = reader.getBattleLevelInfo(level);
    }
    game->setLevelInfo(info);
    auto* play = new GameViewController();
    play->setGame(game);
    play->setBattleGameType(battleGameType);
    play->setBattleDelegate(delegate);
    Platform::shared().navigator().presentViewController(play);
    return play;
}

void GameViewController::setupBattle() {
    m_battleQuestionText = Game::getGameQuesWithId(game ? game->gameId : 0);
    m_battleSecondsText = QString::number(kBattleTimeLimit);
    m_battleBarVisible = true;
    m_timeViewsVisible = false;
    emit battleViewsChanged();
    emit timerViewsChanged();
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("عليك الاجابة على السؤال ضمن %1 ثانية وبعدها سينتقل الدور للاعب الاخر")
            .arg(kBattleTimeLimit),
        m_battleQuestionText, [] {});
    // The clock runs under the message: reading the rule costs play time.
    battleTick = kBattleTimeLimit;
    battleTimer = Timer::scheduledTimerWithTimeInterval(1.0, true, [this] { onBattleTimerTick(); });
    battleTimer->fire();
}

void GameViewController::onBattleTimerTick() {
    m_battleSecondsText = QString::number(battleTick);
    emit battleViewsChanged();
    const qint64 shown = battleTick;
    --battleTick;
    if (shown >= 2) {
        return;
    }
    stopBattleTimer();
    m_battleOver = true;
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("لم تعرف الاجابة على السؤال وسينتقل الدور الى اللاعب الخصم واعتمادا على اجابته ستحدد "
                       "نتيجة المعركة"),
        QStringLiteral("لم تجب ضمن الوقت المحدد"), [this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                finishBattle(0);
            }
        });
}

void GameViewController::closeBattleButtonTapped() {
    const QString text =
        battleGameType == 1
            ? QStringLiteral(
                  "هل تريد الخروج؟ عند أي خروج من المعركة ستعتبر انك لم تجب على السؤال وسيتنقل الدور "
                  "للاعب الخصم واعتمادا على اجابته ستتحدد نتيجة المعركة ")
            : QStringLiteral("هل تريد الخروج من المعركة؟ عندها ستعتبر انك لم تجب على السؤال و ستتحدد نتيجة "
                             "المعركة مباشرة ");
    Util::showMessageWithTitleOnOk(text, QStringLiteral("تأكيد"),
                                   [this, alive = std::weak_ptr<int>(m_alive)] {
                                       if (alive.expired()) {
                                           return;
                                       }
                                       stopBattleTimer();
                                       finishBattle(0);
                                   });
}

void GameViewController::battleSolved() {
    // A level solved after the time ran out, or after leaving was confirmed, changes nothing.
    if (m_battleOver) {
        return;
    }
    m_battleOver = true;
    stopBattleTimer();
    const QString text =
        battleGameType == 1
            ? QStringLiteral(
                  "ممتاز لقد عرفت الاجابة الصحيحة والان سينتقل الدور الى اللاعب الخصم واعتمادا على "
                  "اجابته ستحدد نتيجة المعركة")
            : QStringLiteral("ممتاز لقد عرفت الاجابة الصحيحة والان ستحدد نتيجة المعركة");
    Util::showMessageWithTitleOnDismiss(text, QStringLiteral("اجابة صحيحة"),
                                        [this, alive = std::weak_ptr<int>(m_alive)] {
                                            if (!alive.expired()) {
                                                finishBattle(1);
                                            }
                                        });
}

void GameViewController::stopBattleTimer() {
    if (battleTimer) {
        battleTimer->invalidate();
        battleTimer.reset();
    }
}

void GameViewController::finishBattle(qint64 score) {
    // The screen closes first; the opener then carries the battle on.
    const qint64 level = game ? game->gameLevel : 0;
    BattleDelegate* delegate = battleDelegate;
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
    if (delegate) {
        delegate->playerAnsweredLevelWithScore(level, score);
    }
}
