#pragma once

#include <QList>
#include <QStringList>
#include <QVariantList>

// What this product adds to the shared game: its table of achievements.
class GameAdditions {
public:
    // A new list of rows, each {reward, calc string, text}, in the table's own order.
    static QList<QVariantList> getGameAchievementsData();
    // The tips this product adds after the common ones.
    static QStringList getGameAdditionalTips();
};
