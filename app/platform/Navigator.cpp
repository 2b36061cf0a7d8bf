#include "Navigator.h"

Navigator::~Navigator() {
    for (auto* c : m_presented) {
        delete c;
    }
    for (auto* c : m_stack) {
        delete c;
    }
}

void Navigator::registerScreen(const QString& identifier, Factory factory) {
    m_factories.insert(identifier, std::move(factory));
}

ViewController* Navigator::instantiateViewControllerWithIdentifier(const QString& identifier) const {
    const auto it = m_factories.find(identifier);
    return it == m_factories.end() ? nullptr : (*it)();
}

void Navigator::release(ViewController* controller) {
    controller->viewDidDisappear();
    controller->deleteLater();
}

void Navigator::setRootViewController(ViewController* controller) {
    dismissAllPresented();
    auto old = std::move(m_stack);
    m_stack.clear();
    m_stack.push_back(controller);
    controller->viewDidLoad();
    controller->viewWillAppear();
    controller->viewDidAppear();
    emit changed();
    for (auto* c : old) {
        release(c);
    }
}

void Navigator::pushViewController(ViewController* controller) {
    m_stack.push_back(controller);
    controller->viewDidLoad();
    controller->viewWillAppear();
    controller->viewDidAppear();
    emit changed();
}

bool Navigator::popViewController() {
    if (m_stack.size() < 2) {
        return false;
    }
    ViewController* top = m_stack.back();
    m_stack.pop_back();
    m_stack.back()->viewWillAppear();
    m_stack.back()->viewDidAppear();
    emit changed();
    release(top);
    return true;
}

void Navigator::popToRootViewController() {
    while (popViewController()) {
    }
}

void Navigator::popToViewControllerAtIndex(int index) {
    while (index >= 0 && static_cast<int>(m_stack.size()) > index + 1) {
        popViewController();
    }
}

void Navigator::presentViewController(ViewController* controller) {
    m_presented.push_back(controller);
    controller->viewDidLoad();
    controller->viewWillAppear();
    controller->viewDidAppear();
    emit changed();
}

void Navigator::dismissViewController() {
    if (m_presented.empty()) {
        return;
    }
    ViewController* top = m_presented.back();
    m_presented.pop_back();
    if (!m_presented.empty()) {
        m_presented.back()->viewWillAppear();
        m_presented.back()->viewDidAppear();
    } else if (!m_stack.empty()) {
        m_stack.back()->viewWillAppear();
        m_stack.back()->viewDidAppear();
    }
    emit changed();
    release(top);
}

void Navigator::dismissAllPresented() {
    while (!m_presented.empty()) {
        dismissViewController();
    }
}

QList<QObject*> Navigator::screens() const {
    QList<QObject*> list;
    for (auto* c : m_stack) {
        list << c;
    }
    return list;
}

QList<QObject*> Navigator::presented() const {
    QList<QObject*> list;
    for (auto* c : m_presented) {
        list << c;
    }
    return list;
}
