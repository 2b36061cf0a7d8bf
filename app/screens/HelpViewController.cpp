#include "HelpViewController.h"

#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/SessionManager.h"

HelpViewController::HelpViewController(QObject* parent)
    : ViewController(QStringLiteral("HelpViewController"), parent) {}

void HelpViewController::viewDidLoad() {
    m_currentPage = 0;
    m_titles = {QStringLiteral("ميزات اللعبة"), QStringLiteral("طريقة اللعب"), QStringLiteral("طارفولين")};
    m_title = m_titles.first();
    m_closeButtonHidden = SessionManager::sharedInstance().isFirstSession();
    emit changed();
}

void HelpViewController::swipeHandler(int direction) {
    // In an Arabic layout the left swipe moves on.
    if (direction == kSwipeLeft && m_currentPage < 2) {
        nextButtonAction(false);
    } else if (direction == kSwipeRight && m_currentPage >= 1) {
        gotoPreviousView();
    }
}

void HelpViewController::nextButtonAction(bool fromButton) {
    if (fromButton) {
        SoundFactory::sharedInstance().playMenuTap();
    }
    if (m_currentPage >= 2) {
        goBack();
        return;
    }
    m_currentPage += 1;
    m_title = m_titles.at(m_currentPage);
    m_slide = 1;
    if (m_currentPage == 2) {
        m_nextButtonText = QStringLiteral("ابدأ اللعب");
    }
    emit changed();
}

void HelpViewController::gotoPreviousView() {
    if (m_currentPage < 1) {
        return;
    }
    m_currentPage -= 1;
    m_title = m_titles.at(m_currentPage);
    m_slide = -1;
    m_nextButtonText = QStringLiteral("التالي");
    emit changed();
}

void HelpViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
