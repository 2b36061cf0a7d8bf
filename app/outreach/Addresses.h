#pragma once

#include <QString>
#include <QUrl>

// The operator's addresses: the game's store page, the maker's page of games and its social accounts, from
// the resource outreach.json.
class Addresses {
public:
    static QUrl appStorePage();
    static QUrl makerStorePage();
    static QUrl facebookPage();
    static QUrl twitterPage();
    static QUrl instagramPage();

private:
    static QUrl value(const QString& key);
};
