// The rules of a turn-based match of two seats, with no storage and no clock of their own: who may act, what
// each move changes, where a turn goes when its time runs out, and which waiting match a player joins. The
// store applies a move's result in one transaction; the caller gives the time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarvolin::logic::match {

// The numbers are the wire's, as the game reads them.
enum class Status { Unknown = 0, Open = 1, Ended = 2, Matching = 3 };
enum class SeatStatus { Unknown = 0, Invited = 1, Declined = 2, Matching = 3, Active = 4, Done = 5 };
enum class Outcome {
    None = 0,
    Quit = 1,
    Won = 2,
    Lost = 3,
    Tied = 4,
    TimeExpired = 5,
    First = 6,
    Second = 7
};

constexpr std::size_t kSeats = 2;
constexpr std::size_t kMaxDataBytes = 64 * 1024;
// A turn's time when the player names none: a week, in milliseconds.
constexpr std::int64_t kDefaultTurnTimeoutMs = 604800LL * 1000;
// The longest turn that may be asked for: a year.
constexpr std::int64_t kMaxTurnTimeoutMs = 31449600LL * 1000;
// The invitation error code that the game maps to its message.
constexpr int kInvitationRefusedCode = 8;
// Exchanges (a player asking another for gold) per creator: at most kMaxExchangesPerWindow created within any
// kExchangeWindowMs, and at most kMaxOpenExchangesPerPair in play from him to the same recipient.
constexpr std::size_t kMaxExchangesPerWindow = 10;
constexpr std::int64_t kExchangeWindowMs = 86400LL * 1000;
constexpr std::size_t kMaxOpenExchangesPerPair = 1;

// What a match was asked for; set at its creation and never changed. The names are the wire's and the
// database's.
enum class Purpose { None, Battle, Exchange };
const char* purposeName(Purpose p);
// Nothing for a name that is not a purpose.
std::optional<Purpose> purposeFrom(std::string_view name);

struct Seat {
    std::string playerId; // empty while the seat waits for automatic matching
    SeatStatus status = SeatStatus::Unknown;
    Outcome outcome = Outcome::None;
    std::int64_t lastTurnAt = 0; // ms; 0 before the first turn ended by this seat
    bool removed = false;        // taken out of this player's list
};

struct Match {
    std::string id;
    Status status = Status::Unknown;
    std::int64_t createdAt = 0;     // ms
    std::vector<Seat> seats;        // always kSeats, in the fixed order: 0 the sender, 1 the receiver
    int current = -1;               // the seat that holds the turn; -1 when none does
    std::int64_t turnDeadline = 0;  // ms; 0 when the turn cannot time out
    std::vector<int> fallThrough;   // the seats the turn goes to, in order, when the deadline passes
    std::int64_t turnTimeoutMs = 0; // the timeout each of them gets
    std::string data;               // the match data, replaced whole by each writer
    std::string messageKey;         // the notice to the player who gets the turn
    std::vector<std::string> messageArguments;
    std::int64_t updatedAt = 0;
    Purpose purpose = Purpose::None;
};

enum class Refusal {
    NotAParticipant, // the player has no seat in the match
    NotYourTurn,     // someone else holds the turn
    MatchEnded,      // nothing moves in an ended match
    MatchNotEnded,   // a match in play cannot be removed or played again
    DataTooLarge,    // over kMaxDataBytes
    BadNextSeats,    // the next participants are empty, unknown or repeated
    BadTimeout,      // not above 0 or over kMaxTurnTimeoutMs
    BadOutcomes,     // an outcome for each seat is needed, and None is not one
    OwnMatch,        // a player does not join the waiting seat of his own match
    SeatTaken,       // the waiting seat is no longer waiting
    SamePlayer,      // a match against oneself
    NoOpponent,      // the second seat never filled: there is nobody to play again
    NotDue,          // the turn has not run out (or another instance has moved it already)
};
const char* refusalCode(Refusal r);

// Who is told what after a move: the turn to the player who now holds it, the end to every player.
struct Notice {
    enum class Kind { Turn, MatchEnded, Invitation } kind;
    std::string playerId;
    bool operator==(const Notice&) const = default;
};

struct Moved {
    Match match;
    std::vector<Notice> notices;
};
using Result = std::variant<Moved, Refusal>;

inline bool refused(const Result& r) {
    return std::holds_alternative<Refusal>(r);
}

// A match that invites one chosen player; the creator holds the first turn.
Result createInvitation(const std::string& id, const std::string& creator, const std::string& recipient,
                        std::int64_t now, Purpose purpose = Purpose::None);
// A match whose second seat waits for automatic matching; the creator holds the first turn.
Match createWaiting(const std::string& id, const std::string& creator, std::int64_t now,
                    Purpose purpose = Purpose::None);
// The waiting match a player joins: the oldest whose second seat still waits and that is not his own.
std::optional<std::size_t> pickWaitingMatch(const std::vector<Match>& candidates, const std::string& player);
// Takes the waiting seat; if the turn was already passed to it, the joiner is told it is his turn.
Result joinWaitingSeat(const Match& m, const std::string& player, std::int64_t now);

// Ends the turn of the player who holds it: the data is replaced, the turn goes to the first of `next`, and
// if that one lets timeoutMs pass, to the following one, and so on.
Result endTurn(const Match& m, const std::string& player, const std::vector<int>& next,
               std::int64_t timeoutMs, const std::string& data, std::int64_t now);
// Sets the notice that the next holder of the turn reads (a localisation key and its arguments).
Result setMessage(const Match& m, const std::string& player, const std::string& key,
                  const std::vector<std::string>& arguments);
// Ends the match in turn with an outcome for every seat.
Result endMatchInTurn(const Match& m, const std::string& player, const std::vector<Outcome>& outcomes,
                      const std::string& data, std::int64_t now);
// The turn whose deadline has passed goes to the next seat of its list; nothing when no deadline has passed.
// A list that runs out leaves the turn where it is, with no deadline.
std::optional<Moved> expireTurn(const Match& m, std::int64_t now);
// expireTurn as a move: NotDue when nothing has run out.
Result expire(const Match& m, std::int64_t now);
// Takes an ended match out of one player's list; the other keeps it.
Result removeFromList(const Match& m, const std::string& player);
// A new invitation to the same opponent, from a player of an ended match, for the same purpose.
Result rematch(const Match& m, const std::string& player, const std::string& newId, std::int64_t now);

// An invitation goes only to a friend or to a player with whom a battle has ended before.
bool mayInvite(bool isFriend, bool battledBefore);

// Why a new exchange may not be stored. TooMany waits retryAfterMs, until the oldest exchange that counts
// leaves the window.
struct ExchangeRefusal {
    enum class Kind { TooMany, AlreadyOpen } kind;
    std::int64_t retryAfterMs = 0;
};
// Whether the creator of an exchange may have one more at `now`: `createdAt` holds the creation times of his
// exchanges (older ones than the window are passed over), `openToRecipient` how many of his exchanges to the
// same recipient are still in play. An open one refuses first: waiting would not help.
std::optional<ExchangeRefusal> checkExchange(std::vector<std::int64_t> createdAt, std::size_t openToRecipient,
                                             std::int64_t now);

// The seat of a player, or -1.
int seatOf(const Match& m, const std::string& player);
// The matches in a player's list: seated and not removed.
bool isListedFor(const Match& m, const std::string& player);

} // namespace tarvolin::logic::match
