#include "logic/match_rules.h"

#include <algorithm>

namespace tarvolin::logic::match {

const char* refusalCode(Refusal r) {
    switch (r) {
    case Refusal::NotAParticipant:
        return "not_a_participant";
    case Refusal::NotYourTurn:
        return "not_your_turn";
    case Refusal::MatchEnded:
        return "match_ended";
    case Refusal::MatchNotEnded:
        return "match_not_ended";
    case Refusal::DataTooLarge:
        return "data_too_large";
    case Refusal::BadNextSeats:
        return "invalid_next_participants";
    case Refusal::BadTimeout:
        return "invalid_timeout";
    case Refusal::BadOutcomes:
        return "invalid_outcomes";
    case Refusal::OwnMatch:
        return "own_match";
    case Refusal::SeatTaken:
        return "seat_taken";
    case Refusal::SamePlayer:
        return "same_player";
    case Refusal::NoOpponent:
        return "no_opponent";
    case Refusal::NotDue:
        return "not_due";
    }
    return "refused";
}

const char* purposeName(Purpose p) {
    switch (p) {
    case Purpose::None:
        return "";
    case Purpose::Battle:
        return "battle";
    case Purpose::Exchange:
        return "exchange";
    }
    return "";
}

std::optional<Purpose> purposeFrom(std::string_view name) {
    for (Purpose p : {Purpose::None, Purpose::Battle, Purpose::Exchange}) {
        if (name == purposeName(p)) {
            return p;
        }
    }
    return std::nullopt;
}

std::optional<ExchangeRefusal> checkExchange(std::vector<std::int64_t> createdAt, std::size_t openToRecipient,
                                             std::int64_t now) {
    if (openToRecipient >= kMaxOpenExchangesPerPair) {
        return ExchangeRefusal{ExchangeRefusal::Kind::AlreadyOpen, 0};
    }
    std::erase_if(createdAt, [now](std::int64_t t) { return t <= now - kExchangeWindowMs; });
    if (createdAt.size() < kMaxExchangesPerWindow) {
        return std::nullopt;
    }
    // One more is allowed once all but kMaxExchangesPerWindow - 1 of them have left the window.
    std::sort(createdAt.begin(), createdAt.end());
    const std::int64_t leaves = createdAt[createdAt.size() - kMaxExchangesPerWindow] + kExchangeWindowMs;
    return ExchangeRefusal{ExchangeRefusal::Kind::TooMany, leaves - now};
}

int seatOf(const Match& m, const std::string& player) {
    if (player.empty()) {
        return -1;
    }
    for (std::size_t i = 0; i < m.seats.size(); ++i) {
        if (m.seats[i].playerId == player) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool isListedFor(const Match& m, const std::string& player) {
    const int seat = seatOf(m, player);
    return seat >= 0 && !m.seats[static_cast<std::size_t>(seat)].removed;
}

bool mayInvite(bool isFriend, bool battledBefore) {
    return isFriend || battledBefore;
}

namespace {

Match fresh(const std::string& id, std::int64_t now, Purpose purpose) {
    Match m;
    m.id = id;
    m.purpose = purpose;
    m.createdAt = now;
    m.updatedAt = now;
    m.seats.resize(kSeats);
    m.current = 0;
    return m;
}

// Who learns that the turn is now theirs: an invited player learns it as an invitation.
std::vector<Notice> turnNotice(const Match& m) {
    if (m.current < 0) {
        return {};
    }
    const Seat& seat = m.seats[static_cast<std::size_t>(m.current)];
    if (seat.playerId.empty()) {
        return {};
    }
    return {Notice{seat.status == SeatStatus::Invited ? Notice::Kind::Invitation : Notice::Kind::Turn,
                   seat.playerId}};
}

// The acting player must hold the turn of a match in play.
std::optional<Refusal> checkTurn(const Match& m, const std::string& player, int* seat) {
    *seat = seatOf(m, player);
    if (*seat < 0) {
        return Refusal::NotAParticipant;
    }
    if (m.status == Status::Ended) {
        return Refusal::MatchEnded;
    }
    if (m.current != *seat) {
        return Refusal::NotYourTurn;
    }
    return std::nullopt;
}

} // namespace

Result createInvitation(const std::string& id, const std::string& creator, const std::string& recipient,
                        std::int64_t now, Purpose purpose) {
    if (creator == recipient) {
        return Refusal::SamePlayer;
    }
    Match m = fresh(id, now, purpose);
    m.status = Status::Open;
    m.seats[0] = Seat{creator, SeatStatus::Active, Outcome::None, 0, false};
    m.seats[1] = Seat{recipient, SeatStatus::Invited, Outcome::None, 0, false};
    // The invited player hears of it when the first turn comes to him.
    return Moved{m, {}};
}

Match createWaiting(const std::string& id, const std::string& creator, std::int64_t now, Purpose purpose) {
    Match m = fresh(id, now, purpose);
    m.status = Status::Matching;
    m.seats[0] = Seat{creator, SeatStatus::Active, Outcome::None, 0, false};
    m.seats[1] = Seat{std::string(), SeatStatus::Matching, Outcome::None, 0, false};
    return m;
}

std::optional<std::size_t> pickWaitingMatch(const std::vector<Match>& candidates, const std::string& player) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const Match& m = candidates[i];
        if (m.status == Status::Ended || m.seats.size() != kSeats || !m.seats[1].playerId.empty() ||
            m.seats[0].playerId == player) {
            continue;
        }
        if (!best || m.createdAt < candidates[*best].createdAt ||
            (m.createdAt == candidates[*best].createdAt && m.id < candidates[*best].id)) {
            best = i;
        }
    }
    return best;
}

Result joinWaitingSeat(const Match& m, const std::string& player, std::int64_t now) {
    if (m.seats[0].playerId == player) {
        return Refusal::OwnMatch;
    }
    if (m.status == Status::Ended) {
        return Refusal::MatchEnded;
    }
    if (!m.seats[1].playerId.empty()) {
        return Refusal::SeatTaken;
    }
    Match next = m;
    next.seats[1] = Seat{player, SeatStatus::Active, Outcome::None, 0, false};
    next.status = Status::Open;
    next.updatedAt = now;
    // A turn already passed to the waiting seat is now this player's.
    return Moved{next, next.current == 1 ? turnNotice(next) : std::vector<Notice>{}};
}

Result endTurn(const Match& m, const std::string& player, const std::vector<int>& next,
               std::int64_t timeoutMs, const std::string& data, std::int64_t now) {
    int seat = -1;
    if (auto refusal = checkTurn(m, player, &seat)) {
        return *refusal;
    }
    if (data.size() > kMaxDataBytes) {
        return Refusal::DataTooLarge;
    }
    if (next.empty() || next.size() > kSeats) {
        return Refusal::BadNextSeats;
    }
    for (std::size_t i = 0; i < next.size(); ++i) {
        if (next[i] < 0 || next[i] >= static_cast<int>(kSeats) ||
            std::find(next.begin(), next.begin() + static_cast<std::ptrdiff_t>(i), next[i]) !=
                next.begin() + static_cast<std::ptrdiff_t>(i)) {
            return Refusal::BadNextSeats;
        }
    }
    if (timeoutMs <= 0 || timeoutMs > kMaxTurnTimeoutMs) {
        return Refusal::BadTimeout;
    }
    Match after = m;
    Seat& actor = after.seats[static_cast<std::size_t>(seat)];
    actor.status = SeatStatus::Active;
    actor.lastTurnAt = now;
    after.data = data;
    after.current = next.front();
    after.fallThrough.assign(next.begin() + 1, next.end());
    after.turnTimeoutMs = timeoutMs;
    after.turnDeadline = now + timeoutMs;
    after.updatedAt = now;
    return Moved{after, turnNotice(after)};
}

Result setMessage(const Match& m, const std::string& player, const std::string& key,
                  const std::vector<std::string>& arguments) {
    int seat = -1;
    if (auto refusal = checkTurn(m, player, &seat)) {
        return *refusal;
    }
    Match after = m;
    after.messageKey = key;
    after.messageArguments = arguments;
    return Moved{after, {}};
}

Result endMatchInTurn(const Match& m, const std::string& player, const std::vector<Outcome>& outcomes,
                      const std::string& data, std::int64_t now) {
    int seat = -1;
    if (auto refusal = checkTurn(m, player, &seat)) {
        return *refusal;
    }
    if (data.size() > kMaxDataBytes) {
        return Refusal::DataTooLarge;
    }
    if (outcomes.size() != kSeats ||
        std::any_of(outcomes.begin(), outcomes.end(), [](Outcome o) { return o == Outcome::None; })) {
        return Refusal::BadOutcomes;
    }
    Match after = m;
    std::vector<Notice> notices;
    for (std::size_t i = 0; i < kSeats; ++i) {
        // A participant whose turn ran out has left the match: he is not told of its end.
        const bool timedOut = m.seats[i].outcome == Outcome::TimeExpired;
        after.seats[i].outcome = outcomes[i];
        after.seats[i].status = SeatStatus::Done;
        if (!after.seats[i].playerId.empty() && !timedOut) {
            notices.push_back(Notice{Notice::Kind::MatchEnded, after.seats[i].playerId});
        }
    }
    after.seats[static_cast<std::size_t>(seat)].lastTurnAt = now;
    after.status = Status::Ended;
    after.data = data;
    after.current = -1;
    after.turnDeadline = 0;
    after.fallThrough.clear();
    after.updatedAt = now;
    return Moved{after, notices};
}

std::optional<Moved> expireTurn(const Match& m, std::int64_t now) {
    if (m.status == Status::Ended || m.turnDeadline == 0 || now < m.turnDeadline) {
        return std::nullopt;
    }
    Match after = m;
    after.updatedAt = now;
    if (after.fallThrough.empty()) {
        // Nobody left to pass it to: the turn stays, and no longer runs out.
        after.turnDeadline = 0;
        return Moved{after, {}};
    }
    // The participant who let the turn run out is done with the match, his time expired.
    if (after.current >= 0 && after.current < static_cast<int>(after.seats.size())) {
        Seat& late = after.seats[static_cast<std::size_t>(after.current)];
        late.status = SeatStatus::Done;
        late.outcome = Outcome::TimeExpired;
    }
    after.current = after.fallThrough.front();
    after.fallThrough.erase(after.fallThrough.begin());
    after.turnDeadline = now + after.turnTimeoutMs;
    return Moved{after, turnNotice(after)};
}

Result expire(const Match& m, std::int64_t now) {
    if (std::optional<Moved> moved = expireTurn(m, now)) {
        return *moved;
    }
    return Refusal::NotDue;
}

Result removeFromList(const Match& m, const std::string& player) {
    const int seat = seatOf(m, player);
    if (seat < 0) {
        return Refusal::NotAParticipant;
    }
    if (m.status != Status::Ended) {
        return Refusal::MatchNotEnded;
    }
    Match after = m;
    after.seats[static_cast<std::size_t>(seat)].removed = true;
    return Moved{after, {}};
}

Result rematch(const Match& m, const std::string& player, const std::string& newId, std::int64_t now) {
    const int seat = seatOf(m, player);
    if (seat < 0) {
        return Refusal::NotAParticipant;
    }
    if (m.status != Status::Ended) {
        return Refusal::MatchNotEnded;
    }
    const std::string& opponent = m.seats[seat == 0 ? 1 : 0].playerId;
    if (opponent.empty()) {
        return Refusal::NoOpponent;
    }
    return createInvitation(newId, player, opponent, now, m.purpose);
}

} // namespace tarvolin::logic::match
