#include "core/xml.h"

#include "core/raii.h"
#include "core/zip.h"
#include "core_test.h"
#include "zip_fixture.h"

#include <libxml/parser.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace
{

using namespace ov::test;

class XmlTest : public CoreTest
{
  protected:
    xmlDoc *parse(const std::string &text)
    {
        write_file(dir_.file("doc.xml"), text);
        return docs_.emplace_back(ov_xml_parse_file(dir_.file("doc.xml").c_str())).get();
    }

    static std::string error_text() { return ov_error_get(); }
    TempDir dir_;
    std::vector<ov::XmlDocPtr> docs_;
};

// Twelve undefined prefixes give 36 lines of parser output, cut to fifteen.
TEST_F(XmlTest, BadFilesFailFastWithLibxmlMessageUnderTheSentence)
{
    const std::string parse_sentence = "Could not parse XML data.\n\n";
    std::string laughs = "<!DOCTYPE l [<!ENTITY l0 \"lol\">", prefixes = "<a>";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY l" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i)
            laughs += "&l" + std::to_string(level - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><l>&l9;</l>";
    for (const char *prefix : {"p0", "p1", "p2", "p3", "p4", "p5", "p6", "p7", "p8", "p9", "pA", "pB"})
        prefixes += std::string("<") + prefix + ":b/>";
    // clang-format off
    const std::vector<std::pair<std::string, const char *>> cases = {
        {"<a><b>text", "Premature end of data"}, {"<a>caf\xE9</a>", "Input is not proper UTF-8"},
        {laughs, "Detected an entity reference loop"},
        {"<a>" + std::string(10000001, 'x') + "</a>", "huge text node"},
        {prefixes, "Namespace prefix p0 on b is not defined"},
    };
    // clang-format on
    for (const auto &[text, libxml_says] : cases) {
        SCOPED_TRACE(libxml_says);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(parse(text), nullptr);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
        const std::string error = error_text();
        EXPECT_TRUE(error.starts_with(parse_sentence)) << error;
        EXPECT_NE(error.find(libxml_says), std::string::npos) << error;
        EXPECT_TRUE(g_utf8_validate(error.c_str(), -1, nullptr)) << error;
        // The sentence, at most fifteen lines, and the note when cut.
        const bool cut = error.ends_with("\n\n(Error message truncated.)");
        EXPECT_TRUE(cut || text != prefixes) << error;
        const long lines = std::count(error.begin(), error.end(), '\n');
        EXPECT_TRUE(cut ? lines == 2 + 14 + 2 : lines <= 2 + 14) << error;
    }

    // A missing file is no error for parse-if-exists; a malformed one is.
    const std::string path = dir_.file("a.xml");
    xmlDoc *doc = reinterpret_cast<xmlDoc *>(&doc);
    EXPECT_TRUE(ov_xml_parse_file_if_exists(&doc, path.c_str()) && doc == nullptr && error_text().empty());
    write_file(path, "<a>");
    doc = reinterpret_cast<xmlDoc *>(&doc);
    EXPECT_FALSE(ov_xml_parse_file_if_exists(&doc, path.c_str()) || doc != nullptr);
    EXPECT_TRUE(error_text().starts_with(parse_sentence)) << error_text();
}

// External entities and DTDs come only from files in the document's folder;
// whatever leads outside is refused and its content shows nowhere.
TEST_F(XmlTest, ExternalEntitiesLoadOnlyFromTheDocumentsFolder)
{
    TempDir outside;
    const std::string secret = outside.file("secret");
    write_file(secret, "SECRET");
    write_file(outside.file("secret.dtd"), "<!ENTITY x \"SECRET\">");
    write_file(dir_.file("beside.ent"), "beside");
    write_file(dir_.file("beside.dtd"), "<!ENTITY x \"from the dtd\">");
    ASSERT_EQ(symlink(secret.c_str(), dir_.file("link").c_str()), 0);
    ASSERT_EQ(mkdir(dir_.file("sub").c_str(), 0755), 0);
    write_file(dir_.file("sub/nested.ent"), "<!ENTITY x SYSTEM \"../beside.ent\">");
    const std::string relative_secret = "../" + str(g_path_get_basename(outside.path().c_str())) + "/secret";
    const xmlExternalEntityLoader loader = xmlGetExternalEntityLoader();
    const struct {
        std::string address;
        bool parameter;
        const char *expected; // null: refused
    } cases[] = {
        // clang-format off
        {"beside.ent", false, "beside"}, {dir_.file("beside.ent"), false, "beside"},
        {"file://" + dir_.file("beside.ent"), false, "beside"}, {"beside.dtd", true, "from the dtd"},
        {"sub/nested.ent", true, "beside"}, {secret, false, nullptr}, {"file://" + secret, false, nullptr},
        {relative_secret, false, nullptr}, {"link", false, nullptr}, {"sub/../link", false, nullptr},
        {outside.file("secret.dtd"), true, nullptr}, {"/dev/zero", false, nullptr}, {"http://127.0.0.1:9/x", false, nullptr},
        // clang-format on
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.address);
        const std::string declaration = c.parameter ? "<!ENTITY % p SYSTEM \"" + c.address + "\"> %p;"
                                                    : "<!ENTITY x SYSTEM \"" + c.address + "\">";
        xmlDoc *doc = parse("<!DOCTYPE a [" + declaration + "]><a>&x;</a>");
        if (c.expected != nullptr) {
            ASSERT_NE(doc, nullptr) << error_text();
            EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc, xmlDocGetRootElement(doc))), c.expected);
        } else {
            EXPECT_EQ(doc, nullptr);
            EXPECT_EQ(error_text(),
                      "Could not parse XML data.\n\nExternal entity outside the document's folder refused: " +
                          c.address);
        }
        EXPECT_EQ(xmlGetExternalEntityLoader(), loader);
    }
    // The external subset the same.
    EXPECT_EQ(parse("<!DOCTYPE a SYSTEM \"" + outside.file("secret.dtd") + "\"><a>&x;</a>"), nullptr);
    EXPECT_EQ(error_text().find("SECRET"), std::string::npos);
    xmlDoc *doc = parse("<!DOCTYPE a SYSTEM \"beside.dtd\"><a>&x;</a>");
    ASSERT_NE(doc, nullptr) << error_text();
    EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc, xmlDocGetRootElement(doc))), "from the dtd");
}

