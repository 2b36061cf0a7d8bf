#pragma once

#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QHash>
#include <QList>
#include <functional>
#include <optional>

// What the battles and exchanges pages share: their matches out of the player's list, and the names of the
// players seated in them.
namespace MatchLists {

// The matches whose data is a dictionary of this "type", newest first; a failed load gives none.
QList<GKTurnBasedMatch> ofType(const std::optional<QList<GKTurnBasedMatch>>& matches, const QString& type);

// Loads the display names of the players seated in the matches whose names `known` does not hold yet; `done`
// gets them, and is not called when there are none to load.
void loadNames(const QList<GKTurnBasedMatch>& matches, const QHash<QString, QString>& known,
               std::function<void(QList<GKPlayer>)> done);

} // namespace MatchLists
