// Drawable images: a PNG read from bytes into a cairo surface that knows its
// pixel width and height, drawn at a position.
#pragma once

#include <cairo.h>
#include <glib.h>

#include "core/file_type.h"

typedef struct OvImage OvImage;

// Reads an image of the given file type from bytes. Only PNG is read; any
// other type fails with "Unsupported image type: %s". A damaged PNG fails
// with cairo's reason. Null on failure, with the reason in the error buffer.
OvImage *ov_image_new_from_data(const void *data, gsize length, OvFileType type);

int ov_image_get_width(const OvImage *image);
int ov_image_get_height(const OvImage *image);

// Paints the image with its top-left corner at (x, y).
void ov_image_draw(const OvImage *image, cairo_t *cr, double x, double y);

// Null is a no-op.
void ov_image_destroy(OvImage *image);
