#include "MainViewController.h"

#include "Util.h"
#include "core/LevelManager.h"
#include "outreach/Outreach.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"

MainViewController::MainViewController(QObject* parent)
    : ViewController(QStringLiteral("MainViewController"), parent) {}

MainViewController::~MainViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void MainViewController::viewDidLoad() {
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(this, NotificationCreditsChanged,
                       [this](const Notification&) { creditsSkipsChanged(); });
    center.addObserver(this, NotificationSkipsChanged,
                       [this](const Notification&) { creditsSkipsChanged(); });
    center.addObserver(this, PointsChangedNotification, [this](const Notification&) { pointsChanged(); });
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
    // Battles open after two solved levels, and stay open.
    if (levels.currentLevel() >= 2) {
        m_battleButtonVisible = true;
    }
    emit labelsChanged();
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

void MainViewController::openStore() {
    SoundFactory::sharedInstance().playMenuTap();
    if (Outreach::store) {
        Outreach::store->openInAppStore(this);
    } else {
        Outreach::showUnavailable(QStringLiteral("المتجر"));
    }
}
