// The game played from the keyboard alone, under the offscreen platform: the selectors by arrows and Enter,
// a level solved by typing its letters as an Arabic layout sends them, Backspace and Escape, the help
// actions' shortcuts with their tooltips, and Tab with Enter or Space pressing the control it reached.
#include "platform/Keyboard.h"
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/CloudSaveManager.h"
#include "progress/CreditsManager.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/Localization.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"

#include <QAccessible>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

using namespace QuickItems;

namespace {
// A key as the window gets it; the focus moves to a new screen on the next turn of the event loop.
void press(QQuickWindow* window, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
           const QString& text = QString()) {
    QTest::qWait(5);
    QTest::sendKeyEvent(QTest::Click, window, Qt::Key(key), text, modifiers);
}

// Letters as an Arabic layout sends them: one key each, its code the letter's code point, its text the
// letter.
void type(QQuickWindow* window, const QString& letters) {
    for (const QChar letter : letters) {
        press(window, letter.unicode(), Qt::NoModifier, QString(letter));
    }
}

// Ctrl and a digit of the top row.
void shortcut(QQuickWindow* window, int digit) {
    press(window, Qt::Key_0 + digit, Qt::ControlModifier);
}

ViewController* front() {
    return Keyboard::frontController();
}

// From the main screen to the levels of the first round, by Enter twice, with the second level to play.
LevelSelectorViewController* openFirstRoundLevels(QQuickWindow* window) {
    LevelManager::sharedInstance().setCurrentLevel(1);
    press(window, Qt::Key_Return);
    press(window, Qt::Key_Return);
    return qobject_cast<LevelSelectorViewController*>(front());
}

// The visible focus ring of that name, and the item it rings.
QString ringedItem(QQuickWindow* window, const QString& ring) {
    QString ringed;
    int shown = 0;
    for (QQuickItem* item : allItems(window->contentItem())) {
        if (item->objectName() == ring && item->isVisible()) {
            ++shown;
            ringed = item->parentItem()->objectName();
        }
    }
    return shown == 1 ? ringed : QStringLiteral("%1 rings").arg(shown);
}

// The control Tab stops at in this item (the item itself or the first of its children that Tab reaches).
QQuickItem* tabStop(QQuickItem* item) {
    for (QQuickItem* candidate : allItems(item)) {
        if (candidate->activeFocusOnTab()) {
            return candidate;
        }
    }
    return nullptr;
}

// A service that holds this saved progress as its version 5 and takes every save.
class SavedProgress : public ProgressTransport {
public:
    explicit SavedProgress(ProgressDocument saved) : m_saved(std::move(saved)) {}
    void load(Completion done) override {
        done(QJsonObject{{"version", 5}, {"savedAt", 1}, {"progress", m_saved.toJson()}}, std::nullopt);
    }
    void save(qint64, const QJsonObject&, Completion done) override {
        ++saves;
        done(QJsonObject{{"version", 6}, {"savedAt", 2}}, std::nullopt);
    }
    int saves = 0;

private:
    ProgressDocument m_saved;
};

// The tooltip of a control, shown or not.
QObject* toolTipOf(QQuickItem* control) {
    for (QObject* child : control->children()) {
        if (QString::fromLatin1(child->metaObject()->className()).startsWith("ShortcutTip")) {
            return child;
        }
    }
    return nullptr;
}
} // namespace

class KeyboardTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    void lettersOfALayoutAreTheGamesLetters() {
        // The X11 Arabic layout's lam-alef keys send one ligature: it stands for two letters.
        QCOMPARE(Keyboard::letters(QStringLiteral("ﻻ")), QStringLiteral("لا"));
        QCOMPARE(Keyboard::letters(QStringLiteral("ﻷ")), QStringLiteral("لأ"));
        QCOMPARE(Keyboard::letters(QStringLiteral("ﻹ")), QStringLiteral("لإ"));
        QCOMPARE(Keyboard::letters(QStringLiteral("ﻵ")), QStringLiteral("لآ"));
        // Letters the tiles tell apart stay apart.
        QCOMPARE(Keyboard::letters(QStringLiteral("أإآءؤئةى")), QStringLiteral("أإآءؤئةى"));
        QCOMPARE(Keyboard::letters(QStringLiteral("لا")), QStringLiteral("لا"));
    }

    void selectorsMoveByArrowsAndOpenWithEnter() {
        TestPlatform platform;
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launch(app, engine);
        QVERIFY(window);
        LevelManager::sharedInstance().setCurrentLevel(3);

        // Enter on the main screen is its play button.
        QVERIFY(qobject_cast<MainViewController*>(front()));
        press(window, Qt::Key_Return);
        auto* rounds = qobject_cast<RoundSelectorViewController*>(front());
        QVERIFY(rounds);
        QTRY_VERIFY(isShown(window, "round0"));
        // The focus starts on the current round; its ring shows from the first arrow on.
        QCOMPARE(rounds->focusIndex(), 0);
        QCOMPARE(ringedItem(window, "roundFocus"), QStringLiteral("0 rings"));
        press(window, Qt::Key_Right);
        QCOMPARE(rounds->focusIndex(), 0);
        QCOMPARE(ringedItem(window, "roundFocus"), QStringLiteral("round0"));
        press(window, Qt::Key_Left);
        QCOMPARE(ringedItem(window, "roundFocus"), QStringLiteral("round1"));
        press(window, Qt::Key_Up);
        press(window, Qt::Key_Down);
        QCOMPARE(rounds->focusIndex(), 1);

        // A locked round says so, as a tap does; the alert has the keys until Escape presses its button.
        press(window, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(platform.alerts().title(), QStringLiteral("المجموعة مقفلة"));
        press(window, Qt::Key_Up);
        QCOMPARE(rounds->focusIndex(), 1);
        press(window, Qt::Key_Escape);
        QVERIFY(!platform.alerts().isVisible());
        QCOMPARE(front(), rounds);

        press(window, Qt::Key_Up);
        press(window, Qt::Key_Return);
        auto* levels = qobject_cast<LevelSelectorViewController*>(front());
        QVERIFY(levels);
        QTRY_VERIFY(isShown(window, "level0"));
        // The grid reads right to left in rows of five: Left is the next level, Down the one below.
        QCOMPARE(levels->focusIndex(), 3);
        press(window, Qt::Key_Left);
        QCOMPARE(ringedItem(window, "levelFocus"), QStringLiteral("level4"));
        press(window, Qt::Key_Down);
        QCOMPARE(ringedItem(window, "levelFocus"), QStringLiteral("level9"));
        press(window, Qt::Key_Right);
        press(window, Qt::Key_Up);
        QCOMPARE(ringedItem(window, "levelFocus"), QStringLiteral("level3"));
        QVERIFY(findItem(window, "level3")->mapToScene({}).x() >
                findItem(window, "level4")->mapToScene({}).x());
        for (int i = 0; i < 6; ++i) {
            press(window, Qt::Key_Up);
        }
        QCOMPARE(levels->focusIndex(), 3);

        press(window, Qt::Key_Left);
        press(window, Qt::Key_Return);
        QCOMPARE(platform.alerts().title(), QStringLiteral("المرحلة مقفلة"));
        press(window, Qt::Key_Escape);
        press(window, Qt::Key_Right);
        press(window, Qt::Key_Return);
        auto* play = qobject_cast<GameViewController*>(front());
        QVERIFY(play);
        QCOMPARE(play->game->gameLevel, 3);

        // Escape goes back where a screen has a back button, and the focus is where it was.
        press(window, Qt::Key_Escape);
        QCOMPARE(front(), levels);
        QCOMPARE(levels->focusIndex(), 3);
        press(window, Qt::Key_Escape);
        QCOMPARE(front(), rounds);
        press(window, Qt::Key_Escape);
        QVERIFY(qobject_cast<MainViewController*>(front()));
        press(window, Qt::Key_Escape);
        QCOMPARE(Platform::shared().navigator().depth(), 1);
        engine.reset();
    }

    void aLevelSolvedByTyping() {
        TestPlatform platform;
        // The decoys repeat a letter of the answer and hold the letters that look alike but are not the same.
        platform.writePackFile(1, QStringLiteral("سلامة"), QStringLiteral("أهيىس"));
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launch(app, engine);
        QVERIFY(window);
        QVERIFY(openFirstRoundLevels(window));
        // The tray in tag order, but for the decoy س (tile 9) and the answer's س (tile 0) changing places:
        // the decoy comes first in reading order.
        platform.random().queue({9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        press(window, Qt::Key_Return);
        auto* play = qobject_cast<GameViewController*>(front());
        QVERIFY(play);
        QTRY_VERIFY(isShown(window, "tile0"));
        QCOMPARE(play->lettersLabels.at(9)->text(), QStringLiteral("س"));
        const auto tile = [play](int i) { return play->lettersLabels.at(i); };

        // A Latin key, or a letter of the alphabet that no tile carries, does nothing, not even a sound.
        const int sounds = platform.audio().totalPlays();
        press(window, Qt::Key_Q, Qt::NoModifier, QStringLiteral("q"));
        type(window, QStringLiteral("ز"));
        platform.animator().completeAll();
        QCOMPARE(platform.audio().totalPlays(), sounds);
        QVERIFY(std::none_of(play->lettersLabels.begin(), play->lettersLabels.end(),
                             [](LetterLabel* t) { return t->solutionBoxPos >= 0; }));

        // The first س in reading order goes to the first box, with the tap's sound; Backspace takes it back.
        const int taps = platform.audio().player("tap2")->plays;
        type(window, QStringLiteral("س"));
        QCOMPARE(tile(9)->solutionBoxPos, 0);
        QCOMPARE(tile(0)->solutionBoxPos, -1);
        QCOMPARE(platform.audio().player("tap2")->plays, taps + 1);
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), QStringLiteral("س"));
        press(window, Qt::Key_Backspace);
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), QString());
        QCOMPARE(tile(9)->recognizer(), int(LetterLabel::LetterTap));

        // أ is not ا and ه is not ة: each key moves its own tile.
        type(window, QStringLiteral("أه"));
        QCOMPARE(tile(5)->solutionBoxPos, 0);
        QCOMPARE(tile(6)->solutionBoxPos, 1);
        QCOMPARE(tile(2)->solutionBoxPos, -1);
        QCOMPARE(tile(4)->solutionBoxPos, -1);
        platform.animator().completeAll();

        // Backspace takes the letter placed last, wherever it stands: a tap sends أ back, ى takes its box,
        // and Backspace takes ى rather than ه in the box after it.
        click(window, findItem(window, "tile5"));
        platform.animator().completeAll();
        type(window, QStringLiteral("ى"));
        QCOMPARE(tile(8)->solutionBoxPos, 0);
        press(window, Qt::Key_Backspace);
        QCOMPARE(tile(8)->solutionBoxPos, -1);
        QCOMPARE(tile(6)->solutionBoxPos, 1);
        platform.animator().completeAll();
        type(window, QStringLiteral("أ"));

        // A full wrong row is a wrong answer, as with taps; Backspace empties it from the letter placed last.
        type(window, QStringLiteral("ىيت"));
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), QStringLiteral("أهىيت"));
        QCOMPARE(play->solutionBarImage(), QStringLiteral("bg_solution_wrong"));
        QCOMPARE(platform.audio().player("incorrect")->plays, 1);
        press(window, Qt::Key_Backspace);
        QCOMPARE(tile(10)->solutionBoxPos, -1);
        for (int i = 0; i < 4; ++i) {
            press(window, Qt::Key_Backspace);
        }
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), QString());
        press(window, Qt::Key_Backspace);
        QCOMPARE(play->currentAnswer(), QString());

        // Taken back while still on its way to the box: it does not land there after all.
        type(window, QStringLiteral("ت"));
        press(window, Qt::Key_Backspace);
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), QString());
        QCOMPARE(tile(10)->frame(), tile(10)->originalFrame);
        QCOMPARE(tile(10)->recognizer(), int(LetterLabel::LetterTap));

        // Solved by typing: the lam-alef key of the X11 layout sends one ligature for two tiles.
        type(window, QStringLiteral("س"));
        press(window, 0xFEFB, Qt::NoModifier, QStringLiteral("ﻻ"));
        type(window, QStringLiteral("مة"));
        platform.animator().completeAll();
        auto* success = qobject_cast<LevelSuccessViewController*>(front());
        QVERIFY(success);
        QCOMPARE(LevelManager::sharedInstance().currentLevel(), 2);
        // Keys go to the popup now: a letter moves nothing on the next level's board behind it.
        type(window, QStringLiteral("س"));
        QVERIFY(play->currentAnswer().isEmpty());
        platform.scheduler().advance(3.0);
        QTRY_VERIFY(success->buttonsEnabled());
        press(window, Qt::Key_Return);
        QCOMPARE(front(), play);
        QCOMPARE(play->game->gameLevel, 2);
        engine.reset();
    }

    void escapeClosesPopupsAndShortcutsWaitForThem() {
        TestPlatform platform;
        // Five letters: the first level's gift gives two, and three are left to reveal.
        platform.writePackFile(1, QStringLiteral("مدرسة"), QStringLiteral("بكل"));
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launch(app, engine);
        QVERIFY(window);
        auto& credits = CreditsManager::sharedInstance();
        press(window, Qt::Key_Return);
        press(window, Qt::Key_Return);
        press(window, Qt::Key_Return);
        auto* play = qobject_cast<GameViewController*>(front());
        QVERIFY(play);
        QTRY_VERIFY(isShown(window, "tile0"));
        const auto revealed = [play] {
            return std::count_if(play->lettersLabels.begin(), play->lettersLabels.end(),
                                 [](LetterLabel* t) { return t->isRevealed; });
        };
        const qint64 gold = credits.currentCredits();

        // The first level opens with the help popup: shortcuts wait, Escape closes it.
        QVERIFY(play->helpPopupVisible());
        shortcut(window, 1);
        type(window, play->game->levelInfo()->solution.left(1));
        QCOMPARE(credits.currentCredits(), gold);
        QVERIFY(play->currentAnswer().isEmpty());
        press(window, Qt::Key_Escape);
        QVERIFY(!play->helpPopupVisible());
        QCOMPARE(front(), play);

        // The first level's gift comes in an alert: nothing fires under it; Escape presses its button.
        platform.scheduler().advance(2.0);
        QVERIFY(platform.alerts().isCancellable());
        shortcut(window, 1);
        QCOMPARE(credits.currentCredits(), gold);
        // Tab does not leave the alert for the buttons below it.
        press(window, Qt::Key_Tab);
        press(window, Qt::Key_Tab);
        QVERIFY(!findItem(window, "revealButton")->hasActiveFocus());
        QVERIFY(!findItem(window, "shareLevelButton")->hasActiveFocus());
        press(window, Qt::Key_Escape);
        QVERIFY(!platform.alerts().isVisible());
        platform.animator().completeAll();
        platform.scheduler().advance(0.5);
        platform.animator().completeAll();
        QCOMPARE(revealed(), 2);

        // The tooltips name each action with its keys, in Arabic.
        QQuickItem* revealButton = findItem(window, "revealButton");
        QObject* tip = toolTipOf(revealButton);
        QVERIFY(tip);
        QCOMPARE(tip->property("text").toString(), QStringLiteral("كشف حرف (Ctrl+1)"));
        QCOMPARE(toolTipOf(findItem(window, "removeWrongButton"))->property("text").toString(),
                 QStringLiteral("حذف الحروف الخاطئة (Ctrl+2)"));
        QCOMPARE(toolTipOf(findItem(window, "skipButton"))->property("text").toString(),
                 QStringLiteral("تجاوز المرحلة (Ctrl+3)"));
        QCOMPARE(toolTipOf(findItem(window, "shareLevelButton"))->property("text").toString(),
                 QStringLiteral("اسأل أصدقاءك (Ctrl+4)"));
        QVERIFY(!tip->property("visible").toBool());

        // The help list: shortcuts wait while it is up; Escape closes it.
        shortcut(window, 9);
        QVERIFY(play->revealViewVisible());
        shortcut(window, 2);
        QCOMPARE(credits.currentCredits(), gold);
        press(window, Qt::Key_Escape);
        QVERIFY(!play->revealViewVisible());

        // Asking friends opens the share panel; Escape closes it.
        shortcut(window, 4);
        QVERIFY(play->shareView);
        shortcut(window, 1);
        QCOMPARE(credits.currentCredits(), gold);
        press(window, Qt::Key_Escape);
        QVERIFY(!play->shareView);

        // Ctrl+2 removes the wrong letters for its price, Ctrl+1 reveals a letter for its own.
        QVERIFY(gold >= GameViewController::kRevealLetterCost + GameViewController::kRemoveLettersCost);
        shortcut(window, 2);
        QVERIFY(std::all_of(play->lettersLabels.begin(), play->lettersLabels.end(),
                            [](LetterLabel* t) { return t->isCorrect || !t->isOnScreen(); }));
        shortcut(window, 1);
        platform.animator().completeAll();
        QCOMPARE(revealed(), 3);
        const qint64 left =
            gold - GameViewController::kRevealLetterCost - GameViewController::kRemoveLettersCost;
        QCOMPARE(credits.currentCredits(), left);

        // Tab reaches a help button: its ring and its tooltip show at once, and Enter presses it.
        credits.deductCredits(left);
        revealButton->forceActiveFocus(Qt::TabFocusReason);
        QTRY_VERIFY(tip->property("visible").toBool());
        QCOMPARE(ringedItem(window, "focusRing"), QStringLiteral("revealButton"));
        press(window, Qt::Key_Return);
        // Without gold the alert has no cancel button: Escape leaves it, Enter presses its one button, to the
        // store.
        QCOMPARE(platform.alerts().title(), QStringLiteral("لايوجد ذهب"));
        press(window, Qt::Key_Escape);
        QVERIFY(platform.alerts().isVisible());
        press(window, Qt::Key_Return);
        QVERIFY(!platform.alerts().isVisible());
        QCOMPARE(front()->identifier(), QStringLiteral("StoreViewController"));
        // The store is a presented screen with a back button: Escape closes it, back to the level.
        press(window, Qt::Key_Escape);
        QCOMPARE(front(), play);
        engine.reset();
    }

    void tabReachesControlsThatEnterAndSpacePress() {
        TestPlatform platform;
        platform.writePackFile(1, QStringLiteral("سلامة"), QStringLiteral("أهيىس"));
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launch(app, engine);
        QVERIFY(window);
        auto* levels = openFirstRoundLevels(window);
        QVERIFY(levels);
        QTRY_VERIFY(isShown(window, "level0"));

        // Tab and the arrows move one focus: the level Tab reaches takes the ring, an arrow goes on from it
        // and takes the keyboard's focus along, and Space opens the level the ring is on.
        QQuickItem* first = tabStop(findItem(window, "level0"));
        QVERIFY(first);
        first->forceActiveFocus(Qt::TabFocusReason);
        QCOMPARE(levels->focusIndex(), 0);
        QCOMPARE(ringedItem(window, "levelFocus"), QStringLiteral("level0"));
        press(window, Qt::Key_Left);
        QCOMPARE(ringedItem(window, "levelFocus"), QStringLiteral("level1"));
        QVERIFY(tabStop(findItem(window, "level1"))->hasActiveFocus());
        press(window, Qt::Key_Space);
        auto* play = qobject_cast<GameViewController*>(front());
        QVERIFY(play);
        QCOMPARE(play->game->gameLevel, 1);
        QTRY_VERIFY(isShown(window, "tile0"));

        // On the board Tab goes through the tray in reading order, and Space presses the tile it reached.
        const QList<int> tray = play->trayOrder();
        findItem(window, QStringLiteral("tile%1").arg(tray.at(0)))->forceActiveFocus(Qt::TabFocusReason);
        press(window, Qt::Key_Tab);
        QVERIFY(findItem(window, QStringLiteral("tile%1").arg(tray.at(1)))->hasActiveFocus());
        QCOMPARE(ringedItem(window, "focusRing"), QStringLiteral("tile%1").arg(tray.at(1)));
        press(window, Qt::Key_Space);
        QCOMPARE(play->lettersLabels.at(tray.at(1))->solutionBoxPos, 0);
        // Gone from the tray, the tile hands the focus on to the next one, which Space presses in turn.
        QCOMPARE(ringedItem(window, "focusRing"), QStringLiteral("tile%1").arg(tray.at(2)));
        press(window, Qt::Key_Space);
        QCOMPARE(play->lettersLabels.at(tray.at(2))->solutionBoxPos, 1);
        platform.animator().completeAll();

        // An alert over the board has the keys: Enter presses the button Tab reached, else the main one.
        int pressed = -1;
        const auto alert = [&platform, &pressed] {
            platform.alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
                QStringLiteral("تنبيه"), QStringLiteral("رسالة"), QStringLiteral("إلغاء"),
                {QStringLiteral("موافق")}, [&pressed](int index) { pressed = index; });
        };
        alert();
        press(window, Qt::Key_Tab);
        QVERIFY(findItem(window, "alertButton0")->hasActiveFocus());
        press(window, Qt::Key_Return);
        QCOMPARE(pressed, 0);
        QVERIFY(!platform.alerts().isVisible());
        alert();
        press(window, Qt::Key_Return);
        QCOMPARE(pressed, 1);

        // Closed, it hands the keys back to the screen: typing moves tiles again.
        const QString placed = play->currentAnswer();
        const QString letter = play->lettersLabels.at(tray.at(3))->text();
        type(window, letter);
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer(), placed + letter);

        // The help list's options are reached by Tab too, and Space chooses one: here a revealed letter.
        CreditsManager::sharedInstance().setCreditsTo(GameViewController::kRevealLetterCost);
        shortcut(window, 9);
        QVERIFY(play->revealViewVisible());
        QQuickItem* option = findItem(window, "revealOption51");
        option->forceActiveFocus(Qt::TabFocusReason);
        QTRY_VERIFY(toolTipOf(option)->property("visible").toBool());
        press(window, Qt::Key_Space);
        QVERIFY(!play->revealViewVisible());
        platform.animator().completeAll();
        QCOMPARE(CreditsManager::sharedInstance().currentCredits(), 0);
        QVERIFY(std::any_of(play->lettersLabels.begin(), play->lettersLabels.end(),
                            [](LetterLabel* t) { return t->isRevealed; }));
        engine.reset();
    }

    void theSavedProgressChoiceIsAnAlertOfTheKeyboard() {
        TestPlatform platform;
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launch(app, engine);
        QVERIFY(window);
        const auto text = [](const char* key) {
            return Localization::localizedString(QString::fromLatin1(key));
        };

        // This profile and the saved one differ: after the login the player is asked which one goes on.
        for (const bool takeSaved : {false, true}) {
            LevelManager::sharedInstance().saveCurrentLevelTo(12);
            CreditsManager::sharedInstance().setCreditsTo(300);
            ProgressDocument saved = ProgressDocument::capture(platform.defaults());
            saved.level = 40;
            saved.gold = 900;
            auto transport = std::make_unique<SavedProgress>(saved);
            SavedProgress* service = transport.get();
            CloudSaveManager::sharedInstance().setTransport(std::move(transport));
            GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"P1", "سارة", false, {}});
            QTRY_VERIFY(platform.alerts().isVisible());
            QCOMPARE(platform.alerts().title(), text("progress.choice.title"));

            // Read as a dialog: its title, both progresses in its description, two named buttons.
            QQuickItem* box = findItem(window, "alertBox");
            QVERIFY(box);
            QAccessibleInterface* dialog = QAccessible::queryAccessibleInterface(box);
            QVERIFY(dialog);
            QCOMPARE(dialog->role(), QAccessible::Dialog);
            QCOMPARE(dialog->text(QAccessible::Name), text("progress.choice.title"));
            const QString description = dialog->text(QAccessible::Description);
            QVERIFY2(description.contains("13") && description.contains("41") && description.contains("900"),
                     qPrintable(description));
            QTRY_VERIFY(box->parentItem()->hasActiveFocus());
            const QStringList names{text("progress.choice.keepDevice"), text("progress.choice.takeSaved")};
            for (int i = 0; i < names.size(); ++i) {
                QAccessibleInterface* button = QAccessible::queryAccessibleInterface(
                    findItem(window, QStringLiteral("alertButton%1").arg(i)));
                QVERIFY(button);
                QCOMPARE(button->role(), QAccessible::Button);
                QCOMPARE(button->text(QAccessible::Name), names.at(i));
            }

            // Tab reaches "this device's" first and rings it; Space presses the button Tab reached.
            press(window, Qt::Key_Tab);
            QCOMPARE(ringedItem(window, "focusRing"), QStringLiteral("alertButton0"));
            if (takeSaved) {
                press(window, Qt::Key_Tab);
                QCOMPARE(ringedItem(window, "focusRing"), QStringLiteral("alertButton1"));
            }
            press(window, Qt::Key_Space);
            QVERIFY(!platform.alerts().isVisible());
            QVERIFY(!CloudSaveManager::sharedInstance().isChoosing());
            if (takeSaved) {
                QCOMPARE(LevelManager::sharedInstance().currentLevel(), 40);
                QCOMPARE(CreditsManager::sharedInstance().currentCredits(), 900);
                QCOMPARE(service->saves, 0);
            } else {
                QCOMPARE(LevelManager::sharedInstance().currentLevel(), 12);
                QCOMPARE(CreditsManager::sharedInstance().currentCredits(), 300);
                QCOMPARE(service->saves, 1);
            }
            GKLocalPlayer::localPlayer().setAuthenticatedPlayer(std::nullopt);
        }
        engine.reset();
    }

private:
    static QQuickWindow* launch(AppDelegate& app, std::unique_ptr<QQmlApplicationEngine>& engine) {
        QQuickWindow* window = launchGameWindow(app, engine);
        if (window) {
            window->requestActivate();
            if (!QTest::qWaitForWindowActive(window)) {
                return nullptr;
            }
        }
        return window;
    }
};

QTEST_MAIN(KeyboardTest)
#include "KeyboardTest.moc"
