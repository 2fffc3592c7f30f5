#include "core/file_type.h"

#include "core/error.h"
#include "core/raii.h"

#include <gtest/gtest.h>

#include <libxml/tree.h>

#include <set>
#include <string>

namespace
{

class FileTypeTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

std::string or_none(const char *text)
{
    return text != nullptr ? text : "(none)";
}

// The three forms of an extension are the same text seen from different
// starts, for every kind including the unknown one.
TEST_F(FileTypeTest, ExtensionFormsAgreeForEveryKind)
{
    for (int i = -1; i <= OV_FILE_TYPE_COUNT; ++i) {
        SCOPED_TRACE(i);
        const auto type = static_cast<OvFileType>(i);
        const std::string extension = ov_file_type_get_default_file_name_extension(type);
        EXPECT_FALSE(extension.empty());
        EXPECT_EQ(ov_file_type_get_default_file_name_extension_with_period(type), "." + extension);
        EXPECT_EQ(ov_file_type_get_default_file_name_extension_wildcard_pattern(type), "*." + extension);

        const char *alternative = ov_file_type_get_alternative_file_name_extension(type);
        if (alternative == nullptr) {
            EXPECT_EQ(ov_file_type_get_alternative_file_name_extension_with_period(type), nullptr);
            EXPECT_EQ(ov_file_type_get_alternative_file_name_extension_wildcard_pattern(type), nullptr);
        } else {
            EXPECT_EQ(or_none(ov_file_type_get_alternative_file_name_extension_with_period(type)),
                      std::string(".") + alternative);
            EXPECT_EQ(or_none(ov_file_type_get_alternative_file_name_extension_wildcard_pattern(type)),
                      std::string("*.") + alternative);
        }
    }
}

TEST_F(FileTypeTest, DescribesKnownAndUnknownKinds)
{
    struct Case {
        OvFileType type;
        const char *name;
        const char *media_type;
        const char *extension;
        const char *alternative;
    };
    const Case cases[] = {
        {OV_FILE_TYPE_REMARK_CODESET, "Remark codeset", nullptr, "codeset", nullptr},
        {OV_FILE_TYPE_JPEG, "JPEG", "image/jpeg", "jpg", "jpeg"},
        {OV_FILE_TYPE_OPENDOCUMENT_TEXT, "OpenDocument text", "application/vnd.oasis.opendocument.text",
         "odt", nullptr},
        {OV_FILE_TYPE_TEMPLATE, "Template", nullptr, "template", nullptr},
        {OV_FILE_TYPE_TIFF, "TIFF", "image/tiff", "tif", "tiff"},
        {OV_FILE_TYPE_XML, "XML", "text/xml", "xml", nullptr},
        {static_cast<OvFileType>(-1), "Unknown", nullptr, "unknown", nullptr},
        {OV_FILE_TYPE_COUNT, "Unknown", nullptr, "unknown", nullptr},
        {static_cast<OvFileType>(1000), "Unknown", nullptr, "unknown", nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_STREQ(ov_file_type_get_name(c.type), c.name);
        EXPECT_STREQ(ov_file_type_get_media_type(c.type), c.media_type);
        EXPECT_STREQ(ov_file_type_get_default_file_name_extension(c.type), c.extension);
        EXPECT_STREQ(ov_file_type_get_alternative_file_name_extension(c.type), c.alternative);
    }
    EXPECT_STREQ(ov_file_type_get_default_file_name_extension_with_period(OV_FILE_TYPE_TEMPLATE),
                 ".template");
    EXPECT_STREQ(ov_file_type_get_default_file_name_extension_wildcard_pattern(OV_FILE_TYPE_COUNT),
                 "*.unknown");
}

// Display names key the remembered folders of file dialogs.
TEST_F(FileTypeTest, DisplayNamesAreDistinct)
{
    std::set<std::string> names;
    for (int i = 0; i < OV_FILE_TYPE_COUNT; ++i)
        names.insert(ov_file_type_get_name(static_cast<OvFileType>(i)));
    EXPECT_EQ(names.size(), static_cast<size_t>(OV_FILE_TYPE_COUNT));
    EXPECT_EQ(names.count("Unknown"), 0u);
}

TEST_F(FileTypeTest, EveryMediaTypeParsesBackToItsKind)
{
    int with_media_type = 0;
    for (int i = 0; i < OV_FILE_TYPE_COUNT; ++i) {
        const auto type = static_cast<OvFileType>(i);
        const char *media_type = ov_file_type_get_media_type(type);
        if (media_type == nullptr)
            continue;
        ++with_media_type;
        SCOPED_TRACE(media_type);
        OvFileType parsed = OV_FILE_TYPE_COUNT;
        EXPECT_TRUE(ov_file_type_parse_media_type(&parsed, media_type));
        EXPECT_EQ(parsed, type);
    }
    EXPECT_EQ(with_media_type, 10);
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(FileTypeTest, MediaTypesMustMatchExactly)
{
    for (const char *text : {"IMAGE/JPEG", "Image/jpeg", "image/jpeg ", " image/jpeg", "image/jpg", "",
                             "image", "unknown", "application/octet-stream"}) {
        SCOPED_TRACE(text);
        ov_error_clear();
        OvFileType parsed = OV_FILE_TYPE_LOCK;
        EXPECT_FALSE(ov_file_type_parse_media_type(&parsed, text));
        EXPECT_EQ(parsed, OV_FILE_TYPE_LOCK);
        EXPECT_STREQ(ov_error_get(), "Unknown media type.");
    }
}

TEST_F(FileTypeTest, ParsesTheMediaTypeOfARequiredAttribute)
{
    const ov::XmlDocPtr doc(xmlNewDoc(BAD_CAST "1.0"));
    xmlNode *node = xmlNewDocNode(doc.get(), nullptr, BAD_CAST "image", nullptr);
    xmlDocSetRootElement(doc.get(), node);

    OvFileType parsed = OV_FILE_TYPE_LOCK;
    EXPECT_FALSE(ov_file_type_parse_media_type_from_required_attribute(&parsed, node, "media-type"));
    EXPECT_STREQ(ov_error_get(), "Missing XML attribute: media-type");

    xmlNewProp(node, BAD_CAST "media-type", BAD_CAST "image/gif");
    ov_error_clear();
    EXPECT_FALSE(ov_file_type_parse_media_type_from_required_attribute(&parsed, node, "media-type"));
    EXPECT_STREQ(ov_error_get(), "Unknown media type.");
    EXPECT_EQ(parsed, OV_FILE_TYPE_LOCK);

    xmlSetProp(node, BAD_CAST "media-type", BAD_CAST "image/png");
    ov_error_clear();
    EXPECT_TRUE(ov_file_type_parse_media_type_from_required_attribute(&parsed, node, "media-type"));
    EXPECT_EQ(parsed, OV_FILE_TYPE_PNG);
    EXPECT_STREQ(ov_error_get(), "");
}

} // namespace
