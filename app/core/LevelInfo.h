#pragma once

#include <QString>
#include <QStringList>
#include <memory>

// The parsed content of one level. Strings default to empty; `facts` stays null when the record has none.
class LevelInfo {
public:
    qint32 timezone = 0;
    QString continent;
    qint64 number = 0;
    QString solution;
    QString fullSolution;
    QString imageName;
    QString otherLetters;
    QString wikipediaUrl;
    QStringList copyrightArray{QString(""), QString(""), QString(""), QString("")};
    QString riddle;
    QString country;
    QString area;
    QString population;
    QString gdp;
    QString location;
    QStringList facts;
    bool hasFacts = false;
    double priceIndex = 0.0;
    QString established;
    QString stadium;
    QString titles;
    QString players;
    QString manager;
    QString coach;
    QString director;
    QString production;
    QString firstshow;
    QString actors;
    QString story;
    QString soundName;
    QString type;
    QString info;
    QString youtubeUrl;

    // The Arabic name of the continent code; empty for an unknown code.
    QString getContinentName() const;
};

using LevelInfoPtr = std::shared_ptr<LevelInfo>;
