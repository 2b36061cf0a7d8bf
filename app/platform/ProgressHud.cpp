#include "ProgressHud.h"

void ProgressHud::showWithMaskType(int maskType) {
    m_visible = true;
    m_maskType = maskType;
    emit changed();
}

void ProgressHud::dismiss() {
    if (m_visible) {
        m_visible = false;
        emit changed();
    }
}
