#include "leaderboard_fill.h"

#include "logic/text_rules.h"
#include "store/store.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace tarvolin::fill {

void fillLeaderboard(const std::string& path, std::int64_t players) {
    auto store = store::makeSqlStore(store::openDatabase(path));
    store->migrate();
    constexpr std::int64_t kChunk = 20'000;
    for (std::int64_t base = 0; base < players; base += kChunk) {
        std::vector<store::Credentials> creds;
        std::vector<store::ScoreRecord> scores;
        for (std::int64_t i = base; i < std::min(players, base + kChunk); ++i) {
            char id[24];
            std::snprintf(id, sizeof id, "F%015lld", static_cast<long long>(i));
            const std::string name = "player " + std::to_string(i + 1);
            creds.push_back(store::Credentials{store::PlayerRecord{id, name, 0}, logic::nameKey(name), "!"});
            scores.push_back(store::ScoreRecord{id, scoreOfPlace(players, i + 1), 0, i + 1, 0});
        }
        store->importPlayers(creds, scores);
    }
}

} // namespace tarvolin::fill
