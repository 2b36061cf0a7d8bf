#include "Alerts.h"

void Alerts::showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
    const QString& title, const QString& message, const QString& cancelTitle, const QStringList& otherTitles,
    std::function<void(int)> tapBlock) {
    Alert alert{title, message, {}, std::move(tapBlock), {}, !cancelTitle.isEmpty()};
    if (alert.cancellable) {
        alert.buttons << cancelTitle;
    }
    alert.buttons << otherTitles;
    m_queue.push_back(std::move(alert));
    emit changed();
}

void Alerts::setToneOfLast(const QString& tone) {
    if (!m_queue.empty()) {
        m_queue.back().tone = tone;
        emit changed();
    }
}

bool Alerts::press(int buttonIndex) {
    if (m_queue.empty() || buttonIndex < 0 || buttonIndex >= m_queue.front().buttons.size()) {
        return false;
    }
    Alert alert = std::move(m_queue.front());
    m_queue.pop_front();
    emit changed();
    if (alert.onPress) {
        alert.onPress(buttonIndex);
    }
    return true;
}

bool Alerts::cancel() {
    return isCancellable() && press(0);
}

bool Alerts::pressTitled(const QString& title) {
    if (m_queue.empty()) {
        return false;
    }
    return press(static_cast<int>(m_queue.front().buttons.indexOf(title)));
}
