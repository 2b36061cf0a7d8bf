#include "MainViewController.h"

#include "outreach/Addresses.h"
#include "outreach/AppPromoView.h"
#include "outreach/InterstitialManager.h"

#include "ColorUtil.h"
#include "PresentationUtil.h"
#include "Util.h"
#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/ShareManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/AchievementManager.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"

MainViewController::MainViewController(QObject* parent)
    : ViewController(QStringLiteral("MainViewController"), parent) {}

MainViewController::~MainViewController() {
    if (m_promoTimer) {
        m_promoTimer->invalidate();
    }
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void MainViewController::viewDidLoad() {
    InterstitialManager::sharedInstance().initializeSession();
    auto& gc = GameCenterManager::sharedInstance();
    if (gc.lastAuthenticationSavedStatus == QLatin1String("AUTO")) {
        gc.authenticateLocalUserWithCompletionHandler(
            [this, alive = std::weak_ptr<int>(m_alive)](ViewController* screen,
                                                        std::optional<GKError> error) {
                if (alive.expired()) {
                    delete screen;
                    return;
                }
                if (screen || error) {
                    // Silent: the login screen is not shown; the player can ask for it.
                    delete screen;
                    m_notLogged = kLoginPrompt;
                    emit labelsChanged();
                    return;
                }
                loginBookkeeping();
            });
    } else {
        m_notLogged = kLoginPrompt;
    }
    // The calls for attention: the tasks flash while one waits to be collected, and the start button shakes
    // in the first session.
    TipsManager& tips = TipsManager::sharedInstance();
    if (tips.isTimeToAlertAchievements()) {
        tips.doAlertAchievements(m_achievementsAttention);
    }
    (void)tips.isTimeToAlertSettings();
    if (SessionManager::sharedInstance().isFirstSession()) {
        tips.doAlertStartButton(m_startAttention);
    }
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(this, scoreLoadedNotification, [this](const Notification&) { scoreLoaded(); });
    center.addObserver(this, NotificationCreditsChanged,
                       [this](const Notification&) { creditsSkipsChanged(); });
    center.addObserver(this, NotificationSkipsChanged,
                       [this](const Notification&) { creditsSkipsChanged(); });
    center.addObserver(this, PointsChangedNotification, [this](const Notification&) { pointsChanged(); });

    if (SessionManager::sharedInstance().acitveDays() >= 3 && arc4random() % 3 == 1) {
        m_promoVisible = true;
        m_promoTimer = Timer::scheduledTimerWithTimeInterval(kPromoPulseSeconds, true, [this] {
            m_promoAlpha = m_promoAlpha == 1.0 ? 0.3 : 1.0;
            emit promoChanged();
        });
        emit promoChanged();
    }
}

void MainViewController::openPromoView() {
    // No sound here: the store sheet plays its own.
    ShareManager::sharedInstance().openAppInStoreWithViewController(Addresses::promotedAppId(), this);
}

QUrl MainViewController::promoIcon() const {
    return AppPromoView::getAppIcon(Addresses::promotedAppId());
}

void MainViewController::viewWillAppear() {
    const auto& credits = CreditsManager::sharedInstance();
    const auto& levels = LevelManager::sharedInstance();
    const auto& ranks = RankManager::sharedInstance();
    m_skips = QString::number(credits.currentSkips());
    m_credits = QString::number(credits.currentCredits());
    m_level = QString::number(levels.currentLevel() + 1);
    m_round = QString::number(levels.getCurrentRound() + 1);
    m_points = QString::number(ScorePointsManager::sharedInstance().totalPoints());
    const Rank& rank = ranks.getCurrentRank();
    m_badgeName = rank.name;
    m_badgeDesc = rank.desc;
    m_badgeImage = rank.getBadge();
    const auto& achievements = AchievementManager::sharedInstance();
    m_completedAchmts = QStringLiteral("%1/%2")
                            .arg(achievements.getAchievedCount())
                            .arg(achievements.getTotalAchievementsCount());
    const auto& stats = UserStatsManager::sharedInstance();
    m_totalWins = QStringLiteral("%1 / %2").arg(stats.totalBattles()).arg(stats.totalWins());
    // Battles open after two solved levels, and stay open.
    if (levels.currentLevel() >= 2) {
        m_battleButtonVisible = true;
    }
    emit labelsChanged();
}

void MainViewController::loginBookkeeping() {
    auto& gc = GameCenterManager::sharedInstance();
    gc.setPlayerRankBeforeReportingLastScore(gc.playerRank);
    const qint64 context = UserStatsManager::sharedInstance().generateUserStatsContextNumber();
    // A new player gets a place on the leaderboard at once.
    if (ScorePointsManager::sharedInstance().totalPoints() == 0) {
        gc.reportScoreWithContextWithCompletionHandler(0, context, nullptr);
    }
}

void MainViewController::loginToGameCenter() {
    auto& hud = Platform::shared().progressHud();
    hud.showWithMaskType(ProgressHud::Black);
    Util::delayCallbackForTotalSeconds(
        [] {
            auto& progress = Platform::shared().progressHud();
            if (progress.isVisible()) {
                progress.dismiss();
                Util::showMessageWithTitle(
                    QStringLiteral("قم بتسجيل الدخول الى الجيم سنتر من اعدادات الجهاز"),
                    QStringLiteral("تعذر تسجيل الدخول"));
            }
        },
        kLoginTimeLimitSeconds);
    GameCenterManager::sharedInstance().authenticateLocalUserWithCompletionHandler(
        [this, alive = std::weak_ptr<int>(m_alive)](ViewController* screen, std::optional<GKError> error) {
            Platform::shared().progressHud().dismiss();
            if (screen) {
                Platform::shared().navigator().presentViewController(screen);
            } else if (error) {
                if (error->code != QLatin1String("cancelled")) {
                    Util::showMessageWithTitle(QStringLiteral("لم يتم تسجيل الدخول في الجيم سنتر"),
                                               QStringLiteral("حدث خطأ"));
                }
            } else {
                if (!alive.expired()) {
                    loginBookkeeping();
                }
                Util::showMessageWithTitle(QStringLiteral("الان يمكنك التنافس على المراتب الاولى"),
                                           QStringLiteral("لقد تم تسجيل دخول الى الجيم سنتر بنجاح"));
            }
        });
}

void MainViewController::scoreLoaded() {
    const auto& gc = GameCenterManager::sharedInstance();
    m_notLoggedVisible = false;
    m_playerRank = Util::formatLongNumber(gc.playerRank);
    m_rankVisible = true;
    const qint64 twoDaysAgo = UserStatsManager::sharedInstance().getLast2DaysRank();
    if (twoDaysAgo != 0) {
        const qint64 change = twoDaysAgo - gc.playerRank;
        if (change < 0) {
            m_rankArrow = QStringLiteral("red-arrow.png");
            m_rankChange = Util::formatLongNumber(change);
            m_rankChangeColor = ColorUtil::getRedColor();
        } else {
            m_rankArrow = QStringLiteral("green-arrow.png");
            m_rankChange = QStringLiteral("+%1").arg(Util::formatLongNumber(change));
            m_rankChangeColor = *ColorUtil::getColorWithType(1);
        }
    }
    emit labelsChanged();
}

void MainViewController::openGameCenter() {
    SoundFactory::sharedInstance().playMenuTap();
    if (GameCenterManager::sharedInstance().currentStatus == QLatin1String("AUTHENTICATED")) {
        PresentationUtil::openGameCenterNavController2WithPageNumAndType(this, 0, 0);
        return;
    }
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("اولا قم بتسجيل الدخول الى الجيم سنتر لرؤية ترتيبك في قائمة الاذكياء"),
        QStringLiteral("غير متصل بالجيم سنتر"), [this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                loginToGameCenter();
            }
        });
}

