#include "Screens.h"

#include "core/GameView.h"
#include "core/GameViewController.h"
#include "core/InfoCardView.h"
#include "core/LetterLabel.h"
#include "core/LevelSuccessViewController.h"
#include "core/RoundFinishViewController.h"
#include "multiplayer/AccountViewController.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/LoginViewController.h"
#include "platform/Platform.h"
#include "screens/CreditsViewController.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlEngine>

void registerScreens(Navigator& navigator) {
    navigator.registerScreen(QStringLiteral("MainViewController"), [] { return new MainViewController(); });
    navigator.registerScreen(QStringLiteral("RoundSelectorViewController"),
                             [] { return new RoundSelectorViewController(); });
    navigator.registerScreen(QStringLiteral("LevelSelectorViewController"),
                             [] { return new LevelSelectorViewController(); });
    navigator.registerScreen(QStringLiteral("GameViewController"), [] { return new GameViewController(); });
    navigator.registerScreen(QStringLiteral("LevelSuccessViewController"),
                             [] { return new LevelSuccessViewController(); });
    navigator.registerScreen(QStringLiteral("CreditsViewController"),
                             [] { return new CreditsViewController(); });
    navigator.registerScreen(QStringLiteral("RoundFinishViewController"),
                             [] { return new RoundFinishViewController(); });
    navigator.registerScreen(QStringLiteral("LoginViewController"), [] { return new LoginViewController(); });
    navigator.registerScreen(QStringLiteral("LeaderboardViewController"),
                             [] { return new LeaderboardViewController(); });
    navigator.registerScreen(QStringLiteral("AccountViewController"),
                             [] { return new AccountViewController(); });
}

void registerQmlTypes() {
    const char* uri = "Tarvolin";
    qmlRegisterUncreatableType<ViewController>(uri, 1, 0, "ViewController", "made by the navigator");
    qmlRegisterUncreatableType<GameViewController>(uri, 1, 0, "GameViewController", "made by the navigator");
    qmlRegisterUncreatableType<LevelSuccessViewController>(uri, 1, 0, "LevelSuccessViewController",
                                                           "made by the navigator");
    qmlRegisterUncreatableType<MainViewController>(uri, 1, 0, "MainViewController", "made by the navigator");
    qmlRegisterUncreatableType<RoundSelectorViewController>(uri, 1, 0, "RoundSelectorViewController",
                                                            "made by the navigator");
    qmlRegisterUncreatableType<LevelSelectorViewController>(uri, 1, 0, "LevelSelectorViewController",
                                                            "made by the navigator");
    qmlRegisterUncreatableType<RoundFinishViewController>(uri, 1, 0, "RoundFinishViewController",
                                                          "made by the navigator");
    qmlRegisterUncreatableType<LoginViewController>(uri, 1, 0, "LoginViewController",
                                                    "made by the navigator");
    qmlRegisterUncreatableType<LeaderboardViewController>(uri, 1, 0, "LeaderboardViewController",
                                                          "made by the navigator");
    qmlRegisterUncreatableType<AccountViewController>(uri, 1, 0, "AccountViewController",
                                                      "made by the navigator");
    qmlRegisterUncreatableType<CreditsViewController>(uri, 1, 0, "CreditsViewController",
                                                      "made by the navigator");
    qmlRegisterUncreatableType<LetterLabel>(uri, 1, 0, "LetterLabel", "made by the board");
    qmlRegisterUncreatableType<SolutionBlock>(uri, 1, 0, "SolutionBlock", "made by the board");
    qmlRegisterUncreatableType<GameView>(uri, 1, 0, "GameView", "made by the board");
    qmlRegisterUncreatableType<PictureView>(uri, 1, 0, "PictureView", "made by the board");
    qmlRegisterUncreatableType<InfoCardView>(uri, 1, 0, "InfoCardView", "made by the play screen");
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
    ctx->setContextProperty(QStringLiteral("device"), &platform.device());
    ctx->setContextProperty(QStringLiteral("reachability"), &platform.reachability());
    engine->load(QUrl(QStringLiteral("qrc:/qml/Main.qml")));
    if (engine->rootObjects().isEmpty()) {
        return nullptr;
    }
    return engine;
}
