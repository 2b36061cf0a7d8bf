#include "GADBannerView.h"

#include "platform/Scheduler.h"

#include <QDebug>
#include <QPointer>

GADBannerView::GADBannerView(const QRectF& frame, QObject* parent) : QObject(parent), m_frame(frame) {}

GADBannerView* GADBannerView::initWithFrame(const QRectF& frame, QObject* parent) {
    return new GADBannerView(frame, parent);
}

GADBannerView::~GADBannerView() {
    if (m_rotation) {
        m_rotation->invalidate();
    }
}

void GADBannerView::setFrame(const QRectF& frame) {
    if (frame != m_frame) {
        m_frame = frame;
        emit changed();
    }
}

void GADBannerView::setTag(int tag) {
    if (tag != m_tag) {
        m_tag = tag;
        emit changed();
    }
}

void GADBannerView::setHidden(bool hidden) {
    if (hidden != m_hidden) {
        m_hidden = hidden;
        emit changed();
    }
}

void GADBannerView::loadRequest(const GADRequest&) {
    if (!m_rotation) {
        // The timer is this view's own and goes with it, so `this` is alive whenever it fires.
        m_rotation = Timer::scheduledTimerWithTimeInterval(kRotationSeconds, true, [this] {
            if (!m_hidden) {
                fetch();
            }
        });
    }
    fetch();
}

void GADBannerView::fetch() {
    if (m_loading) {
        return;
    }
    m_loading = true;
    QPointer<GADBannerView> guard(this);
    GADAdKit::loadAd(
        m_unit, QStringLiteral("banner"),
        [guard](const std::optional<GADAdContent>& content, const std::optional<GADError>& error) {
            GADBannerView* self = guard.data();
            if (!self) {
                return;
            }
            self->m_loading = false;
            if (!content) {
                // A banner that had an ad keeps showing it.
                if (self->m_delegate) {
                    self->m_delegate->adViewDidFailToReceiveAdWithError(
                        self, error.value_or(makeGADError(GADErrorInvalidResponse)));
                }
                return;
            }
            self->m_content = content;
            self->m_imageSource =
                content->imagePath.isEmpty()
                    ? QUrl()
                    : GADMobileAds::sharedInstance().server().creativeUrl(content->imagePath);
            self->m_frame.setSize(QSizeF(content->width, content->height));
            emit self->changed();
            if (self->m_delegate) {
                self->m_delegate->adViewDidReceiveAd(self);
            }
        });
}

void GADBannerView::tap() {
    if (!m_content) {
        return;
    }
    const QString url = m_content->actionUrl;
    if (m_delegate) {
        m_delegate->adViewWillPresentScreen(this);
    }
    GADAdKit::openActionUrl(url);
}

void AdsHostView::setFrame(const QRectF& frame) {
    if (frame != m_frame) {
        m_frame = frame;
        emit changed();
    }
}

void AdsHostView::addSubview(QObject* view) {
    if (!view || m_subviews.contains(view)) {
        return;
    }
    view->setParent(this);
    m_subviews.append(view);
    connect(view, &QObject::destroyed, this, [this, view] {
        m_subviews.removeAll(view);
        emit changed();
    });
    emit changed();
}

QObject* AdsHostView::viewWithTag(int tag) const {
    for (QObject* view : m_subviews) {
        const QVariant value = view->property("tag");
        if (value.isValid() && value.toInt() == tag) {
            return view;
        }
    }
    return nullptr;
}
