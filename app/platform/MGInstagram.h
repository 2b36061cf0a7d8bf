#pragma once

#include <QImage>
#include <QString>

class ViewController;

// The helper that posts a picture to Instagram: the picture goes as a file, under the home directory, to the
// app that takes Instagram's exclusive type.
class MGInstagram {
public:
    static inline const QString kAppProbe = QStringLiteral("instagram://app");
    static inline const QString kFile = QStringLiteral("Documents/instagram.igo");
    static inline const QString kTypeIdentifier = QStringLiteral("com.instagram.exclusivegram");
    // Instagram's smallest picture.
    static constexpr int kMinimumSide = 612;

    static bool isAppInstalled();
    static bool isImageCorrectSize(const QImage& image);
    // Writes the picture and hands it over; false when the file could not be written.
    bool postImageWithCaptionInView(const QImage& image, const QString& caption, ViewController* view);
    QString caption() const { return m_caption; }

private:
    QString m_caption;
};
