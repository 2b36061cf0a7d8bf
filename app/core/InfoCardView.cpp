#include "InfoCardView.h"

#include "platform/Platform.h"
#include "screens/ColorUtil.h"
#include "screens/Util.h"

#include <QLocale>
#include <QTimeZone>
#include <cmath>
#include <cstdlib>

InfoCardView* InfoCardView::initWithLevel(LevelInfoPtr level, QObject* parent) {
    auto* card = new InfoCardView(parent);
    card->level = std::move(level);
    return card;
}

bool InfoCardView::coordinates(QPointF* latLon) const {
    const QStringList parts = level ? level->location.split(QLatin1Char(',')) : QStringList();
    if (parts.size() != 2) {
        return false;
    }
    *latLon = QPointF(Util::doubleValue(parts.at(0)), Util::doubleValue(parts.at(1)));
    return true;
}

void InfoCardView::setupViewWithId(qint64 cardId) {
    m_cardId = cardId;
    hasPin = false;
    const LevelInfo empty;
    const LevelInfo& l = level ? *level : empty;

    continentLabel = l.getContinentName();
    areaLabel = l.area;
    populationLabel = l.population;
    gdpLabel = l.gdp;
    countryLabel = l.country;

    currentTimeLabel = getTimeString(0);
    cityTimeLabel = getTimeString(l.timezone);

    const auto p = static_cast<qint64>(l.priceIndex);
    const qint64 d = 100 * p - 7000;
    const qint64 percent = std::llabs(d / 70);
    priceLabel = QString::number(p);
    cheaperPercentLabel = QStringLiteral("%1 بنسبة %2%")
                              .arg(d > 69 ? QStringLiteral("أغلى") : QStringLiteral("أرخص"))
                              .arg(percent);
    cheaperPercentColor = d > 69 ? ColorUtil::getRedColor() : ColorUtil::getGreenColor();

    factTexts = l.hasFacts ? l.facts : QStringList();

    if (cardId == 3) {
        showCityOnMapWithVSpanHSpan(0.01, 0.02);
    }
    if (cardId == 2) {
        // The centre is moved at random so that the map hints at a region without giving the place away.
        QPointF c;
        coordinates(&c);
        const double lat = c.x() + static_cast<double>(arc4random() % 20) - 10;
        const double lon = c.y() + static_cast<double>(arc4random() % 40) - 20;
        mapCenter = QPointF(lat, lon);
        mapSpan = QPointF(20.0, 40.0);
        mapAnimated = false;
    }

    establishedLabel = l.established;
    stadiumLabel = l.stadium;
    titlesLabel = l.titles;
    playersLabel = l.players;
    managerLabel = l.manager;
    coachLabel = l.coach;
    directorLabel = l.director;
    productionLabel = l.production;
    firstShowLabel = l.firstshow;
    actorsLabel = l.actors;
    storyLabel = l.story;
    emit changed();
}

QString InfoCardView::getTimeString(qint64 hoursFromUtc) const {
    QDateTime now = Platform::shared().scheduler().now();
    if (hoursFromUtc != 0) {
        now = now.toTimeZone(QTimeZone(static_cast<int>(hoursFromUtc * 3600)));
    } else {
        now = now.toLocalTime();
    }
    return QLocale::c().toString(now, QStringLiteral("hh:mm AP"));
}

void InfoCardView::showCityOnMapWithVSpanHSpan(double vSpan, double hSpan) {
    QPointF c;
    if (!coordinates(&c)) {
        return;
    }
    mapCenter = c;
    hasPin = true;
    pin = c;
    mapSpan = QPointF(vSpan, hSpan);
    mapAnimated = true;
    emit changed();
}

QString InfoCardView::factAtTag(int tag) const {
    if (tag <= 0 || tag % 10 != 0) {
        return {};
    }
    const int index = tag / 10 - 1;
    return index < factTexts.size() ? factTexts.at(index) : QString();
}
