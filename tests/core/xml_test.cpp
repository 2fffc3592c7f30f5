#include "core/xml.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/zip.h"
#include "core/zip_fixture.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

using ov::test::TempDir;
using ov::test::write_file;

class XmlTest : public ::testing::Test {
protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }

    // Parses text given in the test; the document stays owned by the test.
    xmlDoc *parse(const std::string &text)
    {
        const std::string path = dir_.file("doc.xml");
        write_file(path, text);
        docs_.emplace_back(ov_xml_parse_file(path.c_str()));
        return docs_.back().get();
    }

    // The root element of a document parsed from text.
    xmlNode *root_of(const std::string &text)
    {
        xmlDoc *doc = parse(text);
        EXPECT_NE(doc, nullptr) << ov_error_get();
        return doc != nullptr ? xmlDocGetRootElement(doc) : nullptr;
    }

    TempDir dir_;
    std::vector<ov::XmlDocPtr> docs_;
};

std::string error_text()
{
    return ov_error_get();
}

std::string take(gchar *text)
{
    ov::GStr owned(text);
    return owned ? std::string(owned.get()) : std::string("(null)");
}

bool starts_with(const std::string &text, const std::string &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

std::string repeat(const std::string &piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i)
        text += piece;
    return text;
}

int count_lines(const std::string &text)
{
    return static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
}

// ---------------------------------------------------------------------------
// Parsing files.

constexpr const char *parse_sentence = "Could not parse XML data.\n\n";

std::string billion_laughs()
{
    std::string text = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n<!ENTITY lol \"lol\">\n";
    text += "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">\n";
    for (int level = 2; level <= 9; ++level) {
        text += "<!ENTITY lol" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i)
            text += "&lol" + std::to_string(level - 1) + ";";
        text += "\">\n";
    }
    text += "]>\n<lolz>&lol9;</lolz>\n";
    return text;
}

TEST_F(XmlTest, BadFilesFailWithLibxmlMessageUnderTheSentence)
{
    struct Case {
        const char *what;
        std::string text;
        const char *libxml_says;
    };
    const std::vector<Case> cases = {
        {"empty", "", "Document is empty"},
        {"only white space", "  \n\t", "Start tag expected"},
        {"mismatched tags", "<a><b></a>", "Opening and ending tag mismatch: b"},
        {"truncated", "<?xml version=\"1.0\"?>\n<a><b>text", "Premature end of data"},
        {"two roots", "<a/><b/>", "Extra content at the end of the document"},
        {"undefined entity", "<a>&nope;</a>", "Entity 'nope' not defined"},
        {"UTF-8 expected, Latin-1 given", "<?xml version=\"1.0\"?><a>caf\xE9</a>",
         "Input is not proper UTF-8"},
        {"unknown encoding", "<?xml version=\"1.0\" encoding=\"X-NOWHERE\"?><a/>", "Unsupported encoding"},
        {"binary", std::string("\x00\x01\x02\xFF\xFE", 5), "Document is empty"},
        {"deeply nested", repeat("<a>", 300), "Excessive depth in document"},
        {"overlong name", "<" + std::string(60000, 'n') + "/>", "Name"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        EXPECT_EQ(parse(c.text), nullptr);
        const std::string error = error_text();
        EXPECT_TRUE(starts_with(error, parse_sentence)) << error;
        EXPECT_NE(error.find(c.libxml_says), std::string::npos) << error;
        EXPECT_TRUE(g_utf8_validate(error.c_str(), -1, nullptr)) << error;
        EXPECT_LE(count_lines(error), 2 + 15 + 2) << error;
        EXPECT_NE(error.back(), '\n');
    }
}

TEST_F(XmlTest, OversizedTextNodeIsRefused)
{
    EXPECT_EQ(parse("<a>" + std::string(10000001, 'x') + "</a>"), nullptr);
    const std::string error = error_text();
    EXPECT_TRUE(starts_with(error, parse_sentence)) << error;
    EXPECT_NE(error.find("huge text node"), std::string::npos) << error;
}

TEST_F(XmlTest, LongParserOutputIsCutToFifteenLines)
{
    // Each undefined prefix gives a recoverable message of three lines; the
    // missing end tag then makes the parse fail.
    std::string text = "<a>";
    for (int i = 0; i < 12; ++i)
        text += "<p" + std::to_string(i) + ":b/>";
    EXPECT_EQ(parse(text), nullptr);
    const std::string error = error_text();
    ASSERT_TRUE(starts_with(error, parse_sentence)) << error;
    const std::string note = "\n\n(Error message truncated.)";
    ASSERT_GT(error.size(), note.size());
    EXPECT_EQ(error.substr(error.size() - note.size()), note) << error;
    const std::string body =
        error.substr(strlen(parse_sentence), error.size() - note.size() - strlen(parse_sentence));
    EXPECT_EQ(count_lines(body), 15) << body;
    EXPECT_NE(body.find("Namespace prefix p0 on b is not defined"), std::string::npos) << body;
}

TEST_F(XmlTest, BillionLaughsFailsQuickly)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(parse(billion_laughs()), nullptr);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LT(elapsed, std::chrono::milliseconds(500));
    const std::string error = error_text();
    EXPECT_TRUE(starts_with(error, parse_sentence)) << error;
    EXPECT_NE(error.find("Detected an entity reference loop"), std::string::npos) << error;
}

// A listening socket on the loopback interface that tells whether anybody
// tried to connect.
class Listener {
public:
    Listener()
    {
        fd_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 && listen(fd_, 4) == 0 &&
            getsockname(fd_, reinterpret_cast<sockaddr *>(&address), &length) == 0)
            port_ = ntohs(address.sin_port);
    }
    ~Listener() { close(fd_); }
    int port() const { return port_; }
    bool was_contacted() const
    {
        pollfd poller{fd_, POLLIN, 0};
        return poll(&poller, 1, 0) > 0;
    }

private:
    int fd_ = -1;
    int port_ = 0;
};

