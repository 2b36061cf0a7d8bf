#pragma once

#include <QObject>

// The touch-blocking progress display. Mask type 2 is clear, 3 is black.
class ProgressHud : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(int maskType READ maskType NOTIFY changed)
public:
    enum MaskType { Clear = 2, Black = 3 };

    void showWithMaskType(int maskType);
    void dismiss();
    bool isVisible() const { return m_visible; }
    int maskType() const { return m_maskType; }

signals:
    void changed();

private:
    bool m_visible = false;
    int m_maskType = Clear;
};
