// Progress that follows the player: the progress document, the choice between two progresses after a login,
// and how saves are gathered, sent once at a time and kept while there is no connection.
#include "TestPlatform.h"
#include "core/LevelManager.h"
#include "core/RoundManager.h"
#include "outreach/ShareManager.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/AchievementManager.h"
#include "progress/CloudSaveManager.h"
#include "progress/CreditsManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Localization.h"

#include <QJsonDocument>
#include <deque>
#include <gtest/gtest.h>

namespace {

// The service's side, answered by the test: each request waits until the test answers it.
struct Request {
    bool save = false;
    qint64 base = 0;
    QJsonObject progress;
    ProgressTransport::Completion done;
};
using Requests = std::shared_ptr<std::deque<Request>>;

class ScriptedTransport : public ProgressTransport {
public:
    explicit ScriptedTransport(Requests requests) : m_requests(std::move(requests)) {}
    void load(Completion done) override { m_requests->push_back({false, 0, {}, std::move(done)}); }
    void save(qint64 base, const QJsonObject& progress, Completion done) override {
        m_requests->push_back({true, base, progress, std::move(done)});
    }

private:
    Requests m_requests;
};

GKError serviceError(int status, const char* code) {
    return GKError{QString::fromLatin1(code), QStringLiteral("refused"), status, 0};
}

// A profile that has played: every saved field away from its default.
void play() {
    LevelManager::sharedInstance().saveCurrentLevelTo(57);
    LevelManager::sharedInstance().setLevelRewardedForSecondTime(12);
    LevelManager::sharedInstance().setLevelRewardedForSecondTime(30);
    CreditsManager::sharedInstance().setCreditsTo(640);
    CreditsManager::sharedInstance().addSkips(4);
    ScorePointsManager::sharedInstance().addPoints(1234);
    auto& rounds = RoundManager::sharedInstance();
    rounds.setFlyOverPassed(true);
    rounds.setTravelRound(1);
    rounds.incrementTravelLevel();
    auto& stats = UserStatsManager::sharedInstance();
    stats.incrementCreditsUsedBy(90);
    stats.incrementSkipsUsed();
    stats.incrementTotalExchangeSent(7);
    stats.incrementTotalExchangeReceived(11);
    stats.incrementTotalWins();
    stats.incrementTotalLosses();
    stats.incrementTotalLosses();
    stats.incrementWikipediaRead();
    stats.incrementTimeTraveled();
    stats.incrementFlyOverPassed();
    stats.incrementCompletedLevelsForCurrentDay();
    stats.updateGamecenterRankForCurrentDay(420);
    auto& d = Platform::shared().userDefaults();
    d.setIntegerForKey(6, SessionManager::kActiveDaysKey);
    d.setIntegerForKey(9, SessionManager::kActiveSessionsKey);
    d.setIntegerForKey(3, ShareManager::kLevelsSharedKey);
    auto& achievements = AchievementManager::sharedInstance();
    QList<Achievement> list = achievements.achievementList();
    achievements.markAchievementAsAchieved(list[0]);
    achievements.markAchievementAsRewarded(list[0]);
    achievements.markAchievementAsAchieved(list[3]);
}

class CloudSave : public ::testing::Test {
protected:
    void SetUp() override { connect(); }

    // The manager of the present platform, talking to the script.
    void connect() {
        requests = std::make_shared<std::deque<Request>>();
        CloudSaveManager::sharedInstance().setTransport(std::make_unique<ScriptedTransport>(requests));
        platform.reachability().startNotifier();
    }
    CloudSaveManager& manager() { return CloudSaveManager::sharedInstance(); }
    void logIn() { GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"P1", "سارة", false, {}}); }
    // The oldest waiting request, taken off the list.
    Request next() {
        EXPECT_FALSE(requests->empty());
        if (requests->empty()) {
            return {};
        }
        Request r = std::move(requests->front());
        requests->pop_front();
        return r;
    }
    static QJsonObject saved(qint64 version, const ProgressDocument& p) {
        return QJsonObject{{"version", version}, {"savedAt", 1}, {"progress", p.toJson()}};
    }
    static ProgressDocument standing(qint64 level, qint64 gold) {
        ProgressDocument p = ProgressDocument::capture(Platform::shared().userDefaults());
        p.level = level;
        p.gold = gold;
        p.points = level * 10;
        return p;
    }
    // Logs in on a profile whose progress is already on the service as version `version`.
    void loggedInAt(qint64 version) {
        logIn();
        next().done(saved(version, ProgressDocument::capture(platform.defaults())), std::nullopt);
        ASSERT_EQ(manager().baseVersion(), version);
        ASSERT_TRUE(requests->empty());
    }

    TestPlatform platform;
    Requests requests;
};

