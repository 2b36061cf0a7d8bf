#include "PresentationUtil.h"

#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/LeaderboardViewController.h"
#include "platform/Platform.h"

#include <QDebug>
#include <QUrl>

void PresentationUtil::present(const char* identifier) {
    auto& nav = Platform::shared().navigator();
    if (auto* screen = nav.instantiateViewControllerWithIdentifier(QString::fromLatin1(identifier))) {
        nav.presentViewController(screen);
    }
}

void PresentationUtil::openPages(const QStringList& identifiers, const QStringList& buttonText, qint64 page,
                                 qint64 type) {
    auto& nav = Platform::shared().navigator();
    QList<ViewController*> pages;
    QStringList texts;
    for (qsizetype i = 0; i < identifiers.size(); ++i) {
        if (auto* screen = nav.instantiateViewControllerWithIdentifier(identifiers.at(i))) {
            if (auto* board = qobject_cast<LeaderboardViewController*>(screen)) {
                board->setOpenType(type);
            }
            pages.append(screen);
            texts.append(buttonText.value(i));
        }
    }
    auto* swipe = new GameCenterSwipeViewControllers();
    swipe->setViewControllerArrayButtonText(pages, texts);
    swipe->setInitialSelectedPage(page);
    nav.presentViewController(swipe);
}

void PresentationUtil::openGameCenterNavControllerWithPageNumAndType(ViewController*, qint64 page,
                                                                     qint64 type) {
    openPages({"LeaderboardViewController", "BattlesViewController", "ExchangesViewController",
               "UserProfileViewController"},
              {QStringLiteral("ترتيبي"), QStringLiteral("معاركي"), QStringLiteral("تبادلات"),
               QStringLiteral("مخططي")},
              page, type);
}

void PresentationUtil::openGameCenterNavController2WithPageNumAndType(ViewController*, qint64 page,
                                                                      qint64 type) {
    openPages({"LeaderboardViewController", "UserProfileViewController"},
              {QStringLiteral("ترتيبي"), QStringLiteral("ارقامي")}, page, type);
}

void PresentationUtil::openGameCenterNavController3WithPageNumAndType(ViewController*, qint64 page,
                                                                      qint64 type) {
    openPages({"LeaderboardViewController", "RealTimeBattleListViewController", "ExchangesViewController",
               "UserProfileViewController"},
              {QStringLiteral("ترتيبي"), QStringLiteral("معاركي"), QStringLiteral("تبادلات"),
               QStringLiteral("مخططي")},
              page, type);
}

void PresentationUtil::openLeaderboardViewController(ViewController*) {
    present("LeaderboardViewController");
}
void PresentationUtil::openCreditsViewController(ViewController*) {
    present("CreditsViewController");
}

void PresentationUtil::openSettingsViewController(ViewController*) {
    present("SettingsViewController");
}
void PresentationUtil::openRankViewController(ViewController*) {
    present("RankViewController");
}
void PresentationUtil::openAchievementsViewController(ViewController*) {
    present("AchievementsViewController");
}

void PresentationUtil::openTipsViewController(ViewController*) {
    present("TipsViewController");
}
void PresentationUtil::openHelpViewController(ViewController*) {
    present("HelpViewController");
}

void PresentationUtil::openUserProfileViewController(ViewController*) {
    present("UserProfileViewController");
}

void PresentationUtil::openAboutViewController(ViewController*) {
    present("AboutViewController");
}

void PresentationUtil::openInAppStore(ViewController*) {
    present("StoreViewController");
}

bool PresentationUtil::openInGameAddress(const QUrl& address) {
    if (address.scheme() != QLatin1String("tarvolin")) {
        return false;
    }
    const QString where = address.host();
    if (where == QLatin1String("store")) {
        openInAppStore(nullptr);
    } else if (where == QLatin1String("leaderboard")) {
        openGameCenterNavControllerWithPageNumAndType(nullptr, 0, 0);
    } else if (where == QLatin1String("battles")) {
        openGameCenterNavControllerWithPageNumAndType(nullptr, 1, 0);
    } else if (where == QLatin1String("daily-bonus")) {
        openAchievementsViewController(nullptr);
    } else {
        qWarning().noquote() << "No screen at" << address.toString();
        return false;
    }
    return true;
}
