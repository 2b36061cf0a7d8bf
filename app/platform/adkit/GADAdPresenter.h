#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class GADFullScreenPresentingAd;
class Timer;

// The full-screen ad on screen, for AdOverlay.qml (context property "adPresenter"). One ad at a time; a
// rewarded one counts its seconds down on the platform's scheduler and pays at the end.
class GADAdPresenter : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(QObject* ad READ adObject NOTIFY changed)
    Q_PROPERTY(bool rewarded READ isRewarded NOTIFY changed)
    Q_PROPERTY(int secondsLeft READ secondsLeft NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(bool rewardEarned READ isRewardEarned NOTIFY changed)
    Q_PROPERTY(bool actionEnabled READ isActionEnabled NOTIFY changed)
    Q_PROPERTY(QString closeTitle READ closeTitle NOTIFY changed)
public:
    static inline const QString kCloseTitle = QStringLiteral("إغلاق");
    static inline const QString kCloseWithoutRewardTitle = QStringLiteral("إغلاق بدون مكافأة");

    // The one presenter of the process; it outlives every QML engine that shows it.
    static GADAdPresenter& shared();
    // Takes whatever is on screen off without telling anybody (the kit is dropped); nothing when no presenter
    // was ever made.
    static void resetShared();

    bool isVisible() const { return m_ad != nullptr; }
    GADFullScreenPresentingAd* currentAd() const { return m_ad.get(); }
    QObject* adObject() const;
    bool isRewarded() const;
    // Whole seconds until a rewarded ad pays; 0 for an interstitial.
    int secondsLeft() const { return m_secondsLeft; }
    // How much of a rewarded ad's time has gone, 0 to 1.
    double progress() const;
    bool isRewardEarned() const { return m_rewardEarned; }
    // Whether the call to action answers a tap: an interstitial's at once, a rewarded ad's once it has paid.
    bool isActionEnabled() const;
    QString closeTitle() const;

    // Closes the ad: the overlay hides, then the ad's delegate hears it was dismissed.
    Q_INVOKABLE void close();
    // Opens the ad's action and closes it.
    Q_INVOKABLE void tapCallToAction();

    // Puts the ad on screen; a rewarded ad's handler runs when its time is over.
    void show(std::shared_ptr<GADFullScreenPresentingAd> ad, std::function<void()> rewardHandler);
signals:
    void changed();

private:
    GADAdPresenter() = default;
    void tick();
    void reset();

    std::shared_ptr<GADFullScreenPresentingAd> m_ad;
    std::function<void()> m_rewardHandler;
    std::shared_ptr<Timer> m_countdown;
    int m_secondsLeft = 0;
    bool m_rewardEarned = false;
};
