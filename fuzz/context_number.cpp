// The context number a score carries: the fields a player's summary is read from. Every 64-bit number is
// broken up in each layout and summarised; numbers the game itself makes give their fields back.
//
// An input is read as little-endian 64-bit numbers, eight bytes each.

#include "game_fixture.h"

#include "multiplayer/GCPlayerViewController.h"
#include "progress/UserStatsManager.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void breakAll(qint64 number) {
    for (const QStringList& fields : {UserStatsManager::breakGeneralContextNumber(number),
                                      UserStatsManager::breakContextNumberWithTimeTravel(number),
                                      UserStatsManager::breakContextNumberWithTrialsUsed(number)}) {
        check(fields.isEmpty() || fields.size() == 3 || fields.size() == 5);
    }
    const QVariantMap summary = GCPlayerViewController::summaryOfContext(number);
    for (auto it = summary.begin(); it != summary.end(); ++it) {
        check(it.value().typeId() == QMetaType::QString);
    }
}

qint64 within(quint64 raw, qint64 low, qint64 high) {
    return low + static_cast<qint64>(raw % static_cast<quint64>(high - low + 1));
}

// A number as the game makes it for a score, broken up again.
void roundTrip(quint64 raw) {
    const qint64 level = within(raw, 1, 9999);
    const qint64 achievements = within(raw >> 14, 1, 99);
    const qint64 days = within(raw >> 21, 1, 999);
    const qint64 battles = within(raw >> 31, 0, 999);
    const qint64 credits = within(raw >> 41, 1, 99999);
    const QString joined = UserStatsManager::createPaddingStringWithDigits(level, 4) +
                           UserStatsManager::createPaddingStringWithDigits(achievements, 2) +
                           UserStatsManager::createPaddingStringWithDigits(days, 3) +
                           UserStatsManager::createPaddingStringWithDigits(battles, 3) +
                           UserStatsManager::createPaddingStringWithDigits(credits, 5);
    const QStringList fields = UserStatsManager::breakGeneralContextNumber(joined.toLongLong());
    check(fields.size() == 5);
    check(fields.at(0).toLongLong() == level && fields.at(1).toLongLong() == achievements &&
          fields.at(2).toLongLong() == days && fields.at(3).toLongLong() == battles &&
          fields.at(4).toLongLong() == credits);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tarvolin::fuzz::GameFixture fixture;
    fixture.installOnce();
    for (std::size_t at = 0; at + 8 <= size && at < 8 * 64; at += 8) {
        quint64 raw = 0;
        std::memcpy(&raw, data + at, 8);
        breakAll(static_cast<qint64>(raw));
        roundTrip(raw);
    }
    return 0;
}
