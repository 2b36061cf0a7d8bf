#include "MatchLists.h"

#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"

#include <algorithm>

namespace MatchLists {

QList<GKTurnBasedMatch> ofType(const std::optional<QList<GKTurnBasedMatch>>& matches, const QString& type) {
    QList<GKTurnBasedMatch> out;
    for (const GKTurnBasedMatch& m : matches.value_or(QList<GKTurnBasedMatch>())) {
        const std::optional<GCMatchData> data = GCMatchData::unarchive(m.matchData);
        if (data && data->string(QStringLiteral("type")) == type) {
            out.append(m);
        }
    }
    std::stable_sort(out.begin(), out.end(), [](const GKTurnBasedMatch& a, const GKTurnBasedMatch& b) {
        return a.creationDate > b.creationDate;
    });
    return out;
}

void loadNames(const QList<GKTurnBasedMatch>& matches, QHash<QString, QString>* names,
               std::weak_ptr<int> alive, std::function<void()> changed) {
    const QHash<QString, QString>& known = *names;
    QStringList ids;
    for (const GKTurnBasedMatch& m : matches) {
        for (const GKTurnBasedParticipant& p : m.participants) {
            if (!p.playerID.isEmpty() && !known.contains(p.playerID) && !ids.contains(p.playerID)) {
                ids.append(p.playerID);
            }
        }
    }
    if (!ids.isEmpty()) {
        GCTurnBasedMatchHelper::sharedInstance().matchService().loadPlayers(
            ids, [names, alive, changed = std::move(changed)](QList<GKPlayer> players) {
                if (alive.expired()) {
                    return;
                }
                for (const GKPlayer& p : players) {
                    names->insert(p.playerID, p.displayName);
                }
                changed();
            });
    }
}

} // namespace MatchLists
