#pragma once

#include "platform/ViewController.h"

#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <functional>

class SKStoreProductViewController;

class SKStoreProductViewControllerDelegate {
public:
    virtual ~SKStoreProductViewControllerDelegate() = default;
    // The player closed the sheet; the delegate dismisses it.
    virtual void productViewControllerDidFinish(SKStoreProductViewController* controller) = 0;
};

// The store sheet for another app, where a phone shows its store's page inside the game: the app's name and
// its store page, which the player can open in the browser, and a button that closes the sheet. The store
// knows the products the game registers with it.
class SKStoreProductViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY productChanged)
    Q_PROPERTY(QString productIdentifier READ productIdentifier NOTIFY productChanged)
    Q_PROPERTY(QString productTitle READ productTitle NOTIFY productChanged)
    Q_PROPERTY(QString productPage READ productPageText NOTIFY productChanged)
public:
    static inline const QString SKStoreProductParameterITunesItemIdentifier = QStringLiteral("id");

    explicit SKStoreProductViewController(QObject* parent = nullptr);

    static void registerProduct(const QString& identifier, const QString& title, const QUrl& page);
    static void clearProducts();

    // Loads the product named by the parameters; the completion (may be null) hears whether it is known.
    void loadProductWithParameters(const QVariantMap& parameters,
                                   std::function<void(bool loaded)> completion);
    void setDelegate(SKStoreProductViewControllerDelegate* delegate) { m_delegate = delegate; }

    bool isLoaded() const { return !m_page.isEmpty(); }
    QString productIdentifier() const { return m_identifier; }
    QString productTitle() const { return m_title; }
    QUrl productPage() const { return m_page; }
    QString productPageText() const { return m_page.toString(); }

    Q_INVOKABLE void openProductPage();
    Q_INVOKABLE void done();

signals:
    void productChanged();

private:
    SKStoreProductViewControllerDelegate* m_delegate = nullptr;
    QString m_identifier;
    QString m_title;
    QUrl m_page;
};
