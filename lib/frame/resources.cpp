#include "frame/resources.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/xml.h"
#include "core/zip.h"

#include <array>

// The archive's bytes, generated at build time from the files in resources/.
extern const unsigned char ov_resource_archive_data[];
extern const gsize ov_resource_archive_size;

namespace
{

constexpr gsize read_chunk = 16384;

zip_t *archive = nullptr;

// Closing an archive opened read-only cannot lose anything.
void close_archive(zip_t *zip)
{
    ov_zip_close_archive(zip);
}

using Archive = ov::Owned<zip_t, close_archive>;
using Entry = ov::Owned<zip_file_t, zip_fclose>;

gboolean require_open_archive()
{
    if (archive != nullptr)
        return TRUE;
    ov_error_set("The resource archive is not open.");
    return FALSE;
}

} // namespace

gboolean ov_resources_open()
{
    if (archive != nullptr)
        return TRUE;
    archive = ov_zip_open_archive_for_reading_from_buffer(ov_resource_archive_data, ov_resource_archive_size);
    return archive != nullptr;
}

void ov_resources_clean_up()
{
    const Archive closing(archive);
    archive = nullptr;
}

GBytes *ov_resources_read_entry(const char *entry_name)
{
    g_return_val_if_fail(entry_name != nullptr, nullptr);
    if (!require_open_archive())
        return nullptr;
    const Entry entry(ov_zip_open_file(archive, entry_name));
    if (!entry)
        return nullptr;
    GByteArray *bytes = g_byte_array_new();
    std::array<guint8, read_chunk> buffer;
    for (;;) {
        gsize count = 0;
        if (!ov_zip_read_from_file(entry.get(), buffer.data(), buffer.size(), &count)) {
            g_byte_array_unref(bytes);
            return nullptr;
        }
        if (count == 0)
            break;
        g_byte_array_append(bytes, buffer.data(), static_cast<guint>(count));
    }
    return g_byte_array_free_to_bytes(bytes);
}

OvImage *ov_resources_load_image(const char *entry_name, OvFileType type)
{
    g_return_val_if_fail(entry_name != nullptr, nullptr);
    OvImage *image = nullptr;
    if (const ov::GBytesPtr bytes(ov_resources_read_entry(entry_name)); bytes) {
        gsize length = 0;
        const void *data = g_bytes_get_data(bytes.get(), &length);
        image = ov_image_new_from_data(data, length, type);
    }
    if (image == nullptr)
        ov_error_append("Could not load image resource.");
    return image;
}

xmlDoc *ov_resources_load_xml_doc(const char *entry_name)
{
    g_return_val_if_fail(entry_name != nullptr, nullptr);
    xmlDoc *doc = require_open_archive() ? ov_xml_parse_zip_file(archive, entry_name) : nullptr;
    if (doc == nullptr)
        ov_error_append("Could not open XML resource.");
    return doc;
}
