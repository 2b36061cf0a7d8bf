#pragma once

#include "platform/ViewController.h"

#include <QString>
#include <memory>

class GameIAPHelper;
struct Notification;

// The store: five packs of gold and skips with their prices. A buy waits at most a minute for the store's
// answer behind the progress display; the labels are filled once, when the screen opens.
class StoreViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString pack1CreditsLabel READ pack1CreditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack1SkipsLabel READ pack1SkipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack1PriceLabel READ pack1PriceLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack2CreditsLabel READ pack2CreditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack2SkipsLabel READ pack2SkipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack2PriceLabel READ pack2PriceLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack3CreditsLabel READ pack3CreditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack3SkipsLabel READ pack3SkipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack3PriceLabel READ pack3PriceLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack4CreditsLabel READ pack4CreditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack4SkipsLabel READ pack4SkipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack4PriceLabel READ pack4PriceLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack5CreditsLabel READ pack5CreditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack5SkipsLabel READ pack5SkipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString pack5PriceLabel READ pack5PriceLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString balanceText READ balanceText NOTIFY balanceChanged)
public:
    static constexpr double kTimeoutSeconds = 60.0;

    explicit StoreViewController(QObject* parent = nullptr);
    ~StoreViewController() override;
    void viewDidLoad() override;

    GameIAPHelper* iapHelper = nullptr;

    QString pack1CreditsLabel() const { return m_credits[0]; }
    QString pack1SkipsLabel() const { return m_skips[0]; }
    QString pack1PriceLabel() const { return m_prices[0]; }
    QString pack2CreditsLabel() const { return m_credits[1]; }
    QString pack2SkipsLabel() const { return m_skips[1]; }
    QString pack2PriceLabel() const { return m_prices[1]; }
    QString pack3CreditsLabel() const { return m_credits[2]; }
    QString pack3SkipsLabel() const { return m_skips[2]; }
    QString pack3PriceLabel() const { return m_prices[2]; }
    QString pack4CreditsLabel() const { return m_credits[3]; }
    QString pack4SkipsLabel() const { return m_skips[3]; }
    QString pack4PriceLabel() const { return m_prices[3]; }
    QString pack5CreditsLabel() const { return m_credits[4]; }
    QString pack5SkipsLabel() const { return m_skips[4]; }
    QString pack5PriceLabel() const { return m_prices[4]; }
    // The player's gold and skips, kept current: what a purchase changed shows at once.
    QString balanceText() const;

    void updateInAppsLabels();
    void buyInApp(const QString& productId);
    Q_INVOKABLE void buyPack1(QObject* sender = nullptr);
    Q_INVOKABLE void buyPack2(QObject* sender = nullptr);
    Q_INVOKABLE void buyPack3(QObject* sender = nullptr);
    Q_INVOKABLE void buyPack4(QObject* sender = nullptr);
    Q_INVOKABLE void buyPack5(QObject* sender = nullptr);
    Q_INVOKABLE void goBack(QObject* sender = nullptr);
    void productPurchased(const Notification& notification);
    void productPurchaseFailed(const Notification& notification);
    void timeout();
    bool isTimeoutPending() const { return m_timeout != 0; }

signals:
    void labelsChanged();
    void balanceChanged();

private:
    void cancelTimeout();

    QString m_credits[5];
    QString m_skips[5];
    QString m_prices[5];
    quint64 m_timeout = 0;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
