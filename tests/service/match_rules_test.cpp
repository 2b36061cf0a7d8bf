#include "logic/match_rules.h"

#include <gtest/gtest.h>

using namespace tarvolin::logic::match;

namespace {

Match moved(const Result& r) {
    EXPECT_FALSE(refused(r)) << (refused(r) ? refusalCode(std::get<Refusal>(r)) : "");
    return refused(r) ? Match{} : std::get<Moved>(r).match;
}
std::vector<Notice> notices(const Result& r) {
    return refused(r) ? std::vector<Notice>{} : std::get<Moved>(r).notices;
}
Refusal refusal(const Result& r) {
    EXPECT_TRUE(refused(r));
    return refused(r) ? std::get<Refusal>(r) : Refusal::NotAParticipant;
}

constexpr std::int64_t kDay = 86400LL * 1000;

} // namespace

TEST(MatchRules, ABattleByInvitationFromFirstTurnToOutcomes) {
    Result created = createInvitation("m1", "amal", "badr", 1000);
    Match m = moved(created);
    EXPECT_EQ(m.status, Status::Open);
    EXPECT_EQ(m.current, 0);
    EXPECT_EQ(m.seats[1].status, SeatStatus::Invited);
    EXPECT_TRUE(notices(created).empty()); // told when the turn comes to him

    // Only the sender plays first; the receiver cannot act yet, a stranger never.
    EXPECT_EQ(refusal(endTurn(m, "badr", {0}, kDay, "x", 2000)), Refusal::NotYourTurn);
    EXPECT_EQ(refusal(endTurn(m, "cyrine", {1}, kDay, "x", 2000)), Refusal::NotAParticipant);
    EXPECT_EQ(refusal(setMessage(m, "badr", "k", {})), Refusal::NotYourTurn);
    m = moved(setMessage(m, "amal", "gc.battle.turnMessage", {"أمل"}));
    EXPECT_EQ(m.messageArguments, std::vector<std::string>{"أمل"});

    const Result turn = endTurn(m, "amal", {1}, kDay, "battle data", 2000);
    m = moved(turn);
    EXPECT_EQ(m.current, 1);
    EXPECT_EQ(m.data, "battle data");
    EXPECT_EQ(m.turnDeadline, 2000 + kDay);
    EXPECT_EQ(m.seats[0].lastTurnAt, 2000);
    EXPECT_EQ(notices(turn), (std::vector<Notice>{{Notice::Kind::Invitation, "badr"}}));

    // The receiver answers and ends the match with both outcomes; both players hear of it.
    EXPECT_EQ(refusal(endMatchInTurn(m, "amal", {Outcome::Won, Outcome::Lost}, "", 3000)),
              Refusal::NotYourTurn);
    EXPECT_EQ(refusal(endMatchInTurn(m, "badr", {Outcome::Won, Outcome::None}, "", 3000)),
              Refusal::BadOutcomes);
    EXPECT_EQ(refusal(endMatchInTurn(m, "badr", {Outcome::Won}, "", 3000)), Refusal::BadOutcomes);
    const Result end = endMatchInTurn(m, "badr", {Outcome::Lost, Outcome::Won}, "answered", 3000);
    m = moved(end);
    EXPECT_EQ(m.status, Status::Ended);
    EXPECT_EQ(m.current, -1);
    EXPECT_EQ(m.turnDeadline, 0);
    EXPECT_EQ(m.seats[0].outcome, Outcome::Lost);
    EXPECT_EQ(m.seats[1].outcome, Outcome::Won);
    EXPECT_EQ(m.seats[1].status, SeatStatus::Done);
    EXPECT_EQ(m.data, "answered");
    EXPECT_EQ(notices(end),
              (std::vector<Notice>{{Notice::Kind::MatchEnded, "amal"}, {Notice::Kind::MatchEnded, "badr"}}));

    // Nothing moves after the end.
    EXPECT_EQ(refusal(endTurn(m, "badr", {0}, kDay, "", 4000)), Refusal::MatchEnded);
    EXPECT_FALSE(expireTurn(m, 10 * kDay));
}

TEST(MatchRules, AutomaticMatchingFillsTheOldestWaitingSeatNeverOnesOwn) {
    std::vector<Match> waiting{createWaiting("new", "dana", 300), createWaiting("old", "dana", 100),
                               createWaiting("mine", "eli", 50)};
    EXPECT_EQ(waiting[0].status, Status::Matching);
    EXPECT_EQ(pickWaitingMatch(waiting, "eli"), std::optional<std::size_t>(1));
    EXPECT_EQ(pickWaitingMatch(waiting, "dana"), std::optional<std::size_t>(2));
    EXPECT_EQ(pickWaitingMatch({createWaiting("only", "eli", 1)}, "eli"), std::nullopt);

    // The creator plays first and passes the turn to the empty seat: nobody to tell yet.
    const Result passed = endTurn(waiting[1], "dana", {1, 0}, kMaxTurnTimeoutMs, "level 7", 200);
    Match m = moved(passed);
    EXPECT_TRUE(notices(passed).empty());
    // The joiner finds the turn his at once.
    const Result joined = joinWaitingSeat(m, "eli", 250);
    m = moved(joined);
    EXPECT_EQ(m.status, Status::Open);
    EXPECT_EQ(m.seats[1].playerId, "eli");
    EXPECT_EQ(notices(joined), (std::vector<Notice>{{Notice::Kind::Turn, "eli"}}));
    EXPECT_EQ(refusal(joinWaitingSeat(m, "fadi", 260)), Refusal::SeatTaken);
    EXPECT_EQ(refusal(joinWaitingSeat(waiting[0], "dana", 260)), Refusal::OwnMatch);
    // Joined before the first turn: the creator still holds it and nobody is told.
    EXPECT_TRUE(notices(joinWaitingSeat(waiting[0], "eli", 400)).empty());

    std::vector<Match> taken{m};
    EXPECT_EQ(pickWaitingMatch(taken, "fadi"), std::nullopt);
}

