// The ad kit: loads through the ad server, full-screen ads shown once with their delegate told in order, the
// rewarded countdown on the platform's clock, banners and their rotation, the tracking prompt, and the real
// server's reading of the service's answers.
#include "platform/adkit/AdKit.h"
#include "FakeAdServer.h"
#include "TestPlatform.h"
#include "platform/ViewController.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <deque>
#include <gtest/gtest.h>

namespace {

void settle() {
    QCoreApplication::processEvents();
}

int codeOf(const std::optional<GADError>& error) {
    return error ? error->code : 0;
}

template <class Ad> struct Loaded {
    bool called = false;
    std::shared_ptr<Ad> ad;
    std::optional<GADError> error;
};

// Loads an ad of that kind and lets the kit's own answers (which come after the call) arrive.
template <class Ad> std::shared_ptr<Loaded<Ad>> load(const QString& unit) {
    auto result = std::make_shared<Loaded<Ad>>();
    Ad::loadWithAdUnitIDRequestCompletionHandler(
        unit, GADRequest::request(), [result](std::shared_ptr<Ad> ad, const std::optional<GADError>& e) {
            result->called = true;
            result->ad = std::move(ad);
            result->error = e;
        });
    settle();
    return result;
}

// What a full-screen ad's delegate hears, and whether the overlay showed the ad at that moment.
class Heard : public GADFullScreenContentDelegate {
public:
    void adDidFailToPresentFullScreenContentWithError(GADFullScreenPresentingAd*,
                                                      const GADError& e) override {
        calls << QStringLiteral("fail %1").arg(e.code) + shown();
    }
    void adWillPresentFullScreenContent(GADFullScreenPresentingAd*) override { calls << "will" + shown(); }
    void adDidDismissFullScreenContent(GADFullScreenPresentingAd*) override { calls << "dismiss" + shown(); }
    void adDidRecordImpression(GADFullScreenPresentingAd*) override { calls << "impression" + shown(); }
    static QString shown() { return GADAdPresenter::shared().isVisible() ? " (on screen)" : QString(); }
    QStringList calls;
};

class AdKit : public ::testing::Test {
protected:
    // A device whose tracking question was never asked.
    void SetUp() override { platform.defaults().removeObjectForKey(ATTrackingManager::kStatusKey); }
    void start() { GADMobileAds::sharedInstance().startWithCompletionHandler(nullptr); }
    GADAdPresenter& presenter() { return GADAdPresenter::shared(); }

