#include "SKStoreProductViewController.h"

#include "platform/Platform.h"

#include <QHash>

namespace {
struct Product {
    QString title;
    QUrl page;
};
QHash<QString, Product>& products() {
    static QHash<QString, Product> table;
    return table;
}
} // namespace

SKStoreProductViewController::SKStoreProductViewController(QObject* parent)
    : ViewController(QStringLiteral("SKStoreProductViewController"), parent) {}

void SKStoreProductViewController::registerProduct(const QString& identifier, const QString& title,
                                                   const QUrl& page) {
    products().insert(identifier, Product{title, page});
}

void SKStoreProductViewController::clearProducts() {
    products().clear();
}

void SKStoreProductViewController::loadProductWithParameters(const QVariantMap& parameters,
                                                             std::function<void(bool loaded)> completion) {
    m_identifier = parameters.value(SKStoreProductParameterITunesItemIdentifier).toString();
    const auto found = products().constFind(m_identifier);
    if (found != products().constEnd()) {
        m_title = found->title;
        m_page = found->page;
    } else {
        m_title.clear();
        m_page.clear();
    }
    emit productChanged();
    if (completion) {
        completion(isLoaded());
    }
}

void SKStoreProductViewController::openProductPage() {
    if (isLoaded()) {
        Platform::shared().urls().openURL(m_page);
    }
}

void SKStoreProductViewController::done() {
    if (m_delegate) {
        m_delegate->productViewControllerDidFinish(this);
    } else {
        Platform::shared().navigator().dismissViewController();
    }
}
