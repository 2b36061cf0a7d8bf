#include "Device.h"

QString Device::deviceClassName() const {
    switch (m_class) {
    case Phone:
        return QStringLiteral("phone");
    case TallPhone:
        return QStringLiteral("tallphone");
    case Tablet:
        return QStringLiteral("tablet");
    }
    return QStringLiteral("phone");
}

QSizeF Device::designSize() const {
    switch (m_class) {
    case Phone:
        return {375, 667};
    case TallPhone:
        return {375, 812};
    case Tablet:
        return {768, 1024};
    }
    return {375, 667};
}

double Device::nativeAspectRatio() const {
    const QSizeF s = designSize();
    return static_cast<float>(s.height()) / static_cast<float>(s.width());
}

void Device::setClass(Class c) {
    if (c != m_class) {
        m_class = c;
        emit changed();
    }
}

bool Device::parse(const QString& name, Class* out) {
    const QString n = name.trimmed().toLower();
    if (n == "phone") {
        *out = Phone;
    } else if (n == "tallphone" || n == "tall-phone" || n == "tall") {
        *out = TallPhone;
    } else if (n == "tablet" || n == "pad") {
        *out = Tablet;
    } else {
        return false;
    }
    return true;
}

Device::Class Device::classForWindowSize(QSizeF size) {
    const double w = std::min(size.width(), size.height());
    const double h = std::max(size.width(), size.height());
    if (w >= 600) {
        return Tablet;
    }
    return (h / w >= 2.0) ? TallPhone : Phone;
}
