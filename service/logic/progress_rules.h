// The rules of a player's saved progress, with no storage and no clock of their own: what a progress document
// must hold, and how much gold a save may claim over the one before it. The amounts are the game's own; each
// names where the game pays it.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

namespace tarvolin::logic::progress {

// The document's layout; a document of another schema is refused.
constexpr std::int64_t kSchemaVersion = 1;
// The largest document, in bytes of its JSON.
constexpr std::size_t kMaxDocumentBytes = 64 * 1024;
// How many versions of a player are kept.
constexpr std::size_t kKeptVersions = 5;
// The largest count a document may hold (a level, gold, a counter): far above any real profile.
constexpr std::int64_t kMaxCount = 1'000'000'000'000LL;
// The most achievements, daily records or rewarded levels a document lists.
constexpr std::size_t kMaxListItems = 2000;
constexpr std::size_t kMaxKeyBytes = 64;

// The game's amounts of gold.
constexpr std::int64_t kStartingGold = 150;     // CreditsManager::kStartingCredits, once per profile
constexpr std::int64_t kLevelsPerRound = 25;    // Game::kLevelsPerRound
constexpr std::int64_t kLevelGold = 5;          // RankManager::getLevelCreditsReward, each level solved
constexpr std::int64_t kRoundGold = 100;        // RankManager::getRoundCreditsReward, each round finished
constexpr std::int64_t kDailyBonusGold = 25;    // BonusManager::getBonusListCredits, daily
constexpr std::int64_t kWeeklyBonusGold = 50;   // BonusManager::getBonusListCredits, weekly
constexpr std::int64_t kMonthlyBonusGold = 100; // BonusManager::getBonusListCredits, monthly
constexpr std::int64_t kReturnGiftGold = 75;    // NotificationManager::kReEngagementGift
// All that a new active day can pay: the three usage bonuses and the gift for coming back.
constexpr std::int64_t kGoldPerActiveDay =
    kDailyBonusGold + kWeeklyBonusGold + kMonthlyBonusGold + kReturnGiftGold;
// A bonus history of this many records is emptied and pays no more (BonusManager::kHistoryLimit): the most
// bonus days a first save may claim.
constexpr std::int64_t kMaxBonusDays = 101;
constexpr std::int64_t kShareGold = 50;     // GameViewController::kShareRewardCredits
constexpr std::int64_t kSharesPaid = 10;    // GameViewController::kSharedLevelsPaid
constexpr std::int64_t kAdRewardGold = 25;  // GameViewController::kVideoRewardCredits, per ad reward
constexpr std::int64_t kDayMs = 86'400'000; // the longest calendar day that counts

// The gold of an achievement collected (GameAdditions::getGameAchievementsData); 0 for an unknown one.
std::int64_t achievementGold(std::string_view id);

// What the gold check reads of a document.
struct Summary {
    std::int64_t level = 0; // the next level to play: levels solved or skipped so far
    std::int64_t gold = 0;
    std::int64_t skips = 0;
    std::int64_t points = 0;
    std::int64_t activeDays = 0;
    std::int64_t levelsShared = 0;
    std::set<std::string> rewardedAchievements;
};

// Why a document is refused: the field at fault and what is wrong with it.
struct DocumentError {
    std::string message;
};
// Reads a progress document (the JSON text of the "progress" object). Every field the game saves is checked
// for its type and range, so that a stored document always restores.
std::variant<Summary, DocumentError> readDocument(std::string_view json);

// What the service itself has seen the player earn since the last save.
struct Earnings {
    std::int64_t purchasedGold = 0; // purchases and restorations of gold packs
    std::int64_t adRewards = 0;     // rewards of rewarded ads
    std::int64_t exchangeGold = 0;  // gold given to him in answered exchanges
};
// The gold of an exchange's match data: its "gold" number, 0 when there is none or the data is no object.
std::int64_t exchangeGold(std::string_view matchData);

// The gold the levels from `from` up to `to` pay: each level solved, and each round finished on the way.
std::int64_t levelGold(std::int64_t from, std::int64_t to);

// How much the gold may rise from the previous save (nothing: the first save, from no gold at all) to the
// next one, elapsedMs after it.
std::int64_t goldAllowance(const std::optional<Summary>& previous, const Summary& next,
                           std::int64_t elapsedMs, const Earnings& earned);
// Whether the next save's gold stays within the allowance; gold that falls is always fine.
bool goldEarned(const std::optional<Summary>& previous, const Summary& next, std::int64_t elapsedMs,
                const Earnings& earned);

} // namespace tarvolin::logic::progress
