#include "SKPaymentSheet.h"

void SKPaymentSheet::ask(const QString& productTitle, const QString& priceText, const QString& accountName,
                         Answer answer) {
    if (m_answer) {
        // One payment is asked at a time: the one before is taken as cancelled.
        Answer before = std::move(m_answer);
        m_answer = nullptr;
        before(false);
    }
    m_productTitle = productTitle;
    m_priceText = priceText;
    m_accountName = accountName;
    m_answer = std::move(answer);
    emit changed();
}

void SKPaymentSheet::answer(bool buy) {
    if (!m_answer) {
        return;
    }
    Answer answer = std::move(m_answer);
    m_answer = nullptr;
    emit changed();
    answer(buy);
}
