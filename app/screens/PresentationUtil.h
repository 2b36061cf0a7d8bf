#pragma once

class ViewController;

// Opens the screens that are presented over the others, each by its identifier.
class PresentationUtil {
public:
    // The store, or the word that it is not available yet.
    static void openInAppStore(ViewController* presenting);
    static void openLeaderboardViewController(ViewController* presenting);
    static void openCreditsViewController(ViewController* presenting);
    static void openSettingsViewController(ViewController* presenting);
    static void openRankViewController(ViewController* presenting);
    static void openAchievementsViewController(ViewController* presenting);
    static void openTipsViewController(ViewController* presenting);
    static void openHelpViewController(ViewController* presenting);
    static void openUserProfileViewController(ViewController* presenting);
    static void openAboutViewController(ViewController* presenting);

private:
    static void present(const char* identifier);
};
