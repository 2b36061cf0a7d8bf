#include "GameCenterSwipeViewControllers.h"

#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"

GameCenterSwipeViewControllers::GameCenterSwipeViewControllers(QObject* parent)
    : ViewController(QStringLiteral("GameCenterSwipeViewControllers"), parent) {}

void GameCenterSwipeViewControllers::setViewControllerArrayButtonText(const QList<ViewController*>& pages,
                                                                      const QStringList& buttonText) {
    m_pages = pages;
    for (ViewController* page : m_pages) {
        page->setParent(this);
    }
    m_buttonText = buttonText;
}

void GameCenterSwipeViewControllers::setInitialSelectedPage(qint64 page) {
    m_currentPageIndex =
        m_pages.isEmpty() ? 0 : static_cast<int>(std::clamp<qint64>(page, 0, m_pages.size() - 1));
}

QVariantList GameCenterSwipeViewControllers::pages() const {
    QVariantList out;
    for (ViewController* page : m_pages) {
        out.append(QVariant::fromValue(static_cast<QObject*>(page)));
    }
    return out;
}

void GameCenterSwipeViewControllers::viewDidLoad() {
    for (ViewController* page : m_pages) {
        page->viewDidLoad();
    }
}

void GameCenterSwipeViewControllers::viewWillAppear() {
    if (m_hasAppearedFlag) {
        return;
    }
    m_hasAppearedFlag = true;
    for (ViewController* page : m_pages) {
        page->viewWillAppear();
    }
}

void GameCenterSwipeViewControllers::viewDidDisappear() {
    for (ViewController* page : m_pages) {
        page->viewDidDisappear();
    }
}

void GameCenterSwipeViewControllers::tapSegmentButton(int index) {
    if (m_isPageScrollingFlag || index < 0 || index >= m_pages.size() || index == m_currentPageIndex) {
        return;
    }
    SoundFactory::sharedInstance().playMenuTap();
    m_currentPageIndex = index;
    emit pageChanged();
}

void GameCenterSwipeViewControllers::pageShown(int index) {
    if (index < 0 || index >= m_pages.size() || index == m_currentPageIndex) {
        return;
    }
    m_currentPageIndex = index;
    emit pageChanged();
}

void GameCenterSwipeViewControllers::setPageScrolling(bool scrolling) {
    m_isPageScrollingFlag = scrolling;
}

void GameCenterSwipeViewControllers::close() {
    Platform::shared().navigator().dismissViewController();
}
