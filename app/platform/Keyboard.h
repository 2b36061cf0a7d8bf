#pragma once

#include <QString>
#include <Qt>

class ViewController;

// A key the player pressed: its code, the modifiers held, and the text the keyboard layout made of it.
struct KeyPress {
    int key = 0;
    Qt::KeyboardModifiers modifiers;
    QString text;

    // The key alone, or with exactly these modifiers (the keypad's flag is not counted).
    bool is(int k, Qt::KeyboardModifiers with = Qt::NoModifier) const {
        return key == k && (modifiers & ~Qt::KeypadModifier) == with;
    }
    bool isEnter() const { return is(Qt::Key_Return) || is(Qt::Key_Enter); }
};

// Where the keyboard's keys go: to the screen in front, unless something covers every screen.
namespace Keyboard {

// An alert, the progress display, the payment sheet, the share sheet or a full-screen ad is up: the screens
// below take no key (an alert answers Escape and Enter itself).
bool coveredByOverlay();

// The screen keys go to: the topmost presented one, else the top of the stack.
ViewController* frontController();

// The letters a key's text stands for. Layouts send some letters as a presentation form (the lam-alef keys of
// the X11 Arabic layout send one ligature, U+FEFB and its hamza and madda forms) and others as several
// characters at once ("لا" on other systems); compatibility normalisation turns both into plain letters, in
// typing order. Distinct letters of the game stay distinct: أ is not ا, ة is not ه, ى is not ي.
QString letters(const QString& text);

// Where an arrow key moves a focus among `count` items laid out right to left in rows of `columns` (a list
// is one column): Left goes forward in reading order, Right back, Down a row on, Up a row back. The index
// stays where it is at either end; -1 when the key is no arrow.
int moveInReadingOrder(const KeyPress& press, int index, int count, int columns);

// The keyboard's focus among the items of a selector laid out in rows of `columns`: shown once a key or a
// hover moved it, kept when the screen comes back.
struct SelectorFocus {
    enum class Key { Ignored, Moved, Chosen };

    int index = 0;
    bool shown = false;

    // Puts the focus on `to`; false when it is no item or the focus is already shown there.
    bool moveTo(int to, int count);
    // An arrow moves the focus and Enter chooses the item it is on (shown from then on).
    Key keyPressed(const KeyPress& press, int count, int columns);
    // Back at the screen: a focus shown on an item that still exists stays, else it starts at `start`.
    void reset(qint64 start, int count);
};

// What a screen does with Escape when it has nothing of its own: the action of its back or close button,
// when the screen has one and is not the root.
bool pressBackButton(ViewController* controller);

} // namespace Keyboard
