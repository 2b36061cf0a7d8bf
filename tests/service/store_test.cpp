#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin;
using tarvolin::testing::TestDatabase;

namespace {

store::Credentials player(const std::string& id, const std::string& name) {
    return store::Credentials{store::PlayerRecord{id, name, 1000}, name, "hash-" + id};
}

class StoreTest : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        TARVOLIN_REQUIRE_BACKEND(GetParam());
        db = std::make_unique<TestDatabase>(GetParam());
        s = db->open();
        ASSERT_TRUE(s->createPlayer(player("A", "ali")));
        ASSERT_TRUE(s->createPlayer(player("B", "bader")));
        ASSERT_TRUE(s->createPlayer(player("C", "chadi")));
    }

    store::FriendRequest request(const std::string& id, const std::string& from, const std::string& to) {
        return store::FriendRequest{id, from, to, "let us play", "pending", 2000, std::nullopt};
    }
    store::NewEvent event(const std::string& to) {
        return store::NewEvent{to, "friend_request", R"({"n":1})"};
    }

    std::unique_ptr<TestDatabase> db;
    std::unique_ptr<store::Store> s;
};

} // namespace

TEST_P(StoreTest, MigrationsApplyOnceAndReopeningFindsTheSameSchema) {
    EXPECT_EQ(s->migrate(), static_cast<int>(store::migrations().back().version));
    s.reset();
    s = db->open();
    EXPECT_EQ(s->players({"A"}).size(), 1u);
}

TEST_P(StoreTest, PlayersAreUniqueByNameKeyAndComeBackInTheAskedOrder) {
    EXPECT_FALSE(s->createPlayer(player("D", "ali")));
    EXPECT_FALSE(s->createPlayer(player("A", "other")));
    auto ps = s->players({"C", "nobody", "A"});
    ASSERT_EQ(ps.size(), 2u);
    EXPECT_EQ(ps[0].id, "C");
    EXPECT_EQ(ps[1].displayName, "ali");
    // More identifiers than a statement may take parameters.
    std::vector<std::string> many(70000, "nobody");
    many[69000] = "B";
    EXPECT_EQ(s->players(many).size(), 1u);
    auto cred = s->credentialsByNameKey("bader");
    ASSERT_TRUE(cred);
    EXPECT_EQ(cred->player.id, "B");
    EXPECT_EQ(cred->passwordHash, "hash-B");
    EXPECT_FALSE(s->credentialsByNameKey("nobody"));
}

TEST_P(StoreTest, ASignUpStoresThePlayerAndHisFirstTokenTogether) {
    EXPECT_TRUE(s->createPlayer(player("D", "dalia"), store::TokenRecord{"hd", 100, 500}));
    EXPECT_EQ(s->tokenPlayer("hd", 150), "D");
    // A taken name refuses the sign-up whole: the token of the refused player is not stored either.
    EXPECT_FALSE(s->createPlayer(player("E", "ali"), store::TokenRecord{"he", 100, 500}));
    EXPECT_FALSE(s->tokenPlayer("he", 150));
    EXPECT_TRUE(s->players({"E"}).empty());
}

TEST_P(StoreTest, TokensExpireAndCanBeRemoved) {
    s->addToken("h1", "A", 100, 200);
    s->addToken("h2", "A", 100, 500);
    EXPECT_EQ(s->tokenPlayer("h1", 199), "A");
    EXPECT_FALSE(s->tokenPlayer("h1", 200));
    s->removeToken("h2");
    EXPECT_FALSE(s->tokenPlayer("h2", 150));
    EXPECT_FALSE(s->tokenPlayer("unknown", 150));
}

TEST_P(StoreTest, FriendRequestRulesAndTheirEvent) {
    using O = store::FriendRequestOutcome;
    EXPECT_EQ(s->sendFriendRequest(request("r1", "A", "B"), event("B")), O::Sent);
    EXPECT_EQ(s->sendFriendRequest(request("r2", "A", "B"), event("B")), O::AlreadyRequested);
    EXPECT_EQ(s->sendFriendRequest(request("r3", "B", "A"), event("A")), O::ReverseRequestPending);
    EXPECT_EQ(s->sendFriendRequest(request("r4", "A", "Z"), event("Z")), O::NoSuchPlayer);
    // Only the request that was sent left an event, and only for its receiver.
    EXPECT_EQ(s->pendingEvents("B", 0, 10).size(), 1u);
    EXPECT_TRUE(s->pendingEvents("A", 0, 10).empty());
    ASSERT_EQ(s->incomingRequests("B").size(), 1u);
    EXPECT_EQ(s->incomingRequests("B")[0].message, "let us play");
    EXPECT_EQ(s->outgoingRequests("A")[0].toId, "B");
    EXPECT_FALSE(s->friendRequest("r2"));
}