TEST_F(XmlTest, NeverReachesTheNetwork)
{
    Listener listener;
    ASSERT_NE(listener.port(), 0);
    const std::string url = "http://127.0.0.1:" + std::to_string(listener.port());
    const std::vector<std::string> documents = {
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"" + url + "/x.txt\">]><a>&x;</a>",
        "<!DOCTYPE a SYSTEM \"" + url + "/a.dtd\"><a/>",
        "<!DOCTYPE a [<!ENTITY % p SYSTEM \"" + url + "/p.dtd\"> %p;]><a/>",
    };
    for (const std::string &text : documents) {
        SCOPED_TRACE(text);
        ov_error_clear();
        // libxml2 only warns about the refused load; the warning is dropped.
        EXPECT_NE(parse(text), nullptr) << error_text();
        EXPECT_EQ(error_text(), "");
        EXPECT_FALSE(listener.was_contacted());
    }
}

TEST_F(XmlTest, SubstitutesEntitiesAndLoadsExternalDtd)
{
    const std::string dtd = dir_.file("a.dtd");
    write_file(dtd, "<!ENTITY ext \"from outside\"><!ATTLIST a kind CDATA \"plain\">");
    xmlNode *root =
        root_of("<!DOCTYPE a SYSTEM \"" + dtd + "\" [<!ENTITY in \"in<!-- c -->side\">]><a>&in; &ext;</a>");
    ASSERT_NE(root, nullptr);
    // No entity reference nodes survive: only text and the comment.
    for (xmlNode *child = root->children; child != nullptr; child = child->next)
        EXPECT_NE(child->type, XML_ENTITY_REF_NODE) << child->name;
    EXPECT_EQ(take(ov_xml_get_text_content_as_utf8(root->doc, root)), "inside from outside");
    EXPECT_EQ(take(ov_xml_get_required_attribute_value_as_utf8(root, "kind")), "plain");
}

void remember_message(void *context, const char *format, ...)
{
    static_cast<std::string *>(context)->append(format);
}

TEST_F(XmlTest, ParsingRestoresLibxmlState)
{
    std::string foreign;
    xmlSetGenericErrorFunc(&foreign, remember_message);
    const int substitute = xmlSubstituteEntitiesDefault(0);
    const int load_ext_dtd = xmlLoadExtDtdDefaultValue;
    xmlLoadExtDtdDefaultValue = 0;

    EXPECT_EQ(parse("<a>"), nullptr);
    // A warning of a successful parse is dropped, not kept for the next one.
    EXPECT_NE(parse("<a><p:b/></a>"), nullptr);
    EXPECT_EQ(parse("<a></b>"), nullptr);
    EXPECT_EQ(error_text().find("Namespace"), std::string::npos) << error_text();

    EXPECT_EQ(xmlGenericError, remember_message);
    EXPECT_EQ(xmlGenericErrorContext, &foreign);
    EXPECT_EQ(foreign, "");
    EXPECT_EQ(xmlSubstituteEntitiesDefault(substitute), 0);
    EXPECT_EQ(xmlLoadExtDtdDefaultValue, 0);
    xmlLoadExtDtdDefaultValue = load_ext_dtd;
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

TEST_F(XmlTest, MissingFileKeepsTheOpenFailure)
{
    EXPECT_EQ(ov_xml_parse_file(dir_.file("missing.xml").c_str()), nullptr);
    EXPECT_TRUE(starts_with(error_text(), "Cannot open file.")) << error_text();
}

TEST_F(XmlTest, ParseFileIfExists)
{
    xmlDoc *doc = reinterpret_cast<xmlDoc *>(&doc);
    EXPECT_TRUE(ov_xml_parse_file_if_exists(&doc, dir_.file("missing.xml").c_str()));
    EXPECT_EQ(doc, nullptr);
    EXPECT_EQ(error_text(), "");

    const std::string broken = dir_.file("broken.xml");
    write_file(broken, "<a>");
    EXPECT_FALSE(ov_xml_parse_file_if_exists(&doc, broken.c_str()));
    EXPECT_EQ(doc, nullptr);
    EXPECT_TRUE(starts_with(error_text(), parse_sentence)) << error_text();

    EXPECT_FALSE(ov_xml_parse_file_if_exists(&doc, dir_.path().c_str())) << "a folder";
    EXPECT_EQ(doc, nullptr);

    const std::string good = dir_.file("good.xml");
    write_file(good, "<a/>");
    EXPECT_TRUE(ov_xml_parse_file_if_exists(&doc, good.c_str()));
    ov::XmlDocPtr owned(doc);
    ASSERT_NE(doc, nullptr);
    EXPECT_TRUE(ov_xml_node_has_name(xmlDocGetRootElement(doc), "a"));
}

// ---------------------------------------------------------------------------
// Parsing zip entries.

TEST_F(XmlTest, ParsesZipEntries)
{
    const std::string good = "<?xml version=\"1.0\"?><settings><group name=\"x\"/></settings>";
    const std::string bytes = ov::test::make_zip({
        {"good.xml", good},
        {"bad.xml", "<settings>"},
        {"big.xml", "<a>" + std::string(100000, 'z') + "</a>"},
        {"damaged.xml", "<a>" + std::string(5000, 'q') + "</a>", true},
    });
    ASSERT_FALSE(bytes.empty());
    const std::string damaged = ov::test::damage(bytes, std::string(100, 'q'), std::string(100, 'Q'));
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(damaged.data(), damaged.size()));
    ASSERT_TRUE(archive) << ov_error_get();

    ov::XmlDocPtr doc(ov_xml_parse_zip_file(archive.get(), "good.xml"));
    ASSERT_TRUE(doc) << ov_error_get();
    EXPECT_TRUE(ov_xml_node_has_name(xmlDocGetRootElement(doc.get()), "settings"));

    doc.reset(ov_xml_parse_zip_file(archive.get(), "big.xml"));
    ASSERT_TRUE(doc) << ov_error_get();
    EXPECT_EQ(take(ov_xml_get_text_content_as_utf8(doc.get(), xmlDocGetRootElement(doc.get()))).size(),
              100000u);

    ov_error_clear();
    EXPECT_EQ(ov_xml_parse_zip_file(archive.get(), "bad.xml"), nullptr);
    EXPECT_TRUE(starts_with(error_text(), "Could not parse compressed XML data.\n\n")) << error_text();
    EXPECT_NE(error_text().find("Premature end of data"), std::string::npos) << error_text();

    ov_error_clear();
    EXPECT_EQ(ov_xml_parse_zip_file(archive.get(), "damaged.xml"), nullptr);
    EXPECT_TRUE(starts_with(error_text(), "Could not parse compressed XML data.\n\n")) << error_text();
    EXPECT_NE(error_text().find("CRC"), std::string::npos) << error_text();

    ov_error_clear();
    EXPECT_EQ(ov_xml_parse_zip_file(archive.get(), "missing.xml"), nullptr);
    EXPECT_TRUE(starts_with(error_text(), "Could not open compressed file.")) << error_text();
}

