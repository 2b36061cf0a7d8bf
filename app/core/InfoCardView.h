#pragma once

#include "LevelInfo.h"

#include <QColor>
#include <QDateTime>
#include <QObject>
#include <QPointF>
#include <QStringList>

// A card of further facts about a level's answer, with a world map.
class InfoCardView : public QObject {
    Q_OBJECT
    Q_PROPERTY(int cardId READ cardId NOTIFY changed)
    Q_PROPERTY(QString continentLabel MEMBER continentLabel NOTIFY changed)
    Q_PROPERTY(QString areaLabel MEMBER areaLabel NOTIFY changed)
    Q_PROPERTY(QString populationLabel MEMBER populationLabel NOTIFY changed)
    Q_PROPERTY(QString gdpLabel MEMBER gdpLabel NOTIFY changed)
    Q_PROPERTY(QString currentTimeLabel MEMBER currentTimeLabel NOTIFY changed)
    Q_PROPERTY(QString cityTimeLabel MEMBER cityTimeLabel NOTIFY changed)
    Q_PROPERTY(QString priceLabel MEMBER priceLabel NOTIFY changed)
    Q_PROPERTY(QString cheaperPercentLabel MEMBER cheaperPercentLabel NOTIFY changed)
    Q_PROPERTY(QColor cheaperPercentColor MEMBER cheaperPercentColor NOTIFY changed)
    Q_PROPERTY(QStringList factTexts MEMBER factTexts NOTIFY changed)
    Q_PROPERTY(QPointF mapCenter MEMBER mapCenter NOTIFY changed)
    Q_PROPERTY(QPointF mapSpan MEMBER mapSpan NOTIFY changed)
    Q_PROPERTY(bool hasPin MEMBER hasPin NOTIFY changed)
    Q_PROPERTY(QPointF pin MEMBER pin NOTIFY changed)
    Q_PROPERTY(bool mapAnimated MEMBER mapAnimated NOTIFY changed)
    Q_PROPERTY(QString countryLabel MEMBER countryLabel NOTIFY changed)
    Q_PROPERTY(QString establishedLabel MEMBER establishedLabel NOTIFY changed)
    Q_PROPERTY(QString stadiumLabel MEMBER stadiumLabel NOTIFY changed)
    Q_PROPERTY(QString titlesLabel MEMBER titlesLabel NOTIFY changed)
    Q_PROPERTY(QString playersLabel MEMBER playersLabel NOTIFY changed)
    Q_PROPERTY(QString managerLabel MEMBER managerLabel NOTIFY changed)
    Q_PROPERTY(QString coachLabel MEMBER coachLabel NOTIFY changed)
    Q_PROPERTY(QString directorLabel MEMBER directorLabel NOTIFY changed)
    Q_PROPERTY(QString productionLabel MEMBER productionLabel NOTIFY changed)
    Q_PROPERTY(QString firstShowLabel MEMBER firstShowLabel NOTIFY changed)
    Q_PROPERTY(QString actorsLabel MEMBER actorsLabel NOTIFY changed)
    Q_PROPERTY(QString storyLabel MEMBER storyLabel NOTIFY changed)
public:
    static InfoCardView* initWithLevel(LevelInfoPtr level, QObject* parent = nullptr);

    LevelInfoPtr level;
    void setLevel(LevelInfoPtr l) { level = std::move(l); }

    QString countryLabel, continentLabel, areaLabel, populationLabel, gdpLabel, directorLabel,
        productionLabel, firstShowLabel, actorsLabel, storyLabel, establishedLabel, stadiumLabel, titlesLabel,
        playersLabel, managerLabel, coachLabel, currentTimeLabel, priceLabel, cityTimeLabel,
        cheaperPercentLabel;
    QColor cheaperPercentColor;
    // Facts in the order of the card's tags 10, 20, 30 …
    QStringList factTexts;

    // The map: centre and span as (latitude, longitude) in degrees.
    QPointF mapCenter;
    QPointF mapSpan;
    bool hasPin = false;
    QPointF pin;
    bool mapAnimated = false;

    void setupViewWithId(qint64 cardId);
    // "hh:mm a" now; a non-zero argument is that many hours from UTC, 0 the device's zone.
    QString getTimeString(qint64 hoursFromUtc) const;
    void showCityOnMapWithVSpanHSpan(double vSpan, double hSpan);

    int cardId() const { return static_cast<int>(m_cardId); }
    // The fact shown at a tag (10, 20, 30 …); empty when there is none.
    QString factAtTag(int tag) const;

signals:
    void changed();

private:
    using QObject::QObject;
    // The level's coordinates, when its location has exactly two parts.
    bool coordinates(QPointF* latLon) const;

    qint64 m_cardId = 0;
};
