// The live-match groundwork: the history kept in the settings, packets as small dictionaries, and the list of
// finished live matches.
#include "TestPlatform.h"
#include "multiplayer/GCRealTimeMatchHelper.h"
#include "multiplayer/RealTimeBattleListViewController.h"
#include "platform/UserDefaults.h"
#include "progress/RankManager.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace {

QVariantMap entry(const QString& name, qint64 result, const QDateTime& date) {
    return {{"opponentAvatar", 3},
            {"opponentFlag", 9},
            {"opponentName", name},
            {"date", date},
            {"matchResult", result}};
}

TEST(LiveMatches, TheHistoryAndTheLastStatusOutliveTheHelper) {
    TestPlatform platform;
    auto& helper = GCRealTimeMatchHelper::sharedInstance();
    EXPECT_EQ(helper.lastMatchStatus, 0);
    EXPECT_TRUE(helper.matchHistory.isEmpty());
    const QDateTime when = platform.scheduler().now();
    helper.saveFinishedMatch(entry(QStringLiteral("ندى"), 1, when));
    helper.saveFinishedMatch(entry(QStringLiteral("سالم"), -1, when.addSecs(60)));
    helper.saveLastMatchStatus(3);

    helper.loadData();
    EXPECT_EQ(helper.lastMatchStatus, 3);
    ASSERT_EQ(helper.matchHistory.size(), 2);
    EXPECT_EQ(helper.matchHistory.at(1).value("opponentName"), QStringLiteral("سالم"));
    EXPECT_EQ(helper.matchHistory.at(0).value("date").toDateTime(), when);

    // A stored value of another shape: the entries that are not matches go, the list stays.
    auto& defaults = Platform::shared().userDefaults();
    defaults.setObjectForKey(QVariantList{entry(QStringLiteral("ندى"), 0, when), QStringLiteral("x"),
                                          QVariantMap{{"opponentName", "y"}}},
                             GCRealTimeMatchHelper::kMatchHistoryKey);
    helper.loadData();
    EXPECT_EQ(helper.matchHistory.size(), 1);
    defaults.setStringForKey(QStringLiteral("garbage"), GCRealTimeMatchHelper::kMatchHistoryKey);
    helper.loadData();
    EXPECT_TRUE(helper.matchHistory.isEmpty());
}

TEST(LiveMatches, PacketsAreDictionariesOfTextAndWholeNumbers) {
    const QByteArray bytes =
        GCRealTimeMatchHelper::archivePacket({{"move", 12}, {"word", QStringLiteral("قمر")}});
    EXPECT_EQ(GCRealTimeMatchHelper::unarchivePacket(bytes),
              (QVariantMap{{"move", qint64(12)}, {"word", QStringLiteral("قمر")}}));
    // A value of another kind makes no packet; bytes that are no dictionary read as nothing.
    EXPECT_TRUE(GCRealTimeMatchHelper::archivePacket({{"move", 1.5}}).isEmpty());
    // Whole numbers up to 2^53 either way travel exactly; a larger one would arrive changed or not at all.
    const qint64 limit = qint64(1) << 53;
    EXPECT_EQ(GCRealTimeMatchHelper::unarchivePacket(
                  GCRealTimeMatchHelper::archivePacket({{"a", limit}, {"b", -limit}})),
              (QVariantMap{{"a", limit}, {"b", -limit}}));
    EXPECT_TRUE(GCRealTimeMatchHelper::archivePacket({{"move", limit + 1}}).isEmpty());
    EXPECT_TRUE(GCRealTimeMatchHelper::archivePacket({{"move", -limit - 1}}).isEmpty());
    EXPECT_FALSE(GCRealTimeMatchHelper::unarchivePacket("[1,2]"));
    EXPECT_FALSE(GCRealTimeMatchHelper::unarchivePacket(QByteArray()));
}

TEST(LiveMatches, TheListShowsTheNewestFirstWithTodaysPoints) {
    TestPlatform platform;
    auto& helper = GCRealTimeMatchHelper::sharedInstance();
    const QDateTime when = platform.scheduler().now();
    helper.saveFinishedMatch(entry(QStringLiteral("أول"), 2, when));
    helper.saveFinishedMatch(entry(QStringLiteral("ثان"), 0, when));
    helper.saveFinishedMatch(entry(QStringLiteral("ثالث"), -4, when));
    RealTimeBattleListViewController list;
    list.viewDidLoad();
    const QVariantList rows = list.rows();
    ASSERT_EQ(rows.size(), 3);
    const auto& rank = RankManager::sharedInstance();
    EXPECT_EQ(rows.at(0).toMap().value("opponentName"), QStringLiteral("ثالث"));
    EXPECT_EQ(rows.at(0).toMap().value("outcome"), QStringLiteral("خسارة"));
    EXPECT_EQ(rows.at(0).toMap().value("points"),
              QStringLiteral(" خسرت %1 نقطة").arg(std::abs(rank.getBattleLossPoints())));
    EXPECT_EQ(rows.at(1).toMap().value("outcome"), QStringLiteral("تعادل"));
    EXPECT_EQ(rows.at(2).toMap().value("tint"), "green");
    EXPECT_EQ(rows.at(2).toMap().value("opponentAvatar"), "b3.png");
    EXPECT_EQ(list.winsText(), "0");
}

class Heard : public GCRealTimeMatchDelegate {
public:
    void realTimeMatchFoundUsingStandardMatchMaker(std::shared_ptr<GKMatch>) override {}
    void allPlayersConnected() override { calls << "connected"; }
    void playerDisconnected() override { calls << "disconnected"; }
    void matchDidReceiveData(const QVariantMap&) override { calls << "data"; }
    QStringList calls;
};

TEST(LiveMatches, ConnectionChangesReachTheDelegateByTheRule) {
    TestPlatform platform;
    auto& helper = GCRealTimeMatchHelper::sharedInstance();
    Heard heard;
    helper.matchDelegate = &heard;
    const auto match = [](int expected) {
        return GKMatch::fromJson(QJsonObject{{"matchID", "m"},
                                             {"players", QJsonArray{QJsonObject{{"playerID", "Tme"}},
                                                                    QJsonObject{{"playerID", "Tother"}}}},
                                             {"expectedPlayerCount", expected}},
                                 "Tme");
    };
    // Connected while the match still waits for a player: nothing; with nobody more to wait for: all there.
    helper.matchPlayerDidChangeConnectionState(match(1).get(), "Tother", GKPlayerStateConnected);
    EXPECT_TRUE(heard.calls.isEmpty());
    helper.matchPlayerDidChangeConnectionState(match(0).get(), "Tother", GKPlayerStateConnected);
    helper.matchPlayerDidChangeConnectionState(match(0).get(), "Tother", GKPlayerStateDisconnected);
    helper.matchPlayerDidChangeConnectionState(match(0).get(), "Tother", GKPlayerStateUnknown);
    // A packet that is not the game's is not passed on.
    helper.matchDidReceiveDataFromRemotePlayer(nullptr, "junk", "Tother");
    helper.matchDidReceiveDataFromRemotePlayer(nullptr, GCRealTimeMatchHelper::archivePacket({{"type", 1}}),
                                               "Tother");
    EXPECT_EQ(heard.calls, (QStringList{"connected", "disconnected", "disconnected", "data"}));
    helper.matchDelegate = nullptr;
}

} // namespace
