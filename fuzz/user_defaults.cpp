// The player's settings file as it is found on disk: every key in it read back with each of the readers,
// and the game's managers loading their state from it, as they do when the game starts.

#include "game_fixture.h"

#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "core/RoundManager.h"
#include "progress/AchievementManager.h"
#include "progress/BonusManager.h"
#include "progress/BrainPowersManager.h"
#include "progress/CreditsManager.h"
#include "progress/NotificationManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/SettingsManager.h"
#include "progress/TipsManager.h"
#include "progress/TutorialAlertsManager.h"
#include "progress/UserStatsManager.h"

#include "platform/SettingsFile.h"

#include <QSettings>

#include <cmath>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tarvolin::fuzz::GameFixture fixture;
    const QString file =
        fixture.write(QStringLiteral("settings.ini"),
                      QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    fixture.install(file);
    auto& defaults = Platform::shared().userDefaults();

    const QStringList keys = QSettings(file, SettingsFile::format()).allKeys();
    for (const QString& key : keys.mid(0, 64)) {
        (void)defaults.integerForKey(key);
        (void)defaults.boolForKey(key);
        (void)defaults.doubleForKey(key);
        (void)defaults.stringForKey(key);
        (void)defaults.stringArrayForKey(key);
        QList<StatRecord> records;
        (void)UserStatsManager::unarchiveRecords(defaults.stringForKey(key).toUtf8(), &records);
    }

    // The managers load what they keep when first used.
    (void)LevelManager::sharedInstance();
    (void)RoundManager::sharedInstance();
    (void)LevelsInfoReader::sharedInstance().randomIndex();
    (void)AchievementManager::sharedInstance();
    (void)BonusManager::sharedInstance();
    (void)BrainPowersManager::sharedInstance();
    (void)CreditsManager::sharedInstance();
    (void)NotificationManager::sharedInstance();
    (void)RankManager::sharedInstance();
    (void)ScorePointsManager::sharedInstance();
    (void)SessionManager::sharedInstance();
    (void)SettingsManager::sharedInstance();
    (void)TipsManager::sharedInstance();
    (void)TutorialAlertsManager::sharedInstance();
    auto& stats = UserStatsManager::sharedInstance();
    (void)stats.generateUserStatsContextNumber();
    (void)stats.generateUserStatsContextNumberWithTimeTravel();
    (void)stats.generateUserStatsContextNumberWithTrialsUsed();

    fixture.uninstall();
    QFile::remove(file);
    QFile::remove(file + QStringLiteral(".unreadable"));
    return 0;
}
