#include "UserProfileViewController.h"

#include "ColorUtil.h"
#include "Util.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/ShareManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/AchievementManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"

#include <QClipboard>
#include <QGuiApplication>

UserProfileViewController::UserProfileViewController(QObject* parent)
    : ViewController(QStringLiteral("UserProfileViewController"), parent) {}

UserProfileViewController::~UserProfileViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void UserProfileViewController::viewDidLoad() {
    Platform::shared().notificationCenter().addObserver(this, scoreLoadedNotification,
                                                        [this](const Notification&) { scoreLoaded(); });
    fillHead();

    const UserStatsManager& stats = UserStatsManager::sharedInstance();
    const SessionManager& sessions = SessionManager::sharedInstance();
    const qint64 shared = ShareManager::sharedInstance().levelsShared();
    const auto figure = [](const char* name, const QString& caption, qint64 value) {
        return QVariantMap{
            {"name", QString::fromLatin1(name)}, {"caption", caption}, {"value", QString::number(value)}};
    };
    m_figures = {
        figure("totalSessionsLabel", QStringLiteral("الجلسات"), sessions.activeSessions()),
        figure("totalDaysLabel", QStringLiteral("أيام اللعب"), sessions.acitveDays()),
        figure("tasksAchievedLabel", QStringLiteral("المهمات المنجزة"),
               AchievementManager::sharedInstance().getAchievedCount()),
        figure("usedCreditsLabel", QStringLiteral("الذهب المستخدم"), stats.creditsUsed()),
        figure("usedSkipsLabel", QStringLiteral("التخطي المستخدم"), stats.skipsUsed()),
        figure("trainingsTakenLabel", QStringLiteral("التمارين"), stats.totalTrainingsTaken()),
        figure("flyOverPassedLabel", QStringLiteral("رحلات الطيران"), stats.flyOverPassed()),
        figure("timeTraveledLabel", QStringLiteral("السفر عبر الزمن"), stats.timeTraveled()),
        figure("levelsSharedLabel", QStringLiteral("المراحل المشاركة"), shared),
        figure("totalBattlesLabel", QStringLiteral("المعارك"), stats.totalBattles()),
    };

    m_barValues.clear();
    for (qint64 v : stats.getGCRanksForLastDays(10)) {
        m_barValues.append(v);
    }
    m_lineValues.clear();
    for (qint64 v : stats.getCompletedLevelsForAllDays()) {
        m_lineValues.append(v);
    }
    m_lineLabels = stats.getCompletedLevelsForAllDaysLabels();

    // The history of places; with none kept, the series as the charts read it.
    QList<qint64> places;
    const QList<StatRecord>& history = stats.dailyGamecenterRanks();
    for (const StatRecord& r : history) {
        places.append(r.value);
    }
    m_history.clear();
    for (qsizetype i = 0; i < places.size(); ++i) {
        QVariantMap row{{"day", QStringLiteral("اليوم %1").arg(i + 1)},
                        {"value", QString::number(places.at(i))}};
        if (i > 0) {
            // A rise up the leaderboard is positive.
            const qint64 d = places.at(i - 1) - places.at(i);
            if (d < 0) {
                row.insert("arrow", QStringLiteral("red-arrow.png"));
                row.insert("change", QString::number(d));
                row.insert("color", ColorUtil::getRedColor());
            } else {
                row.insert("arrow", QStringLiteral("green-arrow.png"));
                row.insert("change", QStringLiteral("+%1").arg(d));
                row.insert("color", *ColorUtil::getColorWithType(1));
            }
        }
        m_history.append(row);
    }
    emit changed();
}

void UserProfileViewController::fillHead() {
    const GameCenterManager& gc = GameCenterManager::sharedInstance();
    m_alias = GKLocalPlayer::localPlayer().displayName();
    m_playerID = GKLocalPlayer::localPlayer().playerID();
    if (gc.scoreObject) {
        m_points = Util::formatLongNumber(gc.scoreObject->value);
        m_rank = Util::formatLongNumber(gc.scoreObject->rank);
    }
}

void UserProfileViewController::scoreLoaded() {
    fillHead();
    emit changed();
}

QStringList UserProfileViewController::barLabels() const {
    return {QStringLiteral("من عشر ايام"), QStringLiteral("2"),    QStringLiteral("3"), QStringLiteral("4"),
            QStringLiteral("5"),           QStringLiteral("6"),    QStringLiteral("7"), QStringLiteral("8"),
            QStringLiteral("امس"),         QStringLiteral("اليوم")};
}

void UserProfileViewController::segmentChanged(int segment) {
    m_segment = segment == 0 ? 0 : 1;
    emit changed();
}

QString UserProfileViewController::challengeText() {
    return QStringLiteral("مرحبا أنا اتحداك ان تتجاوز معدل ذكائي ومجموع نقاطي %1 في لعبة %2")
        .arg(ScorePointsManager::sharedInstance().totalPoints())
        .arg(QStringLiteral("طارفولين"));
}

void UserProfileViewController::sendScoreChallege() {
    SoundFactory::sharedInstance().playMenuTap();
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral(
            "عندما ترسل تحدي نقاط لأي لاعب، عندها كلما تجاوز احدكما الاخر بالنقاط او الترتيب ستصل رسالة "
            "استهزاء للاعب الاخر تخبره بأنه خسر وتراجع امام صديقه وان عليه محاولة تجاوزه مرة اخرى"),
        QStringLiteral("تحدي النقاط"), [] {
            // On a desktop the challenge goes by the clipboard, to whoever the player sends it.
            if (QClipboard* clipboard = QGuiApplication::clipboard()) {
                clipboard->setText(challengeText());
            }
            Util::showMessageWithTitle(challengeText(), QStringLiteral("تم نسخ التحدي، أرسله لمن تتحداه"));
        });
}

void UserProfileViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
