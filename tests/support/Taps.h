// Taps on the play screen's tray, as a player makes them.
#pragma once

#include "core/GameViewController.h"

// Taps, in order, a tray tile for each letter, each tile once: the n-th of a letter takes its n-th tile.
// (A copy of the letters: the last tap may solve the level and build the next one.)
inline void tapLetters(GameViewController* vc, const QString letters) {
    QList<LetterLabel*> used;
    for (const QChar c : letters) {
        for (LetterLabel* t : std::as_const(vc->lettersLabels)) {
            if (t->text() == QString(c) && !used.contains(t)) {
                used.append(t);
                vc->tapTile(static_cast<int>(vc->lettersLabels.indexOf(t)));
                break;
            }
        }
    }
}
