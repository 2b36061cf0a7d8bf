// The play screen by keyboard: typed letters, Backspace, Escape and the help actions' shortcuts.
#include "GameViewController.h"

#include "platform/Platform.h"
#include "screens/Localization.h"

#include <array>

namespace {
// The help actions by the digit of their shortcut, with the key of their name in the table of texts.
struct HelpShortcut {
    int digit;
    const char* name;
};
constexpr std::array<HelpShortcut, 9> kHelpShortcuts{{
    {1, "help.revealLetter"},
    {2, "help.removeLetters"},
    {3, "help.skipLevel"},
    {4, "help.askFriends"},
    {5, "help.watchVideo"},
    {6, "help.shareGame"},
    {7, "help.shareAndReveal"},
    {8, "help.waitForSolution"},
    {9, "help.allHelp"},
}};

// The digit of Ctrl+digit, from the row of digits, the keypad or Arabic-Indic digits; 0 for another key.
int shortcutDigit(const KeyPress& press) {
    for (int digit = 1; digit <= 9; ++digit) {
        if (press.is(Qt::Key_0 + digit, Qt::ControlModifier) ||
            press.is(0x0660 + digit, Qt::ControlModifier)) {
            return digit;
        }
    }
    return 0;
}
} // namespace

bool GameViewController::popupOpen() const {
    auto& nav = Platform::shared().navigator();
    return m_helpPopupVisible || m_revealViewVisible || shareView || nav.presentedViewController() ||
           Keyboard::coveredByOverlay();
}

int GameViewController::trayTileWithLetter(QChar letter) const {
    int first = -1;
    for (int i = 0; i < lettersLabels.size(); ++i) {
        const LetterLabel* tile = lettersLabels.at(i);
        if (tile->recognizer() != LetterLabel::LetterTap || !tile->isOnScreen() ||
            tile->solutionBoxPos >= 0 || tile->text() != QString(letter)) {
            continue;
        }
        if (first < 0) {
            first = i;
            continue;
        }
        const QRectF here = tile->originalFrame;
        const QRectF best = lettersLabels.at(first)->originalFrame;
        // Rows first; within a row the rightmost comes first.
        if (here.top() < best.top() - best.height() / 2 ||
            (std::abs(here.top() - best.top()) <= best.height() / 2 && here.right() > best.right())) {
            first = i;
        }
    }
    return first;
}

bool GameViewController::typeLetters(const QString& text) {
    if (popupOpen()) {
        return false;
    }
    bool moved = false;
    for (const QChar letter : Keyboard::letters(text)) {
        const int index = trayTileWithLetter(letter);
        if (index >= 0) {
            tapTile(index);
            moved = true;
        }
    }
    return moved;
}

bool GameViewController::takeBackLastLetter() {
    if (popupOpen()) {
        return false;
    }
    while (!m_placed.isEmpty()) {
        const QPointer<LetterLabel> tile = m_placed.takeLast();
        // Skipped: tiles sent back since, given by a reveal, or removed as wrong.
        if (tile && tile->parent() == m_workView && tile->isOnScreen() && !tile->isRevealed &&
            tile->solutionBoxPos >= 0) {
            solutionLetterTapAction(tile);
            return true;
        }
    }
    return false;
}

bool GameViewController::runHelpShortcut(int digit) {
    if (popupOpen()) {
        return false;
    }
    switch (digit) {
    case 1:
        revealLetter(nullptr);
        return true;
    case 2:
        removeWrongLetters(nullptr);
        return true;
    case 3:
        skipLevel(nullptr);
        return true;
    case 4:
        // The top bar's button, which a battle's bar replaces.
        if (m_battleBarVisible) {
            return false;
        }
        shareLevelWithFriends(nullptr);
        return true;
    case 5:
        watchVideo(nullptr);
        return true;
    case 6:
        shareAppOnWhatsapp();
        return true;
    case 7:
        // Offered while the help list shows it.
        if (!m_shareRevealVisible) {
            return false;
        }
        shareAppAndReveal(nullptr);
        return true;
    case 8:
        scheduleSolutionNotification(nullptr);
        return true;
    case 9:
        showRevealView(nullptr);
        return true;
    default:
        return false;
    }
}

QString GameViewController::helpToolTip(int digit) const {
    for (const HelpShortcut& shortcut : kHelpShortcuts) {
        if (shortcut.digit == digit) {
            return QStringLiteral("%1 (Ctrl+%2)")
                .arg(Localization::localizedString(QString::fromLatin1(shortcut.name)))
                .arg(digit);
        }
    }
    return {};
}

bool GameViewController::keyPressed(const KeyPress& press) {
    // A popup takes Escape (the help popup also Enter, as a tap anywhere on it); the board below takes
    // nothing.
    if (m_helpPopupVisible) {
        if (press.is(Qt::Key_Escape) || press.isEnter()) {
            dismissHelpAction();
            return true;
        }
        return false;
    }
    if (shareView) {
        if (press.is(Qt::Key_Escape)) {
            dismissShareViewAction();
            return true;
        }
        return false;
    }
    if (m_revealViewVisible) {
        if (press.is(Qt::Key_Escape)) {
            dismissPopupViewAction();
            return true;
        }
        return false;
    }
    if (press.is(Qt::Key_Backspace)) {
        return takeBackLastLetter();
    }
    if (press.is(Qt::Key_Escape)) {
        // Back where the screen has its back button: not in a battle, whose bar has none.
        if (!canGoBack() || m_battleBarVisible) {
            return false;
        }
        goBack(nullptr);
        return true;
    }
    if (const int digit = shortcutDigit(press)) {
        return runHelpShortcut(digit);
    }
    // Letters come with Shift on some layouts (the hamza forms); Ctrl or Alt make a key no letter.
    if (press.modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        return false;
    }
    return typeLetters(press.text);
}
