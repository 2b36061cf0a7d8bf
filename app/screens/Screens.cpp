#include "Screens.h"

#include "Localization.h"

#include "core/GameView.h"
#include "core/GameViewController.h"
#include "core/InfoCardView.h"
#include "core/LetterLabel.h"
#include "core/LevelSuccessViewController.h"
#include "core/RoundFinishViewController.h"
#include "multiplayer/AccountViewController.h"
#include "multiplayer/BattlesViewController.h"
#include "multiplayer/ExchangesViewController.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/LoginViewController.h"
#include "multiplayer/PlayerPhotoProvider.h"
#include "multiplayer/RandomBattleViewController.h"
#include "multiplayer/RealTimeBattleListViewController.h"
#include "multiplayer/RealTimeBattleStartViewController.h"
#include "outreach/AppPromoView.h"
#include "outreach/ShareView.h"
#include "outreach/StoreViewController.h"
#include "platform/Platform.h"
#include "platform/adkit/AdKit.h"
#include "platform/gamekit/GKFriendRequestComposeViewController.h"
#include "platform/gamekit/GKMatchPickers.h"
#include "platform/storekit/SKStoreProductViewController.h"
#include "screens/AboutViewController.h"
#include "screens/AchievementsViewController.h"
#include "screens/CreditsViewController.h"
#include "screens/HelpViewController.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RankViewController.h"
#include "screens/RoundSelectorViewController.h"
#include "screens/SettingsViewController.h"
#include "screens/TipsViewController.h"
#include "screens/UserProfileViewController.h"

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlEngine>

namespace {
// Every screen the navigator can make, with its identifier.
template <class F> void forEachScreen(F&& f) {
    f.template operator()<MainViewController>("MainViewController");
    f.template operator()<RoundSelectorViewController>("RoundSelectorViewController");
    f.template operator()<LevelSelectorViewController>("LevelSelectorViewController");
    f.template operator()<GameViewController>("GameViewController");
    f.template operator()<LevelSuccessViewController>("LevelSuccessViewController");
    f.template operator()<RoundFinishViewController>("RoundFinishViewController");
    f.template operator()<LoginViewController>("LoginViewController");
    f.template operator()<LeaderboardViewController>("LeaderboardViewController");
    f.template operator()<AccountViewController>("AccountViewController");
    f.template operator()<CreditsViewController>("CreditsViewController");
    f.template operator()<SettingsViewController>("SettingsViewController");
    f.template operator()<RankViewController>("RankViewController");
    f.template operator()<AchievementsViewController>("AchievementsViewController");
    f.template operator()<TipsViewController>("TipsViewController");
    f.template operator()<HelpViewController>("HelpViewController");
    f.template operator()<UserProfileViewController>("UserProfileViewController");
    f.template operator()<AboutViewController>("AboutViewController");
    f.template operator()<GKTurnBasedMatchmakerViewController>("GKTurnBasedMatchmakerViewController");
    f.template operator()<GKMatchmakerViewController>("GKMatchmakerViewController");
    f.template operator()<GameCenterSwipeViewControllers>("GameCenterSwipeViewControllers");
    f.template operator()<BattlesViewController>("BattlesViewController");
    f.template operator()<ExchangesViewController>("ExchangesViewController");
    f.template operator()<RealTimeBattleStartViewController>("RealTimeBattleStartViewController");
    f.template operator()<RealTimeBattleListViewController>("RealTimeBattleListViewController");
    f.template operator()<RandomBattleViewController>("RandomBattleViewController");
    f.template operator()<GCPlayerViewController>("GCPlayerViewController");
    f.template operator()<GKFriendRequestComposeViewController>("GKFriendRequestComposeViewController");
    f.template operator()<StoreViewController>("StoreViewController");
    f.template operator()<AppPromoViewController>("AppPromoViewController");
    f.template operator()<SKStoreProductViewController>("SKStoreProductViewController");
}
} // namespace

