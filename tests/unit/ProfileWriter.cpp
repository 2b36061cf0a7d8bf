// A stand-in for the game that only earns: it plays levels and buys gold in a loop through the game's own
// managers and prints each balance once the game would have shown it. The profile test kills it at random.
//
//   tarvolin_profile_writer SETTINGS_FILE SEED
//
// Each line on standard output is "gold skips points level": first the balance as loaded, then one line
// after each change.
#include "core/LevelManager.h"
#include "platform/Platform.h"
#include "progress/CreditsManager.h"
#include "progress/ScorePointsManager.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

void show() {
    // The balances the screens read when the managers announce a change.
    std::printf("%lld %lld %lld %lld\n",
                static_cast<long long>(CreditsManager::sharedInstance().currentCredits()),
                static_cast<long long>(CreditsManager::sharedInstance().currentSkips()),
                static_cast<long long>(ScorePointsManager::sharedInstance().totalPoints()),
                static_cast<long long>(LevelManager::sharedInstance().currentLevel()));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: tarvolin_profile_writer SETTINGS_FILE SEED\n");
        return 2;
    }
    QCoreApplication app(argc, argv);
    Platform::Services services;
    services.userDefaults = std::make_unique<UserDefaults>(QString::fromLocal8Bit(argv[1]));
    Platform::install(std::move(services));
    std::mt19937 rng(static_cast<std::mt19937::result_type>(std::strtoul(argv[2], nullptr, 10)));
    show();
    for (;;) {
        if (rng() % 8 == 0) {
            // A purchase handed over: the gold and its skips are written together, as the payment queue does.
            UserDefaults::Batch batch(Platform::shared().userDefaults());
            CreditsManager::sharedInstance().addCredits(900);
            CreditsManager::sharedInstance().addSkips(5);
        } else {
            // A level won: its gold and points, then the next level.
            CreditsManager::sharedInstance().addCredits(1 + static_cast<qint64>(rng() % 20));
            ScorePointsManager::sharedInstance().addPoints(1 + static_cast<qint64>(rng() % 5));
            LevelManager::sharedInstance().incrementCurrentLevel();
        }
        show();
    }
}
