#pragma once

#include "platform/ViewController.h"

#include <QList>
#include <QStringList>
#include <QVariantList>

// The Game Center pages: several screens side by side, one button for each above them. A tap on a button
// moves to its page, passing the pages between; a swipe moves to a neighbour. The pages are its own.
class GameCenterSwipeViewControllers : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList pages READ pages CONSTANT)
    Q_PROPERTY(QStringList buttonText READ buttonText CONSTANT)
    Q_PROPERTY(int currentPageIndex READ currentPageIndex NOTIFY pageChanged)
public:
    explicit GameCenterSwipeViewControllers(QObject* parent = nullptr);

    // The pages and their buttons' texts, before the screen loads.
    void setViewControllerArrayButtonText(const QList<ViewController*>& pages, const QStringList& buttonText);
    void setInitialSelectedPage(qint64 page);
    const QList<ViewController*>& viewControllerArray() const { return m_pages; }

    QVariantList pages() const;
    QStringList buttonText() const { return m_buttonText; }
    int currentPageIndex() const { return m_currentPageIndex; }
    bool isPageScrolling() const { return m_isPageScrollingFlag; }

    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidDisappear() override;

    // A button tapped: ignored while a swipe is under way.
    Q_INVOKABLE void tapSegmentButton(int index);
    // The page that a finished swipe shows.
    Q_INVOKABLE void pageShown(int index);
    Q_INVOKABLE void setPageScrolling(bool scrolling);
    Q_INVOKABLE void close();

signals:
    void pageChanged();

private:
    QList<ViewController*> m_pages;
    QStringList m_buttonText;
    int m_currentPageIndex = 0;
    bool m_isPageScrollingFlag = false;
    bool m_hasAppearedFlag = false;
};
