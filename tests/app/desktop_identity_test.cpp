// The desktop files shipped with the program agree with the program: its
// identifier and icon, the file kinds it opens, and its version.
#include "app/app_icon.h"
#include "app/app_version.h"
#include "core/file_type.h"
#include "core/raii.h"

#include <gtest/gtest.h>

#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <string>

namespace
{

const std::string data = std::string(OV_SOURCE_DIR) + "/data/";
const std::string shipped = std::string(OV_SOURCE_DIR) + "/resources/install/";

using XPathContextPtr = ov::Owned<xmlXPathContext, xmlXPathFreeContext>;
using XPathObjectPtr = ov::Owned<xmlXPathObject, xmlXPathFreeObject>;

// The text of every node the expression selects, separated by spaces.
std::string select(const char *file, const char *expression)
{
    const ov::XmlDocPtr doc(xmlReadFile((data + file).c_str(), nullptr, XML_PARSE_NONET));
    if (!doc)
        return "(unreadable)";
    const XPathContextPtr context(xmlXPathNewContext(doc.get()));
    xmlXPathRegisterNs(context.get(), BAD_CAST "m",
                       BAD_CAST "http://www.freedesktop.org/standards/shared-mime-info");
    const XPathObjectPtr found(xmlXPathEvalExpression(BAD_CAST expression, context.get()));
    std::string texts;
    for (int i = 0; found && found->nodesetval && i < found->nodesetval->nodeNr; i++) {
        const ov::XmlCharPtr text(xmlNodeGetContent(found->nodesetval->nodeTab[i]));
        texts +=
            (texts.empty() ? "" : " ") + std::string(text ? reinterpret_cast<const char *>(text.get()) : "");
    }
    return texts;
}

std::string root_element_of(const std::string &path)
{
    const ov::XmlDocPtr doc(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET));
    return doc ? reinterpret_cast<const char *>(xmlDocGetRootElement(doc.get())->name) : "(unreadable)";
}

TEST(DesktopIdentity, EntryNamesTheProgramItsIconAndTheTemplateType)
{
    const std::string entry = data + ov_app_id + ".desktop";
    const ov::Owned<GKeyFile, g_key_file_free> keys(g_key_file_new());
    ov::GErrorPtr error;
    ASSERT_TRUE(g_key_file_load_from_file(keys.get(), entry.c_str(), G_KEY_FILE_NONE, ov::out(error)))
        << entry;
    const auto value = [&](const char *key) {
        const ov::GStr text = ov::gstr(g_key_file_get_string(keys.get(), "Desktop Entry", key, nullptr));
        return std::string(text ? text.get() : "(missing)");
    };
    EXPECT_EQ(value("Icon"), ov_app_icon_name);
    EXPECT_TRUE(g_file_test((data + "icons/" + ov_app_icon_name + ".svg").c_str(), G_FILE_TEST_IS_REGULAR));
    EXPECT_EQ(value("Name"), ov_app_name);
    // One file at a time: the program reads only its first argument.
    EXPECT_EQ(value("Exec"), "orvane-template-editor %f");
    EXPECT_EQ(value("MimeType"), "application/x-orvane-template;");

    const std::string metainfo = std::string(ov_app_id) + ".metainfo.xml";
    EXPECT_EQ(select(metainfo.c_str(), "/component/id"), ov_app_id);
    EXPECT_EQ(select(metainfo.c_str(), "/component/launchable"), std::string(ov_app_id) + ".desktop");
    EXPECT_EQ(select(metainfo.c_str(), "/component/provides/mediatype"), "application/x-orvane-template");
    EXPECT_EQ(select(metainfo.c_str(), "/component/name"), ov_app_name);
    EXPECT_EQ(select(metainfo.c_str(), "/component/releases/release[1]/@version"), ov_app_version);
}

TEST(DesktopIdentity, MimeTypesMatchTheFileKindsAndTheShippedFiles)
{
    struct Kind {
        const char *media_type;
        OvFileType type;
        const char *example;
    };
    const Kind kinds[] = {
        {"application/x-orvane-template", OV_FILE_TYPE_TEMPLATE, "templates/painting.template"},
        {"application/x-orvane-codeset", OV_FILE_TYPE_REMARK_CODESET, "codesets/condition_remarks.codeset"},
    };
    const std::string mime = std::string(ov_app_id) + ".mime.xml";
    EXPECT_EQ(select(mime.c_str(), "//m:mime-type/@type"),
              std::string(kinds[0].media_type) + " " + kinds[1].media_type);
    for (const Kind &kind : kinds) {
        const std::string type = std::string("//m:mime-type[@type='") + kind.media_type + "']";
        EXPECT_EQ(select(mime.c_str(), (type + "/m:glob/@pattern").c_str()),
                  ov_file_type_get_default_file_name_extension_wildcard_pattern(kind.type))
            << kind.media_type;
        EXPECT_EQ(select(mime.c_str(), (type + "/m:root-XML/@localName").c_str()),
                  root_element_of(shipped + kind.example))
            << kind.media_type;
    }
}

} // namespace
