#include "lang/langstr_xml.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <cstdlib>
#include <string>

#include "core/xml.h"
#include "lang/lang_test_util.h"

namespace
{

using namespace ov::test;
using LangstrXml = ErrorCleared;

// Parses "<root>body</root>" given as Latin-1.
ov::XmlDocPtr parse(const std::string &body)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<root>" + body + "</root>\n";
    ov::XmlDocPtr doc(xmlReadMemory(text.data(), int(text.size()), nullptr, nullptr, 0));
    EXPECT_NE(doc, nullptr) << body;
    return doc;
}

xmlNode *root(const ov::XmlDocPtr &doc)
{
    return xmlDocGetRootElement(doc.get());
}

// The error buffer's top sentence.
std::string top_sentence()
{
    std::string error = ov_error_get();
    return error.substr(0, error.find("\n\n"));
}

TEST_F(LangstrXml, Reading)
{
    struct {
        const char *body;
        gboolean compact;
        const char *expected;
    } cases[] = {
        {R"(<n lang="en">A</n><n lang="no">B</n><n lang="">C</n><n lang=" sv ">D</n>)", TRUE,
         "en-uk=A nb=B =C sv=D"},
        {R"(<other lang="da">X</other><n lang="da">Y</n><!-- n -->text<n lang="fi">Z</n>)", TRUE,
         "da=Y fi=Z"},
        // Duplicate locales: the later text wins, equal undefined texts merge.
        {R"(<n lang="">A</n><n lang="">A</n><n lang="da">A</n>)", TRUE, "da=A"},
        {"<n lang=\"sv\">  a \t\n b  </n><n lang=\"da\">x&#xD;&#x9;y</n>", TRUE, "sv=a b da=x y"},
        {"<n lang=\"sv\">  a \t\n b  </n><n lang=\"da\">x&#xD;&#x9;y</n>", FALSE, "sv=a  \n b da=x  y"},
    };
    for (const auto &c : cases) {
        ov::XmlDocPtr doc = parse(c.body);
        langstr *ls = reinterpret_cast<langstr *>(1);
        EXPECT_TRUE(ov_xml_parse_langstr(&ls, doc.get(), root(doc), "n", c.compact)) << ov_error_get();
        EXPECT_EQ(describe(LangstrPtr(ls).get()), c.expected) << c.body;
    }
}

TEST_F(LangstrXml, BadInputFailsTheWholeString)
{
    const char *const unsupported = "Unsupported locale in XML lang attribute.";
    const char *const empty = "Empty text content in XML where not allowed.";
    struct {
        const char *body, *message; // the top sentence
    } cases[] = {
        // clang-format off
        {R"(<n lang="sv">A</n><n lang="xx">B</n>)", unsupported},
        {R"(<n lang="sv">A</n><n>B</n>)", "Missing XML attribute: lang"},
        {"<n lang=\"sv\"> \t\n </n>", empty},
        // clang-format on
    };
    for (gboolean compact : {gboolean(FALSE), gboolean(TRUE)}) {
        for (const auto &c : cases) {
            ov::XmlDocPtr doc = parse(c.body);
            langstr *ls = nullptr;
            ov_error_clear();
            EXPECT_FALSE(ov_xml_parse_langstr(&ls, doc.get(), root(doc), "n", compact)) << c.body;
            EXPECT_EQ(ls, nullptr);
            EXPECT_EQ(top_sentence(), c.message) << c.body;
            ov_error_clear();
            EXPECT_EQ(ov_xml_parse_required_langstr(doc.get(), root(doc), "n", compact), nullptr);
            EXPECT_EQ(top_sentence(), c.message) << c.body;
        }
    }
    ov_error_clear();
    ov::XmlDocPtr doc = parse(R"(<m lang="sv">A</m>)");
    EXPECT_EQ(ov_xml_parse_required_langstr(doc.get(), root(doc), "n", TRUE), nullptr);
    EXPECT_STREQ(ov_error_get(), "Missing XML node: n");
}

TEST_F(LangstrXml, SingleTranslationMayRefuseTheEmptyTag)
{
    ov::XmlDocPtr doc = parse(R"(<n lang=" ">A</n>)");
    langstr *ls = nullptr;
    EXPECT_FALSE(
        ov_xml_parse_langstr_translation(&ls, doc.get(), xmlFirstElementChild(root(doc)), TRUE, TRUE));
    EXPECT_STREQ(ov_error_get(), "Empty XML lang attribute where not allowed.");
    EXPECT_TRUE(
        ov_xml_parse_langstr_translation(&ls, doc.get(), xmlFirstElementChild(root(doc)), FALSE, TRUE));
    EXPECT_EQ(describe(LangstrPtr(ls).get()), "=A");
}

TEST_F(LangstrXml, EveryKindOfTranslationRoundTripsInBothForms)
{
    // Defined and undefined ones, markup characters, a Latin-1 letter and a kept line feed.
    const std::string hand_written = "\t\t<name lang=\"sv\">H\xe9s</name>\n"
                                     "\t\t<name lang=\"en-uk\">&lt;a&amp;b&gt;</name>\n"
                                     "\t\t<name lang=\"\">&quot;quoted&quot;</name>\n"
                                     "\t\t<name lang=\"nb\">it&apos;s</name>\n"
                                     "\t\t<name lang=\"\">two&#xA;lines</name>\n";
    ov::XmlDocPtr doc = parse(hand_written);
    LangstrPtr ls(ov_xml_parse_required_langstr(doc.get(), root(doc), "name", FALSE));
    EXPECT_EQ(describe(ls.get()), "sv=H\xe9s en-uk=<a&b> =\"quoted\" nb=it's =two\nlines");

    char *bytes = nullptr;
    std::size_t size = 0;
    FILE *stream = open_memstream(&bytes, &size);
    EXPECT_TRUE(ov_xml_write_langstr(stream, ls.get(), "name", 2));
    EXPECT_TRUE(ov_xml_write_langstr(stream, nullptr, "name", 2));
    std::fclose(stream);
    EXPECT_EQ(std::string(bytes, size), hand_written);
    std::free(bytes);

    ov::XmlDocPtr tree(ov_xml_new_doc());
    xmlNode *tree_root = ov_xml_add_root_element(tree.get(), "root");
    EXPECT_TRUE(ov_xml_add_langstr(tree_root, "name", ls.get()));
    EXPECT_TRUE(ov_xml_add_langstr(tree_root, "empty", nullptr));
    std::string written = ov::gstr(ov_xml_write_to_string(tree.get(), nullptr)).get();
    EXPECT_EQ(written.find("empty"), std::string::npos);
    ov::XmlDocPtr back(xmlReadMemory(written.data(), int(written.size()), nullptr, nullptr, 0));
    LangstrPtr again(ov_xml_parse_required_langstr(back.get(), root(back), "name", FALSE));
    EXPECT_TRUE(ov_langstr_is_identical(again.get(), ls.get())) << describe(again.get());
}

} // namespace