TEST_F(XmlTest, ParsesZipEntries)
{
    // "damaged" is stored so its bytes can be changed.
    const std::string bytes = make_zip({{"big.xml", "<a>" + std::string(100000, 'z') + "</a>"},
                                        {"damaged.xml", "<a>" + std::string(5000, 'q') + "</a>", true}});
    const std::string damaged = damage(bytes, std::string(100, 'q'), std::string(100, 'Q'));
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(damaged.data(), damaged.size()));
    ASSERT_TRUE(archive) << error_text();

    ov::XmlDocPtr doc(ov_xml_parse_zip_file(archive.get(), "big.xml"));
    ASSERT_TRUE(doc) << error_text();
    EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc.get(), xmlDocGetRootElement(doc.get()))).size(),
              100000u);
    EXPECT_EQ(ov_xml_parse_zip_file(archive.get(), "damaged.xml"), nullptr);
    EXPECT_TRUE(error_text().starts_with("Could not parse compressed XML data.\n\n")) << error_text();
    EXPECT_NE(error_text().find("CRC"), std::string::npos) << error_text();
}

// The getters share one reader per kind; each kind is read once here.
TEST_F(XmlTest, GettersReadValuesOrFailWithTheReason)
{
    xmlDoc *doc =
        parse("<r e='&#xE9;' euro='&#x20AC;' blank='' b='True' n='42' d='1.5mm'>"
              "<t> a &amp;\t<![CDATA[<b>]]>\n x </t><euro>&#x20AC;</euro><blank> </blank><c><!--c--></c>"
              "<twice/><twice/><deep><inner/></deep></r>");
    xmlNode *r = ov_xml_get_root_element(doc), *child = r;
    ASSERT_NE(r, nullptr) << error_text();
    EXPECT_TRUE(ov_xml_node_has_child_node_with_name(r, "deep") &&
                !ov_xml_node_has_child_node_with_name(r, "inner"));
    EXPECT_EQ(ov_xml_get_root_element(ov::XmlDocPtr(ov_xml_new_doc()).get()), nullptr);
    EXPECT_EQ(error_text(), "Missing root element in XML tree.");
    gchar *text = nullptr;
    int number = 7;
    double real = 7;
    EXPECT_TRUE(ov_xml_get_attribute_value_as_utf8(&text, r, "none") && text == nullptr);
    EXPECT_EQ(str(ov_xml_get_nonempty_required_attribute_value_as_latin1(r, "e")), "\xE9");
    EXPECT_TRUE(ov_xml_get_attribute_value_as_int_in_range_with_fallback(&number, r, "none", 0, 41, 99));
    EXPECT_EQ(number, 99);
    EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc, ov_xml_get_required_distinct_child_node(r, "t"))),
              " a &\t<b>\n x ");
    EXPECT_EQ(
        str(ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(doc, r, "t")),
        "a & <b> x");
    EXPECT_TRUE(ov_xml_get_distinct_child_node(&child, r, "inner") && child == nullptr);

    const std::string latin1 = " content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed.";
    // clang-format off
    const std::pair<std::function<bool()>, std::string> failures[] = {
        {[&] { return !ov_xml_get_attribute_value_as_ascii(&text, r, "e"); }, "Invalid XML attribute content.\n\nNon-ascii byte found where not allowed."},
        {[&] { return !ov_xml_get_attribute_value_as_latin1(&text, r, "euro"); }, "Invalid XML attribute" + latin1},
        {[&] { return !ov_xml_get_nonempty_required_attribute_value_as_latin1(r, "blank"); }, "Empty XML attribute: blank"},
        {[&] { return !ov_xml_get_required_attribute_value_as_boolean(&number, r, "none"); }, "Missing XML attribute: none"},
        {[&] { return !ov_xml_get_attribute_value_as_boolean_with_fallback(&number, r, "b", TRUE); }, "Invalid boolean value in XML attribute: b"},
        {[&] { return !ov_xml_get_attribute_value_as_int_in_range_with_fallback(&number, r, "n", 0, 41, 99); },
         "Invalid integer value in XML attribute: n\n\nInteger value out of valid range (too large)."},
        {[&] { return !ov_xml_get_attribute_value_as_double_in_range_with_fallback(&real, r, "d", 0, 2, .25); },
         "Invalid floating point number in XML attribute: d\n\nInvalid floating-point value."},
        {[&] { return !ov_xml_get_distinct_child_node(&child, r, "twice"); }, "Duplicate XML nodes found where not allowed."},
        {[&] { return !ov_xml_get_text_content_from_distinct_child_node_as_latin1(&text, doc, r, "euro"); }, "Invalid XML node" + latin1},
        {[&] { return !ov_xml_get_text_content_as_utf8(doc, ov_xml_get_required_distinct_child_node(r, "c")); }, "Error reading text content from XML node."},
        {[&] { return !ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1(&text, doc, r, "blank"); },
         "Missing text content in XML.\n\nText content is empty."},
        {[&] { return !ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(doc, r, "none"); }, "Missing XML node: none"},
    };
    // clang-format on
    for (const auto &[fails, error] : failures) {
        ov_error_clear();
        EXPECT_TRUE(fails()) << error;
        EXPECT_EQ(error_text(), error);
    }
    EXPECT_TRUE(number == 99 && real == 7) << "numbers are left as they were";
}

