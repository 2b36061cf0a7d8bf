#pragma once

#include <QQuickAsyncImageProvider>

// Players' pictures for the views: "image://players/<playerID>" loads the picture from the game service once
// and keeps it for the rest of the run. A picture that cannot be had is empty.
class PlayerPhotoProvider : public QQuickAsyncImageProvider {
public:
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;
};
