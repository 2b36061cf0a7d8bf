#include "SettingsViewController.h"

#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/NotificationManager.h"
#include "progress/RankManager.h"
#include "progress/SettingsManager.h"

SettingsViewController::SettingsViewController(QObject* parent)
    : ViewController(QStringLiteral("SettingsViewController"), parent) {}

SettingsViewController::~SettingsViewController() {
    if (Platform::isInstalled()) {
        disconnect(&Platform::shared().localNotifications(), nullptr, this, nullptr);
    }
}

void SettingsViewController::viewDidLoad() {
    const SettingsManager& settings = SettingsManager::sharedInstance();
    m_slider = static_cast<double>(settings.soundVolume()) * 2.0;
    refreshNotificationsView();
    // The answer to the platform's question may come while the screen is open.
    connect(&Platform::shared().localNotifications(), &LocalNotifications::scheduleChanged, this,
            &SettingsViewController::refreshNotificationsView);
    const float perDay = settings.notificationsPerDay();
    if (perDay == 0.0f) {
        m_trainingLabel = QStringLiteral("يرجى اختيار نوع التمرين");
        m_goldLabel = QStringLiteral("0");
    } else if (perDay == 1.0f) {
        m_segment = 1;
        m_trainingLabel = QStringLiteral("تمرين واحد كل يوم");
        m_goldLabel = QStringLiteral("0");
    } else if (perDay == 2.0f) {
        m_segment = 2;
        m_trainingLabel = QStringLiteral("تمرينين في اليوم");
        m_goldLabel = QStringLiteral("0");
    }
    emit changed();
}

void SettingsViewController::refreshNotificationsView() {
    m_notificationsHidden = NotificationManager::sharedInstance().areNotificationsAllowed();
    emit changed();
}

QString SettingsViewController::soundImage() const {
    return soundOn() ? QStringLiteral("soundon.png") : QStringLiteral("soundoff.png");
}
QString SettingsViewController::musicImage() const {
    return musicOn() ? QStringLiteral("soundon.png") : QStringLiteral("soundoff.png");
}
bool SettingsViewController::soundOn() const {
    return SettingsManager::sharedInstance().isSoundOn();
}
bool SettingsViewController::musicOn() const {
    return SettingsManager::sharedInstance().isBgMusicOn();
}

void SettingsViewController::toggleGeneralSound() {
    SettingsManager::sharedInstance().toggleSoundOnOff();
    if (soundOn()) {
        SoundFactory::sharedInstance().playMenuTap();
    }
    emit changed();
}

void SettingsViewController::toggleBackgroundMusic() {
    SettingsManager::sharedInstance().toggleBgMusicOnOff();
    emit changed();
}

void SettingsViewController::soundVolumeChanged(double value) {
    m_slider = std::clamp(value, 0.0, 1.0);
    // Stored for the next start: the effects keep the volume they were built with.
    SettingsManager::sharedInstance().changeSoundVolume(static_cast<float>(m_slider * 0.5));
    emit changed();
}

void SettingsViewController::soundSliderReleased() {
    SoundFactory::sharedInstance().playMenuTap();
}

void SettingsViewController::enableNotifications() {
    SoundFactory::sharedInstance().playMenuTap();
    NotificationManager::sharedInstance().enableNotificationPermissions();
}

void SettingsViewController::dailyNotificationsSegmentChanged(int segment) {
    SoundFactory::sharedInstance().playMenuTap();
    const RankManager& ranks = RankManager::sharedInstance();
    float count = 0.0f;
    switch (segment) {
    case 0:
        m_trainingLabel = QStringLiteral("بدون تمارين يومية");
        m_goldLabel = QStringLiteral("0");
        break;
    case 1:
        count = 1.0f;
        m_trainingLabel = QStringLiteral("تمرين واحد كل يوم");
        m_goldLabel = QString::number(ranks.getDailyNotificationReward());
        break;
    case 2:
        count = 2.0f;
        m_trainingLabel = QStringLiteral("تمرينين في اليوم");
        m_goldLabel = QString::number(ranks.getDailyNotification2Reward());
        break;
    default:
        NotificationManager::sharedInstance().enableNotificationPermissions();
        return;
    }
    m_segment = segment;
    SettingsManager::sharedInstance().configureNotificationsPerDay(count);
    NotificationManager::sharedInstance().scheduleDailyRoutines(count);
    emit changed();
    NotificationManager::sharedInstance().enableNotificationPermissions();
}

void SettingsViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