void registerScreens(Navigator& navigator) {
    forEachScreen([&navigator]<class T>(const char* identifier) {
        navigator.registerScreen(QString::fromLatin1(identifier), [] { return new T(); });
    });
}

void registerQmlTypes() {
    const char* uri = "Tarvolin";
    qmlRegisterUncreatableType<ViewController>(uri, 1, 0, "ViewController", "made by the navigator");
    forEachScreen([uri]<class T>(const char* identifier) {
        qmlRegisterUncreatableType<T>(uri, 1, 0, identifier, "made by the navigator");
    });
    qmlRegisterUncreatableType<LetterLabel>(uri, 1, 0, "LetterLabel", "made by the board");
    qmlRegisterUncreatableType<SolutionBlock>(uri, 1, 0, "SolutionBlock", "made by the board");
    qmlRegisterUncreatableType<GameView>(uri, 1, 0, "GameView", "made by the board");
    qmlRegisterUncreatableType<PictureView>(uri, 1, 0, "PictureView", "made by the board");
    qmlRegisterUncreatableType<InfoCardView>(uri, 1, 0, "InfoCardView", "made by the play screen");
    qmlRegisterUncreatableType<AppPromoView>(uri, 1, 0, "AppPromoView", "made by its screen");
    qmlRegisterUncreatableType<GADFullScreenPresentingAd>(uri, 1, 0, "GADFullScreenPresentingAd",
                                                          "loaded by the ad kit");
    qmlRegisterUncreatableType<GADInterstitialAd>(uri, 1, 0, "GADInterstitialAd", "loaded by the ad kit");
    qmlRegisterUncreatableType<GADRewardedAd>(uri, 1, 0, "GADRewardedAd", "loaded by the ad kit");
    qmlRegisterUncreatableType<GADBannerView>(uri, 1, 0, "GADBannerView", "made by the ad kit");
    qmlRegisterUncreatableType<AdsHostView>(uri, 1, 0, "AdsHostView", "made by the play screen");
    qmlRegisterUncreatableType<ShareView>(uri, 1, 0, "ShareView", "put up by a screen");
    qmlRegisterUncreatableType<GADAdPresenter>(uri, 1, 0, "GADAdPresenter", "the ad kit's own");
}

std::unique_ptr<QQmlApplicationEngine> createGameEngine() {
    static bool typesRegistered = false;
    if (!typesRegistered) {
        registerQmlTypes();
        typesRegistered = true;
    }
    auto& platform = Platform::shared();
    auto engine = std::make_unique<QQmlApplicationEngine>();
    QQmlContext* ctx = engine->rootContext();
    ctx->setContextProperty(QStringLiteral("navigator"), &platform.navigator());
    ctx->setContextProperty(QStringLiteral("alerts"), &platform.alerts());
    ctx->setContextProperty(QStringLiteral("progressHud"), &platform.progressHud());
    ctx->setContextProperty(QStringLiteral("paymentSheet"), &platform.paymentSheet());
    ctx->setContextProperty(QStringLiteral("shareSheet"), &platform.shareSheet());
    ctx->setContextProperty(QStringLiteral("device"), &platform.device());
    ctx->setContextProperty(QStringLiteral("reachability"), &platform.reachability());
    ctx->setContextProperty(QStringLiteral("banner"), &platform.banner());
    ctx->setContextProperty(QStringLiteral("emitter"), &platform.emitter());
    ctx->setContextProperty(QStringLiteral("adPresenter"), &GADAdPresenter::shared());
    static LocalizedStrings strings;
    ctx->setContextProperty(QStringLiteral("strings"), &strings);
    engine->addImageProvider(QStringLiteral("players"), new PlayerPhotoProvider());
    engine->addImageProvider(QStringLiteral("share"), SharePictures::provider());
    engine->load(QUrl(QStringLiteral("qrc:/qml/Main.qml")));
    if (engine->rootObjects().isEmpty()) {
        return nullptr;
    }
    return engine;
}
