#pragma once

#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QHash>
#include <QList>
#include <functional>
#include <memory>
#include <optional>

// What the battles and exchanges pages share: their matches out of the player's list, and the names of the
// players seated in them.
namespace MatchLists {

// The matches whose data is a dictionary of this "type", newest first; a failed load gives none.
QList<GKTurnBasedMatch> ofType(const std::optional<QList<GKTurnBasedMatch>>& matches, const QString& type);

// Loads into `names` (identifier to display name) the names of the players seated in the matches that it does
// not hold yet, then calls `changed`; nothing happens once `alive` has expired, the owner of `names` gone.
void loadNames(const QList<GKTurnBasedMatch>& matches, QHash<QString, QString>* names,
               std::weak_ptr<int> alive, std::function<void()> changed);

} // namespace MatchLists