// ---------------------------------------------------------------------------
// Attributes.

constexpr const char *attribute_document =
    "<a s=\"plain\" e=\"\" l=\"caf&#xE9;\" w=\"&#x20AC;\" t=\"true\" f=\"false\" T=\"True\" st=\" true\""
    " n=\"42\" neg=\"-3\" big=\"2147483648\" x=\"12x\" sp=\" 5\" d=\"2.5\" dx=\"2.5mm\" huge=\"1e999\"/>";

// "value", "null", or "FALSE <out>: <error>" for a failure; the out of a
// string getter must be null after a failure, other outs keep their value.
std::string string_outcome(gboolean ok, const std::string &value)
{
    if (!ok)
        return "FALSE " + value + ": " + error_text();
    return value;
}

std::string string_outcome(gchar *result)
{
    if (result == nullptr)
        return "null: " + error_text();
    return take(result);
}

template <class T> std::string number_outcome(gboolean ok, T out)
{
    char buffer[G_ASCII_DTOSTR_BUF_SIZE];
    const std::string value = g_ascii_formatd(buffer, sizeof buffer, "%g", static_cast<double>(out));
    if (!ok)
        return "FALSE " + value + ": " + error_text();
    return value;
}

struct GetterCase {
    const char *name;
    std::function<std::string(const xmlNode *)> run;
    std::string expected;
};

using OptionalGetter = gboolean (*)(gchar **, const xmlNode *, const char *);
using RequiredGetter = gchar *(*)(const xmlNode *, const char *);

std::function<std::string(const xmlNode *)> optional(OptionalGetter getter, const char *name)
{
    return [=](const xmlNode *node) {
        static gchar marker[] = "untouched";
        gchar *out = marker;
        const gboolean ok = getter(&out, node, name);
        return string_outcome(ok, out == marker ? std::string(marker) : take(out));
    };
}

std::function<std::string(const xmlNode *)> required(RequiredGetter getter, const char *name)
{
    return [=](const xmlNode *node) { return string_outcome(getter(node, name)); };
}

void run_cases(const xmlNode *node, const std::vector<GetterCase> &cases)
{
    for (const GetterCase &c : cases) {
        SCOPED_TRACE(c.name);
        ov_error_clear();
        EXPECT_EQ(c.run(node), c.expected);
    }
}

constexpr const char *non_ascii = "Invalid XML attribute content.\n\nNon-ascii byte found where not allowed.";
constexpr const char *non_latin1 =
    "Invalid XML attribute content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed.";

TEST_F(XmlTest, StringAttributeGetters)
{
    const xmlNode *node = root_of(attribute_document);
    ASSERT_NE(node, nullptr);
    run_cases(
        node,
        {
            {"utf8 absent", optional(ov_xml_get_attribute_value_as_utf8, "zz"), "(null)"},
            {"utf8", optional(ov_xml_get_attribute_value_as_utf8, "w"), "\xE2\x82\xAC"},
            {"utf8 empty", optional(ov_xml_get_attribute_value_as_utf8, "e"), ""},
            {"ascii absent", optional(ov_xml_get_attribute_value_as_ascii, "zz"), "(null)"},
            {"ascii", optional(ov_xml_get_attribute_value_as_ascii, "s"), "plain"},
            {"ascii refuses", optional(ov_xml_get_attribute_value_as_ascii, "l"),
             std::string("FALSE (null): ") + non_ascii},
            {"latin1 absent", optional(ov_xml_get_attribute_value_as_latin1, "zz"), "(null)"},
            {"latin1", optional(ov_xml_get_attribute_value_as_latin1, "l"), "caf\xE9"},
            {"latin1 refuses", optional(ov_xml_get_attribute_value_as_latin1, "w"),
             std::string("FALSE (null): ") + non_latin1},
            {"nonempty absent", optional(ov_xml_get_nonempty_attribute_value_as_utf8, "zz"), "(null)"},
            {"nonempty", optional(ov_xml_get_nonempty_attribute_value_as_utf8, "s"), "plain"},
            {"nonempty refuses", optional(ov_xml_get_nonempty_attribute_value_as_utf8, "e"),
             "FALSE (null): Empty XML attribute: e"},

            {"required utf8 absent", required(ov_xml_get_required_attribute_value_as_utf8, "zz"),
             "null: Missing XML attribute: zz"},
            {"required utf8", required(ov_xml_get_required_attribute_value_as_utf8, "e"), ""},
            {"required ascii absent", required(ov_xml_get_required_attribute_value_as_ascii, "zz"),
             "null: Missing XML attribute: zz"},
            {"required ascii", required(ov_xml_get_required_attribute_value_as_ascii, "s"), "plain"},
            {"required ascii refuses", required(ov_xml_get_required_attribute_value_as_ascii, "w"),
             std::string("null: ") + non_ascii},
            {"required latin1 absent", required(ov_xml_get_required_attribute_value_as_latin1, "zz"),
             "null: Missing XML attribute: zz"},
            {"required latin1", required(ov_xml_get_required_attribute_value_as_latin1, "l"), "caf\xE9"},
            {"required latin1 refuses", required(ov_xml_get_required_attribute_value_as_latin1, "w"),
             std::string("null: ") + non_latin1},
            {"nonempty required utf8 absent",
             required(ov_xml_get_nonempty_required_attribute_value_as_utf8, "zz"),
             "null: Missing XML attribute: zz"},
            {"nonempty required utf8 empty",
             required(ov_xml_get_nonempty_required_attribute_value_as_utf8, "e"),
             "null: Empty XML attribute: e"},
            {"nonempty required utf8", required(ov_xml_get_nonempty_required_attribute_value_as_utf8, "w"),
             "\xE2\x82\xAC"},
            {"nonempty required latin1 absent",
             required(ov_xml_get_nonempty_required_attribute_value_as_latin1, "zz"),
             "null: Missing XML attribute: zz"},
            {"nonempty required latin1 empty",
             required(ov_xml_get_nonempty_required_attribute_value_as_latin1, "e"),
             "null: Empty XML attribute: e"},
            {"nonempty required latin1",
             required(ov_xml_get_nonempty_required_attribute_value_as_latin1, "l"), "caf\xE9"},
            {"nonempty required latin1 refuses",
             required(ov_xml_get_nonempty_required_attribute_value_as_latin1, "w"),
             std::string("null: ") + non_latin1},
        });
}

