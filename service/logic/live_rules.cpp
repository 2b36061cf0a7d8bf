#include "logic/live_rules.h"

namespace tarvolin::logic::live {

std::string refusalCode(Refusal r) {
    switch (r) {
    case Refusal::NotAParticipant:
        return "no_such_live_match";
    case Refusal::NotInvited:
        return "not_invited";
    case Refusal::NotFound:
        return "live_match_not_found_yet";
    }
    return "refused";
}

Match createWaiting(const std::string& id, const std::string& player, std::int64_t now) {
    Match m;
    m.id = id;
    m.createdAt = now;
    m.automatic = true;
    m.seats[0] = {player, SeatStatus::Seated};
    m.seats[1] = {"", SeatStatus::Waiting};
    return m;
}

Match createInvitation(const std::string& id, const std::string& from, const std::string& to,
                       std::int64_t now) {
    Match m;
    m.id = id;
    m.createdAt = now;
    m.seats[0] = {from, SeatStatus::Seated};
    m.seats[1] = {to, SeatStatus::Invited};
    return m;
}

Match takeWaitingSeat(const Match& m, const std::string& player, std::int64_t now) {
    Match out = m;
    out.seats[1] = {player, SeatStatus::Seated};
    out.foundAt = now;
    return out;
}

Result accept(const Match& m, const std::string& player, std::int64_t now) {
    const int seat = seatOf(m, player);
    if (seat < 0) {
        return Refusal::NotAParticipant;
    }
    if (m.seats[seat].status != SeatStatus::Invited) {
        // Accepting twice changes nothing; the inviter has nothing to accept.
        return m.foundAt > 0 && seat == 1 ? Result{m} : Result{Refusal::NotInvited};
    }
    Match out = m;
    out.seats[seat].status = SeatStatus::Seated;
    out.foundAt = now;
    return out;
}

Result connect(const Match& m, const std::string& player) {
    const int seat = seatOf(m, player);
    if (seat < 0) {
        return Refusal::NotAParticipant;
    }
    if (m.foundAt == 0) {
        return Refusal::NotFound;
    }
    Match out = m;
    out.seats[seat].status = SeatStatus::Connected;
    return out;
}

int seatOf(const Match& m, const std::string& player) {
    for (std::size_t i = 0; i < m.seats.size(); ++i) {
        if (!player.empty() && m.seats[i].playerId == player) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

std::string opponentOf(const Match& m, const std::string& player) {
    const int seat = seatOf(m, player);
    return seat < 0 ? std::string() : m.seats[1 - seat].playerId;
}

int expectedPlayerCount(const Match& m, const std::string& player) {
    int expected = 0;
    for (const Seat& s : m.seats) {
        if (s.playerId != player && s.status != SeatStatus::Connected) {
            ++expected;
        }
    }
    return expected;
}

bool stale(const Match& m, std::int64_t now) {
    if (now - m.createdAt > kMaxLifeMs) {
        return true;
    }
    if (m.foundAt == 0) {
        return now - m.createdAt > kWaitMs;
    }
    const bool bothConnected =
        m.seats[0].status == SeatStatus::Connected && m.seats[1].status == SeatStatus::Connected;
    return !bothConnected && now - m.foundAt > kConnectMs;
}

} // namespace tarvolin::logic::live