TEST_F(CloudSave, TheDocumentCarriesEverySavedFieldThereAndBack) {
    play();
    const ProgressDocument here = ProgressDocument::capture(platform.defaults());
    EXPECT_EQ(here.level, 57);
    EXPECT_EQ(here.gold, 640);
    EXPECT_EQ(here.skips, CreditsManager::kStartingSkips + 4);
    EXPECT_EQ(here.rewardedLevels, (QList<qint64>{12, 30}));
    EXPECT_EQ(here.stats.value("exchangeReceived"), 11);
    EXPECT_EQ(here.stats.value("battlePoints"), UserStatsManager::sharedInstance().totalBattlePoints());
    EXPECT_EQ(here.dailyLevels.size(), 1);
    EXPECT_EQ(here.achievements.size(), 2);

    // Through the wire's bytes and into another profile.
    const QByteArray wire = QJsonDocument(here.toJson()).toJson();
    QString problem;
    const std::optional<ProgressDocument> back =
        ProgressDocument::fromJson(QJsonDocument::fromJson(wire).object(), &problem);
    ASSERT_TRUE(back) << problem.toStdString();
    EXPECT_EQ(*back, here);

    platform.useProfile("other");
    EXPECT_NE(ProgressDocument::capture(platform.defaults()), here);
    back->store(platform.defaults());
    ProgressDocument::reload();
    EXPECT_EQ(ProgressDocument::capture(platform.defaults()), here);
    // The managers read it again, and so do those made after a restart.
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 57);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 640);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 1234);
    EXPECT_TRUE(RoundManager::sharedInstance().isRoundFlyOverPassed());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalLosses(), 2);
    EXPECT_EQ(SessionManager::sharedInstance().acitveDays(), 6);
    EXPECT_TRUE(AchievementManager::sharedInstance().achievementList()[0].isRewarded);
    EXPECT_TRUE(LevelManager::sharedInstance().isLevelRewardedSecondTime(30));
    platform.restart();
    EXPECT_EQ(UserStatsManager::sharedInstance().dailyGamecenterRanks().size(), 1);
    EXPECT_EQ(ProgressDocument::capture(platform.defaults()), here);
}

TEST_F(CloudSave, ADocumentOfAnotherFormIsRefusedWithTheFieldAtFault) {
    play();
    const QJsonObject good = ProgressDocument::capture(platform.defaults()).toJson();
    struct Case {
        QString path; // "key" or "section.key"
        QJsonValue value;
        QString named;
    };
    const QList<Case> cases{
        {"schema", 2, "schema"},
        {"level", -1, "level"},
        {"gold", "a lot", "gold"},
        {"skips", 1.5, "skips"},
        {"points", 1e300, "points"},
        {"round.previousRound", 1, "round.previousRound"},
        {"stats.wins", QJsonValue(), "stats.wins"},
        {"stats.dailyLevels", QJsonArray{QJsonObject{{"day", 1}}}, "stats.dailyLevels"},
        {"rewardedLevels", QJsonArray{"twelve"}, "rewardedLevels"},
        {"achievements", QJsonArray{}, "achievements"},
    };
    for (const Case& c : cases) {
        QJsonObject doc = good;
        const QStringList parts = c.path.split('.');
        if (parts.size() == 1) {
            doc.insert(parts[0], c.value);
        } else {
            QJsonObject section = doc.value(parts[0]).toObject();
            section.insert(parts[1], c.value);
            doc.insert(parts[0], section);
        }
        QString problem;
        EXPECT_FALSE(ProgressDocument::fromJson(doc, &problem)) << c.path.toStdString();
        EXPECT_TRUE(problem.contains(c.named)) << problem.toStdString();
    }
    QString problem;
    EXPECT_FALSE(ProgressDocument::fromJson(QJsonValue("progress"), &problem));
    EXPECT_FALSE(problem.isEmpty());
}

