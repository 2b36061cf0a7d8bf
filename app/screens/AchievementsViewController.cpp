#include "AchievementsViewController.h"

#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/AchievementManager.h"

AchievementsViewController::AchievementsViewController(QObject* parent)
    : ViewController(QStringLiteral("AchievementsViewController"), parent) {}

void AchievementsViewController::viewDidLoad() {
    AchievementManager& manager = AchievementManager::sharedInstance();
    manager.checkAndUpdateAchievements();
    // Collecting changes only what is collected, so the count stays as it is until the next opening.
    m_counter =
        QStringLiteral("%1/%2").arg(manager.getAchievedCount()).arg(manager.getTotalAchievementsCount());
    emit changed();
}

QVariantList AchievementsViewController::rows() const {
    QVariantList list;
    for (const Achievement& a : AchievementManager::sharedInstance().achievementList()) {
        list.append(
            QVariantMap{{"id", a.id},
                        {"desc", a.desc},
                        {"reward", QString::number(a.rewardCount)},
                        {"image", a.isAchieved ? QStringLiteral("yes.png") : QStringLiteral("no.png")},
                        {"achieved", a.isAchieved},
                        {"flashing", a.isAchieved && !a.isRewarded}});
    }
    return list;
}

void AchievementsViewController::tableViewDidSelectRowAtIndexPath(int row) {
    AchievementManager& manager = AchievementManager::sharedInstance();
    if (row < 0 || row >= manager.achievementList().size()) {
        return;
    }
    if (manager.collectAchievementReward(manager.achievementList().at(row).id) > 0) {
        Platform::shared().emitter().startEmitterOnViewForDuration(this, 2.0);
        emit changed();
    }
}

void AchievementsViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
