#include "StoreViewController.h"

#include "GameIAPHelper.h"
#include "SoundFactory.h"
#include "platform/Platform.h"
#include "progress/CreditsManager.h"
#include "screens/Util.h"

StoreViewController::StoreViewController(QObject* parent)
    : ViewController(QStringLiteral("StoreViewController"), parent) {}

StoreViewController::~StoreViewController() {
    cancelTimeout();
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void StoreViewController::viewDidLoad() {
    iapHelper = &GameIAPHelper::sharedInstance();
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(this, ProductPurchased, [this](const Notification& n) { productPurchased(n); });
    center.addObserver(this, ProductPurchaseFailed,
                       [this](const Notification& n) { productPurchaseFailed(n); });
    center.addObserver(this, NotificationCreditsChanged,
                       [this](const Notification&) { emit balanceChanged(); });
    center.addObserver(this, NotificationSkipsChanged,
                       [this](const Notification&) { emit balanceChanged(); });
    updateInAppsLabels();
}

QString StoreViewController::balanceText() const {
    const auto& credits = CreditsManager::sharedInstance();
    return QStringLiteral("%1 ذهبة  ·  %2 تجاوز").arg(credits.currentCredits()).arg(credits.currentSkips());
}

void StoreViewController::updateInAppsLabels() {
    const QStringList& packs = GameIAPHelper::packs();
    for (int i = 0; i < 5; ++i) {
        const QString& id = packs[i];
        m_credits[i] = QString::number(iapHelper->getCreditsForProductID(id));
        m_skips[i] = QString::number(iapHelper->getSkipsForProductID(id));
        m_prices[i] = iapHelper->getPriceStringForProductID(id).value_or(QString());
    }
    emit labelsChanged();
}

void StoreViewController::buyInApp(const QString& productId) {
    if (!Util::isConnected()) {
        Util::showMessageWithTitle(QStringLiteral("تعذر الاتصال بالانترنت يرجى المحاولة لاحقا"),
                                   QStringLiteral("لايوجد اتصال"));
        return;
    }
    Platform::shared().progressHud().showWithMaskType(ProgressHud::Clear);
    cancelTimeout();
    m_timeout =
        Platform::shared().scheduler().schedule(kTimeoutSeconds, [this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                m_timeout = 0;
                timeout();
            }
        });
    iapHelper->buyProductIdentifier(productId);
}

void StoreViewController::buyPack1(QObject*) {
    buyInApp(GameIAPHelper::kPack1);
}
void StoreViewController::buyPack2(QObject*) {
    buyInApp(GameIAPHelper::kPack2);
}
void StoreViewController::buyPack3(QObject*) {
    buyInApp(GameIAPHelper::kPack3);
}
void StoreViewController::buyPack4(QObject*) {
    buyInApp(GameIAPHelper::kPack4);
}
void StoreViewController::buyPack5(QObject*) {
    buyInApp(GameIAPHelper::kPack5);
}

void StoreViewController::cancelTimeout() {
    if (m_timeout != 0 && Platform::isInstalled()) {
        Platform::shared().scheduler().cancel(m_timeout);
    }
    m_timeout = 0;
}

void StoreViewController::productPurchased(const Notification& notification) {
    cancelTimeout();
    Platform::shared().progressHud().dismiss();
    SoundFactory::sharedInstance().playPurchase();
    const QString id = notification.object.toString();
    const auto credits = static_cast<unsigned long>(iapHelper->getCreditsForProductID(id));
    const auto skips = static_cast<unsigned long>(iapHelper->getSkipsForProductID(id));
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("مبروك"),
        Util::stringWithFormat(QStringLiteral("لقد اشتريت بنجاح %lu %@ و %lu تجاوز"),
                               {QString::number(credits), QStringLiteral("ذهبة"), QString::number(skips)}),
        QStringLiteral("موافق"), {}, nullptr);
}

void StoreViewController::productPurchaseFailed(const Notification& notification) {
    cancelTimeout();
    Platform::shared().progressHud().dismiss();
    const auto transaction = notification.object.value<SKPaymentTransactionPtr>();
    const std::optional<SKError> error = transaction ? transaction->error : std::nullopt;
    // A missing error reads as code 0, which is not a cancellation: the message shows, empty.
    if (error && error->code == SKError::kPaymentCancelled) {
        return;
    }
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("خطأ!"), error ? error->localizedDescription() : QString(), QStringLiteral("موافق"),
        {}, nullptr);
}

void StoreViewController::timeout() {
    Platform::shared().progressHud().dismiss();
}

void StoreViewController::goBack(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