TEST_F(CloudSave, AFreshProfileTakesTheSavedProgressSilently) {
    int creditsTold = 0;
    Platform::shared().notificationCenter().addObserver(this, NotificationCreditsChanged,
                                                        [&](const Notification&) { ++creditsTold; });
    logIn();
    Request load = next();
    ASSERT_FALSE(load.save);
    load.done(saved(4, standing(80, 900)), std::nullopt);
    EXPECT_TRUE(platform.takeMessages().isEmpty());
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 80);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 900);
    EXPECT_EQ(creditsTold, 1); // the screens hear of it
    EXPECT_EQ(manager().baseVersion(), 4);
    // Taking it is no change to send back.
    platform.scheduler().advance(10);
    EXPECT_TRUE(requests->empty());
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST_F(CloudSave, TwoDifferentProgressesAreThePlayersChoiceBothWays) {
    for (const bool takeSaved : {true, false}) {
        SCOPED_TRACE(takeSaved ? "take the saved one" : "keep this device's");
        play();
        logIn();
        next().done(saved(7, standing(120, 2000)), std::nullopt);
        // Both are shown: level (counted from 1) and gold of each.
        ASSERT_TRUE(platform.alerts().isVisible());
        EXPECT_EQ(platform.alerts().title(), Localization::localizedString("progress.choice.title"));
        const QString message = platform.alerts().message();
        EXPECT_TRUE(message.contains("58") && message.contains("640")) << message.toStdString();
        EXPECT_TRUE(message.contains("121") && message.contains("2000")) << message.toStdString();
        // Nothing is saved while the player thinks.
        LevelManager::sharedInstance().incrementCurrentLevel();
        platform.scheduler().advance(60);
        EXPECT_TRUE(requests->empty());

        const QString button = Localization::localizedString(takeSaved ? "progress.choice.takeSaved"
                                                                       : "progress.choice.keepDevice");
        ASSERT_TRUE(platform.alerts().pressTitled(button));
        if (takeSaved) {
            EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 120);
            EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 2000);
            EXPECT_EQ(manager().baseVersion(), 7);
            EXPECT_FALSE(manager().isPending());
            platform.scheduler().advance(60);
            EXPECT_TRUE(requests->empty());
        } else {
            // An explicit overwrite: based on the newest version, with this device's progress.
            Request save = next();
            ASSERT_TRUE(save.save);
            EXPECT_EQ(save.base, 7);
            EXPECT_EQ(save.progress.value("level").toInteger(), 58);
            EXPECT_EQ(save.progress.value("gold").toInteger(), 640);
            save.done(QJsonObject{{"version", 8}, {"savedAt", 2}}, std::nullopt);
            EXPECT_EQ(manager().baseVersion(), 8);
            EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 640);
        }
        GKLocalPlayer::localPlayer().setAuthenticatedPlayer(std::nullopt);
        platform.useProfile(takeSaved ? "second" : "third");
        connect();
    }
}

TEST_F(CloudSave, ASavedProgressThatDoesNotReadIsRefusedAndNothingIsLost) {
    play();
    const ProgressDocument before = ProgressDocument::capture(platform.defaults());
    logIn();
    QJsonObject bad = saved(3, standing(500, 99999));
    QJsonObject progress = bad.value("progress").toObject();
    progress.insert("gold", "lots");
    bad.insert("progress", progress);
    next().done(bad, std::nullopt);
    const QStringList shown = platform.takeMessages();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_TRUE(shown[0].startsWith(Localization::localizedString("progress.unreadable.title")));
    EXPECT_EQ(ProgressDocument::capture(platform.defaults()), before);
    EXPECT_TRUE(manager().lastProblem().contains("gold"));
    // This profile's progress goes over the unreadable version.
    Request save = next();
    EXPECT_TRUE(save.save);
    EXPECT_EQ(save.base, 3);
    EXPECT_EQ(save.progress, before.toJson());
}

TEST_F(CloudSave, ChangesOfAMomentMakeOneSaveAndTheLatestStateWins) {
    // Not logged in: nothing at all.
    CreditsManager::sharedInstance().addCredits(5);
    platform.scheduler().advance(60);
    EXPECT_TRUE(requests->empty());
    EXPECT_FALSE(manager().isPending());

    loggedInAt(2);
    CreditsManager::sharedInstance().addCredits(5);
    LevelManager::sharedInstance().incrementCurrentLevel();
    RoundManager::sharedInstance().setFlipImagePassed(true);
    platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds - 0.5);
    EXPECT_TRUE(requests->empty());
    platform.scheduler().advance(0.5);
    Request first = next();
    ASSERT_TRUE(first.save);
    EXPECT_EQ(first.base, 2);
    EXPECT_EQ(first.progress.value("level").toInteger(), 1);
    EXPECT_TRUE(first.progress.value("round").toObject().value("flipImagePassed").toBool());

    // Changes while it is on its way wait for it: never two at once.
    CreditsManager::sharedInstance().addCredits(5);
    AchievementManager& achievements = AchievementManager::sharedInstance();
    QList<Achievement> list = achievements.achievementList();
    achievements.markAchievementAsAchieved(list[1]);
    platform.scheduler().advance(30);
    EXPECT_TRUE(requests->empty());
    first.done(QJsonObject{{"version", 3}, {"savedAt", 5}}, std::nullopt);
    EXPECT_TRUE(manager().isPending());
    platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds);
    Request second = next();
    EXPECT_EQ(second.base, 3);
    EXPECT_EQ(second.progress.value("gold").toInteger(), CreditsManager::sharedInstance().currentCredits());
    EXPECT_TRUE(second.progress.value("achievements").toObject().contains(list[1].id));
    second.done(QJsonObject{{"version", 4}, {"savedAt", 6}}, std::nullopt);
    EXPECT_FALSE(manager().isPending());
    platform.scheduler().advance(60);
    EXPECT_TRUE(requests->empty());

    // Going to the background sends a pending change without waiting.
    ScorePointsManager::sharedInstance().addPoints(3);
    manager().enterBackground();
    EXPECT_EQ(next().base, 4);
}