    TestPlatform platform;
    std::shared_ptr<FakeAdServer::State> server = FakeAdServer::install();
    ViewController root{QStringLiteral("GameViewController")};
};

TEST_F(AdKit, LoadsFailBeforeTheStartAndHandTheAdOnceStarted) {
    server->ads["inter"] = fakeAd("a1", "interstitial", "picture");
    auto early = load<GADInterstitialAd>("inter");
    ASSERT_TRUE(early->called);
    EXPECT_FALSE(early->ad);
    EXPECT_EQ(codeOf(early->error), GADErrorInvalidRequest);
    EXPECT_TRUE(server->requests.isEmpty());

    bool started = false;
    GADMobileAds::sharedInstance().startWithCompletionHandler([&started] { started = true; });
    EXPECT_TRUE(GADMobileAds::sharedInstance().isStarted());
    settle();
    EXPECT_TRUE(started);

    auto loaded = load<GADInterstitialAd>("inter");
    ASSERT_TRUE(loaded->ad);
    EXPECT_FALSE(loaded->error);
    EXPECT_EQ(server->requests, (QList<QPair<QString, QString>>{{"inter", "notDetermined"}}));
    const auto& ad = *loaded->ad;
    EXPECT_EQ(ad.adIdentifier(), "a1");
    EXPECT_EQ(ad.kind(), "picture");
    EXPECT_EQ(ad.title(), QStringLiteral("متجر الذهب"));
    EXPECT_EQ(ad.accent(), QColor("#f9c32d"));
    EXPECT_EQ(ad.imageSource(), QUrl("http://ads.test/v1/ads/creatives/a1.svg"));
    EXPECT_EQ(ad.durationSeconds(), 0);

    // A unit the server does not know, and one with nothing to show.
    server->adErrors["empty"] = makeGADError(GADErrorNoFill);
    EXPECT_EQ(codeOf(load<GADInterstitialAd>("unknown")->error), GADErrorInvalidRequest);
    EXPECT_EQ(codeOf(load<GADRewardedAd>("empty")->error), GADErrorNoFill);
    EXPECT_EQ(codeOf(load<GADRewardedAd>("")->error), GADErrorInvalidRequest);
}

TEST_F(AdKit, AnAnswerThatIsNoAdOfTheFormatIsABadReply) {
    start();
    const QJsonObject good = fakeAd("r1", "rewarded");
    for (const auto& [key, value] : std::vector<std::pair<QString, QJsonValue>>{
             {"adIdentifier", QJsonValue::Null},
             {"format", "interstitial"},
             {"kind", "video"},
             {"title", 7},
             {"title", ""},
             {"background", "red"},
             {"accent", "#12345"},
             {"durationSeconds", "15"},
             {"durationSeconds", 15.5},
             {"impressionToken", ""},
             {"actionUrl", "javascript:alert(1)"},
             {"imageUrl", "http://elsewhere.test/x.svg"},
             {"kind", "picture"}, // a picture without its picture
         }) {
        QJsonObject bad = good;
        bad.insert(key, value);
        server->ads["rew"] = bad;
        auto loaded = load<GADRewardedAd>("rew");
        ASSERT_TRUE(loaded->called) << key.toStdString();
        EXPECT_FALSE(loaded->ad) << key.toStdString();
        EXPECT_EQ(codeOf(loaded->error), GADErrorInvalidResponse) << key.toStdString();
    }
    QJsonObject missing = good;
    missing.remove("callToAction");
    server->ads["rew"] = missing;
    EXPECT_EQ(codeOf(load<GADRewardedAd>("rew")->error), GADErrorInvalidResponse);

    // Numbers below the floor are raised to it: a rewarded ad plays 15 s at least, a banner is 320x50 at
    // least.
    QJsonObject shortOne = good;
    shortOne.insert("durationSeconds", 5);
    server->ads["rew"] = shortOne;
    EXPECT_EQ(load<GADRewardedAd>("rew")->ad->durationSeconds(), 15);
    QString why;
    QJsonObject small = fakeAd("b1", "banner");
    small.insert("width", 100);
    small.insert("height", 90);
    const auto banner = GADAdContent::fromJson(small, "banner", &why);
    ASSERT_TRUE(banner) << why.toStdString();
    EXPECT_EQ(QSize(banner->width, banner->height), QSize(320, 90));
}

TEST_F(AdKit, AnInterstitialIsShownOnceAndItsDelegateHearsInOrder) {
    start();
    server->ads["inter"] = fakeAd("a1", "interstitial");
    auto ad = load<GADInterstitialAd>("inter")->ad;
    ASSERT_TRUE(ad);
    Heard heard;
    ad->setFullScreenContentDelegate(&heard);
    EXPECT_TRUE(ad->canPresentFromRootViewControllerError(&root, nullptr));

    ad->presentFromRootViewController(&root);
    EXPECT_EQ(heard.calls, (QStringList{"will", "impression (on screen)"}));
    EXPECT_EQ(presenter().currentAd(), ad.get());
    EXPECT_FALSE(presenter().isRewarded());
    EXPECT_TRUE(presenter().isActionEnabled());
    EXPECT_EQ(server->impressions, (QList<QPair<QString, QString>>{{"T-a1", "notDetermined"}}));
    EXPECT_EQ(ad->impressionIdentifier(), "I1");

    presenter().close();
    EXPECT_FALSE(presenter().isVisible());
    EXPECT_EQ(heard.calls.last(), "dismiss");

    // Shown once: a second presentation fails and shows nothing.
    GADError why;
    EXPECT_FALSE(ad->canPresentFromRootViewControllerError(&root, &why));
    EXPECT_EQ(why.code, GADErrorCannotPresent);
    ad->presentFromRootViewController(&root);
    EXPECT_EQ(heard.calls.last(), "fail 11");
    EXPECT_FALSE(presenter().isVisible());
    EXPECT_EQ(server->impressions.size(), 1);
}

TEST_F(AdKit, OneFullScreenAdAtATimeAndOnlyOnAScreen) {
    start();
    server->ads["inter"] = fakeAd("a1", "interstitial");
    server->ads["rew"] = fakeAd("r1", "rewarded");
    auto first = load<GADInterstitialAd>("inter")->ad;
    auto second = load<GADRewardedAd>("rew")->ad;
    Heard heardFirst, heardSecond;
    first->setFullScreenContentDelegate(&heardFirst);
    second->setFullScreenContentDelegate(&heardSecond);

    // Without a screen to show it on, the ad stays unshown and can go up later.
    second->presentFromRootViewControllerUserDidEarnRewardHandler(nullptr, [] { FAIL() << "paid unseen"; });
    EXPECT_EQ(heardSecond.calls, QStringList{"fail 11"});
    EXPECT_FALSE(presenter().isVisible());

    first->presentFromRootViewController(&root);
    GADError why;
    EXPECT_FALSE(second->canPresentFromRootViewControllerError(&root, &why));
    EXPECT_EQ(why.code, GADErrorCannotPresent);
    EXPECT_EQ(heardSecond.calls.size(), 1); // asking changed nothing
    second->presentFromRootViewControllerUserDidEarnRewardHandler(&root, [] { FAIL() << "paid unseen"; });
    EXPECT_EQ(heardSecond.calls.last(), "fail 11 (on screen)");
    EXPECT_EQ(presenter().currentAd(), first.get());
    EXPECT_EQ(server->impressions.size(), 1);

    presenter().close();
    EXPECT_TRUE(second->canPresentFromRootViewControllerError(&root, nullptr));
    second->presentFromRootViewControllerUserDidEarnRewardHandler(&root, nullptr);
    EXPECT_EQ(presenter().currentAd(), second.get());
}

TEST_F(AdKit, ARewardedAdPaysOnlyWhenItsTimeIsOver) {
    start();
    server->ads["rew"] = fakeAd("r1", "rewarded");
    int paid = 0;

    // Closed at 14 s: nothing paid, nothing claimed.
    auto early = load<GADRewardedAd>("rew")->ad;
    Heard heard;
    early->setFullScreenContentDelegate(&heard);
    early->presentFromRootViewControllerUserDidEarnRewardHandler(&root, [&paid] { ++paid; });
    EXPECT_EQ(presenter().secondsLeft(), 15);
    EXPECT_EQ(presenter().closeTitle(), GADAdPresenter::kCloseWithoutRewardTitle);
    EXPECT_FALSE(presenter().isActionEnabled());
    platform.scheduler().advance(14);
    EXPECT_EQ(presenter().secondsLeft(), 1);
    EXPECT_NEAR(presenter().progress(), 14.0 / 15.0, 1e-9);
    presenter().tapCallToAction(); // not yet: the action would lose the reward
    EXPECT_TRUE(platform.urls().opened.isEmpty());
    EXPECT_TRUE(presenter().isVisible());
    presenter().close();
    EXPECT_EQ(heard.calls, (QStringList{"will", "impression (on screen)", "dismiss"}));
    platform.scheduler().advance(60);
    EXPECT_EQ(paid, 0);
    EXPECT_TRUE(server->claims.isEmpty());
    EXPECT_EQ(platform.scheduler().pendingCount(), 0);

    // Watched to the end: paid once, claimed once, and the close no longer loses anything.
    auto full = load<GADRewardedAd>("rew")->ad;
    full->setFullScreenContentDelegate(&heard);
    full->presentFromRootViewControllerUserDidEarnRewardHandler(&root, [&paid] { ++paid; });
    platform.scheduler().advance(15);
    EXPECT_EQ(paid, 1);
    EXPECT_EQ(server->claims, QStringList{"I2"});
    EXPECT_TRUE(presenter().isRewardEarned());
    EXPECT_EQ(presenter().closeTitle(), GADAdPresenter::kCloseTitle);
    EXPECT_TRUE(presenter().isVisible());
    platform.scheduler().advance(30);
    EXPECT_EQ(paid, 1);
    EXPECT_EQ(server->claims.size(), 1);
    presenter().close();
    EXPECT_EQ(heard.calls.last(), "dismiss");
    EXPECT_EQ(paid, 1);
}

TEST_F(AdKit, TheRewardIsClaimedOnlyOnceTheServerHasSeenTheWholeDuration) {
    start();
    server->ads["rew"] = fakeAd("r1", "rewarded");
    server->holdImpressions = true;
    server->claimError = makeGADError(GADErrorInvalidRequest, "reward_too_early");
    int paid = 0;
    auto ad = load<GADRewardedAd>("rew")->ad;
    ad->presentFromRootViewControllerUserDidEarnRewardHandler(&root, [&paid] { ++paid; });
    // The impression's answer comes 3 s late; the player is paid at 15 s, the claim goes at 18 s.
    platform.scheduler().advance(3);
    FakeAdServer::State::release(server->heldImpressions);
    platform.scheduler().advance(12);
    EXPECT_EQ(paid, 1);
    EXPECT_TRUE(server->claims.isEmpty());
    // The ad may be let go meanwhile; the claim still goes, and its refusal is not the player's business.
    presenter().close();
    ad.reset();
    platform.scheduler().advance(3);
    EXPECT_EQ(server->claims, QStringList{"I1"});
    EXPECT_FALSE(platform.alerts().isVisible());
}

TEST_F(AdKit, TheCallToActionOpensTheAddressAndCloses) {
    start();
    QJsonObject web = fakeAd("a1", "interstitial");
    web.insert("actionUrl", "https://example.test/game");
    server->ads["web"] = web;
    server->ads["game"] = fakeAd("a2", "interstitial");
    QStringList routed;
    Platform::shared().notificationCenter().addObserver(
        this, kGADOpenActionURLNotification,
        [&routed](const Notification& n) { routed << n.object.toString(); });

    Heard heard;
    auto toWeb = load<GADInterstitialAd>("web")->ad;
    toWeb->setFullScreenContentDelegate(&heard);
    toWeb->presentFromRootViewController(&root);
    presenter().tapCallToAction();
    EXPECT_EQ(platform.urls().opened, QList<QUrl>{QUrl("https://example.test/game")});
    EXPECT_FALSE(presenter().isVisible());
    EXPECT_EQ(heard.calls.last(), "dismiss");

    auto toGame = load<GADInterstitialAd>("game")->ad;
    toGame->presentFromRootViewController(&root);
    presenter().tapCallToAction();
    EXPECT_EQ(routed, QStringList{"tarvolin://store"});
    EXPECT_EQ(platform.urls().opened.size(), 1);
    EXPECT_FALSE(presenter().isVisible());
    Platform::shared().notificationCenter().removeObserver(this);
}

class BannerHeard : public GADBannerViewDelegate {
public:
    void adViewDidReceiveAd(GADBannerView* view) override { calls << "received " + view->adIdentifier(); }
    void adViewWillPresentScreen(GADBannerView*) override { calls << "will present"; }
    void adViewDidFailToReceiveAdWithError(GADBannerView*, const GADError& e) override {
        calls << QStringLiteral("failed %1").arg(e.code);
    }
    QStringList calls;
};

TEST_F(AdKit, BannersReachTheirDelegateAndAreAtLeastTheStandardSize) {
    BannerHeard heard;
    AdsHostView host(QRectF(0, 600, 375, 67), nullptr);
    GADBannerView* banner = GADBannerView::initWithFrame(QRectF(27, 8, 100, 20));
    banner->setAdUnitID("banner");
    banner->setDelegate(&heard);
    banner->setRootViewController(&root);
    banner->setTag(7);
    host.addSubview(banner);
    EXPECT_EQ(banner->parent(), &host);
    EXPECT_EQ(host.viewWithTag(7), banner);
    EXPECT_EQ(host.viewWithTag(8), nullptr);

    banner->loadRequest(GADRequest::request());
    settle();
    EXPECT_EQ(heard.calls, QStringList{"failed 3"}); // the kit has not started

    start();
    QJsonObject ad = fakeAd("b1", "banner");
    ad.insert("width", 300);
    ad.insert("height", 40);
    server->ads["banner"] = ad;
    banner->loadRequest(GADRequest::request());
    EXPECT_EQ(heard.calls.last(), "received b1");
    EXPECT_TRUE(banner->isLoaded());
    EXPECT_EQ(banner->frame(), QRectF(27, 8, 320, 50));

    // A failed turn keeps the ad there is.
    server->adErrors["banner"] = makeGADError(GADErrorNoFill);
    banner->loadRequest(GADRequest::request());
    EXPECT_EQ(heard.calls.last(), "failed 1");
    EXPECT_TRUE(banner->isLoaded());
    EXPECT_EQ(banner->adIdentifier(), "b1");

    banner->tap();
    EXPECT_EQ(heard.calls.last(), "will present");

    delete banner;
    EXPECT_TRUE(host.subviews().isEmpty());
    EXPECT_EQ(host.viewWithTag(7), nullptr);
}

TEST_F(AdKit, ABannerTurnsEveryMinuteUntilItIsGone) {
    start();
    server->ads["banner"] = fakeAd("b1", "banner");
    BannerHeard heard;
    QPointer<GADBannerView> banner = GADBannerView::initWithFrame(QRectF(0, 0, 320, 50));
    banner->setAdUnitID("banner");
    banner->setDelegate(&heard);
    banner->loadRequest(GADRequest::request());
    EXPECT_EQ(server->requests.size(), 1);
    platform.scheduler().advance(59);
    EXPECT_EQ(server->requests.size(), 1);
    server->ads["banner"] = fakeAd("b2", "banner");
    platform.scheduler().advance(1);
    EXPECT_EQ(server->requests.size(), 2);
    EXPECT_EQ(banner->adIdentifier(), "b2");
    // A hidden banner lets its turns pass.
    banner->setHidden(true);
    platform.scheduler().advance(120);
    EXPECT_EQ(server->requests.size(), 2);
    banner->setHidden(false);
    platform.scheduler().advance(60);
    EXPECT_EQ(server->requests.size(), 3);

    // A turn whose answer comes after the banner is gone is dropped; no more turns are taken.
    server->holdAds = true;
    platform.scheduler().advance(60);
    EXPECT_EQ(server->requests.size(), 4);
    delete banner.data();
    FakeAdServer::State::release(server->heldAds);
    platform.scheduler().advance(600);
    EXPECT_EQ(server->requests.size(), 4);
    EXPECT_EQ(heard.calls.size(), 3);
    EXPECT_EQ(platform.scheduler().pendingCount(), 0);
}

TEST_F(AdKit, TrackingIsAskedOnceAndTheAnswerIsKept) {
    EXPECT_EQ(ATTrackingManager::trackingAuthorizationStatus(),
              ATTrackingManagerAuthorizationStatus::NotDetermined);
    QList<ATTrackingManagerAuthorizationStatus> answers;
    const auto record = [&answers](ATTrackingManagerAuthorizationStatus s) { answers << s; };
    ATTrackingManager::requestTrackingAuthorizationWithCompletionHandler(record);
    ATTrackingManager::requestTrackingAuthorizationWithCompletionHandler(record);
    ASSERT_EQ(platform.alerts().count(), 1);
    EXPECT_EQ(platform.alerts().title(), ATTrackingManager::kPromptTitle);
    EXPECT_EQ(platform.alerts().buttons(),
              (QStringList{ATTrackingManager::kAllowTitle, ATTrackingManager::kDenyTitle}));
    EXPECT_TRUE(answers.isEmpty());
    ASSERT_TRUE(platform.alerts().pressTitled(ATTrackingManager::kDenyTitle));
    EXPECT_EQ(answers,
              (QList<ATTrackingManagerAuthorizationStatus>(2, ATTrackingManagerAuthorizationStatus::Denied)));

    // The next run reads the answer from the same settings file and asks nothing.
    platform.restart();
    server = FakeAdServer::install();
    EXPECT_EQ(ATTrackingManager::trackingAuthorizationStatus(), ATTrackingManagerAuthorizationStatus::Denied);
    ATTrackingManager::requestTrackingAuthorizationWithCompletionHandler(record);
    EXPECT_FALSE(platform.alerts().isVisible());
    settle();
    EXPECT_EQ(answers.size(), 3);
    EXPECT_EQ(answers.last(), ATTrackingManagerAuthorizationStatus::Denied);

    // Loads and impressions carry the answer.
    start();
    server->ads["inter"] = fakeAd("a1", "interstitial");
    auto ad = load<GADInterstitialAd>("inter")->ad;
    ad->presentFromRootViewController(&root);
    EXPECT_EQ(server->requests.last().second, "denied");
    EXPECT_EQ(server->impressions.last().second, "denied");
    platform.defaults().setIntegerForKey(3, ATTrackingManager::kStatusKey);
    load<GADInterstitialAd>("inter");
    EXPECT_EQ(server->requests.last().second, "authorized");
}

} // namespace

