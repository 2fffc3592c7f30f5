#include "core/xml.h"

#include "core/raii.h"
#include "core/zip.h"
#include "core_test.h"
#include "zip_fixture.h"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace
{

using namespace ov::test;

// Outcomes read as one string: the value, "(null)" for a null success, or "FALSE <out>: <error>"
// (getters with an out; "untouched": out not set) or "null: <error>" (getters returning the value).
class XmlTest : public CoreTest
{
  protected:
    xmlDoc *parse(const std::string &text)
    {
        write_file(dir_.file("doc.xml"), text);
        return docs_.emplace_back(ov_xml_parse_file(dir_.file("doc.xml").c_str())).get();
    }

    static std::string error_text() { return ov_error_get(); }
    static std::string or_error(gchar *text) { return text != nullptr ? str(text) : "null: " + error_text(); }
    static std::string string_out(const std::function<gboolean(gchar **)> &call)
    {
        static gchar marker[] = "untouched";
        gchar *out = marker;
        const gboolean ok = call(&out);
        const std::string value = out == marker ? std::string(marker) : str(out);
        return ok ? value : "FALSE " + value + ": " + error_text();
    }
    template <class T> static std::string number_out(const std::function<gboolean(T *)> &call)
    {
        T out = 7;
        const gboolean ok = call(&out);
        char text[G_ASCII_DTOSTR_BUF_SIZE];
        const std::string value = g_ascii_formatd(text, sizeof text, "%g", static_cast<double>(out));
        return ok ? value : "FALSE " + value + ": " + error_text();
    }

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

void remember(void *context, const char *format, ...)
{
    static_cast<std::string *>(context)->append(format);
}

// Whatever libxml2's defaults, entities are substituted and the external DTD loaded; all is put back.
TEST_F(XmlTest, ParsingKeepsItsOptionsAndRestoresLibxmlState)
{
    std::string foreign;
    xmlSetGenericErrorFunc(&foreign, remember);
    const int substitute = xmlSubstituteEntitiesDefault(0);
    const int load_ext_dtd = std::exchange(xmlLoadExtDtdDefaultValue, 0);

    const std::string dtd = dir_.file("a.dtd");
    write_file(dtd, "<!ENTITY ext \"from outside\"><!ATTLIST a kind CDATA \"plain\">");
    xmlDoc *doc = parse("<!DOCTYPE a SYSTEM \"" + dtd + "\" [<!ENTITY in \"inside\">]><a>&in; &ext;</a>");
    ASSERT_NE(doc, nullptr) << error_text();
    xmlNode *root = xmlDocGetRootElement(doc);
    EXPECT_EQ(root->children->type, XML_TEXT_NODE) << "no entity reference nodes";
    EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc, root)), "inside from outside");
    EXPECT_EQ(str(ov_xml_get_required_attribute_value_as_utf8(root, "kind")), "plain");

    EXPECT_NE(parse("<a><p:b/></a>"), nullptr);
    EXPECT_EQ(parse("<a></b>"), nullptr);
    EXPECT_EQ(error_text().find("Namespace"), std::string::npos) << "warning of the last success kept";

    EXPECT_TRUE(xmlGenericError == remember && xmlGenericErrorContext == &foreign) << "handler restored";
    EXPECT_EQ(foreign, "");
    EXPECT_EQ(xmlSubstituteEntitiesDefault(substitute), 0);
    EXPECT_EQ(std::exchange(xmlLoadExtDtdDefaultValue, load_ext_dtd), 0);
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

TEST_F(XmlTest, ParsesZipEntries)
{
    // "damaged" is stored so its bytes can be changed.
    const std::string bytes = make_zip({{"big.xml", "<a>" + std::string(100000, 'z') + "</a>"},
                                        {"bad.xml", "<settings>"},
                                        {"damaged.xml", "<a>" + std::string(5000, 'q') + "</a>", true}});
    const std::string damaged = damage(bytes, std::string(100, 'q'), std::string(100, 'Q'));
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(damaged.data(), damaged.size()));
    ASSERT_TRUE(archive) << error_text();

    ov::XmlDocPtr doc(ov_xml_parse_zip_file(archive.get(), "big.xml"));
    ASSERT_TRUE(doc) << error_text();
    EXPECT_EQ(str(ov_xml_get_text_content_as_utf8(doc.get(), xmlDocGetRootElement(doc.get()))).size(),
              100000u);
    for (const auto &[entry, reason] :
         {std::pair{"bad.xml", "Premature end of data"}, {"damaged.xml", "CRC"}}) {
        SCOPED_TRACE(entry);
        ov_error_clear();
        EXPECT_EQ(ov_xml_parse_zip_file(archive.get(), entry), nullptr);
        EXPECT_TRUE(error_text().starts_with("Could not parse compressed XML data.\n\n")) << error_text();
        EXPECT_NE(error_text().find(reason), std::string::npos) << error_text();
    }
}