TEST_F(CloudSave, WithoutAConnectionTheChangeWaitsAndLeavesWhenItComesBack) {
    loggedInAt(1);
    platform.reachability().setForcedOffline(true);
    CreditsManager::sharedInstance().addCredits(5);
    platform.scheduler().advance(120);
    EXPECT_TRUE(requests->empty());
    EXPECT_TRUE(manager().isPending());
    // The pending mark is in the profile: a restart still knows.
    platform.restart();
    connect();
    platform.reachability().startNotifier();
    EXPECT_TRUE(manager().isPending());
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"P1", "سارة", false, {}});
    // The login finds its own last save on the service and sends what changed since.
    next().done(saved(1, standing(0, 0)), std::nullopt);
    Request sent = next();
    EXPECT_EQ(sent.base, 1);
    EXPECT_EQ(sent.progress.value("gold").toInteger(), CreditsManager::kStartingCredits + 5);

    // No answer at all: tried again later, and meanwhile nothing else leaves.
    sent.done({}, GKError{QStringLiteral("network"), {}, 0, 0});
    EXPECT_TRUE(manager().isPending());
    platform.scheduler().advance(CloudSaveManager::kRetrySeconds - 1);
    EXPECT_TRUE(requests->empty());
    platform.scheduler().advance(1);
    Request retried = next();
    EXPECT_EQ(retried.base, 1);
    retried.done(QJsonObject{{"version", 2}}, std::nullopt);
    EXPECT_FALSE(manager().isPending());

    // Offline, then back: the connection's return sends it.
    platform.reachability().setForcedOffline(true);
    LevelManager::sharedInstance().incrementCurrentLevel();
    platform.scheduler().advance(120);
    EXPECT_TRUE(requests->empty());
    platform.reachability().setForcedOffline(false);
    platform.scheduler().advance(0);
    EXPECT_EQ(next().base, 2);
}

TEST_F(CloudSave, ASaveRefusedForAnotherDevicesNewerSaveOffersTheChoice) {
    play();
    loggedInAt(5);
    CreditsManager::sharedInstance().addCredits(5);
    platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds);
    Request save = next();
    save.done(QJsonObject{{"error", QJsonObject{{"code", "progress_conflict"}}},
                          {"newest", saved(6, standing(300, 4000))}},
              serviceError(409, "progress_conflict"));
    ASSERT_TRUE(platform.alerts().isVisible());
    EXPECT_TRUE(platform.alerts().message().contains("301"));
    ASSERT_TRUE(platform.alerts().pressTitled(Localization::localizedString("progress.choice.keepDevice")));
    Request overwrite = next();
    EXPECT_EQ(overwrite.base, 6);
    EXPECT_EQ(overwrite.progress.value("gold").toInteger(), 645);

    // Refused for its gold: the profile keeps it, the player is told so once, and nothing is retried until
    // the next change.
    overwrite.done({}, serviceError(422, "gold_not_earned"));
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 645);
    ASSERT_TRUE(platform.alerts().isVisible());
    EXPECT_EQ(platform.alerts().title(), Localization::localizedString("progress.goldRefused.title"));
    ASSERT_TRUE(platform.alerts().pressTitled(platform.alerts().buttons().value(0)));
    platform.scheduler().advance(600);
    EXPECT_TRUE(requests->empty());
    CreditsManager::sharedInstance().addCredits(5);
    platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds);
    next().done({}, serviceError(422, "gold_not_earned"));
    EXPECT_FALSE(platform.alerts().isVisible()) << "told again: " << platform.alerts().title().toStdString();
    CreditsManager::sharedInstance().deductCredits(605);
    platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds);
    EXPECT_EQ(next().progress.value("gold").toInteger(), 45);
}

} // namespace
