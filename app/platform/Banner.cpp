#include "Banner.h"

#include "Platform.h"

void Banner::titleMessageTime(const QString& title, const QString& message, double seconds) {
    m_title = title;
    m_message = message;
    m_visible = true;
    const quint64 shown = ++m_shown;
    emit changed();
    delayCallback(
        [this, shown] {
            if (shown == m_shown) {
                dismiss();
            }
        },
        seconds);
}

void Banner::dismiss() {
    if (!m_visible) {
        return;
    }
    m_visible = false;
    emit changed();
}
