#include "LetterLabel.h"

namespace {
int nextZ() {
    static int z = 1;
    return ++z;
}
} // namespace

LetterLabel* LetterLabel::initWithText(const QString& text, QObject* parent) {
    auto* label = new LetterLabel(parent);
    label->m_text = text;
    return label;
}

void LetterLabel::copyFromView(const LetterLabel& other) {
    m_frame = other.m_frame;
    m_titleColor = other.m_titleColor;
    m_text = other.m_text;
    emit changed();
}

void LetterLabel::setText(const QString& text) {
    m_text = text;
    emit changed();
}

void LetterLabel::setFrame(const QRectF& frame) {
    m_frame = frame;
    emit changed();
}

void LetterLabel::removeFromSuperview() {
    m_onScreen = false;
    m_recognizer = NoRecognizer;
    emit changed();
}

void LetterLabel::bringToFront() {
    m_z = nextZ();
    emit changed();
}

void LetterLabel::setTitleColor(const QColor& color) {
    m_titleColor = color;
    emit changed();
}

void LetterLabel::setRecognizer(Recognizer r) {
    m_recognizer = r;
    emit changed();
}

void SolutionBlock::setTag(int tag) {
    if (tag != m_tag) {
        m_tag = tag;
        emit changed();
    }
}
