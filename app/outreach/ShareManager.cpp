#include "ShareManager.h"

#include "AppPromoView.h"

#include "Addresses.h"
#include "SoundFactory.h"
#include "platform/MGInstagram.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "progress/SessionManager.h"
#include "screens/Localization.h"
#include "screens/Util.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

ShareManager& ShareManager::sharedInstance() {
    return Shared<ShareManager>::instance();
}

void ShareManager::loadData() {
    const auto& defaults = Platform::shared().userDefaults();
    m_isOurAppsOpened = defaults.boolForKey(kIsOurAppsOpenedKey);
    m_isAppShared = defaults.boolForKey(kIsAppSharedKey);
    m_isAppRated = defaults.boolForKey(kIsAppRatedKey);
    m_levelsShared = defaults.integerForKey(kLevelsSharedKey);
    // What the store sheet can show: the game and the maker's page of games.
    SKStoreProductViewController::registerProduct(Addresses::appStoreIdentifier(), kDisplayName,
                                                  Addresses::appStorePage());
    SKStoreProductViewController::registerProduct(
        Addresses::makerStoreIdentifier(), QStringLiteral("ألعابنا الأخرى"), Addresses::makerStorePage());
    // And each of the maker's promoted games.
    for (const QString& id : AppPromoView::promotedAppIds()) {
        SKStoreProductViewController::registerProduct(id, AppPromoView::getAppTitle(id),
                                                      Addresses::appPage(id));
    }
}

// ---- the record ----

void ShareManager::incrementLevelsShared() {
    m_levelsShared += 1;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_levelsShared, kLevelsSharedKey);
    defaults.synchronize();
}

void ShareManager::registerAppIsShared() {
    m_isAppShared = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kIsAppSharedKey);
    defaults.synchronize();
}

void ShareManager::registerAppIsRated() {
    m_isAppRated = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kIsAppRatedKey);
    defaults.synchronize();
}

void ShareManager::registerOurAppsOpened() {
    m_isOurAppsOpened = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kIsOurAppsOpenedKey);
    defaults.synchronize();
}

// ---- the store sheet and rating ----

void ShareManager::openAppInStoreWithViewController(const QString& appId, ViewController* screen) {
    SoundFactory::sharedInstance().playMenuTap();
    auto* sheet = new SKStoreProductViewController();
    sheet->loadProductWithParameters(
        {{SKStoreProductViewController::SKStoreProductParameterITunesItemIdentifier, appId}}, nullptr);
    sheet->setDelegate(this);
    callingViewController = screen;
    Platform::shared().navigator().presentViewController(sheet);
    if (appId == Addresses::appStoreIdentifier()) {
        m_isRateOpened = true;
    }
    if (appId == Addresses::makerStoreIdentifier()) {
        // Known at once for this run; kept only once the player has stayed long enough in the sheet.
        m_isOurAppsOpened = true;
    }
    elapsedTime = Platform::shared().scheduler().now().toSecsSinceEpoch();
}

void ShareManager::productViewControllerDidFinish(SKStoreProductViewController* controller) {
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == controller) {
        nav.dismissViewController();
    }
    elapsedTime = Platform::shared().scheduler().now().toSecsSinceEpoch() - elapsedTime;
    if (m_isOurAppsOpened && elapsedTime >= kOurAppsSheetSeconds) {
        registerOurAppsOpened();
    }
}

QUrl ShareManager::appStorePage() {
    return Addresses::appStorePage();
}

void ShareManager::rateApp() {
    Platform::shared().urls().openURL(appStorePage());
    // Whether a rating followed cannot be known.
    registerAppIsRated();
}

// ---- compose sheets ----

bool ShareManager::compose(int service, const QVariantList& items) {
    const auto target = static_cast<ShareSheet::Target>(service);
    if (!ShareSheet::isComposeAvailable(target)) {
        return false;
    }
    ShareItems content;
    // Element 0 is the initial text, whatever it holds.
    if (!items.isEmpty() && !items.at(0).toString().isEmpty()) {
        content.texts << items.at(0).toString();
    }
    if (items.size() >= 2) {
        content.url = items.at(1).toUrl();
    }
    if (items.size() >= 3) {
        content.image = items.at(2).value<QImage>();
    }
    Platform::shared().shareSheet().presentCompose(target, content, nullptr);
    return true;
}

