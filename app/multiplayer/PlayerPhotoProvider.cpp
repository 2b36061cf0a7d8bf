#include "PlayerPhotoProvider.h"

#include "platform/Platform.h"
#include "platform/gamekit/GameKit.h"

#include <QCoreApplication>
#include <QHash>
#include <QImage>
#include <QMutex>
#include <QPointer>

namespace {
QMutex& cacheMutex() {
    static QMutex m;
    return m;
}
QHash<QString, QImage>& cache() {
    static QHash<QString, QImage> images;
    return images;
}

class PhotoResponse : public QQuickImageResponse {
public:
    PhotoResponse(const QString& playerID, QSize size) : m_size(size) {
        {
            QMutexLocker lock(&cacheMutex());
            const auto it = cache().constFind(playerID);
            if (it != cache().constEnd()) {
                finish(*it);
                return;
            }
        }
        // The service is reached from the main thread; the answer comes back there too.
        QPointer<PhotoResponse> self(this);
        QMetaObject::invokeMethod(qApp, [self, playerID] {
            if (!Platform::isInstalled()) {
                if (self) {
                    self->finish({});
                }
                return;
            }
            GKPlayer{playerID, {}, false, {}}.loadPhotoWithCompletionHandler(
                [self, playerID](QImage image, std::optional<GKError>) {
                    if (!image.isNull()) {
                        QMutexLocker lock(&cacheMutex());
                        cache().insert(playerID, image);
                    }
                    if (self) {
                        self->finish(image);
                    }
                });
        });
    }
    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(m_image);
    }

private:
    void finish(const QImage& image) {
        m_image = m_size.isValid() && !image.isNull()
                      ? image.scaled(m_size, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                      : image;
        emit finished();
    }
    QSize m_size;
    QImage m_image;
};
} // namespace

QQuickImageResponse* PlayerPhotoProvider::requestImageResponse(const QString& id,
                                                               const QSize& requestedSize) {
    return new PhotoResponse(id, requestedSize);
}