TEST_P(StoreTest, AnsweringARequestIsForItsReceiverAndHappensOnce) {
    using A = store::AnswerOutcome;
    s->sendFriendRequest(request("r1", "A", "B"), event("B"));
    store::NewEvent accepted{"A", "friend_accepted", "{}"};
    EXPECT_EQ(s->answerFriendRequest("r1", "A", true, 3000, accepted), A::NotFound);
    EXPECT_EQ(s->answerFriendRequest("r1", "C", true, 3000, accepted), A::NotFound);
    EXPECT_TRUE(s->friendIds("A").empty());
    EXPECT_EQ(s->answerFriendRequest("r1", "B", true, 3000, accepted), A::Done);
    EXPECT_EQ(s->answerFriendRequest("r1", "B", false, 3001, std::nullopt), A::NotPending);
    EXPECT_EQ(s->friendIds("A"), std::vector<std::string>{"B"});
    EXPECT_EQ(s->friendIds("B"), std::vector<std::string>{"A"});
    EXPECT_EQ(s->pendingEvents("A", 0, 10).size(), 1u);
    EXPECT_TRUE(s->incomingRequests("B").empty());
    EXPECT_EQ(s->sendFriendRequest(request("r5", "B", "A"), event("A")),
              store::FriendRequestOutcome::AlreadyFriends);
}

TEST_P(StoreTest, DeclinedRequestsMakeNoFriendsAndMayBeSentAgain) {
    s->sendFriendRequest(request("r1", "A", "C"), event("C"));
    EXPECT_EQ(s->answerFriendRequest("r1", "C", false, 3000, std::nullopt), store::AnswerOutcome::Done);
    EXPECT_TRUE(s->friendIds("C").empty());
    EXPECT_EQ(s->friendRequest("r1")->status, "declined");
    EXPECT_EQ(s->sendFriendRequest(request("r2", "A", "C"), event("C")), store::FriendRequestOutcome::Sent);
}

TEST_P(StoreTest, EventsAreNumberedPerPlayerAndDroppedWhenAcknowledged) {
    for (int i = 1; i <= 5; ++i) {
        EXPECT_EQ(s->appendEvent(store::NewEvent{"A", "e", "{\"i\":" + std::to_string(i) + "}"}, 100 + i), i);
    }
    EXPECT_EQ(s->appendEvent(store::NewEvent{"B", "e", "{}"}, 100), 1);
    auto after2 = s->pendingEvents("A", 2, 2);
    ASSERT_EQ(after2.size(), 2u);
    EXPECT_EQ(after2[0].seq, 3);
    EXPECT_EQ(after2[1].payload, "{\"i\":4}");
    s->ackEvents("A", 3);
    auto left = s->pendingEvents("A", 0, 10);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].seq, 4);
    // Numbers go on after acknowledged events: a late client never mixes old and new.
    EXPECT_EQ(s->appendEvent(store::NewEvent{"A", "e", "{}"}, 200), 6);
    EXPECT_EQ(s->pendingEvents("B", 0, 10).size(), 1u);
    EXPECT_THROW(s->appendEvent(store::NewEvent{"Z", "e", "{}"}, 1), store::StoreError);
}

TEST_P(StoreTest, ScoresAreReplacedByTheLatestReport) {
    s->putScore(store::ScoreRecord{"A", 10, 1, 100, 1});
    s->putScore(store::ScoreRecord{"A", 7, 2, 200, 2});
    s->putScore(store::ScoreRecord{"B", std::numeric_limits<std::int64_t>::max(), -1, 300, 3});
    auto a = s->score("A");
    ASSERT_TRUE(a);
    EXPECT_EQ(a->value, 7);
    EXPECT_EQ(a->context, 2);
    EXPECT_EQ(a->reachedAt, 200);
    EXPECT_EQ(s->score("B")->value, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(s->allScores().size(), 2u);
    EXPECT_FALSE(s->score("C"));
}

TEST_P(StoreTest, EverythingSurvivesReopening) {
    s->addToken("h", "A", 1, 1'000'000);
    s->sendFriendRequest(request("r1", "A", "B"), event("B"));
    s->answerFriendRequest("r1", "B", true, 5, store::NewEvent{"A", "friend_accepted", "{}"});
    s->putScore(store::ScoreRecord{"C", 42, 9, 7, 8});
    s->appendEvent(store::NewEvent{"C", "e", "{}"}, 9);
    s.reset();
    s = db->open();
    EXPECT_EQ(s->tokenPlayer("h", 2), "A");
    EXPECT_EQ(s->friendIds("B"), std::vector<std::string>{"A"});
    EXPECT_EQ(s->score("C")->context, 9);
    EXPECT_EQ(s->pendingEvents("C", 0, 10).size(), 1u);
    EXPECT_EQ(s->appendEvent(store::NewEvent{"C", "e", "{}"}, 10), 2);
}

TEST_P(StoreTest, ImportAddsPlayersAndScoresInOneGo) {
    std::vector<store::Credentials> ps;
    std::vector<store::ScoreRecord> scores;
    for (int i = 0; i < 450; ++i) {
        std::string id = "I" + std::to_string(i);
        ps.push_back(player(id, "imported" + std::to_string(i)));
        scores.push_back(store::ScoreRecord{id, i, 0, i, 0});
    }
    s->importPlayers(ps, scores);
    EXPECT_EQ(s->allScores().size(), 450u);
    EXPECT_EQ(s->players({"I449"}).at(0).displayName, "imported449");
    // A clash rolls the whole import back.
    ps = {player("J1", "fresh"), player("J2", "ali")};
    EXPECT_THROW(s->importPlayers(ps, {}), store::StoreError);
    EXPECT_TRUE(s->players({"J1"}).empty());
}

INSTANTIATE_TEST_SUITE_P(Backends, StoreTest, ::testing::ValuesIn(tarvolin::testing::backends()),
                         tarvolin::testing::backendName);
