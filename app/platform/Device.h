#pragma once

#include <QObject>
#include <QSizeF>

// The device class decides which layout a screen uses. Every screen is drawn in design units of its class's
// size and scaled to the window.
class Device : public QObject {
    Q_OBJECT
    Q_PROPERTY(int deviceClass READ deviceClass NOTIFY changed)
    Q_PROPERTY(QString deviceClassName READ deviceClassName NOTIFY changed)
    Q_PROPERTY(QSizeF designSize READ designSize NOTIFY changed)
    Q_PROPERTY(bool isPad READ isPad NOTIFY changed)
public:
    enum Class { Phone = 0, TallPhone = 1, Tablet = 2 };
    Q_ENUM(Class)

    explicit Device(Class c = Phone) : m_class(c) {}

    int deviceClass() const { return m_class; }
    Class cls() const { return m_class; }
    QString deviceClassName() const;
    QSizeF designSize() const;
    bool isPad() const { return m_class == Tablet; }
    // The screen's native height over its width, as the storyboard choice measures it.
    double nativeAspectRatio() const;
    void setClass(Class c);

    // Parses "phone", "tallphone" or "tablet"; false for anything else.
    static bool parse(const QString& name, Class* out);
    // The class that fits a window of this size best.
    static Class classForWindowSize(QSizeF size);

signals:
    void changed();

private:
    Class m_class;
};
