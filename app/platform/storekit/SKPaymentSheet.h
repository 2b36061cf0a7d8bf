#pragma once

#include <QObject>
#include <QString>
#include <functional>

// The sandbox's confirmation sheet, where a phone's payment sheet would stand: it names the product, its
// price and the account, and says that no money moves. The view (PaymentSheetOverlay.qml) draws it above
// everything; one payment is asked at a time.
class SKPaymentSheet : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(QString productTitle READ productTitle NOTIFY changed)
    Q_PROPERTY(QString priceText READ priceText NOTIFY changed)
    Q_PROPERTY(QString accountName READ accountName NOTIFY changed)
public:
    using Answer = std::function<void(bool buy)>;

    void ask(const QString& productTitle, const QString& priceText, const QString& accountName,
             Answer answer);
    bool isVisible() const { return static_cast<bool>(m_answer); }
    QString productTitle() const { return m_productTitle; }
    QString priceText() const { return m_priceText; }
    QString accountName() const { return m_accountName; }

    Q_INVOKABLE void buy() { answer(true); }
    Q_INVOKABLE void cancel() { answer(false); }

signals:
    void changed();

private:
    void answer(bool buy);

    QString m_productTitle;
    QString m_priceText;
    QString m_accountName;
    Answer m_answer;
};
