#include "LevelInfo.h"

QString LevelInfo::getContinentName() const {
    if (continent == QLatin1String("europe")) {
        return QStringLiteral("أوروبا");
    }
    if (continent == QLatin1String("asia")) {
        return QStringLiteral("آسيا");
    }
    if (continent == QLatin1String("africa")) {
        return QStringLiteral("أفريقيا");
    }
    if (continent == QLatin1String("namerica")) {
        return QStringLiteral("أمريكا الشمالية");
    }
    if (continent == QLatin1String("samerica")) {
        return QStringLiteral("أمريكا الجنوبية");
    }
    if (continent == QLatin1String("australia")) {
        return QStringLiteral("أوقيانوسيا");
    }
    return QStringLiteral("");
}
