// The ad kit's overlays in the game's window under the offscreen platform: an interstitial card and picture
// closed with ×, a rewarded ad whose close button tells when the reward is won, and a banner in its host.
#include "Application.h"
#include "FakeAdServer.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "platform/adkit/AdKit.h"

#include <QDir>
#include <QFile>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTemporaryDir>
#include <QtTest>

using namespace QuickItems;

namespace {

// A host for banners as a screen would draw it. (Plain literals: moc does not read raw strings with quotes.)
const char* const kBannerHost = "import QtQuick\n"
                                "import \"components\"\n"
                                "Item {\n"
                                "    property QtObject host\n"
                                "    x: host ? host.frame.x : 0\n"
                                "    y: host ? host.frame.y : 0\n"
                                "    width: host ? host.frame.width : 0\n"
                                "    height: host ? host.frame.height : 0\n"
                                "    Repeater {\n"
                                "        model: host ? host.subviews : []\n"
                                "        delegate: BannerAdView { view: modelData }\n"
                                "    }\n"
                                "}\n";

const char* const kCreative =
    "<svg xmlns='http://www.w3.org/2000/svg' width='300' height='400' viewBox='0 0 300 400'>"
    "<rect width='300' height='400' rx='24' fill='#2d7be0'/><circle cx='150' cy='170' r='90' fill='#f9c32d'/>"
    "<rect x='60' y='300' width='180' height='40' rx='20' fill='#ffffff'/></svg>";

// Keeps a picture of the window for a person to look at, when TARVOLIN_UI_SHOTS names a folder.
void keepShot(QQuickWindow* window, const QString& name) {
    if (const QString dir = qEnvironmentVariable("TARVOLIN_UI_SHOTS"); !dir.isEmpty()) {
        window->grabWindow().save(dir + "/" + name + ".png");
    }
}

template <class Ad> std::shared_ptr<Ad> loadAd(const QString& unit) {
    std::shared_ptr<Ad> loaded;
    Ad::loadWithAdUnitIDRequestCompletionHandler(
        unit, GADRequest::request(),
        [&loaded](std::shared_ptr<Ad> ad, const std::optional<GADError>&) { loaded = std::move(ad); });
    return loaded;
}

} // namespace

class AdOverlayTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    // The overlays' QML runs without a binding error, and the creative loads.
    void init() {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("qrc:/qml/")));
        QTest::failOnWarning(QRegularExpression(QStringLiteral("imageio")));
    }

    void fullScreenAdsOverTheGame() {
        TestPlatform platform;
        QTemporaryDir creatives;
        QVERIFY(QDir(creatives.path()).mkpath("v1/ads/creatives"));
        QFile svg(creatives.filePath("v1/ads/creatives/p1.svg"));
        QVERIFY(svg.open(QIODevice::WriteOnly) && svg.write(kCreative) > 0);
        svg.close();
        auto server = FakeAdServer::install();
        server->creativeBase = QUrl::fromLocalFile(creatives.path()).toString();
        GADMobileAds::sharedInstance().startWithCompletionHandler(nullptr);
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);
        ViewController root(QStringLiteral("MainViewController"));
        QVERIFY(!isShown(window, "adOverlay"));

        // A card: its title, a call to action, and × to close at once.
        server->ads["card"] = fakeAd("c1", "interstitial");
        auto card = loadAd<GADInterstitialAd>("card");
        QVERIFY(card);
        card->presentFromRootViewController(&root);
        QTRY_VERIFY(isShown(window, "adOverlay"));
        QVERIFY(isShown(window, "adCard"));
        QVERIFY(!isShown(window, "adPicture"));
        QCOMPARE(findItem(window, "adTitle")->property("text").toString(), QStringLiteral("متجر الذهب"));
        QVERIFY(isShown(window, "adCallToAction"));
        QVERIFY(!isShown(window, "adCountdown"));
        QTest::qWait(500);
        keepShot(window, "ad-interstitial-card");
        click(window, findItem(window, "adCloseButton"));
        QTRY_VERIFY(!isShown(window, "adOverlay"));
        // From the keyboard: the ad has the keys while it is up, so a key the screen below would take stays
        // with it, and Escape closes it as × does.
        auto again = loadAd<GADInterstitialAd>("card");
        QVERIFY(again);
        again->presentFromRootViewController(&root);
        QTRY_VERIFY(isShown(window, "adOverlay"));
        QTRY_VERIFY(findItem(window, "adOverlay")->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_Return);
        QVERIFY(isShown(window, "adOverlay"));
        QTest::keyClick(window, Qt::Key_Escape);
        QTRY_VERIFY(!isShown(window, "adOverlay"));

        // A picture, fitted; a tap on it is the call to action.
        QJsonObject picture = fakeAd("p1", "interstitial", "picture");
        picture.insert("actionUrl", "https://example.test/p1");
        server->ads["picture"] = picture;
        auto shown = loadAd<GADInterstitialAd>("picture");
        shown->presentFromRootViewController(&root);
        QTRY_VERIFY(isShown(window, "adPicture"));
        QTRY_COMPARE(findItem(window, "adPicture")->property("status").toInt(), 1); // Image.Ready
        QTest::qWait(500);
        keepShot(window, "ad-interstitial-picture");
        click(window, findItem(window, "adPicture"));
        QTRY_VERIFY(!isShown(window, "adOverlay"));
        QCOMPARE(platform.urls().opened, QList<QUrl>{QUrl("https://example.test/p1")});

        // A rewarded ad: the close button gives the reward up until the time is over.
        server->ads["rewarded"] = fakeAd("r1", "rewarded");
        auto rewarded = loadAd<GADRewardedAd>("rewarded");
        int paid = 0;
        rewarded->presentFromRootViewControllerUserDidEarnRewardHandler(&root, [&paid] { ++paid; });
        QTRY_VERIFY(isShown(window, "adCountdown"));
        QVERIFY(!isShown(window, "adCloseButton"));
        QCOMPARE(findItem(window, "adSecondsLeft")->property("text").toString(), QStringLiteral("15"));
        platform.scheduler().advance(6);
        QCOMPARE(findItem(window, "adSecondsLeft")->property("text").toString(), QStringLiteral("9"));
        QTest::qWait(1100);
        keepShot(window, "ad-rewarded-running");
        platform.scheduler().advance(9);
        QCOMPARE(paid, 1);
        QCOMPARE(findItem(window, "adRewardCloseButton")->childItems().first()->property("text").toString(),
                 GADAdPresenter::kCloseTitle);
        QTest::qWait(1100);
        keepShot(window, "ad-rewarded-done");
        click(window, findItem(window, "adRewardCloseButton"));
        QTRY_VERIFY(!isShown(window, "adOverlay"));
        engine.reset();
    }

    void aBannerInItsHost() {
        TestPlatform platform;
        auto server = FakeAdServer::install();
        GADMobileAds::sharedInstance().startWithCompletionHandler(nullptr);
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);

        AdsHostView host(QRectF(0, 600, 375, 67), nullptr);
        QQmlComponent component(engine.get());
        component.setData(kBannerHost, QUrl(QStringLiteral("qrc:/qml/BannerHost.qml")));
        std::unique_ptr<QObject> object(
            component.createWithInitialProperties({{QStringLiteral("host"), QVariant::fromValue(&host)}}));
        QVERIFY2(object, qPrintable(component.errorString()));
        auto* item = qobject_cast<QQuickItem*>(object.get());
        item->setParentItem(findItem(window, "canvas"));

        QJsonObject ad = fakeAd("b1", "banner");
        ad.insert("actionUrl", "https://example.test/b1");
        server->ads["banner"] = ad;
        GADBannerView* banner = GADBannerView::initWithFrame(QRectF(27, 8, 320, 50));
        banner->setAdUnitID("banner");
        host.addSubview(banner);
        QTRY_VERIFY(findItem(window, "bannerAdView"));
        QVERIFY(!isShown(window, "bannerAdView")); // nothing before an ad
        banner->loadRequest(GADRequest::request());
        QTRY_VERIFY(isShown(window, "bannerAdView"));
        QCOMPARE(findItem(window, "bannerAdTitle")->property("text").toString(),
                 QStringLiteral("متجر الذهب"));
        QTest::qWait(500);
        keepShot(window, "ad-banner");
        click(window, findItem(window, "bannerAdView"));
        QCOMPARE(platform.urls().opened, QList<QUrl>{QUrl("https://example.test/b1")});
        banner->setHidden(true);
        QTRY_VERIFY(!isShown(window, "bannerAdView"));
        object.reset();
        engine.reset();
    }
};

QTEST_MAIN(AdOverlayTest)
#include "AdOverlayTest.moc"
