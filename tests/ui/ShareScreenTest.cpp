// The share panel and the share screen as the player sees them: the panel over the level with its picture,
// the screen's targets drawn with their icons, a picture saved through a target, a cancel, and the level
// counted once the panel stayed up long enough.
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameViewController.h"
#include "outreach/ShareManager.h"
#include "outreach/ShareView.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

using namespace QuickItems;

class ShareScreenTest : public QObject {
    Q_OBJECT

    // The sheet rises from the bottom: taps wait until it stands.
    static void waitForSheet(QQuickWindow* window) {
        QQuickItem* sheet = findItem(window, "shareSheet");
        QTRY_VERIFY(sheet->mapToScene(QPointF(0, sheet->height())).y() <= window->height() + 16.5);
    }

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    void aLevelSharedFromItsPanel() {
        TestPlatform platform;
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);
        auto& nav = Platform::shared().navigator();
        qobject_cast<MainViewController*>(nav.topViewController())->startAction();
        qobject_cast<RoundSelectorViewController*>(nav.topViewController())
            ->tableViewDidSelectRowAtIndexPath(0);
        qobject_cast<LevelSelectorViewController*>(nav.topViewController())
            ->collectionViewDidSelectItemAtIndexPath(0);
        auto* play = qobject_cast<GameViewController*>(nav.topViewController());
        QVERIFY(play);
        play->dismissHelpAction();
        QTRY_VERIFY(isShown(window, "shareLevelButton"));

        // The panel: the picture of the level, taken with the title on the bar, and six targets.
        click(window, findItem(window, "shareLevelButton"));
        QTRY_VERIFY(isShown(window, "shareView"));
        auto* view = qobject_cast<ShareView*>(play->shareViewObject());
        QVERIFY(view);
        QCOMPARE(view->screenshot.size(), window->size() * window->devicePixelRatio());
        QVERIFY(!isShown(window, "screenshotTitleLabel"));
        QTRY_COMPARE(findItem(window, "shareViewPreview")->property("status").toInt(), 1); // Image.Ready
        for (int tag = 91; tag <= 96; ++tag) {
            QVERIFY(isShown(window, QStringLiteral("shareButton%1").arg(tag)));
        }

        // Its general button brings up the share screen with the targets the game allows.
        click(window, findItem(window, "shareButton96"));
        QTRY_VERIFY(isShown(window, "shareSheet"));
        waitForSheet(window);
        int targets = 0;
        for (QQuickItem* item : allItems(window->contentItem())) {
            targets += item->objectName().startsWith("shareTarget_") && item->isVisible() ? 1 : 0;
        }
        QCOMPARE(targets, 6);
        QVERIFY(!isShown(window, "shareTarget_" + UIActivity::TypeMail));
        QTRY_COMPARE(findItem(window, "shareSheetPicture")->property("status").toInt(), 1);

        // A cancel sends nothing.
        click(window, findItem(window, "shareSheetCancel"));
        QTRY_VERIFY(!Platform::shared().shareSheet().isVisible());
        QVERIFY(!ShareManager::sharedInstance().isAppShared());

        // Instagram: the picture is saved where the player says, and the game counts as shared.
        click(window, findItem(window, "shareButton96"));
        QTRY_VERIFY(isShown(window, "shareTarget_" + UIActivity::TypeInstagram));
        waitForSheet(window);
        QTest::qWait(300); // a busy machine may still be laying the targets out
        const QString where = QDir(platform.folder()).filePath("level.jpg");
        platform.files().answers << where;
        click(window, findItem(window, "shareTarget_" + UIActivity::TypeInstagram));
        QTRY_VERIFY(!Platform::shared().shareSheet().isVisible());
        QTRY_COMPARE(QImage(where).size(), view->screenshot.size()); // written once the dialog has answered
        QVERIFY(ShareManager::sharedInstance().isAppShared());
        QCOMPARE(platform.urls().opened.last().host(), QStringLiteral("www.instagram.com"));

        // Ten seconds on, a tap on the layer closes the panel and counts the level.
        platform.scheduler().advance(10);
        // The first level's gift came meanwhile.
        QCOMPARE(Platform::shared().alerts().title(), QStringLiteral("مساعدة"));
        Platform::shared().alerts().press(0);
        QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(8, window->height() / 2));
        QTRY_VERIFY(!play->shareViewObject());
        QCOMPARE(ShareManager::sharedInstance().levelsShared(), 1);
    }
};

QTEST_MAIN(ShareScreenTest)
#include "ShareScreenTest.moc"
