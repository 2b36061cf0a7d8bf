// The game as the player sees it, under the offscreen platform: from the main screen through the rounds and
// the levels to the first level of the shipped pack, solved by taps on the rendered tiles through the help
// popup and the first level's gift, and on to the next level.
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"
#include "screens/Screens.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

using namespace QuickItems;

class PlayScreenTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    void fromTheMainScreenToASolvedFirstLevel() {
        TestPlatform platform;
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);

        // Main screen, rounds, the first round's levels, the first level: each by a tap on what is drawn.
        auto& nav = Platform::shared().navigator();
        QVERIFY(qobject_cast<MainViewController*>(nav.topViewController()));
        QCOMPARE(findItem(window, "levelValue")->property("text").toString(), QStringLiteral("1"));
        click(window, findItem(window, "startButton"));
        QTRY_VERIFY(findItem(window, "round0") && findItem(window, "round0")->isVisible());
        QVERIFY(qobject_cast<RoundSelectorViewController*>(nav.topViewController()));
        click(window, findItem(window, "round1"));
        QCOMPARE(alerts().title(), QStringLiteral("المجموعة مقفلة"));
        click(window, findItem(window, "alertButton0"));
        click(window, findItem(window, "round0"));
        QTRY_VERIFY(findItem(window, "level0") && findItem(window, "level0")->isVisible());
        click(window, findItem(window, "level0"));
        QTRY_VERIFY(qobject_cast<GameViewController*>(nav.topViewController()));
        auto* play = qobject_cast<GameViewController*>(nav.topViewController());
        QTRY_VERIFY(findItem(window, "tile0") && findItem(window, "tile0")->isVisible());
        const QString solution = play->game->levelInfo()->solution;
        QVERIFY(solution.size() >= 3);

        // Round 0, level 1: the help popup is up; a tap anywhere closes it.
        QVERIFY(play->helpPopupVisible());
        QCOMPARE(findItem(window, "levelLabel")->property("text").toString(), QStringLiteral("1"));
        QCOMPARE(visibleTiles(window), 12);
        QCOMPARE(countItems(window, "box"), solution.size());
        // The popup's link shows the attributions of the pictures and the font, and leads back.
        click(window, findItem(window, "creditsLink"));
        QTRY_VERIFY(findItem(window, "creditsText") && findItem(window, "creditsText")->isVisible());
        QVERIFY(findItem(window, "creditsText")->property("text").toString().contains("CC BY 4.0"));
        click(window, findItem(window, "closeCredits"));
        QVERIFY(!Platform::shared().navigator().presentedViewController());
        QVERIFY(play->helpPopupVisible());

        QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(window->width() / 2, 20));
        QVERIFY(!play->helpPopupVisible());

        // Two seconds on, the gift: two letters given away after the alert's button.
        platform.scheduler().advance(2.0);
        QTRY_VERIFY(findItem(window, "alertButton0") && findItem(window, "alertButton0")->isVisible());
        click(window, findItem(window, "alertButton0"));
        platform.animator().completeAll();
        platform.scheduler().advance(0.5);
        platform.animator().completeAll();
        QCOMPARE(play->currentAnswer().size(), 2);

        // The rest by taps on the tiles that carry the missing letters (chosen first: the last tap solves the
        // level and the board is built anew behind the popup).
        QList<QPair<int, LetterLabel*>> taps;
        for (int box = 0; box < solution.size(); ++box) {
            if (play->tileInBox(box)) {
                continue;
            }
            for (LetterLabel* t : std::as_const(play->lettersLabels)) {
                const bool taken =
                    std::any_of(taps.begin(), taps.end(), [t](const auto& p) { return p.second == t; });
                if (t->text() == solution.at(box) && t->solutionBoxPos == -1 && t->isOnScreen() && !taken) {
                    taps.append({box, t});
                    break;
                }
            }
        }
        QCOMPARE(taps.size(), solution.size() - 2);
        for (int i = 0; i < taps.size(); ++i) {
            LetterLabel* wanted = taps.at(i).second;
            click(window,
                  findItem(window, QStringLiteral("tile%1").arg(play->lettersLabels.indexOf(wanted))));
            if (i + 1 < taps.size()) {
                QCOMPARE(wanted->solutionBoxPos, static_cast<qint64>(taps.at(i).first));
            }
            platform.animator().completeAll();
        }

        // Solved: the popup with the answer, the level counted, and the next level behind.
        QTRY_VERIFY(findItem(window, "nextButton") && findItem(window, "nextButton")->isVisible());
        QCOMPARE(findItem(window, "solutionText")->property("text").toString().remove(' '), solution);
        QCOMPARE(LevelManager::sharedInstance().currentLevel(), 1);
        click(window, findItem(window, "nextButton"));
        QTRY_COMPARE(findItem(window, "levelLabel")->property("text").toString(), QStringLiteral("2"));
        // Solved online: five gold for the level.
        QCOMPARE(findItem(window, "creditsPill")->property("text").toString(), QStringLiteral("155"));
        QVERIFY(play->timer);
        QVERIFY(!Platform::shared().navigator().presentedViewController());
        QVERIFY(!play->helpPopupVisible());
        engine.reset();
    }

private:
    static Alerts& alerts() { return Platform::shared().alerts(); }
    static int countItems(QQuickWindow* window, const QString& prefix) {
        int n = 0;
        for (QQuickItem* item : allItems(window->contentItem())) {
            const QString name = item->objectName();
            if (name.size() > prefix.size() && name.startsWith(prefix) && name.at(prefix.size()).isDigit()) {
                ++n;
            }
        }
        return n;
    }
    static int visibleTiles(QQuickWindow* window) {
        int n = 0;
        for (QQuickItem* item : allItems(window->contentItem())) {
            if (item->objectName().startsWith("tile") && item->isVisible()) {
                ++n;
            }
        }
        return n;
    }
};

QTEST_MAIN(PlayScreenTest)
#include "PlayScreenTest.moc"