TEST_F(XmlTest, BooleanAttributeGetters)
{
    const xmlNode *node = root_of(attribute_document);
    ASSERT_NE(node, nullptr);
    auto with_fallback = [](const char *name, gboolean fallback) {
        return [=](const xmlNode *n) {
            gboolean out = 7;
            const gboolean ok = ov_xml_get_attribute_value_as_boolean_with_fallback(&out, n, name, fallback);
            return number_outcome(ok, out);
        };
    };
    auto required_boolean = [](const char *name) {
        return [=](const xmlNode *n) {
            gboolean out = 7;
            const gboolean ok = ov_xml_get_required_attribute_value_as_boolean(&out, n, name);
            return number_outcome(ok, out);
        };
    };
    run_cases(
        node,
        {
            {"absent, fallback true", with_fallback("zz", TRUE), "1"},
            {"absent, fallback false", with_fallback("zz", FALSE), "0"},
            {"true", with_fallback("t", FALSE), "1"},
            {"false", with_fallback("f", TRUE), "0"},
            {"case matters", with_fallback("T", TRUE), "FALSE 7: Invalid boolean value in XML attribute: T"},
            {"no trimming", with_fallback("st", TRUE), "FALSE 7: Invalid boolean value in XML attribute: st"},
            {"empty", with_fallback("e", TRUE), "FALSE 7: Empty XML attribute: e"},
            {"number", with_fallback("n", TRUE), "FALSE 7: Invalid boolean value in XML attribute: n"},
            {"required absent", required_boolean("zz"), "FALSE 7: Missing XML attribute: zz"},
            {"required true", required_boolean("t"), "1"},
            {"required false", required_boolean("f"), "0"},
            {"required case matters", required_boolean("T"),
             "FALSE 7: Invalid boolean value in XML attribute: T"},
            {"required empty", required_boolean("e"), "FALSE 7: Empty XML attribute: e"},
        });
}

TEST_F(XmlTest, NumberAttributeGetters)
{
    const xmlNode *node = root_of(attribute_document);
    ASSERT_NE(node, nullptr);
    auto int_fallback = [](const char *name, int minimum, int maximum) {
        return [=](const xmlNode *n) {
            int out = 7;
            const gboolean ok =
                ov_xml_get_attribute_value_as_int_in_range_with_fallback(&out, n, name, minimum, maximum, 99);
            return number_outcome(ok, out);
        };
    };
    auto required_int = [](const char *name) {
        return [=](const xmlNode *n) {
            int out = 7;
            const gboolean ok = ov_xml_get_required_attribute_value_as_int(&out, n, name);
            return number_outcome(ok, out);
        };
    };
    auto required_int_range = [](const char *name, int minimum, int maximum) {
        return [=](const xmlNode *n) {
            int out = 7;
            const gboolean ok =
                ov_xml_get_required_attribute_value_as_int_in_range(&out, n, name, minimum, maximum);
            return number_outcome(ok, out);
        };
    };
    auto double_fallback = [](const char *name, double minimum, double maximum) {
        return [=](const xmlNode *n) {
            double out = 7;
            const gboolean ok = ov_xml_get_attribute_value_as_double_in_range_with_fallback(
                &out, n, name, minimum, maximum, 0.25);
            return number_outcome(ok, out);
        };
    };
    auto required_double_range = [](const char *name, double minimum, double maximum) {
        return [=](const xmlNode *n) {
            double out = 7;
            const gboolean ok =
                ov_xml_get_required_attribute_value_as_double_in_range(&out, n, name, minimum, maximum);
            return number_outcome(ok, out);
        };
    };
    const std::string bad_int = "FALSE 7: Invalid integer value in XML attribute: ";
    const std::string bad_double = "FALSE 7: Invalid floating point number in XML attribute: ";
    run_cases(node, {
                        {"int absent", int_fallback("zz", 0, 100), "99"},
                        {"int", int_fallback("n", 0, 100), "42"},
                        {"int at the bounds", int_fallback("n", 42, 42), "42"},
                        {"int above", int_fallback("n", 0, 41),
                         bad_int + "n\n\nInteger value out of valid range (too large)."},
                        {"int below", int_fallback("neg", 0, 41),
                         bad_int + "neg\n\nInteger value out of valid range (too small)."},
                        {"int empty", int_fallback("e", 0, 100), "FALSE 7: Empty XML attribute: e"},
                        {"int trailing", int_fallback("x", 0, 100),
                         bad_int + "x\n\nInvalid characters in integer value."},
                        {"int leading space", int_fallback("sp", 0, 100),
                         bad_int + "sp\n\nInteger value must not begin with whitespace."},
                        {"required int absent", required_int("zz"), "FALSE 7: Missing XML attribute: zz"},
                        {"required int", required_int("neg"), "-3"},
                        {"required int too large", required_int("big"),
                         bad_int + "big\n\nInteger value out of valid range (too large)."},
                        {"required int empty", required_int("e"), "FALSE 7: Empty XML attribute: e"},
                        {"required int in range", required_int_range("n", 0, 50), "42"},
                        {"required int in range absent", required_int_range("zz", 0, 50),
                         "FALSE 7: Missing XML attribute: zz"},
                        {"required int out of range", required_int_range("n", 50, 60),
                         bad_int + "n\n\nInteger value out of valid range (too small)."},
                        {"double absent", double_fallback("zz", 0, 10), "0.25"},
                        {"double", double_fallback("d", 0, 10), "2.5"},
                        {"double integer text", double_fallback("n", 0, 100), "42"},
                        {"double with unit", double_fallback("dx", 0, 10),
                         bad_double + "dx\n\nInvalid floating-point value."},
                        {"double above", double_fallback("d", 0, 2),
                         bad_double + "d\n\nFloating-point value out of valid range (too large)."},
                        {"double overflow", double_fallback("huge", 0, 2),
                         bad_double + "huge\n\nFloating-point value overflow."},
                        {"double empty", double_fallback("e", 0, 10), "FALSE 7: Empty XML attribute: e"},
                        {"required double", required_double_range("d", 2.5, 2.5), "2.5"},
                        {"required double absent", required_double_range("zz", 0, 1),
                         "FALSE 7: Missing XML attribute: zz"},
                        {"required double below", required_double_range("neg", 0, 1),
                         bad_double + "neg\n\nFloating-point value out of valid range (too small)."},
                    });
}

