#include "GameView.h"

#include "platform/Platform.h"

#include <QFile>
#include <QUrl>
#include <cmath>

namespace {
int nextPictureZ() {
    static int z = 1;
    return ++z;
}
} // namespace

void PictureView::setSource(const QString& source) {
    m_source = source;
    emit changed();
}

void PictureView::setDescription(const QString& description) {
    m_description = description;
    emit changed();
}

void PictureView::setFrame(const QRectF& frame) {
    m_frame = frame;
    emit changed();
}

void PictureView::bringToFront() {
    m_z = nextPictureZ();
    emit changed();
}

GameView::GameView(const QRectF& bounds, QObject* parent) : QObject(parent) {
    // The grid is read right to left: 1 top right, 2 top left, 3 bottom right, 4 bottom left.
    const double gap = std::round(bounds.width() * 0.03);
    const double side = std::floor((bounds.width() - gap) / 2);
    const double left = 0;
    const double right = bounds.width() - side;
    const double top = 0;
    const double bottom = bounds.height() - side;
    imageView1 = new PictureView({right, top, side, side}, this);
    imageView2 = new PictureView({left, top, side, side}, this);
    imageView3 = new PictureView({right, bottom, side, side}, this);
    imageView4 = new PictureView({left, bottom, side, side}, this);
}

void GameView::initGameViewWithGame(const GamePtr& g) {
    round = g ? g->gameRound : 0;
    game = g;
    m_touchesEnabled = true;
    emit changed();
}

void GameView::setRoundParams() {
    firstLetterSeconds = 70;
    maxLettersToReveal = 2;
    const auto g = game.lock();
    const auto info = g ? g->levelInfo() : nullptr;
    if (info && info->solution.size() <= 4) {
        firstLetterSeconds = 70;
        maxLettersToReveal = 1;
    }
}

void GameView::loadAndSetupControls() {
    createImageTapRecognizer();
    const QRectF f2 = imageView2->frame();
    const QRectF f3 = imageView3->frame();
    const double x = std::trunc(f2.x());
    const double y = std::trunc(f2.y());
    fullFrame = QRectF(x, y, std::trunc(f3.x() - x + f3.width()), std::trunc(f3.y() - y + f3.height()));
}

void GameView::moreInfoButtonAction() {
    // Plays the menu tap once sound exists; no card is offered by this kind of puzzle.
}

void GameView::createImageTapRecognizer() {
    m_tapsRecognized = true;
}

void GameView::imageTapAction(PictureView* picture) {
    if (!picture) {
        return;
    }
    auto& animator = Platform::shared().animator();
    if (picture->frame().width() != fullFrame.width()) {
        originalFrame = picture->frame();
        picture->bringToFront();
        animator.animateWithDurationAnimationsCompletion(
            kPictureAnimationSeconds, [picture, this] { picture->setFrame(fullFrame); }, nullptr);
    } else {
        const QRectF back = originalFrame;
        animator.animateWithDurationAnimationsCompletion(
            kPictureAnimationSeconds, [picture, back] { picture->setFrame(back); }, nullptr);
    }
}

void GameView::tapPicture(int index) {
    if (!m_touchesEnabled || !m_tapsRecognized) {
        return;
    }
    imageTapAction(picture(index));
}

PictureView* GameView::picture(int index) const {
    switch (index) {
    case 0:
        return imageView1;
    case 1:
        return imageView2;
    case 2:
        return imageView3;
    case 3:
        return imageView4;
    default:
        return nullptr;
    }
}

QList<QObject*> GameView::pictures() const {
    return {imageView1, imageView2, imageView3, imageView4};
}

WordView* WordView::loadInstance(const QRectF& bounds, QObject* parent) {
    return new WordView(bounds, parent);
}

void WordView::initGameViewWithGame(const GamePtr& g) {
    GameView::initGameViewWithGame(g);
    setRoundParams();
    loadAndSetupControls();
}

QString WordView::descriptionIn(const QString& descriptions, const QString& name, int k) {
    const QString key = QStringLiteral("%1_%2\t").arg(name).arg(k);
    qsizetype at = 0;
    while (!name.isEmpty() && (at = descriptions.indexOf(key, at)) >= 0) {
        if (at == 0 || descriptions.at(at - 1) == QLatin1Char('\n')) {
            const qsizetype start = at + key.size();
            const qsizetype end = descriptions.indexOf(QLatin1Char('\n'), start);
            const QString text = descriptions.mid(start, end < 0 ? -1 : end - start).trimmed();
            if (!text.isEmpty())
                return text;
            break;
        }
        at += key.size();
    }
    return QStringLiteral("الصورة %1").arg(k);
}

void WordView::loadAndSetupControls() {
    GameView::loadAndSetupControls();
    const auto g = game.lock();
    const auto info = g ? g->levelInfo() : nullptr;
    const QString name = info ? info->imageName : QString();
    // Read once: the resource is registered at start and never changes while the game runs.
    static const QString descriptions = [] {
        QFile file(QString::fromLatin1(kDescriptionsResource));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }();
    int k = 1;
    for (PictureView* view : {imageView1, imageView2, imageView3, imageView4}) {
        const QString path = QStringLiteral("%1%2_%3.jpg").arg(QLatin1String(kPicturePrefix), name).arg(k);
        // A missing picture shows as empty, without a message.
        view->setSource(!name.isEmpty() && QFile::exists(path) ? QStringLiteral("qrc") + path : QString());
        view->setDescription(descriptionIn(descriptions, name, k));
        ++k;
    }
}
