#include "IAPHelper.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "progress/CreditsManager.h"
#include "screens/Util.h"

#include <QDebug>

QVariant productsObject(const std::optional<QList<SKProductPtr>>& products) {
    return products ? QVariant::fromValue(*products) : QVariant();
}

std::unique_ptr<IAPHelper> IAPHelper::initWithProductIdentifiersPricesCreditsSkips(
    const QSet<QString>& productIdentifiers, const QHash<QString, QString>& prices,
    const QHash<QString, qint64>& credits, const QHash<QString, qint64>& skips) {
    std::unique_ptr<IAPHelper> helper(new IAPHelper());
    helper->setUp(productIdentifiers, prices, credits, skips);
    return helper;
}

void IAPHelper::setUp(const QSet<QString>& productIdentifiers, const QHash<QString, QString>& prices,
                      const QHash<QString, qint64>& credits, const QHash<QString, qint64>& skips) {
    m_productIdentifiers = productIdentifiers;
    m_productPrices = prices;
    m_productCredits = credits;
    m_productSkips = skips;
    for (const QString& id : productIdentifiers) {
        if (isProductPurchased(id)) {
            m_purchasedProducts.insert(id);
        }
    }
}

IAPHelper::~IAPHelper() {
    if (m_request) {
        m_request->cancel();
    }
    if (Shared<SKPaymentQueue>::exists()) {
        SKPaymentQueue::defaultQueue().removeTransactionObserver(this);
    }
}

void IAPHelper::requestProducts() {
    m_request = SKProductsRequest::initWithProductIdentifiers(m_productIdentifiers);
    m_request->setDelegate(this);
    m_isProductsBeingRequested = true; // before the start, since an answer may come at once
    m_request->start();
}

void IAPHelper::productsRequestDidReceiveResponse(SKProductsRequest*, const SKProductsResponse& response) {
    m_products = response.products;
    m_request.reset();
    updatePrices();
    Platform::shared().notificationCenter().postNotificationName(ProductsLoaded, productsObject(m_products));
    m_isProductsBeingRequested = false;
}

void IAPHelper::requestDidFailWithError(SKRequest*, const SKError& error) {
    qWarning().noquote() << "The store's products could not be loaded:" << error.localizedDescription();
    Platform::shared().notificationCenter().postNotificationName(ProductsFailLoaded,
                                                                 productsObject(m_products));
    m_isProductsBeingRequested = false;
}

void IAPHelper::updatePrices() {
    if (!m_products) {
        return;
    }
    for (const SKProductPtr& product : *m_products) {
        m_productPrices.insert(product->productIdentifier, product->formattedPrice());
    }
}

std::optional<QString> IAPHelper::getPriceStringForProductID(const QString& productId) const {
    const auto it = m_productPrices.constFind(productId);
    return it == m_productPrices.constEnd() ? std::nullopt : std::optional<QString>(*it);
}

qint64 IAPHelper::getCreditsForProductID(const QString& productId) const {
    return m_productCredits.value(productId, 0);
}

qint64 IAPHelper::getSkipsForProductID(const QString& productId) const {
    return m_productSkips.value(productId, 0);
}

bool IAPHelper::isProductPurchased(const QString& productId) const {
    return Platform::shared().userDefaults().boolForKey(productId);
}

void IAPHelper::provideContent(const QString& productIdentifier) {
    setInAppsPurchased(true);
    const qint64 credits = getCreditsForProductID(productIdentifier);
    const qint64 skips = getSkipsForProductID(productIdentifier);
    auto& manager = CreditsManager::sharedInstance();
    manager.addCredits(credits);
    manager.addSkips(skips);
    Platform::shared().userDefaults().setBoolForKey(true, productIdentifier);
    Platform::shared().notificationCenter().postNotificationName(ProductPurchased, productIdentifier);
}

void IAPHelper::completeTransaction(const SKPaymentTransactionPtr& transaction) {
    recordTransaction(transaction);
    provideContent(transaction->payment.productIdentifier);
    SKPaymentQueue::defaultQueue().finishTransaction(transaction);
}

void IAPHelper::restoreTransaction(const SKPaymentTransactionPtr& transaction) {
    recordTransaction(transaction);
    const QString id = transaction->originalTransaction
                           ? transaction->originalTransaction->payment.productIdentifier
                           : transaction->payment.productIdentifier;
    provideContent(id);
    SKPaymentQueue::defaultQueue().finishTransaction(transaction);
}

void IAPHelper::failedTransaction(const SKPaymentTransactionPtr& transaction) {
    const int code = transaction->error ? transaction->error->code : 0;
    if (code != SKError::kPaymentCancelled) {
        qWarning().noquote() << QStringLiteral("Transaction error: %1")
                                    .arg(transaction->error ? transaction->error->localizedDescription()
                                                            : QString());
    }
    Platform::shared().notificationCenter().postNotificationName(ProductPurchaseFailed,
                                                                 QVariant::fromValue(transaction));
    SKPaymentQueue::defaultQueue().finishTransaction(transaction);
}

void IAPHelper::paymentQueueUpdatedTransactions(SKPaymentQueue*,
                                                const QList<SKPaymentTransactionPtr>& transactions) {
    for (const SKPaymentTransactionPtr& t : transactions) {
        switch (t->transactionState) {
        case SKPaymentTransactionState::Purchased:
            completeTransaction(t);
            break;
        case SKPaymentTransactionState::Failed:
            failedTransaction(t);
            break;
        case SKPaymentTransactionState::Restored:
            restoreTransaction(t);
            break;
        default:
            break;
        }
    }
}

void IAPHelper::buyProductIdentifier(const QString& productIdentifier) {
    if (const SKProductPtr product = getProductById(productIdentifier)) {
        SKPaymentQueue::defaultQueue().addPayment(SKPayment::paymentWithProduct(*product));
        return;
    }
    if (!m_isProductsBeingRequested) {
        requestProducts();
    }
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("حاول لاحقا بعد 20 ثانية"), QStringLiteral("..المتجر قيد التحميل"), [] {
            Platform::shared().notificationCenter().postNotificationName(ProductPurchaseFailed, QVariant());
        });
}

SKProductPtr IAPHelper::getProductById(const QString& productIdentifier) const {
    if (!m_products) {
        return nullptr;
    }
    for (const SKProductPtr& product : *m_products) {
        if (product->productIdentifier == productIdentifier) {
            return product;
        }
    }
    return nullptr;
}

void IAPHelper::restoreCompletedTransactions() {
    SKPaymentQueue::defaultQueue().restoreCompletedTransactions();
}

void IAPHelper::paymentQueueRestoreCompletedTransactionsFinished(SKPaymentQueue* queue) {
    Platform::shared().notificationCenter().postNotificationName(
        ProductsRestored, static_cast<qint64>(queue->transactions().size()));
}

void IAPHelper::paymentQueueRestoreCompletedTransactionsFailedWithError(SKPaymentQueue*,
                                                                        const SKError& error) {
    Platform::shared().notificationCenter().postNotificationName(ProductsRestoredFailed,
                                                                 error.localizedDescription());
}

void IAPHelper::setInAppsPurchased(bool purchased) {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(purchased, kInAppsPurchasedKey);
    defaults.synchronize();
}

bool IAPHelper::areInAppsPurchased() const {
    return Platform::shared().userDefaults().boolForKey(kInAppsPurchasedKey);
}