// ---------------------------------------------------------------------------
// Nodes and text content.

TEST_F(XmlTest, NodeTests)
{
    xmlNode *root = root_of("<a k=\"\">text<b/><!--c--><c/><c>x</c><d><e/></d></a>");
    ASSERT_NE(root, nullptr);
    EXPECT_TRUE(ov_xml_node_has_name(root, "a"));
    EXPECT_FALSE(ov_xml_node_has_name(root, "A"));
    EXPECT_STREQ(ov_xml_get_node_name(root), "a");
    EXPECT_TRUE(ov_xml_node_has_attribute(root, "k"));
    EXPECT_FALSE(ov_xml_node_has_attribute(root, "K"));
    EXPECT_TRUE(ov_xml_node_has_child_node_with_name(root, "d"));
    EXPECT_FALSE(ov_xml_node_has_child_node_with_name(root, "e")) << "only direct children";

    ov::XmlDocPtr empty(ov_xml_new_doc());
    ASSERT_TRUE(empty);
    EXPECT_EQ(ov_xml_get_root_element(empty.get()), nullptr);
    EXPECT_EQ(error_text(), "Missing root element in XML tree.");
    EXPECT_EQ(ov_xml_get_root_element(root->doc), root);
}

TEST_F(XmlTest, DistinctChildren)
{
    xmlNode *root = root_of("<a>text<b/><!--c--><c/><c>x</c><d><e/></d></a>");
    ASSERT_NE(root, nullptr);
    // Each: the found node's name and type, "none", or the failure.
    auto distinct = [&](const char *name) {
        ov_error_clear();
        xmlNode *out = root;
        if (!ov_xml_get_distinct_child_node(&out, root, name))
            return std::string(out == nullptr ? "FALSE null: " : "FALSE set: ") + error_text();
        return out == nullptr ? std::string("none")
                              : std::string(ov_xml_get_node_name(out)) + " " + std::to_string(out->type);
    };
    auto required_distinct = [&](const char *name) {
        ov_error_clear();
        xmlNode *out = ov_xml_get_required_distinct_child_node(root, name);
        return out == nullptr ? "null: " + error_text() : std::string(ov_xml_get_node_name(out));
    };
    const std::string duplicate = "Duplicate XML nodes found where not allowed.";
    EXPECT_EQ(distinct("b"), "b 1");
    EXPECT_EQ(distinct("c"), "FALSE null: " + duplicate) << "the first one is empty";
    EXPECT_EQ(distinct("e"), "none");
    EXPECT_EQ(distinct("text"), "text 3") << "every kind of node counts";
    EXPECT_EQ(distinct("comment"), "comment 8");
    EXPECT_EQ(required_distinct("d"), "d");
    EXPECT_EQ(required_distinct("e"), "null: Missing XML node: e");
    EXPECT_EQ(required_distinct("c"), "null: " + duplicate);
}

