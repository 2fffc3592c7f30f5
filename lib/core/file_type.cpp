#include "core/file_type.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/xml.h"

#include <array>
#include <string_view>

namespace
{

// Extensions are kept as wildcard patterns; the form with a period starts at
// the second character, the bare form at the third.
struct FileTypeRow {
    const char *name;
    const char *media_type;
    const char *default_pattern;
    const char *alternative_pattern;
};

constexpr std::array<FileTypeRow, OV_FILE_TYPE_COUNT> file_types = {{
    {"Remark codeset", nullptr, "*.codeset", nullptr},
    {"CSV", "text/csv", "*.csv", nullptr},
    {"Orvane object", nullptr, "*.orvane", nullptr},
    {"JPEG", "image/jpeg", "*.jpg", "*.jpeg"},
    {"Layout", nullptr, "*.layout", nullptr},
    {"Lock", nullptr, "*.lock", nullptr},
    {"MS Word", "application/msword", "*.doc", nullptr},
    {"OpenDocument text", "application/vnd.oasis.opendocument.text", "*.odt", nullptr},
    {"PDF", "application/pdf", "*.pdf", nullptr},
    {"PNG", "image/png", "*.png", nullptr},
    {"SVG", "image/svg+xml", "*.svg", nullptr},
    {"Template", nullptr, "*.template", nullptr},
    {"TIFF", "image/tiff", "*.tif", "*.tiff"},
    {"TrueType", "application/x-font-ttf", "*.ttf", nullptr},
    {"XML", "text/xml", "*.xml", nullptr},
}};

constexpr FileTypeRow unknown_type = {"Unknown", nullptr, "*.unknown", nullptr};

const FileTypeRow &row_of(OvFileType type)
{
    const int index = static_cast<int>(type);
    if (index < 0 || index >= OV_FILE_TYPE_COUNT)
        return unknown_type;
    return file_types[static_cast<size_t>(index)];
}

const char *skip(const char *pattern, size_t count)
{
    return pattern != nullptr ? pattern + count : nullptr;
}

} // namespace

const char *ov_file_type_get_name(OvFileType type)
{
    return row_of(type).name;
}

const char *ov_file_type_get_media_type(OvFileType type)
{
    return row_of(type).media_type;
}

const char *ov_file_type_get_default_file_name_extension(OvFileType type)
{
    return skip(row_of(type).default_pattern, 2);
}

const char *ov_file_type_get_default_file_name_extension_with_period(OvFileType type)
{
    return skip(row_of(type).default_pattern, 1);
}

const char *ov_file_type_get_default_file_name_extension_wildcard_pattern(OvFileType type)
{
    return row_of(type).default_pattern;
}

const char *ov_file_type_get_alternative_file_name_extension(OvFileType type)
{
    return skip(row_of(type).alternative_pattern, 2);
}

const char *ov_file_type_get_alternative_file_name_extension_with_period(OvFileType type)
{
    return skip(row_of(type).alternative_pattern, 1);
}

const char *ov_file_type_get_alternative_file_name_extension_wildcard_pattern(OvFileType type)
{
    return row_of(type).alternative_pattern;
}

gboolean ov_file_type_parse_media_type(OvFileType *type, const char *text)
{
    g_return_val_if_fail(type != nullptr && text != nullptr, FALSE);
    for (size_t i = 0; i < file_types.size(); ++i) {
        const char *media_type = file_types[i].media_type;
        if (media_type != nullptr && std::string_view(media_type) == text) {
            *type = static_cast<OvFileType>(i);
            return TRUE;
        }
    }
    ov_error_set("Unknown media type.");
    return FALSE;
}

gboolean ov_file_type_parse_media_type_from_required_attribute(OvFileType *type, const xmlNode *node,
                                                               const char *attribute_name)
{
    g_return_val_if_fail(type != nullptr && node != nullptr && attribute_name != nullptr, FALSE);
    const ov::GStr value = ov::gstr(ov_xml_get_required_attribute_value_as_utf8(node, attribute_name));
    if (!value)
        return FALSE;
    return ov_file_type_parse_media_type(type, value.get());
}