TEST(MatchRules, AnExpiredTurnFallsThroughTheListOnceThenStays) {
    Match m = moved(createInvitation("m", "amal", "badr", 0));
    m = moved(endTurn(m, "amal", {1, 0}, kDay, "d", 1000));
    EXPECT_FALSE(expireTurn(m, 1000 + kDay - 1));
    std::optional<Moved> first = expireTurn(m, 1000 + kDay);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->match.current, 0);
    EXPECT_EQ(first->match.turnDeadline, 1000 + 2 * kDay);
    EXPECT_EQ(first->notices, (std::vector<Notice>{{Notice::Kind::Turn, "amal"}}));
    // Badr let it run out: his time expired, he is done, and the end that Amal then makes is not told to him.
    EXPECT_EQ(first->match.seats[1].outcome, Outcome::TimeExpired);
    EXPECT_EQ(first->match.seats[1].status, SeatStatus::Done);
    EXPECT_EQ(notices(endMatchInTurn(first->match, "amal", {Outcome::Won, Outcome::Lost}, "d", 1000 + kDay)),
              (std::vector<Notice>{{Notice::Kind::MatchEnded, "amal"}}));
    // Applied once, the same deadline does not fire again.
    EXPECT_FALSE(expireTurn(first->match, 1000 + kDay + 5));
    std::optional<Moved> last = expireTurn(first->match, 1000 + 2 * kDay);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->match.current, 0);
    EXPECT_EQ(last->match.turnDeadline, 0);
    EXPECT_TRUE(last->notices.empty());
    EXPECT_FALSE(expireTurn(last->match, 1000 + 400 * kDay));
}

TEST(MatchRules, TurnsRefuseBadNextSeatsTimeoutsAndData) {
    Match m = moved(createInvitation("m", "amal", "badr", 0));
    EXPECT_EQ(refusal(endTurn(m, "amal", {}, kDay, "", 1)), Refusal::BadNextSeats);
    EXPECT_EQ(refusal(endTurn(m, "amal", {2}, kDay, "", 1)), Refusal::BadNextSeats);
    EXPECT_EQ(refusal(endTurn(m, "amal", {1, 1}, kDay, "", 1)), Refusal::BadNextSeats);
    EXPECT_EQ(refusal(endTurn(m, "amal", {-1}, kDay, "", 1)), Refusal::BadNextSeats);
    EXPECT_EQ(refusal(endTurn(m, "amal", {1}, 0, "", 1)), Refusal::BadTimeout);
    EXPECT_EQ(refusal(endTurn(m, "amal", {1}, kMaxTurnTimeoutMs + 1, "", 1)), Refusal::BadTimeout);
    EXPECT_FALSE(refused(endTurn(m, "amal", {1}, kDay, std::string(kMaxDataBytes, 'x'), 1)));
    EXPECT_EQ(refusal(endTurn(m, "amal", {1}, kDay, std::string(kMaxDataBytes + 1, 'x'), 1)),
              Refusal::DataTooLarge);
    EXPECT_EQ(refusal(createInvitation("self", "amal", "amal", 0)), Refusal::SamePlayer);
    // A turn may come back to the player who ends it.
    EXPECT_EQ(moved(endTurn(m, "amal", {0}, kDay, "", 1)).current, 0);
}

TEST(MatchRules, RemovingAndPlayingAgainAfterTheEnd) {
    Match m = moved(createInvitation("m", "amal", "badr", 0));
    EXPECT_EQ(refusal(removeFromList(m, "amal")), Refusal::MatchNotEnded);
    EXPECT_EQ(refusal(rematch(m, "amal", "m2", 5)), Refusal::MatchNotEnded);
    m = moved(endMatchInTurn(m, "amal", {Outcome::Tied, Outcome::Tied}, "", 10));
    Match removed = moved(removeFromList(m, "amal"));
    EXPECT_FALSE(isListedFor(removed, "amal"));
    EXPECT_TRUE(isListedFor(removed, "badr"));
    EXPECT_EQ(refusal(removeFromList(m, "cyrine")), Refusal::NotAParticipant);

    // Either player may play again; the new match invites the other and its asker holds the first turn.
    Match again = moved(rematch(removed, "badr", "m2", 20));
    EXPECT_EQ(again.id, "m2");
    EXPECT_EQ(again.seats[0].playerId, "badr");
    EXPECT_EQ(again.seats[1].playerId, "amal");
    EXPECT_EQ(again.current, 0);
    EXPECT_EQ(again.createdAt, 20);

    // A match whose second seat never filled has nobody to play again.
    Match lonely = createWaiting("w", "dana", 0);
    lonely = moved(endMatchInTurn(lonely, "dana", {Outcome::Quit, Outcome::Won}, "", 1));
    EXPECT_EQ(refusal(rematch(lonely, "dana", "w2", 2)), Refusal::NoOpponent);
}