TEST_F(XmlTest, TextContent)
{
    xmlDoc *doc = parse(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE r [<!ENTITY ent \"&#xE9;t&#xE9;\">]>"
        "<r><t>  a &amp;\t&ent; <![CDATA[<b>]]>\n x </t><empty/><open></open><comment><!--c--></comment>"
        "<euro>&#x20AC;</euro><blank> \n\t </blank></r>");
    ASSERT_NE(doc, nullptr) << error_text();
    xmlNode *root = xmlDocGetRootElement(doc);
    auto child = [&](const char *name) {
        xmlNode *node = nullptr;
        EXPECT_TRUE(ov_xml_get_distinct_child_node(&node, root, name));
        return node;
    };
    using Reader = gchar *(*)(xmlDoc *, const xmlNode *);
    auto read = [&](Reader reader, const char *name) {
        ov_error_clear();
        return string_outcome(reader(doc, child(name)));
    };
    const std::string no_latin1 =
        "null: Invalid XML node content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed.";
    const std::string empty_text = "null: Missing text content in XML.\n\nText content is empty.";
    EXPECT_EQ(read(ov_xml_get_text_content_as_utf8, "t"), "  a &\t\xC3\xA9t\xC3\xA9 <b>\n x ");
    EXPECT_EQ(read(ov_xml_get_text_content_as_utf8, "empty"), "");
    EXPECT_EQ(read(ov_xml_get_text_content_as_utf8, "open"), "");
    EXPECT_EQ(read(ov_xml_get_text_content_as_utf8, "comment"),
              "null: Error reading text content from XML node.");
    EXPECT_EQ(read(ov_xml_get_text_content_as_latin1, "t"), "  a &\t\xE9t\xE9 <b>\n x ");
    EXPECT_EQ(read(ov_xml_get_text_content_as_latin1, "euro"), no_latin1);
    EXPECT_EQ(read(ov_xml_get_text_content_as_compact_latin1, "t"), "a & \xE9t\xE9 <b> x");
    EXPECT_EQ(read(ov_xml_get_text_content_as_compact_latin1, "blank"), "");
    EXPECT_EQ(read(ov_xml_get_text_content_as_compact_latin1, "euro"), no_latin1);
    EXPECT_EQ(read(ov_xml_get_nonempty_text_content_as_compact_latin1, "t"), "a & \xE9t\xE9 <b> x");
    EXPECT_EQ(read(ov_xml_get_nonempty_text_content_as_compact_latin1, "blank"), empty_text);
    EXPECT_EQ(read(ov_xml_get_nonempty_text_content_as_compact_latin1, "empty"), empty_text);
}

TEST_F(XmlTest, TextContentOfDistinctChildren)
{
    xmlDoc *doc = parse("<r><t> a \n b </t><blank> </blank><euro>&#x20AC; \t x</euro><twice/><twice>x</twice>"
                        "<comment><!--c--></comment></r>");
    ASSERT_NE(doc, nullptr) << error_text();
    const xmlNode *root = xmlDocGetRootElement(doc);
    using Getter = gboolean (*)(gchar **, xmlDoc *, const xmlNode *, const char *);
    auto read = [&](Getter getter, const char *name) {
        ov_error_clear();
        static gchar marker[] = "untouched";
        gchar *out = marker;
        const gboolean ok = getter(&out, doc, root, name);
        return string_outcome(ok, out == marker ? std::string(marker) : take(out));
    };
    const Getter utf8 = ov_xml_get_text_content_from_distinct_child_node_as_utf8;
    const Getter latin1 = ov_xml_get_text_content_from_distinct_child_node_as_latin1;
    const Getter compact_utf8 = ov_xml_get_text_content_from_distinct_child_node_as_compact_utf8;
    const Getter compact_latin1 = ov_xml_get_text_content_from_distinct_child_node_as_compact_latin1;
    const Getter nonempty_utf8 = ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_utf8;
    const Getter nonempty_latin1 =
        ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1;
    const std::string duplicate = "FALSE (null): Duplicate XML nodes found where not allowed.";
    const std::string empty_text = "FALSE (null): Missing text content in XML.\n\nText content is empty.";
    for (Getter getter : {utf8, latin1, compact_utf8, compact_latin1, nonempty_utf8, nonempty_latin1}) {
        EXPECT_EQ(read(getter, "none"), "(null)");
        EXPECT_EQ(read(getter, "twice"), duplicate);
        EXPECT_EQ(read(getter, "comment"), "FALSE (null): Error reading text content from XML node.");
    }
    EXPECT_EQ(read(utf8, "t"), " a \n b ");
    EXPECT_EQ(read(latin1, "t"), " a \n b ");
    EXPECT_EQ(read(compact_utf8, "t"), "a b");
    EXPECT_EQ(read(compact_latin1, "t"), "a b");
    EXPECT_EQ(read(compact_utf8, "euro"), "\xE2\x82\xAC x");
    EXPECT_EQ(read(latin1, "euro"), "FALSE (null): Invalid XML node content.\n\n"
                                    "Character incompatible with ISO-8859-1 found where not allowed.");
    EXPECT_EQ(read(compact_utf8, "blank"), "");
    EXPECT_EQ(read(compact_latin1, "blank"), "");
    EXPECT_EQ(read(nonempty_utf8, "blank"), empty_text);
    EXPECT_EQ(read(nonempty_latin1, "blank"), empty_text);
    EXPECT_EQ(read(nonempty_latin1, "t"), "a b");

    auto required = [&](const char *name) {
        ov_error_clear();
        return string_outcome(
            ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(doc, root,
                                                                                               name));
    };
    EXPECT_EQ(required("euro"), "\xE2\x82\xAC x");
    EXPECT_EQ(required("none"), "null: Missing XML node: none");
    EXPECT_EQ(required("twice"), "null: Duplicate XML nodes found where not allowed.");
    EXPECT_EQ(required("blank"), "null: Missing text content in XML.\n\nText content is empty.");
}

// ---------------------------------------------------------------------------
// Building and writing documents.

TEST_F(XmlTest, BuildsAndWritesToString)
{
    ov::XmlDocPtr doc(ov_xml_new_doc());
    ASSERT_TRUE(doc);
    xmlNode *root = ov_xml_add_root_element(doc.get(), "template");
    ASSERT_NE(root, nullptr);
    EXPECT_NE(ov_xml_set_attribute(root, "name", "a<b>&\"c\""), nullptr);
    EXPECT_NE(ov_xml_set_attribute_with_ascii_content(root, "name", "replaced"), nullptr);
    EXPECT_NE(ov_xml_set_attribute_with_latin1_content(root, "author", "Jos\xE9"), nullptr);
    EXPECT_NE(ov_xml_set_attribute_to_boolean(root, "yes", TRUE), nullptr);
    EXPECT_NE(ov_xml_set_attribute_to_boolean(root, "no", FALSE), nullptr);
    EXPECT_NE(ov_xml_set_attribute_to_int(root, "min", G_MININT), nullptr);
    EXPECT_NE(ov_xml_set_attribute_to_double(root, "tenth", 0.1), nullptr);
    EXPECT_NE(ov_xml_set_attribute_to_double(root, "big", -1.5e300), nullptr);
    xmlNode *group = ov_xml_add_child_element(root, "group");
    ASSERT_NE(group, nullptr);
    EXPECT_NE(ov_xml_add_child_element_with_utf8_text_content(group, "u", "<&>\xE2\x82\xAC"), nullptr);
    EXPECT_NE(ov_xml_add_child_element_with_ascii_text_content(group, "a", "x & y"), nullptr);
    EXPECT_NE(ov_xml_add_child_element_with_latin1_text_content(group, "l", "\xE9\r"), nullptr);

    gsize length = 1;
    ov::GStr text(ov_xml_write_to_string(doc.get(), &length));
    ASSERT_TRUE(text) << error_text();
    const std::string expected =
        "<?xml version=\"1.0\"?>\n"
        "<template name=\"replaced\" author=\"Jos&#xE9;\" yes=\"true\" no=\"false\" min=\"-2147483648\""
        " tenth=\"0.1\" big=\"-1.5e+300\"><group><u>&lt;&amp;&gt;&#x20AC;</u>"
        "<a>x &amp; y</a><l>&#xE9;&#xD;</l></group></template>\n";
    EXPECT_EQ(text.get(), expected);
    EXPECT_EQ(length, expected.size());
    EXPECT_EQ(take(ov_xml_write_to_string(doc.get(), nullptr)), expected);

    // Read back what was built.
    double tenth = 0;
    EXPECT_TRUE(ov_xml_get_required_attribute_value_as_double_in_range(&tenth, root, "tenth", 0, 1));
    EXPECT_EQ(tenth, 0.1);
    int minimum = 0;
    EXPECT_TRUE(ov_xml_get_required_attribute_value_as_int(&minimum, root, "min"));
    EXPECT_EQ(minimum, G_MININT);
    EXPECT_EQ(take(ov_xml_get_required_attribute_value_as_latin1(root, "author")), "Jos\xE9");
}

TEST_F(XmlTest, BuildingFailures)
{
    ov::XmlDocPtr doc(ov_xml_new_doc());
    ASSERT_TRUE(doc);
    xmlNode *root = ov_xml_add_root_element(doc.get(), "r");
    ASSERT_NE(root, nullptr);
    struct Case {
        const char *what;
        std::function<bool()> fails;
        const char *error;
    };
    const std::vector<Case> cases = {
        {"root without document", [] { return ov_xml_add_root_element(nullptr, "r") == nullptr; },
         "Error when creating an XML element."},
        {"child without parent", [] { return ov_xml_add_child_element(nullptr, "c") == nullptr; },
         "Error when creating an XML child element."},
        {"text child without parent",
         [] { return ov_xml_add_child_element_with_utf8_text_content(nullptr, "c", "x") == nullptr; },
         "Error when creating an XML text child element."},
        {"Latin-1 text child without parent",
         [] { return ov_xml_add_child_element_with_latin1_text_content(nullptr, "c", "x") == nullptr; },
         "Error when creating an XML text child element."},
        {"missing value", [&] { return ov_xml_set_attribute(root, "v", nullptr) == nullptr; },
         "Missing value for XML attribute."},
        {"missing Latin-1 value",
         [&] { return ov_xml_set_attribute_with_latin1_content(root, "v", nullptr) == nullptr; },
         "Missing value for XML attribute."},
        {"attribute without node", [] { return ov_xml_set_attribute(nullptr, "v", "x") == nullptr; },
         "Error when setting an XML attribute."},
        {"number without node", [] { return ov_xml_set_attribute_to_int(nullptr, "v", 1) == nullptr; },
         "Error when setting an XML attribute."},
        {"attribute on text node",
         [&] {
             xmlNode *text = ov_xml_add_child_element_with_utf8_text_content(root, "t", "x");
             return ov_xml_set_attribute_to_double(text->children, "v", 1) == nullptr;
         },
         "Error when setting an XML attribute."},
        {"string of no document",
         [] {
             gsize length = 9;
             return ov_xml_write_to_string(nullptr, &length) == nullptr && length == 0;
         },
         "Could not write XML data to memory buffer."},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        EXPECT_TRUE(c.fails());
        EXPECT_EQ(error_text(), c.error);
    }
    ov_xml_free_doc(nullptr);
}

TEST_F(XmlTest, WritesFilesAndReadsThemBack)
{
    ov::XmlDocPtr doc(ov_xml_new_doc());
    xmlNode *root = ov_xml_add_root_element(doc.get(), "settings");
    ASSERT_NE(root, nullptr);
    xmlNode *group = ov_xml_add_child_element(root, "group");
    ov_xml_set_attribute_with_latin1_content(group, "name", "caf\xE9 & <co>");
    ov_xml_set_attribute_to_double(group, "scale", 1.0 / 3.0);
    ov_xml_add_child_element_with_latin1_text_content(group, "note", " multi\nline \xFF ");

    for (const char *encoding : {"UTF-8", "ISO-8859-1"}) {
        SCOPED_TRACE(encoding);
        const std::string path = dir_.file("out.xml");
        ASSERT_TRUE(ov_xml_write_to_file(doc.get(), path.c_str(), encoding)) << error_text();
        const std::string bytes = ov::test::read_file(path);
        EXPECT_NE(bytes.find("\n  <group"), std::string::npos) << "indented: " << bytes;
        EXPECT_NE(bytes.find(encoding), std::string::npos) << bytes;

        ov::XmlDocPtr back(ov_xml_parse_file(path.c_str()));
        ASSERT_TRUE(back) << error_text();
        const xmlNode *read_group =
            ov_xml_get_required_distinct_child_node(xmlDocGetRootElement(back.get()), "group");
        ASSERT_NE(read_group, nullptr);
        EXPECT_EQ(take(ov_xml_get_required_attribute_value_as_latin1(read_group, "name")), "caf\xE9 & <co>");
        double scale = 0;
        EXPECT_TRUE(
            ov_xml_get_required_attribute_value_as_double_in_range(&scale, read_group, "scale", 0, 1));
        EXPECT_EQ(scale, 1.0 / 3.0);
        gchar *text = nullptr;
        EXPECT_TRUE(ov_xml_get_text_content_from_distinct_child_node_as_latin1(&text, back.get(), read_group,
                                                                               "note"));
        EXPECT_EQ(take(text), " multi\nline \xFF ");

        // Writing the parsed document again gives the same bytes.
        ASSERT_TRUE(ov_xml_write_to_file(back.get(), path.c_str(), encoding));
        EXPECT_EQ(ov::test::read_file(path), bytes);
    }
}

TEST_F(XmlTest, WritingFailures)
{
    ov::XmlDocPtr doc(ov_xml_new_doc());
    ov_xml_add_root_element(doc.get(), "r");

    EXPECT_FALSE(ov_xml_write_to_file(doc.get(), dir_.file("no/such/folder.xml").c_str(), "UTF-8"));
    EXPECT_TRUE(starts_with(error_text(), "Cannot open file.")) << error_text();

    ov_error_clear();
    EXPECT_FALSE(ov_xml_write_to_file(doc.get(), "/dev/full", "UTF-8"));
    EXPECT_EQ(error_text(), "Could not write XML data.");

    ov_error_clear();
    ov::FilePtr stream(std::tmpfile());
    ASSERT_TRUE(stream);
    EXPECT_FALSE(ov_xml_write_to_stream(doc.get(), stream.get(), "X-NOWHERE"));
    EXPECT_EQ(error_text(), "Could not create XML saving context for file.");

    // What the caller wrote to the stream comes before the document.
    ov_error_clear();
    std::fputs("<!-- head -->\n", stream.get());
    EXPECT_TRUE(ov_xml_write_to_stream(doc.get(), stream.get(), "UTF-8"));
    std::rewind(stream.get());
    char line[64] = {};
    EXPECT_NE(std::fgets(line, sizeof line, stream.get()), nullptr);
    EXPECT_STREQ(line, "<!-- head -->\n");
}

// ---------------------------------------------------------------------------
// Hand-written writer.

TEST_F(XmlTest, EscapesLatin1Text)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", ""},
        {"plain text", "plain text"},
        {"a\r\nb", "a&#xD;&#x9;&#xA;b"},
        {"\t\"&'<>", "&#x9;&quot;&amp;&apos;&lt;&gt;"},
        {"\xE9\x80\xFF\x7F", "\xE9\x80\xFF\x7F"},
        {"\r\r\r", "&#xD;&#x9;&#xD;&#x9;&#xD;&#x9;"},
        {"&amp;", "&amp;amp;"},
    };
    for (const auto &[input, expected] : cases) {
        SCOPED_TRACE(input);
        EXPECT_EQ(take(ov_xml_latin1_to_xml(input.c_str())), expected);
    }
    EXPECT_EQ(ov_xml_latin1_to_xml(nullptr), nullptr);
}

