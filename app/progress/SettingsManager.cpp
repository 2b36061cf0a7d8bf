#include "SettingsManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <cmath>

SettingsManager& SettingsManager::sharedInstance() {
    return Shared<SettingsManager>::instance();
}

void SettingsManager::loadData() {
    auto& d = Platform::shared().userDefaults();
    if (!d.hasKey("sound")) {
        d.setBoolForKey(true, "sound");
    }
    if (!d.hasKey("bgmusic")) {
        d.setBoolForKey(true, "bgmusic");
    }
    if (!d.hasKey("soundvolume")) {
        d.setDoubleForKey(0.25, "soundvolume");
    }
    d.synchronize();
    m_isSoundOn = d.boolForKey("sound");
    m_isBgMusicOn = d.boolForKey("bgmusic");
    const double volume = d.doubleForKey("soundvolume");
    // A volume outside what the slider can set is taken as the default.
    m_soundVolume =
        std::isfinite(volume) && volume >= 0.0 && volume <= 1.0 ? static_cast<float>(volume) : 0.25f;
    m_notificationsPerDay = static_cast<float>(d.doubleForKey("dailyNotificationsNum"));
}

void SettingsManager::toggleSoundOnOff() {
    m_isSoundOn = !m_isSoundOn;
    Platform::shared().userDefaults().setBoolForKey(m_isSoundOn, "sound");
}

void SettingsManager::toggleBgMusicOnOff() {
    m_isBgMusicOn = !m_isBgMusicOn;
    Platform::shared().userDefaults().setBoolForKey(m_isBgMusicOn, "bgmusic");
}

void SettingsManager::changeSoundVolume(float volume) {
    m_soundVolume = volume;
    Platform::shared().userDefaults().setDoubleForKey(volume, "soundvolume");
}

void SettingsManager::configureNotificationsPerDay(float count) {
    m_notificationsPerDay = count;
    Platform::shared().userDefaults().setDoubleForKey(count, "dailyNotificationsNum");
}
