#include "LevelSuccessViewController.h"

#include "GameViewController.h"
#include "RoundFinishViewController.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/InterstitialManager.h"
#include "outreach/ShareManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/CreditsManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

LevelSuccessViewController::LevelSuccessViewController(QObject* parent)
    : ViewController(QStringLiteral("LevelSuccessViewController"), parent) {}

LevelSuccessViewController::~LevelSuccessViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

QString LevelSuccessViewController::solutionText() const {
    const auto info = game ? game->levelInfo() : nullptr;
    return info ? info->fullSolution : QString();
}

QString LevelSuccessViewController::titleText() const {
    return type == 3 ? QStringLiteral("أنهيت الجولة!") : QStringLiteral("أحسنت!");
}

QString LevelSuccessViewController::nextButtonText() const {
    switch (type) {
    case 0:
        return QStringLiteral("المرحلة التالية");
    case 3:
        return QStringLiteral("جائزة الجولة");
    default:
        return QStringLiteral("المراحل");
    }
}

void LevelSuccessViewController::viewDidAppear() {
    if (adDisplayed) {
        return;
    }
    adDisplayed = true;
    // The steps run also when the screen has gone meanwhile, so the progress display never stays up.
    Util::delayCallbackForTotalSeconds(
        [] {
            Platform::shared().progressHud().showWithMaskType(ProgressHud::Black);
            Util::delayCallbackForTotalSeconds(
                [] {
                    Platform::shared().progressHud().dismiss();
                    auto& ads = InterstitialManager::sharedInstance();
                    ads.displayInterstitialAd();
                    ads.resetActionCount();
                },
                kAdDelaySeconds);
        },
        kAdDelaySeconds);
}

void LevelSuccessViewController::viewDidLoad() {
    isFreeOptionRewarded = false;
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(this, NotificationCreditsChanged, [this](const Notification&) { creditsChanged(); });
    center.addObserver(this, scoreLoadedNotification, [this](const Notification&) { scoreLoaded(); });

    auto& gc = GameCenterManager::sharedInstance();
    gc.setPlayerRankBeforeReportingLastScore(gc.playerRank);
    gc.reportScoreWithContextWithCompletionHandler(ScorePointsManager::sharedInstance().totalPoints(), 0, [] {
        auto& manager = GameCenterManager::sharedInstance();
        manager.reloadPlayerScoreWithCompletionHandler([] {
            UserStatsManager::sharedInstance().updateGamecenterRankForCurrentDay(
                GameCenterManager::sharedInstance().playerRank);
        });
    });

    m_currentCredits = QString::number(CreditsManager::sharedInstance().currentCredits());
    m_totalPoints = QString::number(ScorePointsManager::sharedInstance().totalPoints());
    m_lastRank = Util::formatLongNumber(gc.playerRankBeforeReportingLastScore);
    if (GKLocalPlayer::localPlayer().isAuthenticated() && Util::isConnected()) {
        m_rankIsChanged = QStringLiteral("جاري حساب ترتيبك الجديد...");
    } else {
        m_rankIsChanged = QStringLiteral("انت غير متصل بالجيم سنتر.");
        m_buttonsEnabled = true;
    }
    // A slow game service never traps the player.
    Util::delayCallbackForTotalSeconds(
        [this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                enableButtons();
            }
        },
        kSafetySeconds);
    Platform::shared().emitter().startEmitterOnViewForDuration(this, kEmitterSeconds);
    emit labelsChanged();
}

void LevelSuccessViewController::enableButtons() {
    m_buttonsEnabled = true;
    emit labelsChanged();
}

void LevelSuccessViewController::creditsChanged() {
    if (type == 0 || type == 1) {
        m_currentCredits = QString::number(CreditsManager::sharedInstance().currentCredits());
        emit labelsChanged();
    }
}

void LevelSuccessViewController::scoreLoaded() {
    m_buttonsEnabled = true;
    const auto& gc = GameCenterManager::sharedInstance();
    m_currentRank = Util::formatLongNumber(gc.playerRank);
    const qint64 change = gc.playerRankBeforeReportingLastScore - gc.playerRank;
    if (change < 1) {
        m_rankIsChanged = QStringLiteral("ترتيبك لم يتغير");
        m_rankRose = false;
    } else {
        m_rankIsChanged = QStringLiteral("** مبروك لقد ارتفع ترتيبك **");
        m_rankChange = QStringLiteral("+%1").arg(Util::formatLongNumber(change));
        m_rankRose = true;
        // The place panel pulses every two seconds and the share panel shakes every three, while the screen
        // lasts; a moment later the rise is celebrated.
        m_pulseGcView = true;
        m_shakeShareScoreView = true;
        Util::delayCallbackForTotalSeconds(
            [this, alive = std::weak_ptr<int>(m_alive)] {
                if (!alive.expired()) {
                    Platform::shared().emitter().startGCRankEmitterOnViewForDuration(this,
                                                                                     kRankEmitterSeconds);
                }
            },
            kRankEmitterDelaySeconds);
    }
    emit labelsChanged();
}

void LevelSuccessViewController::openLeaderboardAction() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openGameCenterNavController2WithPageNumAndType(this, 0, 0);
}

void LevelSuccessViewController::nextLevelAction() {
    SoundFactory::sharedInstance().playMenuTap();
    QPointer<GameViewController> screen = playScreen;
    const qint32 finishedType = type;
    auto& nav = Platform::shared().navigator();
    nav.dismissViewController();
    if (finishedType == 0) {
        // The next level was built behind this screen; its timer starts now.
        if (auto* top = qobject_cast<GameViewController*>(Util::getTopNavViewController())) {
            top->onStartNextLevel();
        } else if (screen) {
            screen->onStartNextLevel();
        }
        return;
    }
    if (finishedType == 3) {
        if (auto* finish =
                nav.instantiateViewControllerWithIdentifier(QStringLiteral("RoundFinishViewController"))) {
            nav.presentViewController(finish);
        }
    }
    goBackToLevelsSelectorViewController();
}

void LevelSuccessViewController::goHomeAction() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
    goBackToLevelsSelectorViewController();
}

void LevelSuccessViewController::goBackToLevelsSelectorViewController() {
    auto& nav = Platform::shared().navigator();
    if (nav.depth() > 1) {
        nav.popToViewControllerAtIndex(1);
        ShareManager::sharedInstance().askLoyalUsersToShareRate();
    } else if (playScreen) {
        // A play screen at the root (no selectors under it) goes on with the player's next level.
        playScreen->openCurrentLevel();
    }
}

bool LevelSuccessViewController::keyPressed(const KeyPress& press) {
    if (press.isEnter()) {
        if (m_buttonsEnabled) {
            nextLevelAction();
        }
        return true;
    }
    return ViewController::keyPressed(press);
}
