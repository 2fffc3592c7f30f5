// The kinds of file the suite handles, with display name, media type and
// file name extensions.
#pragma once

#include <glib.h>
#include <libxml/tree.h>

// Any int outside 0 .. OV_FILE_TYPE_COUNT - 1 is the unknown kind (the fixed
// underlying type makes such values well defined).
enum OvFileType : int {
    OV_FILE_TYPE_REMARK_CODESET,
    OV_FILE_TYPE_CSV,
    OV_FILE_TYPE_OBJECT_FILE,
    OV_FILE_TYPE_JPEG,
    OV_FILE_TYPE_LAYOUT,
    OV_FILE_TYPE_LOCK,
    OV_FILE_TYPE_WORD_DOCUMENT,
    OV_FILE_TYPE_OPENDOCUMENT_TEXT,
    OV_FILE_TYPE_PDF,
    OV_FILE_TYPE_PNG,
    OV_FILE_TYPE_SVG,
    OV_FILE_TYPE_TEMPLATE,
    OV_FILE_TYPE_TIFF,
    OV_FILE_TYPE_TRUETYPE,
    OV_FILE_TYPE_XML,
    OV_FILE_TYPE_COUNT
};

// All results are static texts.
const char *ov_file_type_get_name(OvFileType type);
const char *ov_file_type_get_media_type(OvFileType type);
// "template", ".template", "*.template"; "unknown" forms for an unknown kind.
const char *ov_file_type_get_default_file_name_extension(OvFileType type);
const char *ov_file_type_get_default_file_name_extension_with_period(OvFileType type);
const char *ov_file_type_get_default_file_name_extension_wildcard_pattern(OvFileType type);
// Null unless the kind has an alternative extension (JPEG, TIFF).
const char *ov_file_type_get_alternative_file_name_extension(OvFileType type);
const char *ov_file_type_get_alternative_file_name_extension_with_period(OvFileType type);
const char *ov_file_type_get_alternative_file_name_extension_wildcard_pattern(OvFileType type);

// Finds the kind whose media type is exactly the text.
gboolean ov_file_type_parse_media_type(OvFileType *type, const char *text);
gboolean ov_file_type_parse_media_type_from_required_attribute(OvFileType *type, const xmlNode *node,
                                                               const char *attribute_name);
