// Object ids survive their file-name form; base 16 reads back what it
// writes and what it reads writes back as it was.
#include "core/base16.h"
#include "core/error.h"
#include "core/strings.h"
#include "fuzz_support.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text = ov::fuzz::text_of(data, size);

    gchar *file_name = ov_convert_object_id_to_fat_safe_file_name_format(text.c_str());
    OV_FUZZ_CHECK(file_name != nullptr);
    gchar *object_id = ov_convert_fat_safe_file_name_format_to_object_id(file_name, std::strlen(file_name));
    OV_FUZZ_CHECK(object_id != nullptr && text == object_id);
    g_free(object_id);
    g_free(file_name);
    gchar *readable = ov_convert_object_id_to_ntfs_safe_file_name_format(text.c_str());
    OV_FUZZ_CHECK(readable != nullptr && g_utf8_validate(readable, -1, nullptr));
    g_free(readable);

    gchar *digits = ov_util_encode_base16(data, size);
    gsize length = 0;
    guint8 *bytes = ov_util_decode_base16(digits, &length);
    OV_FUZZ_CHECK(length == size && (size == 0 || std::memcmp(bytes, data, size) == 0));
    g_free(bytes);
    g_free(digits);
    bytes = ov_util_decode_base16(text.c_str(), &length);
    if (bytes != nullptr) {
        gchar *again = ov_util_encode_base16(bytes, length);
        OV_FUZZ_CHECK(text == again);
        g_free(again);
    }
    g_free(bytes);
    ov_error_clear();
    return 0;
}