bool ShareManager::shareOnFacebookOnViewcontroller(const QVariantList& items, ViewController*) {
    return compose(static_cast<int>(ShareSheet::Target::Facebook), items);
}

bool ShareManager::shareOnTwitterOnViewcontroller(const QVariantList& items, ViewController*) {
    return compose(static_cast<int>(ShareSheet::Target::Twitter), items.mid(0, 2));
}

bool ShareManager::shareImageOnFacebookOnViewcontroller(const QImage& image, ViewController*) {
    if (!ShareSheet::isComposeAvailable(ShareSheet::Target::Facebook)) {
        return false;
    }
    ShareItems content;
    content.image = image;
    Platform::shared().shareSheet().presentCompose(ShareSheet::Target::Facebook, content, nullptr);
    return true;
}

bool ShareManager::shareImageOnTwitterOnViewcontroller(const QVariantList& items, ViewController*) {
    return compose(static_cast<int>(ShareSheet::Target::Twitter), items);
}

// ---- WhatsApp, Snapchat and Instagram ----

QString ShareManager::whatsappEscapedText(const QString& text, const QString& link) {
    // The text is escaped as an address's text is; the characters an address may hold stay for now.
    QString escaped = QString::fromLatin1(QUrl::toPercentEncoding(text, "!*'();:@&=+$,/?"));
    escaped += QStringLiteral(" ") + link;
    static const std::pair<const char*, const char*> kReplacements[] = {
        {" ", "%20"}, {":", "%3A"}, {"/", "%2F"}, {"?", "%3F"}, {",", "%2C"}, {"=", "%3D"}, {"&", "%26"}};
    for (const auto& [from, to] : kReplacements) {
        escaped.replace(QLatin1String(from), QLatin1String(to));
    }
    return escaped;
}

bool ShareManager::shareOnWhatsapp(const QStringList& items) {
    const QString text = items.value(0);
    const QString link = items.value(1);
    const QUrl address(QStringLiteral("whatsapp://send?text=%1").arg(whatsappEscapedText(text, link)),
                       QUrl::StrictMode);
    return Platform::shared().urls().openURL(address);
}

QString ShareManager::handOverPath(const QString& name) {
    return QDir(Platform::shared().homeDirectory()).filePath(name);
}

bool ShareManager::handOverImage(const QImage& image, const QString& probe, const QString& file,
                                 const QString& uti, const QString& missingTitle,
                                 const QString& missingText) {
    auto& platform = Platform::shared();
    if (!platform.urls().canOpenURL(QUrl(probe))) {
        platform.alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
            missingTitle, missingText, QStringLiteral("OK"), {}, nullptr);
        return false;
    }
    // The last picture handed over is overwritten; the files stay.
    const QString path = handOverPath(file);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || !image.save(&out, "JPG", 100) || !out.commit()) {
        // Nothing to hand over: the caller goes on as for a missing app.
        qWarning().noquote() << "The picture could not be written to" << path;
        return false;
    }
    platform.shareSheet().presentOpenIn(path, uti, nullptr);
    return true;
}

bool ShareManager::shareImageOnWhatsappOnViewController(const QImage& image, ViewController*) {
    return handOverImage(image, QStringLiteral("whatsapp://app"), QStringLiteral("Documents/whatsAppTmp.jpg"),
                         QStringLiteral("net.whatsapp.image"), QStringLiteral("WhatsApp not installed."),
                         QStringLiteral("No WhatsApp installed."));
}

bool ShareManager::shareImageOnSnapchatOnViewController(const QImage& image, ViewController*) {
    return handOverImage(image, QStringLiteral("snapchat://app"), QStringLiteral("Documents/snapChatTmp.jpg"),
                         QStringLiteral("com.snapchat.image"), QStringLiteral("snapchat not installed."),
                         QStringLiteral("No Snapchat installed."));
}

bool ShareManager::shareImageOnInstagramOnViewController(const QImage& image, ViewController* screen) {
    MGInstagram instagram;
    const bool installed = MGInstagram::isAppInstalled();
    if (installed && MGInstagram::isImageCorrectSize(image)) {
        instagram.postImageWithCaptionInView(image, kDisplayName, screen);
    } else {
        qInfo("Error Instagram is either not installed or image is incorrect size");
    }
    return true;
}

