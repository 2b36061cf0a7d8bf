// A leaderboard of many players written straight into a new SQLite database through the service's store,
// with no sign-up and no password hashing. Plain C++: the store's headers and Qt's keywords stay apart.
#pragma once

#include <cstdint>
#include <string>

namespace tarvolin::fill {

// Stores `players` players in the database at `path` (created and migrated), named "player <i>", with
// distinct scores: player i (from 0) has scoreOfPlace(players, i + 1), so that he holds place i + 1.
void fillLeaderboard(const std::string& path, std::int64_t players);

// The score held by place `place` of a board filled with `players` players.
inline std::int64_t scoreOfPlace(std::int64_t players, std::int64_t place) {
    return 10 * (players - place + 1) + 10;
}

// A score that takes place `place` among a filled board: between those of places place - 1 and place.
inline std::int64_t scoreForPlace(std::int64_t players, std::int64_t place) {
    return scoreOfPlace(players, place) + 5;
}

} // namespace tarvolin::fill
