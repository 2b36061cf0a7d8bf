#include "MGInstagram.h"

#include "Platform.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

bool MGInstagram::isAppInstalled() {
    return Platform::shared().urls().canOpenURL(QUrl(kAppProbe));
}

bool MGInstagram::isImageCorrectSize(const QImage& image) {
    return !image.isNull() && image.width() >= kMinimumSide && image.height() >= kMinimumSide;
}

bool MGInstagram::postImageWithCaptionInView(const QImage& image, const QString& caption, ViewController*) {
    m_caption = caption;
    const QString path = QDir(Platform::shared().homeDirectory()).filePath(kFile);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "JPG", 100) || !file.commit()) {
        qWarning().noquote() << "The picture for Instagram could not be written to" << path;
        return false;
    }
    Platform::shared().shareSheet().presentOpenIn(path, kTypeIdentifier, nullptr);
    return true;
}