// ---- share sheets ----

QStringList ShareManager::appShareExcludedActivityTypes() {
    return {
        UIActivity::TypePrint,           UIActivity::TypeAirDrop,          UIActivity::TypeOpenInIBooks,
        UIActivity::TypeAssignToContact, UIActivity::TypeAddToReadingList, UIActivity::TypeCopyToPasteboard,
        UIActivity::TypeSaveToCameraRoll};
}

QStringList ShareManager::contentShareExcludedActivityTypes() {
    return appShareExcludedActivityTypes() << UIActivity::TypeMail;
}

void ShareManager::shareItems(const QVariantList& items, const QStringList& excluded, Completion completion) {
    Platform::shared().shareSheet().presentActivity(
        ShareItems::fromList(items), excluded,
        [completion = std::move(completion)](const QString& activityType, bool completed) {
            if (!completed) {
                return;
            }
            ShareManager::sharedInstance().registerAppIsShared();
            if (completion) {
                completion(activityType);
            }
        });
}

void ShareManager::shareAppOnCompletion(ViewController*, Completion completion) {
    SoundFactory::sharedInstance().playMenuTap();
    const QString text =
        Localization::localizedString(QStringLiteral("share.shareAppMessage")).arg(kDisplayName);
    shareItems({text, appStorePage()}, appShareExcludedActivityTypes(), std::move(completion));
}

void ShareManager::shareContentOnViewControllerOnCompletion(const QVariantList& items, ViewController*,
                                                            Completion completion) {
    SoundFactory::sharedInstance().playMenuTap();
    shareItems(items, contentShareExcludedActivityTypes(), std::move(completion));
}

// ---- the maker's pages ----

void ShareManager::openSocialPage(const QUrl& app, const QUrl& web) {
    auto& urls = Platform::shared().urls();
    urls.openURL(urls.canOpenURL(app) ? app : web);
}

void ShareManager::openOurFacebookPage() {
    openSocialPage(Addresses::facebookApp(), Addresses::facebookPage());
}

void ShareManager::openOurTwitterPage() {
    openSocialPage(Addresses::twitterApp(), Addresses::twitterPage());
}

void ShareManager::openOurInstagramPage() {
    openSocialPage(Addresses::instagramApp(), Addresses::instagramPage());
}

// ---- prompts ----

QString ShareManager::getShareMessage() const {
    return QStringLiteral("لعبة طارفولين الشيقة:\n أرجو مساعدتي:");
}

quint32 ShareManager::getCurrentIncentive() const {
    const std::uint32_t r = arc4random();
    const std::uint32_t draw = SessionManager::sharedInstance().activeSessions() > 5 ? r % 10 : r % 4;
    return draw == 1 || draw == 2 ? draw : 0;
}

void ShareManager::askLoyalUsersToShareRate() {
    const qint64 days = SessionManager::sharedInstance().acitveDays();
    if (days >= 8 && days <= 12) {
        if (arc4random() % 3 == 1) {
            showSharePopup();
        }
    } else if (days >= 21 && days <= 23) {
        // A player who has shared is asked all the same; one who has rated is not asked to rate again.
        if (!m_isAppRated && arc4random() % 2 == 1) {
            showRatePopup();
        }
    } else if (days >= 36 && days <= 40) {
        if (arc4random() % 3 == 1) {
            showSharePopup();
        }
    }
}

void ShareManager::showRatePopup() {
    Util::showMessageWithTitleOnDismiss(Localization::localizedString(QStringLiteral("rate.rateMessage")),
                                        Localization::localizedString(QStringLiteral("rate.rateTitle")),
                                        [] { ShareManager::sharedInstance().rateApp(); });
}

void ShareManager::showSharePopup() {
    Util::showMessageWithTitleOnDismiss(
        Localization::localizedString(QStringLiteral("share.promptMessage")),
        Localization::localizedString(QStringLiteral("share.promptTitle")), [] {
            ShareManager::sharedInstance().shareAppOnCompletion(Util::getTopNavViewController(), nullptr);
        });
}
