#include "gui/image.h"

#include "core/error.h"
#include "core/raii.h"

#include <cstring>

struct OvImage {
    cairo_surface_t *surface;
    int width;
    int height;
};

namespace
{

struct ByteReader {
    const guint8 *data;
    gsize left;
};

cairo_status_t read_bytes(void *closure, unsigned char *buffer, unsigned int length)
{
    auto *reader = static_cast<ByteReader *>(closure);
    if (reader->left < length)
        return CAIRO_STATUS_READ_ERROR;
    memcpy(buffer, reader->data, length);
    reader->data += length;
    reader->left -= length;
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

OvImage *ov_image_new_from_data(const void *data, gsize length, OvFileType type)
{
    g_return_val_if_fail(data != nullptr || length == 0, nullptr);
    if (type != OV_FILE_TYPE_PNG) {
        ov::GStr text = ov::gstr(g_strdup_printf("Unsupported image type: %s", ov_file_type_get_name(type)));
        ov_error_set(text.get());
        return nullptr;
    }
    ByteReader reader{static_cast<const guint8 *>(data), length};
    ov::CairoSurfacePtr surface(cairo_image_surface_create_from_png_stream(read_bytes, &reader));
    cairo_status_t status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        ov_error_set_from_cairo_status(status);
        return nullptr;
    }
    auto *image = g_new0(OvImage, 1);
    image->width = cairo_image_surface_get_width(surface.get());
    image->height = cairo_image_surface_get_height(surface.get());
    image->surface = surface.release();
    return image;
}

int ov_image_get_width(const OvImage *image)
{
    g_return_val_if_fail(image != nullptr, 0);
    return image->width;
}

int ov_image_get_height(const OvImage *image)
{
    g_return_val_if_fail(image != nullptr, 0);
    return image->height;
}

void ov_image_draw(const OvImage *image, cairo_t *cr, double x, double y)
{
    g_return_if_fail(image != nullptr && cr != nullptr);
    ov::CairoSaveGuard saved(cr);
    cairo_set_source_surface(cr, image->surface, x, y);
    cairo_rectangle(cr, x, y, image->width, image->height);
    cairo_fill(cr);
}

void ov_image_destroy(OvImage *image)
{
    if (image == nullptr)
        return;
    cairo_surface_destroy(image->surface);
    g_free(image);
}
