// The game's reading of the game service's answers: the status and body of a reply as GameService reads
// them, and what the game takes out of the JSON (players, scores, friend requests, achievements, matches,
// store transactions and errors, house ads, saved progress).
//
// The first two bytes of an input give the HTTP status; the rest is the body.

#include "game_fixture.h"

#include "platform/adkit/GADAdContent.h"
#include "platform/gamekit/GKMatch.h"
#include "platform/gamekit/GKTurnBasedMatch.h"
#include "platform/gamekit/GameKit.h"
#include "platform/gamekit/GameService.h"
#include "platform/storekit/SKStoreServer.h"
#include "progress/ProgressDocument.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cstddef>
#include <cstdint>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

// Everything the game reads an object as.
void readObject(const QJsonObject& o) {
    (void)GKPlayer::fromJson(o);
    (void)GKScore::fromJson(o);
    (void)GKFriendRequest::fromJson(o);
    (void)GKAchievement::fromJson(o);
    (void)GKTurnBasedMatch::fromJson(o);
    (void)GKMatch::fromJson(o, QStringLiteral("T0123456789abcdef"));
    (void)GameServiceStoreServer::transactionList(o);
    QString why;
    if (!ProgressDocument::fromJson(o.value(QStringLiteral("progress")), &why)) {
        check(!why.isEmpty());
    }
    why.clear();
    for (const char* format : {"banner", "interstitial", "rewarded"}) {
        if (!GADAdContent::fromJson(o, QLatin1String(format), &why)) {
            check(!why.isEmpty());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tarvolin::fuzz::GameFixture fixture;
    fixture.installOnce();
    if (size < 2) {
        return 0;
    }
    const int status = 100 + (data[0] | data[1] << 8) % 500;
    const QByteArray body(reinterpret_cast<const char*>(data + 2), static_cast<qsizetype>(size - 2));
    QJsonObject object;
    const std::optional<GKError> error =
        GameService::readReply(status, body, QByteArray::number(status), &object);
    check(error.has_value() || (status >= 200 && status < 300));
    if (error) {
        check(!error->code.isEmpty() && error->httpStatus == status);
        (void)error->localizedDescription();
        (void)GameServiceStoreServer::errorFrom(*error);
    }

    readObject(object);
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it->isObject()) {
            readObject(it->toObject());
        } else if (it->isArray()) {
            for (const QJsonValue& v : it->toArray()) {
                readObject(v.toObject());
            }
        }
    }
    return 0;
}
