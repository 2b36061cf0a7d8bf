#pragma once

#include <QStringList>
#include <QUrl>
#include <QtGlobal>

class ViewController;

// Opens the screens that are presented over the others, each by its identifier.
class PresentationUtil {
public:
    // The store, or the word that it is not available yet.
    static void openInAppStore(ViewController* presenting);
    // The game's own addresses, which house ads lead to: tarvolin://store, leaderboard, battles and
    // daily-bonus (the tasks). Returns false for any other.
    static bool openInGameAddress(const QUrl& address);
    static void openLeaderboardViewController(ViewController* presenting);
    static void openCreditsViewController(ViewController* presenting);
    static void openSettingsViewController(ViewController* presenting);
    static void openRankViewController(ViewController* presenting);
    static void openAchievementsViewController(ViewController* presenting);
    static void openTipsViewController(ViewController* presenting);
    static void openHelpViewController(ViewController* presenting);
    static void openUserProfileViewController(ViewController* presenting);
    static void openAboutViewController(ViewController* presenting);

    // The Game Center pages at `page`: the leaderboard (opened with `type`: 0 normal, 1 to pick a friend, 2
    // to pick a former opponent), the battles, the exchanges and the player's charts.
    static void openGameCenterNavControllerWithPageNumAndType(ViewController* presenting, qint64 page,
                                                              qint64 type);
    // The leaderboard and the player's numbers.
    static void openGameCenterNavController2WithPageNumAndType(ViewController* presenting, qint64 page,
                                                               qint64 type);
    // As the first, with the finished live matches in place of the battles.
    static void openGameCenterNavController3WithPageNumAndType(ViewController* presenting, qint64 page,
                                                               qint64 type);

private:
    static void present(const char* identifier);
    static void openPages(const QStringList& identifiers, const QStringList& buttonText, qint64 page,
                          qint64 type);
};
