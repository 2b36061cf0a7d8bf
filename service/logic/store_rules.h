// The rules of the payment sandbox, with no storage and no clock of their own: which currency a locale pays
// in and how a price is written, and how a transaction moves from the payment sheet to finished. The store
// applies a move in one transaction; the caller gives the time.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tarvolin::logic::shop {

// A catalogue request names at most this many products, each at most this long.
constexpr std::size_t kMaxProductIds = 20;
constexpr std::size_t kMaxProductIdBytes = 100;
constexpr std::int64_t kMinQuantity = 1;
constexpr std::int64_t kMaxQuantity = 10;
// Payment sheets a player may hold open at once.
constexpr std::size_t kMaxPurchasing = 5;
// A payment sheet left open longer than this counts as cancelled.
constexpr std::int64_t kSheetTimeoutMs = 15 * 60 * 1000;

// The error codes of a failed transaction, as the game reads them.
constexpr int kErrorUnknown = 0;
constexpr int kErrorCancelled = 2;
constexpr const char* kDeclinedMessage = "The sandbox declined the payment.";
constexpr const char* kCancelledMessage = "The player cancelled the payment.";
constexpr const char* kSheetLeftMessage = "The payment sheet was left.";

// A product of the catalogue with its price in each currency it is sold in, in minor units.
struct Product {
    std::string id;
    std::string title; // shown to the player (Arabic)
    std::int64_t credits = 0;
    std::int64_t skips = 0;
    std::map<std::string, std::int64_t> prices;
};

// The price of a product as one locale shows it.
struct PriceTag {
    std::string price;    // a decimal with the currency's minor digits: "7.49", "0.599"
    std::string currency; // ISO 4217
    std::string locale;   // language_COUNTRY
};

// The two letters of the country of "ar_SA" or "ar-SA" (upper case); nothing when there are none.
std::optional<std::string> localeCountry(std::string_view locale);
// The currency a country pays in; nothing for a country the store does not price for.
std::optional<std::string> countryCurrency(std::string_view country);
// Digits after the decimal point: 3 for the dinars of Kuwait and Jordan, 2 for the others.
int minorDigits(std::string_view currency);
// "12.99" for 1299 with 2 digits.
std::string formatPrice(std::int64_t minorUnits, int digits);
// The product's price for the locale: its country's currency, else dollars for "en_US".
std::optional<PriceTag> priceFor(const Product& p, std::string_view locale);

// The names are the wire's and the database's.
enum class State { Purchasing, Purchased, Failed, Restored };
const char* stateName(State s);
std::optional<State> stateFrom(std::string_view name);

// What the player's sandbox switch makes of an approved payment.
enum class Outcome { Purchase, Fail, Cancel };
const char* outcomeName(Outcome o);
std::optional<Outcome> outcomeFrom(std::string_view name);

struct Failure {
    int code = kErrorUnknown;
    std::string message;
};

struct Transaction {
    std::string id;
    std::string playerId;
    std::string productId;
    std::int64_t quantity = 1;
    State state = State::Purchasing;
    std::string originalId; // restored ones only
    std::optional<Failure> error;
    bool finished = false;
    std::int64_t createdAt = 0;
    std::int64_t updatedAt = 0;
    std::int64_t seq = 0; // the order of the player's transactions
};

enum class Refusal {
    NotFound,      // no transaction of this player has the id
    NotPurchasing, // only a payment on the sheet is approved or cancelled
    NotSettled,    // a payment on the sheet is not finished
};
using Result = std::variant<Transaction, Refusal>;

// The player's answer on the payment sheet.
enum class Answer { Approve, Cancel };
// An approved payment is purchased or failed as the sandbox switch says; a cancelled one fails with code 2.
// Anything but a payment on the sheet is refused, so that a replayed approval pays nothing.
Result answer(const Transaction& t, const std::string& playerId, Answer a, Outcome sandbox, std::int64_t now);
// Marks a settled transaction finished; one finished already comes back as it is.
Result finish(const Transaction& t, const std::string& playerId, std::int64_t now);
// A new unfinished transaction that hands a finished purchase over again.
Transaction restoration(const Transaction& purchase, std::string id, std::int64_t now);

} // namespace tarvolin::logic::shop
