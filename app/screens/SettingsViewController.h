#pragma once

#include "platform/ViewController.h"

// Sound, music and volume, and the daily trainings; the offer to turn notifications on while they are off.
class SettingsViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString soundImage READ soundImage NOTIFY changed)
    Q_PROPERTY(QString musicImage READ musicImage NOTIFY changed)
    Q_PROPERTY(bool soundOn READ soundOn NOTIFY changed)
    Q_PROPERTY(bool musicOn READ musicOn NOTIFY changed)
    Q_PROPERTY(double sliderValue READ sliderValue NOTIFY changed)
    Q_PROPERTY(bool notificationsViewHidden READ notificationsViewHidden NOTIFY changed)
    Q_PROPERTY(int selectedSegment READ selectedSegment NOTIFY changed)
    Q_PROPERTY(QString trainingLabel READ trainingLabel NOTIFY changed)
    Q_PROPERTY(QString goldLabel READ goldLabel NOTIFY changed)
public:
    explicit SettingsViewController(QObject* parent = nullptr);
    ~SettingsViewController() override;
    void viewDidLoad() override;

    Q_INVOKABLE void toggleGeneralSound();
    Q_INVOKABLE void toggleBackgroundMusic();
    // The slider runs from 0 to 1; the stored volume from 0 to 0.5.
    Q_INVOKABLE void soundVolumeChanged(double value);
    Q_INVOKABLE void soundSliderReleased();
    Q_INVOKABLE void enableNotifications();
    Q_INVOKABLE void dailyNotificationsSegmentChanged(int segment);
    Q_INVOKABLE void goBack();

    QString soundImage() const;
    QString musicImage() const;
    bool soundOn() const;
    bool musicOn() const;
    double sliderValue() const { return m_slider; }
    bool notificationsViewHidden() const { return m_notificationsHidden; }
    // -1: none chosen yet (the design's own state).
    int selectedSegment() const { return m_segment; }
    QString trainingLabel() const { return m_trainingLabel; }
    QString goldLabel() const { return m_goldLabel; }

signals:
    void changed();

private:
    void refreshNotificationsView();

    double m_slider = 0.5;
    bool m_notificationsHidden = true;
    int m_segment = -1;
    QString m_trainingLabel;
    QString m_goldLabel;
};
