#pragma once

#include "platform/storekit/SKStoreProductViewController.h"

#include <QImage>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>

class ViewController;

// Everything that reaches out to other apps: sharing the game or a level, rating, the maker's pages and the
// store sheet for another app. It keeps the small record of what the player has done, on which some tasks
// rest. The rewards for sharing are decided by the screens that ask for a share.
class ShareManager : public SKStoreProductViewControllerDelegate {
public:
    static inline const QString kIsOurAppsOpenedKey = QStringLiteral("isOurAppsOpened");
    static inline const QString kIsAppSharedKey = QStringLiteral("isAppShared");
    static inline const QString kIsAppRatedKey = QStringLiteral("isAppRated");
    static inline const QString kLevelsSharedKey = QStringLiteral("levelsShared");
    static constexpr int kInstagramPictureSide = 700;
    static constexpr qint64 kOurAppsSheetSeconds = 10;
    // The caption of a picture posted to Instagram, and the game's display name in the share texts.
    static inline const QString kDisplayName = QStringLiteral("طارفولين");

    using Completion = std::function<void(const QString& activityType)>;

    static ShareManager& sharedInstance();
    void loadData();

    // The record.
    void incrementLevelsShared();
    void registerAppIsShared();
    void registerAppIsRated();
    void registerOurAppsOpened();
    bool isOurAppsOpened() const { return m_isOurAppsOpened; }
    bool isAppShared() const { return m_isAppShared; }
    bool isAppRated() const { return m_isAppRated; }
    bool isRateOpened() const { return m_isRateOpened; }
    qint64 levelsShared() const { return m_levelsShared; }

    // The store sheet for an app by its store identifier.
    void openAppInStoreWithViewController(const QString& appId, ViewController* screen);
    void productViewControllerDidFinish(SKStoreProductViewController* controller) override;
    void rateApp();

    // Compose sheets: items are [text, address, picture], as many as given.
    bool shareOnFacebookOnViewcontroller(const QVariantList& items, ViewController* screen);
    bool shareOnTwitterOnViewcontroller(const QVariantList& items, ViewController* screen);
    bool shareImageOnFacebookOnViewcontroller(const QImage& image, ViewController* screen);
    bool shareImageOnTwitterOnViewcontroller(const QVariantList& items, ViewController* screen);
    // WhatsApp by its address scheme: [text, address as a string].
    bool shareOnWhatsapp(const QStringList& items);
    // The picture handed over as a file to the app.
    bool shareImageOnWhatsappOnViewController(const QImage& image, ViewController* screen);
    bool shareImageOnSnapchatOnViewController(const QImage& image, ViewController* screen);
    bool shareImageOnInstagramOnViewController(const QImage& image, ViewController* screen);
    // The share sheet for the game, and for given items; the completion hears the activity of a share that
    // went out, and nothing of a cancelled one.
    void shareAppOnCompletion(ViewController* screen, Completion completion);
    void shareContentOnViewControllerOnCompletion(const QVariantList& items, ViewController* screen,
                                                  Completion completion);

    void openOurFacebookPage();
    void openOurTwitterPage();
    void openOurInstagramPage();

    QString getShareMessage() const;
    // The game's store page.
    static QUrl appStorePage();
    // 0 for no incentive, 1 or 2 for one of the two kinds.
    quint32 getCurrentIncentive() const;
    // A share or rate prompt on some of the player's active days.
    void askLoyalUsersToShareRate();
    void showRatePopup();
    void showSharePopup();

    // The text that WhatsApp's send address takes: the text escaped, then the link, with the characters that
    // would end the address escaped as well.
    static QString whatsappEscapedText(const QString& text, const QString& link);
    // The files that hand a picture over to an app, under the home directory.
    static QString handOverPath(const QString& name);
    // The excluded activities of the share sheets: those of the game's own share, and those of any share.
    static QStringList appShareExcludedActivityTypes();
    static QStringList contentShareExcludedActivityTypes();

    QPointer<ViewController> callingViewController;
    qint64 elapsedTime = 0;

private:
    ShareManager() = default;
    template <class T> friend class Shared;

    bool handOverImage(const QImage& image, const QString& probe, const QString& file, const QString& uti,
                       const QString& missingTitle, const QString& missingText);
    void shareItems(const QVariantList& items, const QStringList& excluded, Completion completion);
    bool compose(int service, const QVariantList& items);
    void openSocialPage(const QUrl& app, const QUrl& web);

    bool m_isRateOpened = false;
    bool m_isOurAppsOpened = false;
    bool m_isAppShared = false;
    bool m_isAppRated = false;
    qint64 m_levelsShared = 0;
};
