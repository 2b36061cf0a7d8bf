// GLib names a struct member "signals", which Qt defines as a keyword: librsvg comes first.
#include <cairo.h>
#include <librsvg/rsvg.h>

#include "SvgRaster.h"

#include <memory>

namespace tarvolin::levels {

namespace {

struct HandleFree {
    void operator()(RsvgHandle* h) const { g_object_unref(h); }
};
struct SurfaceFree {
    void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
struct ContextFree {
    void operator()(cairo_t* c) const { cairo_destroy(c); }
};

QImage fail(QString* error, const QString& why) {
    if (error)
        *error = why;
    return {};
}

} // namespace

QImage rasterizeSvg(const QByteArray& svg, int side, QString* error) {
    if (svg.isEmpty())
        return fail(error, QStringLiteral("the file is empty or cannot be read"));
    if (side < 1 || side > 8192)
        return fail(error, QStringLiteral("no picture of %1 pixels").arg(side));
    GError* gerror = nullptr;
    std::unique_ptr<RsvgHandle, HandleFree> handle(rsvg_handle_new_from_data(
        reinterpret_cast<const guint8*>(svg.constData()), static_cast<gsize>(svg.size()), &gerror));
    if (!handle) {
        const QString why = QString::fromUtf8(gerror ? gerror->message : "not an SVG document");
        g_clear_error(&gerror);
        return fail(error, why);
    }
    // Without a view box or a size there is nothing to fit into the square.
    gboolean hasWidth = FALSE;
    gboolean hasHeight = FALSE;
    gboolean hasViewBox = FALSE;
    RsvgLength width{};
    RsvgLength height{};
    RsvgRectangle viewBox{};
    rsvg_handle_get_intrinsic_dimensions(handle.get(), &hasWidth, &width, &hasHeight, &height, &hasViewBox,
                                         &viewBox);
    if (!(hasViewBox && viewBox.width > 0 && viewBox.height > 0) && !(hasWidth && hasHeight))
        return fail(error, QStringLiteral("the SVG has neither a view box nor a size"));

    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    // Cairo's ARGB32 is premultiplied and native-endian, as QImage's ARGB32_Premultiplied.
    std::unique_ptr<cairo_surface_t, SurfaceFree> surface(cairo_image_surface_create_for_data(
        image.bits(), CAIRO_FORMAT_ARGB32, side, side, static_cast<int>(image.bytesPerLine())));
    std::unique_ptr<cairo_t, ContextFree> cr(cairo_create(surface.get()));
    const RsvgRectangle viewport{0, 0, static_cast<double>(side), static_cast<double>(side)};
    const gboolean drawn = rsvg_handle_render_document(handle.get(), cr.get(), &viewport, &gerror);
    cairo_surface_flush(surface.get());
    if (!drawn || cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) {
        const QString why = QString::fromUtf8(gerror ? gerror->message : "the drawing failed");
        g_clear_error(&gerror);
        return fail(error, why);
    }
    return image;
}

} // namespace tarvolin::levels