void MainViewController::startBattle() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("معركة جديدة"), QString(), QString(),
        {QStringLiteral("معركة مع لاعب عشوائي"), QStringLiteral("تعارك مع احد اصدقائك")},
        [this, alive = std::weak_ptr<int>(m_alive)](int index) {
            if (alive.expired()) {
                return;
            }
            if (index == 0) {
                PresentationUtil::openGameCenterNavControllerWithPageNumAndType(this, 1, 0);
            } else if (index == 1) {
                PresentationUtil::openGameCenterNavControllerWithPageNumAndType(this, 0, 1);
            }
        });
}

void MainViewController::creditsSkipsChanged() {
    const auto& credits = CreditsManager::sharedInstance();
    m_skips = QString::number(credits.currentSkips());
    m_credits = QString::number(credits.currentCredits());
    emit labelsChanged();
}

void MainViewController::pointsChanged() {
    m_points = Util::formatLongNumber(ScorePointsManager::sharedInstance().totalPoints());
    emit labelsChanged();
}

void MainViewController::startAction() {
    SoundFactory::sharedInstance().playMenuTap();
    auto& nav = Platform::shared().navigator();
    if (auto* rounds =
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("RoundSelectorViewController"))) {
        nav.pushViewController(rounds);
    }
}

bool MainViewController::keyPressed(const KeyPress& press) {
    if (press.isEnter()) {
        startAction();
        return true;
    }
    return ViewController::keyPressed(press);
}

void MainViewController::openSettings() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openSettingsViewController(this);
}

void MainViewController::openAchievements() {
    SoundFactory::sharedInstance().playMenuTap();
    m_achievementsAttention = Attention();
    emit labelsChanged();
    PresentationUtil::openAchievementsViewController(this);
}

void MainViewController::openRankings() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openRankViewController(this);
}

void MainViewController::openStore() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openInAppStore(this);
}

void MainViewController::openAbout() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openAboutViewController(this);
}

void MainViewController::shareAction() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().shareAppOnCompletion(this, nullptr);
}

void MainViewController::rateAction() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().rateApp();
}