TEST_F(XmlTest, WritesTabsAndStrings)
{
    const std::string path = dir_.file("hand.xml");
    ov::FilePtr stream(std::fopen(path.c_str(), "wb"));
    ASSERT_TRUE(stream);
    for (int count : {0, -1, 2, 20})
        EXPECT_TRUE(ov_xml_write_tabs(stream.get(), count));
    EXPECT_TRUE(ov_xml_write_string(stream.get(), "a\r\nb"));
    EXPECT_TRUE(ov_xml_write_string(stream.get(), ""));
    stream.reset();
    EXPECT_EQ(ov::test::read_file(path), std::string(22, '\t') + "a&#xD;&#x9;&#xA;b");

    // A stream that cannot be written to.
    stream.reset(std::fopen(path.c_str(), "rb"));
    ASSERT_TRUE(stream);
    ov_error_clear();
    EXPECT_FALSE(ov_xml_write_tabs(stream.get(), 1));
    EXPECT_EQ(error_text(), "File I/O error when writing to file.");
    ov_error_clear();
    EXPECT_FALSE(ov_xml_write_string(stream.get(), "x"));
    EXPECT_EQ(error_text(), "File I/O error when writing to file.");
}

TEST_F(XmlTest, HandWrittenFileReadsBack)
{
    const std::string text = "line one\r\nline\ttwo \"quoted\" & <tagged> caf\xE9";
    const std::string path = dir_.file("hand.xml");
    ov::FilePtr stream(std::fopen(path.c_str(), "wb"));
    ASSERT_TRUE(stream);
    std::fputs("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r>\n", stream.get());
    ASSERT_TRUE(ov_xml_write_tabs(stream.get(), 1));
    std::fputs("<t v=\"", stream.get());
    ASSERT_TRUE(ov_xml_write_string(stream.get(), text.c_str()));
    std::fputs("\">", stream.get());
    ASSERT_TRUE(ov_xml_write_string(stream.get(), text.c_str()));
    std::fputs("</t>\n</r>\n", stream.get());
    stream.reset();

    ov::XmlDocPtr doc(ov_xml_parse_file(path.c_str()));
    ASSERT_TRUE(doc) << error_text();
    const xmlNode *t = ov_xml_get_required_distinct_child_node(xmlDocGetRootElement(doc.get()), "t");
    ASSERT_NE(t, nullptr);
    // A carriage return comes back followed by a tab.
    const std::string expected = "line one\r\t\nline\ttwo \"quoted\" & <tagged> caf\xE9";
    EXPECT_EQ(take(ov_xml_get_text_content_as_latin1(doc.get(), t)), expected);
    EXPECT_EQ(take(ov_xml_get_required_attribute_value_as_latin1(t, "v")), expected);
}

} // namespace
