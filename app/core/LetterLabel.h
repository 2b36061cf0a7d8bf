#pragma once

#include <QColor>
#include <QObject>
#include <QRectF>

// A letter tile: a real tile of the tray, or an empty placeholder standing in a free solution box.
class LetterLabel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QRectF frame READ frame NOTIFY changed)
    Q_PROPERTY(bool onScreen READ isOnScreen NOTIFY changed)
    Q_PROPERTY(int z READ z NOTIFY changed)
    Q_PROPERTY(QColor titleColor READ titleColor NOTIFY changed)
    Q_PROPERTY(int recognizer READ recognizer NOTIFY changed)
    Q_PROPERTY(bool inBox READ isInBox NOTIFY changed)
    Q_PROPERTY(bool isRevealed READ isRevealedValue NOTIFY changed)
    Q_PROPERTY(int box READ box NOTIFY changed)
    Q_PROPERTY(bool inTray READ isInTray NOTIFY changed)
public:
    // Which single-tap action the tile answers now.
    enum Recognizer { NoRecognizer = 0, LetterTap = 1, SolutionLetterTap = 2 };
    Q_ENUM(Recognizer)

    static LetterLabel* initWithText(const QString& text, QObject* parent = nullptr);
    void copyFromView(const LetterLabel& other);

    QRectF originalFrame;
    qint64 solutionBoxPos = 0;
    qint64 correctSolutionBoxPos = 0;
    bool isInSolutionBox = false;
    bool isCorrect = false;
    bool isRevealed = false;

    QString text() const { return m_text; }
    void setText(const QString& text);
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame);
    bool isOnScreen() const { return m_onScreen; }
    void removeFromSuperview();
    int z() const { return m_z; }
    void bringToFront();
    QColor titleColor() const { return m_titleColor; }
    void setTitleColor(const QColor& color);
    int recognizer() const { return m_recognizer; }
    void setRecognizer(Recognizer r);
    bool isInBox() const { return solutionBoxPos >= 0 && !isRevealed && m_recognizer == SolutionLetterTap; }
    bool isRevealedValue() const { return isRevealed; }
    // The solution box the tile stands in, placed by the player or revealed there; -1 in the tray or on its
    // way.
    int box() const {
        return isInBox() ? static_cast<int>(solutionBoxPos)
                         : (isRevealed ? static_cast<int>(correctSolutionBoxPos) : -1);
    }
    // Waiting in the tray for a tap: not sent to a box (nor on its way there), not revealed, not removed.
    bool isInTray() const {
        return m_onScreen && m_recognizer == LetterTap && solutionBoxPos < 0 && !isRevealed;
    }
    void notifyChanged() { emit changed(); }

signals:
    void changed();

private:
    using QObject::QObject;

    QString m_text;
    QRectF m_frame;
    bool m_onScreen = true;
    int m_z = 0;
    QColor m_titleColor{0x3b, 0x2a, 0x12};
    Recognizer m_recognizer = NoRecognizer;
};

// A solution box: its frame in the working view, and its tag (0 free, 1 taken).
class SolutionBlock : public QObject {
    Q_OBJECT
    Q_PROPERTY(QRectF frame READ frame CONSTANT)
    Q_PROPERTY(int tag READ tag NOTIFY changed)
    Q_PROPERTY(QString image READ image CONSTANT)
public:
    SolutionBlock(const QRectF& frame, QObject* parent) : QObject(parent), m_frame(frame) {}
    QRectF frame() const { return m_frame; }
    int tag() const { return m_tag; }
    void setTag(int tag);
    QString image() const { return QStringLiteral("btn_input"); }

signals:
    void changed();

private:
    QRectF m_frame;
    int m_tag = 0;
};
