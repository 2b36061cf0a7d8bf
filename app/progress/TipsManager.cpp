#include "TipsManager.h"

#include "AchievementManager.h"
#include "GameAdditions.h"
#include "NotificationManager.h"
#include "RankManager.h"
#include "SessionManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

TipsManager& TipsManager::sharedInstance() {
    return Shared<TipsManager>::instance();
}

void TipsManager::loadData() {
    m_tips = {
        QStringLiteral(
            "اضغط على زر المهمات وستجد بانتظارك دوما جوائز ومحاولات مجانية عند انجازك للعديد من المهمات"),
        QStringLiteral(
            "حاول ترقية مستواك الحالي والذي يمكنك من الحصول على الكثير من المزايا ويؤهلك لكسب نقاط اكثر في "
            "كل مرحلة"),
        QStringLiteral(
            "قم بمنافسة اللاعبين الاخرين من خلال تحسين ترتيبك في قائمة الأذكياء في الجيم سنتر. يمكنك رؤية "
            "ترتيبك مقارنة مع اللاعبين من خلال الضغط على زر ترتيبك الحالي في القائمة الرئيسية"),
        QStringLiteral(
            "حاول الدخول في قائمة افضل ١٠٠ لاعب في قائمة الاذكياء والجيم سنتر والذي يؤهلك ربح الكثير من "
            "الجوائز المجانية"),
        QStringLiteral(
            "يمكنك أيضا بدء معارك ثنائية ضد لاعبين اخرين وفي حال الفوز او التعادل ستربح الكثير من النقاط "
            "الإضافية"),
        QStringLiteral(
            "يمكنك أيضا بدء معارك ثنائية ضد اصدقائك او لاعبين لعبت ضدهم من قبل وذلك لسرقة نقاطهم واضافتها "
            "لرصيدك"),
        QStringLiteral("يمكنك لعب معركة ضد لاعب عشوائي او دعوة أي شخص تعرفه للعب ضده"),
        QStringLiteral(
            " يمكنك ارسال طلبات صداقة للاعبين الاخرين وطلبات تحدي لاصدقائك وذلك عند فتح قائمة الاذكياء "
            "والضغط على اسم اي لاعب"),
        QStringLiteral("ان تقييم اللعبة ومشاركتها مع الاخرين سيعطيك جوائز مجانية كثيرة"),
    };
    m_tips.append(GameAdditions::getGameAdditionalTips());
    m_tipOfTheDayIndex = Platform::shared().userDefaults().integerForKey(kTipOfTheDayKey);
    m_currentSessions = SessionManager::sharedInstance().activeSessions();
    m_currentRankIndex = RankManager::sharedInstance().getCurrentRankIndex();
    m_isUnrewardedAchievement = AchievementManager::sharedInstance().isThereUnRewardedAchievement();
}

void TipsManager::showTipOfTheDayBanner() {
    const qint64 count = m_tips.size();
    // A stored index that went negative reads as the first tip.
    const qint64 index = ((m_tipOfTheDayIndex % count) + count) % count;
    Platform::shared().banner().titleMessageTime(kTipOfTheDayTitle, m_tips.at(index), kTipSeconds);
    m_tipOfTheDayIndex += 1;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_tipOfTheDayIndex, kTipOfTheDayKey);
    defaults.synchronize();
}

bool TipsManager::isTimeToAlertSettings() const {
    return (m_currentSessions == 5 || m_currentSessions == 6) &&
           !NotificationManager::sharedInstance().areNotificationsAllowed();
}

bool TipsManager::isTimeToAlertAchievements() const {
    return m_currentSessions >= 3 && m_isUnrewardedAchievement;
}

bool TipsManager::isTimeToAlertRanks() const {
    return m_currentSessions >= 6 && m_currentRankIndex > m_lastAlertedRank;
}

bool TipsManager::isTimeToAlertLeaderboard() const {
    return m_currentGamecenterRank - m_lastAlertedGamecenterRank > 50;
}

void TipsManager::doAlertAchievements(Attention& view) {
    startFlashingViewWithColor(view, QColor(Qt::green));
}
void TipsManager::doAlertSettings(Attention& view) {
    shakeView(view);
}
void TipsManager::doAlertStartButton(Attention& view) {
    shakeView(view);
}
void TipsManager::shakeView(Attention& view) {
    view = Attention{QStringLiteral("shake"), QColor(), kShakeSeconds};
}
void TipsManager::startFlashingViewWithColor(Attention& view, const QColor& color) {
    view = Attention{QStringLiteral("flash"), color, 0.25};
}

void TipsManager::checkAndShowAlertMessagePopup() {
    if (m_currentSessions == 5) {
        Util::showMessageWithTitleOnDismiss(
            QStringLiteral(
                "يمكنك رؤية ترتيبك بين اللاعبين في الجيم سنتر من خلال الضغط على زر ترتيبك في القائمة "
                "الرئيسية"),
            QStringLiteral("ترتيبك في الجيم سنتر"), [] {
                PresentationUtil::openGameCenterNavControllerWithPageNumAndType(
                    Util::getTopNavViewController(), 0, 0);
            });
    } else if (m_currentSessions == 3 && m_isUnrewardedAchievement) {
        Util::showMessageWithTitleOnDismiss(
            QStringLiteral(
                "لقد أنجزت مهمات جديدة تخولك لربح جوائز مجانية. يمكنك دوما الضغط على زر المهمات لرؤية جميع "
                "المهات التي انجزتها واخذ جائزتها"),
            QStringLiteral("المهمات"),
            [] { PresentationUtil::openAchievementsViewController(Util::getTopNavViewController()); });
    }
}
