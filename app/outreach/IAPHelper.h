#pragma once

#include "platform/storekit/SKPaymentQueue.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

inline const QString ProductPurchased = QStringLiteral("ProductPurchased");
inline const QString ProductPurchaseFailed = QStringLiteral("ProductPurchaseFailed");
inline const QString ProductsLoaded = QStringLiteral("ProductsLoaded");
inline const QString ProductsFailLoaded = QStringLiteral("ProductsFailLoaded");
inline const QString ProductsRestored = QStringLiteral("ProductsRestored");
inline const QString ProductsRestoredFailed = QStringLiteral("ProductsRestoredFailed");

// A client of the platform's purchase service: it holds the catalogue and turns finished payments into gold
// and skips. A delivery does not need a store screen: a payment finished after a restart is paid all the
// same, only without a message.
class IAPHelper : public SKProductsRequestDelegate, public SKPaymentTransactionObserver {
public:
    static inline const QString kInAppsPurchasedKey = QStringLiteral("inaps_purchased");

    static std::unique_ptr<IAPHelper> initWithProductIdentifiersPricesCreditsSkips(
        const QSet<QString>& productIdentifiers, const QHash<QString, QString>& prices,
        const QHash<QString, qint64>& credits, const QHash<QString, qint64>& skips);
    ~IAPHelper() override;

    void requestProducts();
    void productsRequestDidReceiveResponse(SKProductsRequest* request,
                                           const SKProductsResponse& response) override;
    void requestDidFailWithError(SKRequest* request, const SKError& error) override;
    void updatePrices();
    std::optional<QString> getPriceStringForProductID(const QString& productId) const;
    qint64 getCreditsForProductID(const QString& productId) const;
    qint64 getSkipsForProductID(const QString& productId) const;
    bool isProductPurchased(const QString& productId) const;
    // The hook stays; nothing is recorded.
    void recordTransaction(const SKPaymentTransactionPtr&) {}
    void provideContent(const QString& productIdentifier);
    void completeTransaction(const SKPaymentTransactionPtr& transaction);
    void restoreTransaction(const SKPaymentTransactionPtr& transaction);
    void failedTransaction(const SKPaymentTransactionPtr& transaction);
    void paymentQueueUpdatedTransactions(SKPaymentQueue* queue,
                                         const QList<SKPaymentTransactionPtr>& transactions) override;
    void buyProductIdentifier(const QString& productIdentifier);
    SKProductPtr getProductById(const QString& productIdentifier) const;
    void restoreCompletedTransactions();
    void paymentQueueRestoreCompletedTransactionsFinished(SKPaymentQueue* queue) override;
    void paymentQueueRestoreCompletedTransactionsFailedWithError(SKPaymentQueue* queue,
                                                                 const SKError& error) override;
    void setInAppsPurchased(bool purchased);
    bool areInAppsPurchased() const;

    QSet<QString> productIdentifiers() const { return m_productIdentifiers; }
    // Null until the store's list has arrived.
    const std::optional<QList<SKProductPtr>>& products() const { return m_products; }
    QSet<QString> purchasedProducts() const { return m_purchasedProducts; }
    bool isProductsBeingRequested() const { return m_isProductsBeingRequested; }
    const std::shared_ptr<SKProductsRequest>& request() const { return m_request; }

protected:
    IAPHelper() = default;
    // Stores the four tables and reads which products were bought before.
    void setUp(const QSet<QString>& productIdentifiers, const QHash<QString, QString>& prices,
               const QHash<QString, qint64>& credits, const QHash<QString, qint64>& skips);

private:
    QSet<QString> m_productIdentifiers;
    std::optional<QList<SKProductPtr>> m_products;
    QSet<QString> m_purchasedProducts;
    std::shared_ptr<SKProductsRequest> m_request;
    bool m_isProductsBeingRequested = false;
    QHash<QString, QString> m_productPrices;
    QHash<QString, qint64> m_productCredits;
    QHash<QString, qint64> m_productSkips;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};

QVariant productsObject(const std::optional<QList<SKProductPtr>>& products);
