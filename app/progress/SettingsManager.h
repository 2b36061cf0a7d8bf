#pragma once

// The player's sound choices and the chosen count of daily trainings.
class SettingsManager {
public:
    static SettingsManager& sharedInstance();
    void loadData();

    void toggleSoundOnOff();
    void toggleBgMusicOnOff();
    void changeSoundVolume(float volume);
    void configureNotificationsPerDay(float count);

    bool isSoundOn() const { return m_isSoundOn; }
    bool isBgMusicOn() const { return m_isBgMusicOn; }
    float soundVolume() const { return m_soundVolume; }
    float notificationsPerDay() const { return m_notificationsPerDay; }
    void setIsSoundOn(bool v) { m_isSoundOn = v; }
    void setIsBgMusicOn(bool v) { m_isBgMusicOn = v; }
    void setSoundVolume(float v) { m_soundVolume = v; }
    void setNotificationsPerDay(float v) { m_notificationsPerDay = v; }

private:
    bool m_isSoundOn = true;
    bool m_isBgMusicOn = true;
    float m_soundVolume = 0.25f;
    float m_notificationsPerDay = 0.0f;
};