using Call = std::function<std::string(const xmlNode *)>;

TEST_F(XmlTest, AttributeGetters)
{
    // clang-format off
    auto opt = [](gboolean (*get)(gchar **, const xmlNode *, const char *)) -> Call {
        return [=](const xmlNode *n) { return string_out([&](gchar **out) { return get(out, n, "v"); }); }; };
    auto req = [](gchar *(*get)(const xmlNode *, const char *)) -> Call {
        return [=](const xmlNode *n) { return or_error(get(n, "v")); }; };
    auto number = []<class T>(gboolean (*get)(T *, const xmlNode *)) -> Call {
        return [=](const xmlNode *n) { return number_out<T>([&](T *out) { return get(out, n); }); }; };
    const Call utf8 = opt(ov_xml_get_attribute_value_as_utf8), ascii = opt(ov_xml_get_attribute_value_as_ascii),
               latin1 = opt(ov_xml_get_attribute_value_as_latin1), nonempty = opt(ov_xml_get_nonempty_attribute_value_as_utf8);
    const Call r_utf8 = req(ov_xml_get_required_attribute_value_as_utf8),
               r_ne_latin1 = req(ov_xml_get_nonempty_required_attribute_value_as_latin1);
    using N = const xmlNode *;
    const Call bool_t = number(+[](int *o, N n) { return ov_xml_get_attribute_value_as_boolean_with_fallback(o, n, "v", TRUE); }),
               r_bool = number(+[](int *o, N n) { return ov_xml_get_required_attribute_value_as_boolean(o, n, "v"); }),
               int_0_41 = number(+[](int *o, N n) { return ov_xml_get_attribute_value_as_int_in_range_with_fallback(o, n, "v", 0, 41, 99); }),
               r_int = number(+[](int *o, N n) { return ov_xml_get_required_attribute_value_as_int(o, n, "v"); }),
               dbl_0_2 = number(+[](double *o, N n) { return ov_xml_get_attribute_value_as_double_in_range_with_fallback(o, n, "v", 0, 2, .25); });
    const std::string missing = "Missing XML attribute: v", empty = "Empty XML attribute: v",
        non_ascii = "Invalid XML attribute content.\n\nNon-ascii byte found where not allowed.",
        non_latin1 = "Invalid XML attribute content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed.",
        bad_bool = "FALSE 7: Invalid boolean value in XML attribute: v",
        bad_int = "FALSE 7: Invalid integer value in XML attribute: v\n\n",
        bad_dbl = "FALSE 7: Invalid floating point number in XML attribute: v\n\n";
    // Each: the node (no: without attribute v), the getter, the outcome.
    const char *no = "<a/>", *blank = "<a v=''/>", *e = "<a v='&#xE9;'/>", *euro = "<a v='&#x20AC;'/>";
    const std::string too_large = "Integer value out of valid range (too large).";
    const std::vector<std::tuple<const char *, const Call &, std::string>> cases = {
        // clang-format off
        {no, utf8, "(null)"}, {euro, utf8, "\xE2\x82\xAC"}, {e, ascii, "FALSE (null): " + non_ascii},
        {e, latin1, "\xE9"}, {euro, latin1, "FALSE (null): " + non_latin1}, {blank, nonempty, "FALSE (null): " + empty},
        {no, r_utf8, "null: " + missing}, {blank, r_utf8, ""}, {blank, r_ne_latin1, "null: " + empty},
        {e, r_ne_latin1, "\xE9"}, {no, bool_t, "1"}, {"<a v='false'/>", bool_t, "0"}, {"<a v='True'/>", bool_t, bad_bool},
        {no, r_bool, "FALSE 7: " + missing}, {no, int_0_41, "99"}, {"<a v='41'/>", int_0_41, "41"},
        {"<a v='42'/>", int_0_41, bad_int + too_large}, {"<a v='-3'/>", r_int, "-3"}, {"<a v='2147483648'/>", r_int, bad_int + too_large},
        {no, dbl_0_2, "0.25"}, {"<a v='1.5mm'/>", dbl_0_2, bad_dbl + "Invalid floating-point value."},
        // clang-format on
    };
    // clang-format on
    for (const auto &[xml, call, expected] : cases) {
        SCOPED_TRACE(xml);
        xmlDoc *doc = parse(xml);
        ASSERT_NE(doc, nullptr) << error_text();
        ov_error_clear();
        EXPECT_EQ(call(xmlDocGetRootElement(doc)), expected);
    }
}