namespace {

// An HTTP server on loopback that answers each request with the next scripted answer and keeps the requests.
class ScriptedHttp {
public:
    ScriptedHttp() {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            auto buffer = std::make_shared<QByteArray>();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
                *buffer += socket->readAll();
                const qsizetype end = buffer->indexOf("\r\n\r\n");
                if (end < 0) {
                    return;
                }
                const QByteArray head = buffer->left(end).toLower();
                const qsizetype at = head.indexOf("content-length:");
                const int length =
                    at < 0 ? 0 : head.mid(at + 15, head.indexOf("\r\n", at) - at - 15).trimmed().toInt();
                if (buffer->size() < end + 4 + length || m_answers.empty()) {
                    return;
                }
                requests << *buffer;
                const auto [status, body] = m_answers.front();
                m_answers.pop_front();
                socket->write(
                    "HTTP/1.1 " + QByteArray::number(status) +
                    " X\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
                    QByteArray::number(body.size()) + "\r\n\r\n" + body);
                socket->disconnectFromHost();
            });
        });
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort()); }
    void answer(int status, const QByteArray& body) { m_answers.emplace_back(status, body); }
    QList<QByteArray> requests;

private:
    QTcpServer m_server;
    std::deque<std::pair<int, QByteArray>> m_answers;
};

