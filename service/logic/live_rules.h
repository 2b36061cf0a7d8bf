// Live matches: two players find each other (an invitation or automatic matching), connect to the relay,
// and exchange data until one leaves. Pure rules; storage and the relay are elsewhere.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

namespace tarvolin::logic::live {

enum class SeatStatus { Waiting = 0, Invited = 1, Seated = 2, Connected = 3 };

struct Seat {
    std::string playerId; // empty while an automatic seat waits
    SeatStatus status = SeatStatus::Waiting;
};

struct Match {
    std::string id;
    std::int64_t createdAt = 0;
    std::int64_t foundAt = 0; // 0 until both seats are taken
    bool automatic = false;
    std::array<Seat, 2> seats;
};

enum class Refusal { NotAParticipant, NotInvited, NotFound };
std::string refusalCode(Refusal r);

using Result = std::variant<Match, Refusal>;

// Largest piece of data relayed at once, and the pace a connection may send at (a burst, then a steady rate).
constexpr std::size_t kMaxDataBytes = 4096;
constexpr double kMessagesPerSecond = 30;
constexpr double kMessageBurst = 60;
// Live matches a player may be in at once.
constexpr std::size_t kMaxMatches = 5;
// A search or an invitation waits this long for the second player; a found match this long for both to
// connect; no live match lasts longer than the last.
constexpr std::int64_t kWaitMs = 120'000;
constexpr std::int64_t kConnectMs = 60'000;
constexpr std::int64_t kMaxLifeMs = 6LL * 3600 * 1000;

Match createWaiting(const std::string& id, const std::string& player, std::int64_t now);
Match createInvitation(const std::string& id, const std::string& from, const std::string& to,
                       std::int64_t now);
// The waiting seat of someone else's automatic match taken.
Match takeWaitingSeat(const Match& m, const std::string& player, std::int64_t now);
Result accept(const Match& m, const std::string& player, std::int64_t now);
Result connect(const Match& m, const std::string& player);

int seatOf(const Match& m, const std::string& player);
// The other player's identifier (empty while the seat waits).
std::string opponentOf(const Match& m, const std::string& player);
// How many players the match still waits for to connect, as one player sees it.
int expectedPlayerCount(const Match& m, const std::string& player);
// Whether the match has outlived its search, its connection or its life.
bool stale(const Match& m, std::int64_t now);

} // namespace tarvolin::logic::live