// One document, one table: each row reads the child of the root with the
// given name (every kind of node counts, only direct children).
TEST_F(XmlTest, DistinctChildrenAndTextContent)
{
    xmlDoc *doc =
        parse("<!DOCTYPE r [<!ENTITY ent \"&#xE9;t&#xE9;\">]><r>text"
              "<t>  a &amp;\t&ent; <![CDATA[<b>]]>\n x </t><empty/><comment><!--c--></comment><euro>&#x20AC;"
              " \t x</euro><blank> \n\t </blank><twice/><twice>x</twice><deep><inner/></deep></r>");
    xmlNode *root = ov_xml_get_root_element(doc);
    ASSERT_NE(root, nullptr) << error_text();
    EXPECT_TRUE(ov_xml_node_has_child_node_with_name(root, "deep") &&
                !ov_xml_node_has_child_node_with_name(root, "inner"));
    EXPECT_EQ(ov_xml_get_root_element(ov::XmlDocPtr(ov_xml_new_doc()).get()), nullptr);
    EXPECT_EQ(error_text(), "Missing root element in XML tree.");

    using Read = std::function<std::string(const char *)>;
    const Read distinct = [&](const char *name) { // the node's name and type, or "none"
        xmlNode *out = root;
        if (!ov_xml_get_distinct_child_node(&out, root, name))
            return std::string(out == nullptr ? "FALSE null: " : "FALSE set: ") + error_text();
        return out == nullptr ? "none"
                              : std::string(ov_xml_get_node_name(out)) + " " + std::to_string(out->type);
    };
    auto direct = [&](gchar *(*read)(xmlDoc *, const xmlNode *)) -> Read {
        return [=](const char *name) {
            return or_error(read(doc, ov_xml_get_required_distinct_child_node(root, name)));
        };
    };
    auto of_child = [&](gboolean (*read)(gchar **, xmlDoc *, const xmlNode *, const char *)) -> Read {
        return [=](const char *name) {
            return string_out([&](gchar **out) { return read(out, doc, root, name); });
        };
    };
    const Read required = [&](const char *name) {
        return or_error(ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(
            doc, root, name));
    };
    // clang-format off
    const Read utf8 = direct(ov_xml_get_text_content_as_utf8), latin1 = direct(ov_xml_get_text_content_as_latin1),
               nonempty = direct(ov_xml_get_nonempty_text_content_as_compact_latin1),
               c_utf8 = of_child(ov_xml_get_text_content_from_distinct_child_node_as_utf8),
               c_latin1 = of_child(ov_xml_get_text_content_from_distinct_child_node_as_latin1),
               c_compact_utf8 = of_child(ov_xml_get_text_content_from_distinct_child_node_as_compact_utf8),
               c_nonempty_latin1 = of_child(ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1);
    const std::string not_latin1 = "Invalid XML node content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed.",
        empty = "Missing text content in XML.\n\nText content is empty.", duplicate = "Duplicate XML nodes found where not allowed.",
        unreadable = "Error reading text content from XML node.";
    const std::vector<std::tuple<const Read &, const char *, std::string>> cases = {
        // clang-format off
        {distinct, "t", "t 1"}, {distinct, "twice", "FALSE null: " + duplicate}, {distinct, "inner", "none"},
        {distinct, "text", "text 3"}, {utf8, "t", "  a &\t\xC3\xA9t\xC3\xA9 <b>\n x "}, {utf8, "comment", "null: " + unreadable},
        {latin1, "euro", "null: " + not_latin1}, {nonempty, "t", "a & \xE9t\xE9 <b> x"}, {nonempty, "empty", "null: " + empty},
        {c_utf8, "none", "(null)"}, {c_latin1, "euro", "FALSE (null): " + not_latin1}, {c_compact_utf8, "euro", "\xE2\x82\xAC x"},
        {c_nonempty_latin1, "blank", "FALSE (null): " + empty}, {required, "none", "null: Missing XML node: none"},
        // clang-format on
    };
    // clang-format on
    for (const auto &[read, name, expected] : cases) {
        SCOPED_TRACE(name);
        ov_error_clear();
        EXPECT_EQ(read(name), expected);
    }
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

        // Read and written again: the same bytes.
        ov::XmlDocPtr back(ov_xml_parse_file(path.c_str()));
        ASSERT_TRUE(back) << error_text();
        ASSERT_TRUE(ov_xml_write_to_file(back.get(), path.c_str(), encoding));
        EXPECT_EQ(read_file(path), bytes);
    }

    // Failure messages of building and of both writers.
    ov::FilePtr stream(std::tmpfile()), read_only(std::fopen("/dev/null", "rb"));
    const std::string no_folder = dir_.file("no/such/folder.xml");
    // clang-format off
    const std::vector<std::pair<std::function<bool()>, std::string>> cases = {
        {[&] { return !ov_xml_set_attribute_with_latin1_content(root, "v", nullptr); }, "Missing value for XML attribute."},
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
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"&amp;", "&amp;amp;"}, {"\t\"&'<>", "&#x9;&quot;&amp;&apos;&lt;&gt;"}, {"\xE9\x80\xFF\x7F", "\xE9\x80\xFF\x7F"},
    };
    // clang-format on
    for (const auto &[input, expected] : cases)
        EXPECT_EQ(str(ov_xml_latin1_to_xml(input.c_str())), expected) << input;
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
