#pragma once

#include <QString>
#include <QStringList>
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
    // The maker's game that the main screen promotes, and the page the selectors' panels open.
    static QString promotedAppId();
    static QUrl promoStorePage();
    // A game's page on the maker's store.
    static QUrl appPage(const QString& appId);
    // The same accounts in the social apps' own schemes.
    static QUrl facebookApp();
    static QUrl twitterApp();
    static QUrl instagramApp();
    // The store's identifiers of the game and of the maker's page of games.
    static QString appStoreIdentifier();
    static QString makerStoreIdentifier();

    // The operator's ad units ("adUnits": interstitial, rewarded, bannerPhone, bannerTablet) and the ad kit's
    // test devices.
    static QString adUnit(const QString& name);
    static QStringList testDeviceIdentifiers();

private:
    static QUrl value(const QString& key);
    static QString text(const QString& key);
};
