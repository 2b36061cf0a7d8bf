#include "GCRealTimeMatchHelper.h"

#include "multiplayer/GCMatchData.h"
#include "multiplayer/RealTimeBattleStartViewController.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/UserDefaults.h"

#include <QDateTime>

GCRealTimeMatchHelper& GCRealTimeMatchHelper::sharedInstance() {
    return Shared<GCRealTimeMatchHelper>::instance();
}

void GCRealTimeMatchHelper::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    if (defaults.hasKey(kLastMatchStatusKey)) {
        lastMatchStatus = defaults.integerForKey(kLastMatchStatusKey);
    }
    matchHistory.clear();
    const QVariant stored = defaults.objectForKey(kMatchHistoryKey);
    if (!stored.isValid()) {
        return;
    }
    if (stored.typeId() != QMetaType::QVariantList) {
        qWarning("The stored match history is not a list; it starts empty.");
        return;
    }
    for (const QVariant& entry : stored.toList()) {
        // Only entries of the right shape stay; the others are dropped with a word.
        const QVariantMap map = entry.toMap();
        if (entry.typeId() != QMetaType::QVariantMap || !map.value("opponentName").canConvert<QString>() ||
            !map.value("date").toDateTime().isValid()) {
            qWarning("A stored finished match is not one; it is left out.");
            continue;
        }
        matchHistory.append(map);
    }
}

void GCRealTimeMatchHelper::saveLastMatchStatus(qint64 status) {
    lastMatchStatus = status;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(status, kLastMatchStatusKey);
    defaults.synchronize();
}

void GCRealTimeMatchHelper::saveFinishedMatch(const QVariantMap& entry) {
    matchHistory.append(entry);
    QVariantList list;
    for (const QVariantMap& m : std::as_const(matchHistory)) {
        list.append(m);
    }
    auto& defaults = Platform::shared().userDefaults();
    defaults.setObjectForKey(list, kMatchHistoryKey);
    defaults.synchronize();
}

void GCRealTimeMatchHelper::startStandardMatchMakerOnViewControllerWithInvite(
    ViewController* /*presenting*/, const std::optional<GKInvite>& invite) {
    GKMatchmakerViewController* picker = nullptr;
    if (invite) {
        picker = GKMatchmakerViewController::initWithInvite(*invite);
    } else {
        GKMatchRequest request;
        request.setMinPlayers(2);
        request.setMaxPlayers(2);
        request.setDefaultNumberOfPlayers(2);
        picker = GKMatchmakerViewController::initWithMatchRequest(request);
    }
    picker->setMatchmakerDelegate(this);
    Platform::shared().navigator().presentViewController(picker);
}

void GCRealTimeMatchHelper::findRandomMatchWithCompletionHandler(
    std::function<void(std::shared_ptr<GKMatch>, std::optional<GKError>)> handler) {
    GKMatchRequest request;
    request.setMinPlayers(2);
    request.setMaxPlayers(2);
    GKMatchmaker::sharedMatchmaker().findMatchForRequestWithCompletionHandler(
        request, [this, handler](std::shared_ptr<GKMatch> match, std::optional<GKError> error) {
            if (error || !match) {
                return; // a failed search is dropped without a word
            }
            if (handler) {
                handler(match, std::nullopt);
                return;
            }
            openStartScreen(match, std::nullopt);
        });
}

QByteArray GCRealTimeMatchHelper::archivePacket(const QVariantMap& data) {
    const std::optional<GCMatchData> packet = GCMatchData::fromValues(data);
    return packet ? packet->archivedData() : QByteArray();
}

std::optional<QVariantMap> GCRealTimeMatchHelper::unarchivePacket(const QByteArray& bytes) {
    const std::optional<GCMatchData> packet = GCMatchData::unarchive(bytes);
    if (!packet) {
        return std::nullopt;
    }
    return packet->values();
}

void GCRealTimeMatchHelper::sendMatchDataDataWithType(GKMatch* match, QVariantMap data, qint64 type) {
    if (!match) {
        return;
    }
    data.insert(QStringLiteral("type"), type);
    const QByteArray bytes = archivePacket(data);
    if (bytes.isEmpty()) {
        qWarning("A live packet holds a value that is neither text nor a whole number; it is not sent.");
        return;
    }
    std::optional<GKError> error;
    match->sendDataToAllPlayersWithDataModeError(bytes, 0, &error); // the error is dropped
}

void GCRealTimeMatchHelper::matchmakerViewControllerDidFindMatch(GKMatchmakerViewController* /*picker*/,
                                                                 std::shared_ptr<GKMatch> match) {
    Platform::shared().navigator().dismissViewController();
    if (matchDelegate) {
        matchDelegate->realTimeMatchFoundUsingStandardMatchMaker(match);
    }
}

void GCRealTimeMatchHelper::matchmakerViewControllerWasCancelled(GKMatchmakerViewController* /*picker*/) {
    Platform::shared().navigator().dismissViewController();
}

void GCRealTimeMatchHelper::matchDidReceiveDataFromRemotePlayer(GKMatch* /*match*/, const QByteArray& data,
                                                                const QString& /*playerID*/) {
    const std::optional<QVariantMap> packet = unarchivePacket(data);
    if (!packet) {
        qWarning("A live packet that is not the game's is left alone.");
        return;
    }
    if (matchDelegate) {
        matchDelegate->matchDidReceiveData(*packet);
    }
}

void GCRealTimeMatchHelper::matchPlayerDidChangeConnectionState(GKMatch* match, const QString& /*playerID*/,
                                                                int state) {
    if (state == GKPlayerStateUnknown || state == GKPlayerStateDisconnected) {
        if (matchDelegate) {
            matchDelegate->playerDisconnected();
        }
    } else if (state == GKPlayerStateConnected && match && match->expectedPlayerCount() == 0) {
        if (matchDelegate) {
            matchDelegate->allPlayersConnected();
        }
    }
}

void GCRealTimeMatchHelper::playerDidAcceptInvite(const GKInvite& invite) {
    openStartScreen(nullptr, invite);
}

void GCRealTimeMatchHelper::openStartScreen(std::shared_ptr<GKMatch> match,
                                            const std::optional<GKInvite>& invite) {
    auto* start = new RealTimeBattleStartViewController();
    start->useStandardMatchMaker = true;
    start->setMatch(std::move(match));
    start->invite = invite;
    Platform::shared().navigator().presentViewController(start);
}