TEST_F(XmlTest, WritesStringsFilesAndStreamsThatReadBackOrFailsWithAMessage)
{
    ov::XmlDocPtr doc(ov_xml_new_doc());
    xmlNode *root = ov_xml_add_root_element(doc.get(), "template");
    ov_xml_set_attribute(root, "name", "a<b>&\"c\"");
    ov_xml_set_attribute_with_latin1_content(root, "author", "Jos\xE9");
    ov_xml_set_attribute_to_boolean(root, "yes", TRUE);
    ov_xml_set_attribute_to_boolean(root, "no", FALSE);
    ov_xml_set_attribute_to_int(root, "min", G_MININT);
    ov_xml_set_attribute_to_double(root, "big", -1.5e300);
    xmlNode *group = ov_xml_add_child_element(root, "group");
    ov_xml_add_child_element_with_utf8_text_content(group, "u", "<&>\xE2\x82\xAC");
    ov_xml_add_child_element_with_latin1_text_content(group, "l", "\xE9\r");
    const std::string expected =
        "<?xml version=\"1.0\"?>\n"
        "<template name=\"a&lt;b&gt;&amp;&quot;c&quot;\" author=\"Jos&#xE9;\" yes=\"true\""
        " no=\"false\" min=\"-2147483648\" big=\"-1.5e+300\"><group>"
        "<u>&lt;&amp;&gt;&#x20AC;</u><l>&#xE9;&#xD;</l></group></template>\n";
    gsize length = 1;
    EXPECT_EQ(str(ov_xml_write_to_string(doc.get(), &length)), expected) << error_text();
    EXPECT_EQ(length, expected.size());
    EXPECT_EQ(str(ov_xml_write_to_string(doc.get(), nullptr)), expected);

    ov_xml_set_attribute_to_double(group, "scale", 1.0 / 3.0);
    ov_xml_add_child_element_with_latin1_text_content(group, "note", " multi\nline \xFF ");
    const std::string path = dir_.file("out.xml");
    for (const char *encoding : {"UTF-8", "ISO-8859-1"}) {
        SCOPED_TRACE(encoding);
        ASSERT_TRUE(ov_xml_write_to_file(doc.get(), path.c_str(), encoding)) << error_text();
        const std::string bytes = read_file(path);
        EXPECT_NE(bytes.find("\n  <group"), std::string::npos) << "indented: " << bytes;
        EXPECT_NE(bytes.find(encoding), std::string::npos) << bytes;
    }

    // Failure messages of building and of both writers.
    ov::FilePtr stream(std::tmpfile()), read_only(std::fopen("/dev/null", "rb"));
    const std::string no_folder = dir_.file("no/such/folder.xml");
    // clang-format off
    const std::vector<std::pair<std::function<bool()>, std::string>> cases = {
        {[&] { return !ov_xml_write_to_string(nullptr, &length) && length == 0; }, "Could not write XML data to memory buffer."},
        {[&] { return !ov_xml_write_to_file(doc.get(), no_folder.c_str(), "UTF-8"); }, "Cannot open file."},
        {[&] { return !ov_xml_write_to_file(doc.get(), "/dev/full", "UTF-8"); }, "Could not write XML data."},
        {[&] { return !ov_xml_write_to_stream(doc.get(), stream.get(), "X-NOWHERE"); }, "Could not create XML saving context for file."},
        {[&] { return !ov_xml_write_string(read_only.get(), "x"); }, "File I/O error when writing to file."},
    };
    // clang-format on
    for (const auto &[fails, error] : cases) {
        SCOPED_TRACE(error);
        ov_error_clear();
        EXPECT_TRUE(fails());
        EXPECT_TRUE(error_text().starts_with(error)) << error_text();
    }
}

// A carriage return is written followed by a tab.
TEST_F(XmlTest, HandWrittenLatin1IsEscapedAndReadsBack)
{
    EXPECT_EQ(str(ov_xml_latin1_to_xml("&amp;\t\"'<>\xE9\x7F")),
              "&amp;amp;&#x9;&quot;&apos;&lt;&gt;\xE9\x7F");
    EXPECT_EQ(ov_xml_latin1_to_xml(nullptr), nullptr);

    const std::string path = dir_.file("hand.xml");
    ov::FilePtr stream(std::fopen(path.c_str(), "wb"));
    std::fputs("<r>", stream.get());
    EXPECT_TRUE(ov_xml_write_tabs(stream.get(), 2) && ov_xml_write_string(stream.get(), "a\r\n\xE9"));
    std::fputs("</r>", stream.get());
    stream.reset();
    EXPECT_EQ(read_file(path), "<r>\t\ta&#xD;&#x9;&#xA;\xE9</r>");
}

} // namespace