template <class F> void waitFor(F done) {
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

TEST(AdKitService, TheServiceAnswersBecomeAdsAndErrors) {
    TestPlatform platform;
    ScriptedHttp http;
    platform.setServiceUrl(http.url());
    GADMobileAds::sharedInstance().startWithCompletionHandler(nullptr);
    auto& server = GADMobileAds::sharedInstance().server();
    EXPECT_EQ(server.creativeUrl("/v1/ads/creatives/a1.svg"), QUrl(http.url() + "v1/ads/creatives/a1.svg"));

    const auto next = [&server](const QString& unit) {
        std::optional<std::optional<GADError>> result;
        server.nextAd(unit, "authorized",
                      [&result](const QJsonObject&, const std::optional<GADError>& e) { result = e; });
        waitFor([&result] { return result.has_value(); });
        return result.value_or(makeGADError(0, "no answer"));
    };

    // Nobody logged in: refused without asking.
    EXPECT_EQ(codeOf(next("tarvolin-interstitial")), GADErrorInvalidRequest);
    EXPECT_TRUE(http.requests.isEmpty());

    Platform::shared().gameService().setToken("tok");
    const QByteArray ad = QJsonDocument(QJsonObject{{"ad", fakeAd("a1", "interstitial")}}).toJson();
    http.answer(200, ad);
    EXPECT_FALSE(next("tarvolin-interstitial"));
    ASSERT_EQ(http.requests.size(), 1);
    EXPECT_TRUE(
        http.requests[0].startsWith("GET /v1/ads/next?unit=tarvolin-interstitial&tracking=authorized "));
    EXPECT_TRUE(http.requests[0].contains("Authorization: Bearer tok"));

    http.answer(404, R"({"error":{"code":"no_fill","message":"nothing"}})");
    EXPECT_EQ(codeOf(next("tarvolin-rewarded")), GADErrorNoFill);
    http.answer(400, R"({"error":{"code":"invalid_ad_unit","message":"unknown"}})");
    EXPECT_EQ(codeOf(next("nope")), GADErrorInvalidRequest);
    http.answer(401, R"({"error":{"code":"unauthorized","message":"token"}})");
    EXPECT_EQ(codeOf(next("tarvolin-rewarded")), GADErrorInvalidRequest);
    http.answer(503, R"({"error":{"code":"unavailable","message":"later"}})");
    EXPECT_EQ(codeOf(next("tarvolin-rewarded")), GADErrorNetworkError);
    http.answer(200, R"({"ad":[1]})");
    EXPECT_EQ(codeOf(next("tarvolin-rewarded")), GADErrorInvalidResponse);
    http.answer(200, "<html>");
    EXPECT_EQ(codeOf(next("tarvolin-rewarded")), GADErrorInvalidResponse);

    // The impression sends its token and the consent, and reads back its identifier.
    std::optional<QString> impression;
    http.answer(201, R"({"impressionIdentifier":"I9"})");
    server.recordImpression("T-a1", "denied",
                            [&impression](const QString& id, const std::optional<GADError>& e) {
                                impression = e ? "error" : id;
                            });
    waitFor([&impression] { return impression.has_value(); });
    EXPECT_EQ(impression, "I9");
    const QByteArray sent = http.requests.last();
    EXPECT_TRUE(sent.startsWith("POST /v1/ads/impressions "));
    EXPECT_EQ(QJsonDocument::fromJson(sent.mid(sent.indexOf("\r\n\r\n") + 4)).object(),
              (QJsonObject{{"impressionToken", "T-a1"}, {"tracking", "denied"}}));

    std::optional<std::optional<GADError>> claim;
    http.answer(409, R"({"error":{"code":"reward_too_early","message":"wait"}})");
    server.claimReward("I9", [&claim](const std::optional<GADError>& e) { claim = e; });
    waitFor([&claim] { return claim.has_value(); });
    ASSERT_TRUE(claim && *claim);
    EXPECT_EQ((*claim)->code, GADErrorInvalidRequest);
    EXPECT_TRUE(http.requests.last().startsWith("POST /v1/ads/rewards "));
}

} // namespace
