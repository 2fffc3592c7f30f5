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
    return text != nullptr ? text : "-";
}

// Name, media type and extensions of one kind as "name|media type|.ext *.ext|.alt *.alt".
std::string described(OvFileType type)
{
    return or_none(ov_file_type_get_name(type)) + "|" + or_none(ov_file_type_get_media_type(type)) + "|" +
           or_none(ov_file_type_get_default_file_name_extension_with_period(type)) + " " +
           or_none(ov_file_type_get_default_file_name_extension_wildcard_pattern(type)) + "|" +
           or_none(ov_file_type_get_alternative_file_name_extension_with_period(type)) + " " +
           or_none(ov_file_type_get_alternative_file_name_extension_wildcard_pattern(type));
}

TEST_F(FileTypeTest, DescribesKnownAndUnknownKinds)
{
    for (auto [type, expected] :
         {std::pair{OV_FILE_TYPE_REMARK_CODESET, "Remark codeset|-|.codeset *.codeset|- -"},
          {OV_FILE_TYPE_JPEG, "JPEG|image/jpeg|.jpg *.jpg|.jpeg *.jpeg"},
          {OV_FILE_TYPE_OPENDOCUMENT_TEXT,
           "OpenDocument text|application/vnd.oasis.opendocument.text|.odt *.odt|- -"},
          {OV_FILE_TYPE_TIFF, "TIFF|image/tiff|.tif *.tif|.tiff *.tiff"},
          {OV_FILE_TYPE_XML, "XML|text/xml|.xml *.xml|- -"},
          {static_cast<OvFileType>(-1), "Unknown|-|.unknown *.unknown|- -"},
          {OV_FILE_TYPE_COUNT, "Unknown|-|.unknown *.unknown|- -"}})
        EXPECT_EQ(described(type), expected);

    // The short forms are the same texts seen from a later start; display
    // names key the remembered folders of file dialogs, so they differ.
    std::set<std::string> names;
    for (int i = 0; i < OV_FILE_TYPE_COUNT; ++i) {
        const auto type = static_cast<OvFileType>(i);
        names.insert(ov_file_type_get_name(type));
        EXPECT_STREQ(ov_file_type_get_default_file_name_extension(type),
                     ov_file_type_get_default_file_name_extension_with_period(type) + 1);
        const char *alternative = ov_file_type_get_alternative_file_name_extension_with_period(type);
        EXPECT_STREQ(ov_file_type_get_alternative_file_name_extension(type),
                     alternative ? alternative + 1 : nullptr);
    }
    EXPECT_EQ(names.size(), static_cast<size_t>(OV_FILE_TYPE_COUNT));
}

TEST_F(FileTypeTest, MediaTypesParseBackOnlyWhenExact)
{
    int with_media_type = 0;
    for (int i = 0; i < OV_FILE_TYPE_COUNT; ++i) {
        const auto type = static_cast<OvFileType>(i);
        OvFileType parsed = OV_FILE_TYPE_COUNT;
        if (const char *media_type = ov_file_type_get_media_type(type); media_type != nullptr) {
            ++with_media_type;
            EXPECT_TRUE(ov_file_type_parse_media_type(&parsed, media_type)) << media_type;
            EXPECT_EQ(parsed, type);
        }
    }
    EXPECT_EQ(with_media_type, 10);
    EXPECT_STREQ(ov_error_get(), "");
    for (const char *text : {"IMAGE/JPEG", "image/jpeg ", " image/jpeg", "image/jpg", "", "unknown"}) {
        OvFileType parsed = OV_FILE_TYPE_LOCK;
        EXPECT_FALSE(ov_file_type_parse_media_type(&parsed, text));
        EXPECT_EQ(parsed, OV_FILE_TYPE_LOCK);
        EXPECT_STREQ(ov_error_get(), "Unknown media type.") << text;
        ov_error_clear();
    }

    const ov::XmlDocPtr doc(xmlNewDoc(BAD_CAST "1.0"));
    xmlNode *node = xmlNewDocNode(doc.get(), nullptr, BAD_CAST "image", nullptr);
    xmlDocSetRootElement(doc.get(), node);
    OvFileType parsed = OV_FILE_TYPE_LOCK;
    for (auto [value, expected] :
         {std::pair{static_cast<const char *>(nullptr), "Missing XML attribute: media-type"},
          {"image/gif", "Unknown media type."},
          {"image/png", ""}}) {
        if (value != nullptr)
            xmlSetProp(node, BAD_CAST "media-type", BAD_CAST value);
        ov_error_clear();
        EXPECT_EQ(ov_file_type_parse_media_type_from_required_attribute(&parsed, node, "media-type") != FALSE,
                  !*expected);
        EXPECT_STREQ(ov_error_get(), expected);
        EXPECT_EQ(parsed, *expected ? OV_FILE_TYPE_LOCK : OV_FILE_TYPE_PNG);
    }
}

} // namespace
