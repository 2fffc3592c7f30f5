#include "lang/langstr_xml.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <string>

#include "core/error.h"
#include "core/raii.h"
#include "core/util.h"
#include "core/xml.h"
#include "lang/lang_test_util.h"
#include "support/test_support.h"

namespace
{

using ov::test::describe;
using ov::test::langstr_of;
using ov::test::LangstrPtr;
using ov::test::locale;

struct LangstrXml : ::testing::Test {
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

// Parses "<root>body</root>" given as Latin-1.
ov::XmlDocPtr parse(const std::string &body)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<root>" + body + "</root>\n";
    ov::XmlDocPtr doc(xmlReadMemory(text.data(), int(text.size()), nullptr, nullptr, 0));
    EXPECT_NE(doc, nullptr) << body;
    return doc;
}

xmlNode *root_of(const ov::XmlDocPtr &doc)
{
    return xmlDocGetRootElement(doc.get());
}

// The error buffer's top sentence.
std::string top_sentence()
{
    std::string error = ov_error_get();
    return error.substr(0, error.find("\n\n"));
}

// A Latin-1 langstr with one translation of every kind: defined, legacy
// read (written with its current tag), two undefined ones, markup
// characters, a Latin-1 letter and a kept line feed.
const char *const every_kind = "sv=H\xe9s en-uk=<a&b> =\"quoted\" nb=it's =two\nlines";

LangstrPtr every_kind_langstr()
{
    LangstrPtr ls;
    langstr *raw = nullptr;
    for (auto [tag, text] :
         {std::pair{"sv", "H\xe9s"}, std::pair{"en-uk", "<a&b>"}, std::pair{"", "\"quoted\""},
          std::pair{"nb", "it's"}, std::pair{"", "two\nlines"}})
        ov_langstr_set_translation(&raw, locale(tag), text);
    ls.reset(raw);
    return ls;
}

TEST_F(LangstrXml, ReadingAcceptsLegacyAndEmptyTags)
{
    struct Case {
        const char *body;
        gboolean compact;
        const char *expected;
    } cases[] = {
        {"<n lang=\"en\">A</n><n lang=\"no\">B</n><n lang=\"\">C</n><n lang=\"de\">D</n>", TRUE,
         "en-uk=A nb=B =C de-de=D"},
        {"<n lang=\" sv \">A</n>", TRUE, "sv=A"},
        {"<other lang=\"da\">X</other><n lang=\"da\">Y</n><!-- n -->text<n lang=\"fi\">Z</n>", TRUE,
         "da=Y fi=Z"},
        {"", TRUE, ""},
        // Duplicates: the later text wins for a locale, equal undefined texts merge.
        {"<n lang=\"sv\">A</n><n lang=\"sv\">B</n>", TRUE, "sv=B"},
        {"<n lang=\"en\">A</n><n lang=\"en-uk\">B</n>", TRUE, "en-uk=B"},
        {"<n lang=\"\">A</n><n lang=\"\">A</n><n lang=\"da\">A</n>", TRUE, "da=A"},
        // Entities and Latin-1 survive.
        {"<n lang=\"sv\">&lt;&amp;&#xE9;\xe9</n>", TRUE, "sv=<&\xe9\xe9"},
    };
    for (const Case &c : cases) {
        ov::XmlDocPtr doc = parse(c.body);
        langstr *ls = reinterpret_cast<langstr *>(1);
        ASSERT_TRUE(ov_xml_parse_langstr(&ls, doc.get(), root_of(doc), "n", c.compact))
            << c.body << ov_error_get();
        LangstrPtr owned(ls);
        EXPECT_EQ(describe(ls), c.expected) << c.body;
    }
}

TEST_F(LangstrXml, CompactOrDetabifiedText)
{
    ov::XmlDocPtr doc = parse("<n lang=\"sv\">  a \t\n b  </n><n lang=\"da\">x&#xD;&#x9;y</n>");
    LangstrPtr compact(ov_xml_parse_required_langstr(doc.get(), root_of(doc), "n", TRUE));
    EXPECT_STREQ(ov_langstr_get_text_for_locale(compact.get(), locale("sv")), "a b");
    EXPECT_STREQ(ov_langstr_get_text_for_locale(compact.get(), locale("da")), "x y");
    LangstrPtr detabified(ov_xml_parse_required_langstr(doc.get(), root_of(doc), "n", FALSE));
    EXPECT_STREQ(ov_langstr_get_text_for_locale(detabified.get(), locale("sv")), "a  \n b");
    EXPECT_STREQ(ov_langstr_get_text_for_locale(detabified.get(), locale("da")), "x  y");
}

TEST_F(LangstrXml, BadInputFailsTheWholeString)
{
    struct Case {
        const char *body;
        const char *message; // the top sentence; null: any
    } cases[] = {
        {"<n lang=\"sv\">A</n><n lang=\"xx\">B</n>", "Unsupported locale in XML lang attribute."},
        {"<n lang=\"EN-UK\">A</n>", "Unsupported locale in XML lang attribute."},
        {"<n lang=\"sv-SE\">A</n>", "Unsupported locale in XML lang attribute."},
        {"<n lang=\"sv\">A</n><n>B</n>", "Missing XML attribute: lang"},
        {"<n lang=\"sv\xe9\">A</n>", "Invalid XML attribute content."},
        {"<n lang=\"sv\">A</n><n lang=\"da\"></n>", "Empty text content in XML where not allowed."},
        {"<n lang=\"sv\"> \t\n </n>", "Empty text content in XML where not allowed."},
        {"<n lang=\"sv\"><!-- only a comment --></n>", nullptr},
        {"<n lang=\"sv\">&#x20AC;</n>", "Invalid XML node content."},
    };
    for (gboolean compact : {gboolean(TRUE), gboolean(FALSE)}) {
        for (const Case &c : cases) {
            ov_error_clear();
            ov::XmlDocPtr doc = parse(c.body);
            langstr *ls = nullptr;
            EXPECT_FALSE(ov_xml_parse_langstr(&ls, doc.get(), root_of(doc), "n", compact)) << c.body;
            EXPECT_EQ(ls, nullptr);
            const std::string message = c.message != nullptr ? c.message : top_sentence();
            EXPECT_NE(message, "");
            EXPECT_EQ(top_sentence(), message) << c.body;
            ov_error_clear();
            EXPECT_EQ(ov_xml_parse_required_langstr(doc.get(), root_of(doc), "n", compact), nullptr);
            EXPECT_EQ(top_sentence(), message) << c.body;
        }
    }
    ov_error_clear();
    ov::XmlDocPtr doc = parse("<m lang=\"sv\">A</m>");
    EXPECT_EQ(ov_xml_parse_required_langstr(doc.get(), root_of(doc), "n", TRUE), nullptr);
    EXPECT_STREQ(ov_error_get(), "Missing XML node: n");
}

TEST_F(LangstrXml, SingleTranslationMayRefuseTheEmptyTag)
{
    ov::XmlDocPtr doc = parse("<n lang=\" \">A</n><n lang=\"\">B</n><n lang=\"sv\">C</n>");
    xmlNode *blank = xmlFirstElementChild(root_of(doc));
    xmlNode *empty = xmlNextElementSibling(blank);
    xmlNode *swedish = xmlNextElementSibling(empty);
    langstr *raw = nullptr;
    for (xmlNode *element : {blank, empty}) {
        ov_error_clear();
        EXPECT_FALSE(ov_xml_parse_langstr_translation(&raw, doc.get(), element, TRUE, TRUE));
        EXPECT_STREQ(ov_error_get(), "Empty XML lang attribute where not allowed.");
    }
    EXPECT_TRUE(ov_xml_parse_langstr_translation(&raw, doc.get(), swedish, TRUE, TRUE));
    EXPECT_TRUE(ov_xml_parse_langstr_translation(&raw, doc.get(), blank, FALSE, TRUE));
    LangstrPtr ls(raw);
    EXPECT_EQ(describe(ls.get()), "sv=C =A");
}

TEST_F(LangstrXml, HandWrittenFormIsExactAndReadsBack)
{
    LangstrPtr ls = every_kind_langstr();
    ASSERT_EQ(describe(ls.get()), every_kind);
    ov::test::TempDir dir;
    const std::string path = dir.file("langstr.xml");
    {
        ov::FilePtr file(std::fopen(path.c_str(), "wb"));
        ASSERT_NE(file, nullptr);
        ASSERT_TRUE(ov_util_fprintf(file.get(), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<root>\n"));
        ASSERT_TRUE(ov_xml_write_langstr(file.get(), ls.get(), "name", 2));
        ASSERT_TRUE(ov_xml_write_langstr(file.get(), nullptr, "name", 2));
        ASSERT_TRUE(ov_util_fprintf(file.get(), "</root>\n"));
    }
    EXPECT_EQ(ov::test::read_file(path), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<root>\n"
                                         "\t\t<name lang=\"sv\">H\xe9s</name>\n"
                                         "\t\t<name lang=\"en-uk\">&lt;a&amp;b&gt;</name>\n"
                                         "\t\t<name lang=\"\">&quot;quoted&quot;</name>\n"
                                         "\t\t<name lang=\"nb\">it&apos;s</name>\n"
                                         "\t\t<name lang=\"\">two&#xA;lines</name>\n"
                                         "</root>\n");

    ov::XmlDocPtr doc(ov_xml_parse_file(path.c_str()));
    ASSERT_NE(doc, nullptr) << ov_error_get();
    LangstrPtr back(ov_xml_parse_required_langstr(doc.get(), root_of(doc), "name", FALSE));
    EXPECT_TRUE(ov_langstr_is_identical(back.get(), ls.get())) << describe(back.get());
}

TEST_F(LangstrXml, TreeFormReadsBack)
{
    LangstrPtr ls = every_kind_langstr();
    ov::XmlDocPtr doc(ov_xml_new_doc());
    xmlNode *root = ov_xml_add_root_element(doc.get(), "root");
    ASSERT_TRUE(ov_xml_add_langstr(root, "name", ls.get()));
    ASSERT_TRUE(ov_xml_add_langstr(root, "empty", nullptr));
    ov::GStr text(ov_xml_write_to_string(doc.get(), nullptr));
    ASSERT_NE(text, nullptr);
    std::string written = text.get();
    EXPECT_NE(written.find("<name lang=\"sv\">H&#xE9;s</name>"), std::string::npos) << written;
    EXPECT_NE(written.find("<name lang=\"\">\"quoted\"</name>"), std::string::npos) << written;
    EXPECT_EQ(written.find("empty"), std::string::npos);

    ov::XmlDocPtr back_doc(xmlReadMemory(written.data(), int(written.size()), nullptr, nullptr, 0));
    ASSERT_NE(back_doc, nullptr);
    LangstrPtr back(ov_xml_parse_required_langstr(back_doc.get(), root_of(back_doc), "name", FALSE));
    EXPECT_TRUE(ov_langstr_is_identical(back.get(), ls.get())) << describe(back.get());
}

TEST_F(LangstrXml, WriteFailureIsReported)
{
    LangstrPtr ls = langstr_of("sv=Hus");
    ov::FilePtr file(std::fopen("/dev/full", "wb"));
    ASSERT_NE(file, nullptr);
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    EXPECT_FALSE(ov_xml_write_langstr(file.get(), ls.get(), "name", 1));
    EXPECT_STREQ(ov_error_get(), "File I/O error when writing to file.");
}

} // namespace
