#include "Keyboard.h"

#include "Platform.h"
#include "ViewController.h"
#include "adkit/GADAdPresenter.h"

#include <QMetaMethod>

#include <algorithm>

namespace Keyboard {

bool coveredByOverlay() {
    auto& platform = Platform::shared();
    return platform.alerts().isVisible() || platform.progressHud().isVisible() ||
           platform.paymentSheet().isVisible() || platform.shareSheet().isVisible() ||
           GADAdPresenter::shared().isVisible();
}

ViewController* frontController() {
    auto& nav = Platform::shared().navigator();
    if (ViewController* presented = nav.presentedViewController()) {
        return presented;
    }
    return nav.topViewController();
}

QString letters(const QString& text) {
    return text.normalized(QString::NormalizationForm_KC);
}

int moveInReadingOrder(const KeyPress& press, int index, int count, int columns) {
    int step = 0;
    if (press.is(Qt::Key_Left)) {
        step = 1;
    } else if (press.is(Qt::Key_Right)) {
        step = -1;
    } else if (press.is(Qt::Key_Down)) {
        step = columns;
    } else if (press.is(Qt::Key_Up)) {
        step = -columns;
    } else {
        return -1;
    }
    const int target = index + step;
    return target >= 0 && target < count ? target : index;
}

bool SelectorFocus::moveTo(int to, int count) {
    if (to < 0 || to >= count || (shown && index == to)) {
        return false;
    }
    index = to;
    shown = true;
    return true;
}

SelectorFocus::Key SelectorFocus::keyPressed(const KeyPress& press, int count, int columns) {
    if (const int target = moveInReadingOrder(press, index, count, columns); target >= 0) {
        index = target;
        shown = true;
        return Key::Moved;
    }
    if (press.isEnter() && count > 0) {
        shown = true;
        return Key::Chosen;
    }
    return Key::Ignored;
}

void SelectorFocus::reset(qint64 start, int count) {
    if (!shown || index >= count) {
        index = static_cast<int>(std::clamp<qint64>(start, 0, std::max(0, count - 1)));
    }
}

bool pressBackButton(ViewController* controller) {
    auto& nav = Platform::shared().navigator();
    const bool presented = controller && controller == nav.presentedViewController();
    if (!controller || (!presented && (controller != nav.topViewController() || nav.depth() < 2))) {
        return false;
    }
    // The screens name the action of that button in one of these ways; the first the screen has is pressed.
    const QMetaObject* meta = controller->metaObject();
    for (const char* signature : {"goBack()", "goBack(QObject*)", "close()", "cancel()"}) {
        const int index = meta->indexOfMethod(signature);
        if (index < 0) {
            continue;
        }
        const QMetaMethod method = meta->method(index);
        return method.parameterCount() == 0 ? method.invoke(controller)
                                            : method.invoke(controller, Q_ARG(QObject*, nullptr));
    }
    return false;
}

} // namespace Keyboard
