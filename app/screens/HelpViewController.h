#pragma once

#include "platform/ViewController.h"

#include <QStringList>

// How to play, in three pages that the player swipes or steps through. In the first session the close button
// is hidden, so that a new player leaves by the last page's button.
class HelpViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(int currentPage READ currentPage NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString nextButtonText READ nextButtonText NOTIFY changed)
    Q_PROPERTY(bool closeButtonHidden READ closeButtonHidden NOTIFY changed)
    Q_PROPERTY(int pageCount READ pageCount CONSTANT)
    // +1 while the pages move on, -1 while they go back: the view slides that way.
    Q_PROPERTY(int slide READ slide NOTIFY changed)
public:
    static constexpr double kSlideSeconds = 0.4;
    // Swipe directions in the platform's numbers.
    static constexpr int kSwipeRight = 1;
    static constexpr int kSwipeLeft = 2;

    explicit HelpViewController(QObject* parent = nullptr);
    void viewDidLoad() override;

    Q_INVOKABLE void swipeHandler(int direction);
    // From the button (with its tap sound) or from a swipe (silent).
    Q_INVOKABLE void nextButtonAction(bool fromButton);
    Q_INVOKABLE void gotoPreviousView();
    Q_INVOKABLE void goBack();

    int currentPage() const { return static_cast<int>(m_currentPage); }
    QString title() const { return m_title; }
    QString nextButtonText() const { return m_nextButtonText; }
    bool closeButtonHidden() const { return m_closeButtonHidden; }
    int pageCount() const { return 3; }
    int slide() const { return m_slide; }
    const QStringList& titles() const { return m_titles; }

signals:
    void changed();

private:
    qint64 m_currentPage = 0;
    QStringList m_titles;
    QString m_title;
    QString m_nextButtonText = QStringLiteral("التالي");
    bool m_closeButtonHidden = false;
    int m_slide = 0;
};
