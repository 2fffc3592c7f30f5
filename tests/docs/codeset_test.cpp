#include "docs/codeset.h"
#include "docs/codeset_io.h"
#include "docs/remark.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/xml.h"
#include "lang/langstr.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <random>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

namespace {

using ov::test::TempDir;
using Translations = std::vector<std::pair<const char *, const char *>>;

langstr *make_langstr(const Translations &translations)
{
    langstr *ls = nullptr;
    for (const auto &[tag, text] : translations)
        ov_langstr_set_translation(&ls, ov_locale_get_by_tag(tag), text);
    return ls;
}

OvRemark *make_remark(const char *code, const Translations &translations = {{"en-uk", "x"}})
{
    OvRemark *remark = ov_remark_new();
    remark->code = g_strdup(code);
    remark->description = make_langstr(translations);
    return remark;
}

// "code" or "code:text" per remark, the text in UK English, space-separated.
std::string describe(const OvRemarkList *list, bool with_text = false)
{
    std::string text;
    for (const OvRemark *remark : *list) {
        if (!text.empty())
            text += ' ';
        text += remark->code != nullptr ? remark->code : "-";
        if (with_text) {
            const char *description = ov_langstr_get_text(remark->description, ov_locale_get_uk_english());
            text += std::string(":") + (description != nullptr ? description : "");
        }
    }
    return text;
}

struct RemarkListDeleter {
    void operator()(OvRemarkList *list) const { ov_remark_list_destroy(list); }
};
using RemarkListPtr = std::unique_ptr<OvRemarkList, RemarkListDeleter>;
struct CodesetDeleter {
    void operator()(OvCodeset *codeset) const { ov_codeset_destroy(codeset); }
};
using CodesetPtr = std::unique_ptr<OvCodeset, CodesetDeleter>;

RemarkListPtr sorted_list(const std::vector<const char *> &codes)
{
    RemarkListPtr list(ov_remark_list_new());
    for (const char *code : codes)
        ov_remark_list_add_remark_sorted(list.get(), make_remark(code, {{"en-uk", code ? code : "none"}}));
    return list;
}

class Codeset : public ::testing::Test {
protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

// Remarks and remark lists

TEST_F(Codeset, SortedInsertionFollowsTheCascade)
{
    struct Case {
        std::vector<const char *> codes;
        const char *expected;
    };
    const Case cases[] = {
        {{"10", "9", "a", "B"}, "9 10 a B"},
        {{"R10", "R2", "R1"}, "R1 R2 R10"},
        // Case and leading zeros decide only after the looser tests tie.
        {{"r2", "R2", "r02", "R02"}, "R02 r02 R2 r2"},
        {{"R007", "R7", "r7"}, "R007 R7 r7"},
        {{"b", "A", "a", "B"}, "A a B b"},
        // A remark without a code goes last when it is added; later codes
        // walk past it, since no code compares greater than a text.
        {{nullptr, "B", "", "A"}, "- A B "},
        {{}, ""},
    };
    for (const Case &c : cases) {
        RemarkListPtr list = sorted_list(c.codes);
        EXPECT_EQ(describe(list.get()), c.expected);
    }
}

TEST_F(Codeset, CompareCodesIsAntisymmetric)
{
    const char *codes[] = {"1", "01", "001", "a", "A", "a1", "A01", "a 1", "a10", "a9", "", "x y", "xy"};
    for (const char *a : codes)
        for (const char *b : codes) {
            int ab = ov_remark_compare_codes(a, b);
            int ba = ov_remark_compare_codes(b, a);
            EXPECT_EQ(ab == 0, g_strcmp0(a, b) == 0) << a << " " << b;
            EXPECT_EQ(ab < 0, ba > 0) << a << " " << b;
        }
}

TEST_F(Codeset, EqualCodesKeepInsertionOrder)
{
    RemarkListPtr list(ov_remark_list_new());
    ov_remark_list_add_remark_sorted(list.get(), make_remark("R1", {{"en-uk", "first"}}));
    ov_remark_list_add_remark_sorted(list.get(), make_remark("R2", {{"en-uk", "other"}}));
    ov_remark_list_add_remark_sorted(list.get(), make_remark("R1", {{"en-uk", "second"}}));
    EXPECT_EQ(describe(list.get(), true), "R1:first R1:second R2:other");
    // Lookups take the first of equal codes.
    EXPECT_STREQ(ov_langstr_get_text(ov_remark_list_get_remark_for_code(list.get(), "R1")->description, nullptr),
                 "first");
    EXPECT_EQ(ov_remark_list_get_remark_for_code(list.get(), "r1"), nullptr);
}

TEST_F(Codeset, AddFirstLastIndexAndDestroy)
{
    RemarkListPtr list(ov_remark_list_new());
    EXPECT_TRUE(ov_remark_list_is_empty(list.get()));
    OvRemark *b = make_remark("b");
    OvRemark *a = make_remark("a");
    OvRemark *c = make_remark("c");
    ov_remark_list_add_remark_last(list.get(), b);
    ov_remark_list_add_remark_first(list.get(), a);
    ov_remark_list_add_remark_last(list.get(), c);
    EXPECT_EQ(describe(list.get()), "a b c");
    EXPECT_EQ(ov_remark_get_index(a), 0);
    EXPECT_EQ(ov_remark_get_index(c), 2);

    ov_remark_remove(b);
    EXPECT_EQ(describe(list.get()), "a c");
    EXPECT_EQ(b->previous, nullptr);
    EXPECT_EQ(b->next, nullptr);
    ov_remark_destroy(b);
    ov_remark_destroy(nullptr);

    ov_remark_list_destroy_remarks(list.get());
    EXPECT_TRUE(ov_remark_list_is_empty(list.get()));
    ov_remark_list_destroy(nullptr);
}

TEST_F(Codeset, CloneAndCopyAreDeepAndUnsorted)
{
    RemarkListPtr source(ov_remark_list_new());
    ov_remark_list_add_remark_last(source.get(), make_remark("z", {{"en-uk", "zed"}, {"sv", "zäta"}}));
    ov_remark_list_add_remark_last(source.get(), make_remark("a", {{"en-uk", "ay"}}));

    RemarkListPtr destination = sorted_list({"m"});
    ov_remark_list_copy_remarks(destination.get(), source.get());
    EXPECT_EQ(describe(destination.get(), true), "m:m z:zed a:ay");

    OvRemark *original = source->first();
    OvRemark *copy = destination->first()->next;
    EXPECT_NE(copy->code, original->code);
    EXPECT_NE(copy->description, original->description);
    EXPECT_TRUE(ov_langstr_is_identical(copy->description, original->description));

    OvRemark *clone = ov_remark_clone(original);
    EXPECT_EQ(clone->previous, nullptr);
    EXPECT_EQ(clone->next, nullptr);
    EXPECT_STREQ(clone->code, "z");
    ov_remark_destroy(clone);
}

TEST_F(Codeset, HasRemarkComparesTheFirstRemarkOfTheCode)
{
    RemarkListPtr list(ov_remark_list_new());
    ov_remark_list_add_remark_last(list.get(), make_remark("A", {{"en-uk", "one"}}));
    ov_remark_list_add_remark_last(list.get(), make_remark("A", {{"en-uk", "two"}}));
    langstr *one = make_langstr({{"en-uk", "one"}});
    langstr *two = make_langstr({{"en-uk", "two"}});
    langstr *one_and_sv = make_langstr({{"en-uk", "one"}, {"sv", "ett"}});
    EXPECT_TRUE(ov_remark_list_has_remark(list.get(), "A", one));
    EXPECT_FALSE(ov_remark_list_has_remark(list.get(), "A", two));
    EXPECT_FALSE(ov_remark_list_has_remark(list.get(), "A", one_and_sv));
    EXPECT_FALSE(ov_remark_list_has_remark(list.get(), "B", one));
    ov_langstr_free(one);
    ov_langstr_free(two);
    ov_langstr_free(one_and_sv);
}

TEST_F(Codeset, SubsetLooksAtEveryRemarkOfTheSameCode)
{
    auto list = [](std::vector<std::pair<const char *, Translations>> remarks) {
        RemarkListPtr result(ov_remark_list_new());
        for (auto &[code, translations] : remarks)
            ov_remark_list_add_remark_last(result.get(), make_remark(code, translations));
        return result;
    };
    RemarkListPtr empty = list({});
    RemarkListPtr small = list({{"A", {{"en-uk", "one"}}}});
    RemarkListPtr big = list({{"A", {{"en-uk", "uno"}}},
                              {"B", {{"en-uk", "b"}}},
                              {"A", {{"en-uk", "one"}, {"sv", "ett"}}}});
    RemarkListPtr other_code = list({{"a", {{"en-uk", "one"}}}});

    EXPECT_TRUE(ov_remark_list_is_subset(empty.get(), empty.get()));
    EXPECT_TRUE(ov_remark_list_is_subset(empty.get(), big.get()));
    EXPECT_FALSE(ov_remark_list_is_subset(small.get(), empty.get()));
    // The second remark with code A holds all of small's translations.
    EXPECT_TRUE(ov_remark_list_is_subset(small.get(), big.get()));
    EXPECT_FALSE(ov_remark_list_is_subset(big.get(), small.get()));
    EXPECT_FALSE(ov_remark_list_is_subset(other_code.get(), big.get()));
}

TEST_F(Codeset, MergeabilityAndMerge)
{
    RemarkListPtr list(ov_remark_list_new());
    ov_remark_list_add_remark_sorted(list.get(), make_remark("R10", {{"en-uk", "ten"}}));
    ov_remark_list_add_remark_sorted(list.get(), make_remark("R1", {{"en-uk", "one"}}));

    OvRemark *agreeing = make_remark("R1", {{"en-uk", "one"}, {"sv", "ett"}});
    OvRemark *contradicting = make_remark("R1", {{"en-uk", "uno"}});
    OvRemark *unknown = make_remark("R2", {{"en-uk", "two"}});
    EXPECT_TRUE(ov_remark_list_remark_is_mergeable(list.get(), agreeing));
    EXPECT_FALSE(ov_remark_list_remark_is_mergeable(list.get(), contradicting));
    EXPECT_TRUE(ov_remark_list_remark_is_mergeable(list.get(), unknown));

    RemarkListPtr others(ov_remark_list_new());
    ov_remark_list_add_remark_last(others.get(), ov_remark_clone(agreeing));
    ov_remark_list_add_remark_last(others.get(), ov_remark_clone(unknown));
    EXPECT_TRUE(ov_remark_list_remarks_are_mergeable(list.get(), others.get()));
    ov_remark_list_add_remark_last(others.get(), ov_remark_clone(contradicting));
    EXPECT_FALSE(ov_remark_list_remarks_are_mergeable(list.get(), others.get()));

    // A known code changes only that remark; an unknown one is inserted
    // sorted as a copy.
    ov_remark_list_merge_remark(list.get(), agreeing);
    ov_remark_list_merge_remark(list.get(), unknown);
    EXPECT_EQ(describe(list.get(), true), "R1:one R2:two R10:ten");
    EXPECT_STREQ(ov_langstr_get_text(list->first()->description, ov_locale_get_by_tag("sv")), "ett");
    EXPECT_NE(list->first()->next, unknown);
    EXPECT_EQ(unknown->previous, nullptr);

    ov_remark_destroy(agreeing);
    ov_remark_destroy(contradicting);
    ov_remark_destroy(unknown);
}

// Codesets

TEST_F(Codeset, CloneCopiesEveryField)
{
    CodesetPtr codeset(ov_codeset_new());
    codeset->name = make_langstr({{"en-uk", "Name"}});
    codeset->author = make_langstr({{"sv", "Författare"}});
    codeset->version = g_strdup("2");
    codeset->outdated = TRUE;
    ov_remark_list_add_remark_last(codeset->remarks, make_remark("b"));
    ov_remark_list_add_remark_last(codeset->remarks, make_remark("a"));

    CodesetPtr copy(ov_codeset_clone(codeset.get()));
    EXPECT_TRUE(ov_langstr_is_identical(copy->name, codeset->name));
    EXPECT_TRUE(ov_langstr_is_identical(copy->author, codeset->author));
    EXPECT_NE(copy->author, codeset->author);
    EXPECT_STREQ(copy->version, "2");
    EXPECT_TRUE(copy->outdated);
    EXPECT_EQ(describe(copy->remarks), "b a");
    EXPECT_NE(copy->remarks->first(), codeset->remarks->first());
}

TEST_F(Codeset, FormatUiString)
{
    struct Case {
        Translations name;
        Translations author;
        const char *version;
        gboolean outdated;
        const char *expected;
    };
    const Case cases[] = {
        {{{"en-uk", "Remarks"}}, {}, nullptr, FALSE, "Remarks"},
        {{{"en-uk", "Remarks"}}, {{"sv", "Åsa"}}, "1.2", FALSE, "Remarks (Åsa) 1.2"},
        {{{"sv", "Anmärkningar"}}, {}, "3", TRUE, "Anmärkningar 3 (outdated?)"},
        {{}, {}, nullptr, TRUE, " (outdated?)"},
    };
    for (const Case &c : cases) {
        CodesetPtr codeset(ov_codeset_new());
        auto latin1 = [](const Translations &translations) {
            Translations converted;
            static std::vector<ov::GStr> keep;
            for (auto [tag, text] : translations) {
                keep.push_back(ov::gstr(g_convert(text, -1, "ISO-8859-1", "UTF-8", nullptr, nullptr, nullptr)));
                converted.emplace_back(tag, keep.back().get());
            }
            return converted;
        };
        codeset->name = make_langstr(latin1(c.name));
        codeset->author = make_langstr(latin1(c.author));
        codeset->version = g_strdup(c.version);
        codeset->outdated = c.outdated;
        ov::GStr text = ov::gstr(ov_codeset_format_ui_string(codeset.get()));
        EXPECT_STREQ(text.get(), c.expected);
    }
}

TEST_F(Codeset, CodesetListIndex)
{
    ov::SentinelList<OvCodeset> list;
    ov::list_init(list);
    OvCodeset *a = ov_codeset_new();
    OvCodeset *b = ov_codeset_new();
    ov::list_append(list, a);
    ov::list_append(list, b);
    EXPECT_EQ(ov_codeset_get_index(b), 1);
    ov_codeset_remove(a);
    EXPECT_EQ(ov_codeset_get_index(b), 0);
    ov_codeset_destroy(a);
    ov::list_destroy(list, ov_codeset_destroy);
}

// The codeset file

std::string codeset_file(const std::string &body)
{
    return "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<codeset>\n" + body + "</codeset>\n";
}

constexpr const char *name_element = "<name lang=\"en-uk\">N</name>\n";

std::string remark_element(const std::string &inner) { return "<remark>" + inner + "</remark>\n"; }

TEST_F(Codeset, ReadsAndWritesTheShippedCodesetByteForByte)
{
    const std::string path = std::string(OV_SOURCE_DIR) + "/resources/install/codesets/condition_remarks.codeset";
    CodesetPtr codeset(ov_codeset_io_read_from_file(path.c_str()));
    ASSERT_NE(codeset, nullptr) << ov_error_get();
    EXPECT_EQ(ov::list_count(*codeset->remarks), 30u);
    ov::GStr description = ov::gstr(ov_codeset_format_ui_string(codeset.get()));
    EXPECT_STREQ(description.get(), "Condition remarks (Orvane conservation team) 1.0");

    TempDir dir;
    const std::string copy = dir.file("copy.codeset");
    ASSERT_TRUE(ov_codeset_io_write_to_file(codeset.get(), copy.c_str())) << ov_error_get();
    EXPECT_EQ(ov::test::read_file(copy), ov::test::read_file(path));
}

TEST_F(Codeset, ReaderSortsAndNormalises)
{
    TempDir dir;
    const std::string path = dir.file("a.codeset");
    ov::test::write_file(path, codeset_file(std::string(name_element) + "<author lang=\"sv\">  S\t\tT </author>" +
                                            "<version> 1 \n 2 </version>" +
                                            remark_element("<code>10</code><description lang=\"en\">ten</description>") +
                                            remark_element("<code> 9 </code><description lang=\"\">nine</description>") +
                                            remark_element("<code>a</code><!-- c --><description lang=\"fr\">a</description><other/>") +
                                            remark_element("<description lang=\"de\">b</description><code>B</code>") +
                                            remark_element("<code>R1</code><description lang=\"en-uk\">x</description>") +
                                            remark_element("<code>r1</code><description lang=\"en-uk\">y</description>")));
    CodesetPtr codeset(ov_codeset_io_read_from_file(path.c_str()));
    ASSERT_NE(codeset, nullptr) << ov_error_get();
    EXPECT_EQ(describe(codeset->remarks), "9 10 a B R1 r1");
    EXPECT_STREQ(codeset->version, "1 2");
    EXPECT_STREQ(ov_langstr_get_text(codeset->author, nullptr), "S T");
    EXPECT_FALSE(codeset->outdated);

    const std::string written = dir.file("b.codeset");
    ASSERT_TRUE(ov_codeset_io_write_to_file(codeset.get(), written.c_str()));
    EXPECT_EQ(ov::test::read_file(written),
              "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<codeset>\n\n"
              "\t<name lang=\"en-uk\">N</name>\n"
              "\t<author lang=\"sv\">S T</author>\n"
              "\t<version>1 2</version>\n"
              "\n\t<remark>\n\t\t<code>9</code>\n\t\t<description lang=\"\">nine</description>\n\t</remark>\n"
              "\n\t<remark>\n\t\t<code>10</code>\n\t\t<description lang=\"en-uk\">ten</description>\n\t</remark>\n"
              "\n\t<remark>\n\t\t<code>a</code>\n\t\t<description lang=\"fr-fr\">a</description>\n\t</remark>\n"
              "\n\t<remark>\n\t\t<code>B</code>\n\t\t<description lang=\"de-de\">b</description>\n\t</remark>\n"
              "\n\t<remark>\n\t\t<code>R1</code>\n\t\t<description lang=\"en-uk\">x</description>\n\t</remark>\n"
              "\n\t<remark>\n\t\t<code>r1</code>\n\t\t<description lang=\"en-uk\">y</description>\n\t</remark>\n"
              "\n</codeset>\n");
}

// The reader finds positions by binary search; the order must be the one
// that sorted insertion one by one gives, whatever the order in the file.
TEST_F(Codeset, ReaderOrderEqualsSortedInsertion)
{
    std::vector<std::string> codes = {"a 1", "a1", "A01", "a001", "A1", "1.05", "1.5", "1.50", "x10", "x9",
                                      "X9",  "x09", "10",   "9",    "09",  "0",    "00",  "a",    "B",   "b b",
                                      "bb",  "R2",  "r02",  "R02",  "r2",  "R10",  "R1a", "R1 a", "\xe5", "\xc5"};
    std::mt19937 random(7);
    TempDir dir;
    const std::string path = dir.file("order.codeset");
    for (int round = 0; round < 20; round++) {
        std::shuffle(codes.begin(), codes.end(), random);
        std::string body = name_element;
        RemarkListPtr expected(ov_remark_list_new());
        for (const std::string &code : codes) {
            body += remark_element("<code>" + code + "</code><description lang=\"sv\">x</description>");
            ov_remark_list_add_remark_sorted(expected.get(), make_remark(code.c_str()));
        }
        ov::test::write_file(path, codeset_file(body));
        CodesetPtr codeset(ov_codeset_io_read_from_file(path.c_str()));
        ASSERT_NE(codeset, nullptr) << ov_error_get();
        EXPECT_EQ(describe(codeset->remarks), describe(expected.get()));
    }
}

TEST_F(Codeset, WriterEscapesTextsButNotTheCode)
{
    CodesetPtr codeset(ov_codeset_new());
    codeset->name = make_langstr({{"en-uk", "A & B"}});
    codeset->version = g_strdup("<1>");
    ov_remark_list_add_remark_last(codeset->remarks, make_remark("R&D", {{"sv", "\"x\" 'y'"}}));
    TempDir dir;
    const std::string path = dir.file("c.codeset");
    ASSERT_TRUE(ov_codeset_io_write_to_file(codeset.get(), path.c_str()));
    EXPECT_EQ(ov::test::read_file(path),
              "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<codeset>\n\n"
              "\t<name lang=\"en-uk\">A &amp; B</name>\n"
              "\t<version>&lt;1&gt;</version>\n"
              "\n\t<remark>\n\t\t<code>R&D</code>\n"
              "\t\t<description lang=\"sv\">&quot;x&quot; &apos;y&apos;</description>\n\t</remark>\n"
              "\n</codeset>\n");
}

TEST_F(Codeset, ReaderMessages)
{
    const std::string good_remark = remark_element("<code>A</code><description lang=\"en-uk\">a</description>");
    const std::string parsing = "Error parsing codeset file.\n\n";
    struct Case {
        const char *what;
        std::string contents;
        std::string expected;
    };
    const Case cases[] = {
        {"wrong root", "<?xml version=\"1.0\"?><template/>", "Not a codeset file."},
        {"no name", codeset_file(good_remark), parsing + "Missing XML node: name"},
        {"no remarks", codeset_file(name_element), parsing + "Missing remarks."},
        {"two versions", codeset_file(name_element + std::string("<version>1</version><version>2</version>") + good_remark),
         parsing + "Duplicate XML nodes found where not allowed."},
        {"empty version", codeset_file(name_element + std::string("<version> </version>") + good_remark),
         parsing + "Missing text content in XML.\n\nText content is empty."},
        {"duplicate codes", codeset_file(name_element + good_remark + good_remark), parsing + "Duplicate remark codes."},
        {"duplicate after compaction",
         codeset_file(name_element + good_remark + remark_element("<code> A </code><description lang=\"sv\">b</description>")),
         parsing + "Duplicate remark codes."},
        {"two codes after a description",
         codeset_file(name_element + remark_element("<description lang=\"sv\">b</description><code>A</code><code>B</code>")),
         parsing + "Remark in XML has multiple codes."},
        {"two codes before a description",
         codeset_file(name_element + remark_element("<code>A</code><code>B</code><description lang=\"sv\">b</description>")),
         parsing + "Missing remark content in XML data."},
        {"empty code", codeset_file(name_element + remark_element("<code> \t</code><description lang=\"sv\">b</description>")),
         parsing + "Missing remark content in XML data."},
        {"no code", codeset_file(name_element + remark_element("<description lang=\"sv\">b</description>")),
         parsing + "Missing remark content in XML data."},
        {"no description", codeset_file(name_element + remark_element("<code>A</code>")),
         parsing + "Missing remark content in XML data."},
        {"unknown locale in the only description",
         codeset_file(name_element + remark_element("<code>A</code><description lang=\"xx\">b</description>")),
         parsing + "Missing remark content in XML data."},
        {"unknown locale in a second description",
         codeset_file(name_element + remark_element("<code>A</code><description lang=\"sv\">b</description>"
                                                    "<description lang=\"xx\">c</description>")),
         parsing + "Unsupported locale in XML lang attribute."},
        {"empty second description",
         codeset_file(name_element + remark_element("<code>A</code><description lang=\"sv\">b</description>"
                                                    "<description lang=\"de\"> </description>")),
         parsing + "Empty text content in XML where not allowed."},
        {"unknown locale in the name",
         codeset_file("<name lang=\"xx\">N</name>" + good_remark), parsing + "Unsupported locale in XML lang attribute."},
        {"non-Latin-1 name",
         "<?xml version=\"1.0\" encoding=\"utf-8\"?><codeset><name lang=\"sv\">\xe2\x82\xac</name>" + good_remark +
             "</codeset>",
         parsing + "Invalid XML node content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed."},
        {"non-Latin-1 code after a description",
         "<?xml version=\"1.0\" encoding=\"utf-8\"?><codeset>" + std::string(name_element) +
             remark_element("<description lang=\"sv\">b</description><code>\xce\xa9</code>") + "</codeset>",
         parsing + "Missing remark content in XML data."},
        {"non-Latin-1 second description",
         "<?xml version=\"1.0\" encoding=\"utf-8\"?><codeset>" + std::string(name_element) +
             remark_element("<code>A</code><description lang=\"sv\">b</description>"
                            "<description lang=\"de\">\xce\xa9</description>") +
             "</codeset>",
         parsing + "Invalid XML node content.\n\nCharacter incompatible with ISO-8859-1 found where not allowed."},
    };
    TempDir dir;
    const std::string path = dir.file("bad.codeset");
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_clear();
        ov::test::write_file(path, c.contents);
        EXPECT_EQ(ov_codeset_io_read_from_file(path.c_str()), nullptr);
        EXPECT_EQ(ov_error_get(), c.expected);
    }
}

TEST_F(Codeset, ReaderRefusesBrokenFiles)
{
    TempDir dir;
    const std::string path = dir.file("bad.codeset");
    std::string deep = codeset_file(std::string(name_element) + "<remark><code>A</code><description lang=\"sv\">");
    deep.resize(deep.size() - 11);
    for (int i = 0; i < 100000; i++)
        deep += "<b>";
    const std::string cases[] = {
        "",
        "<codeset>",
        codeset_file(name_element + remark_element("<code>A&B</code><description lang=\"sv\">b</description>")),
        deep,
        std::string("\0\1\2<codeset/>", 13),
    };
    for (const std::string &contents : cases) {
        ov_error_clear();
        ov::test::write_file(path, contents);
        EXPECT_EQ(ov_codeset_io_read_from_file(path.c_str()), nullptr);
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Error loading codeset file.\n\nCould not parse XML data.\n\n"))
            << ov_error_get();
    }

    ov_error_clear();
    EXPECT_EQ(ov_codeset_io_read_from_file(dir.file("missing.codeset").c_str()), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Error loading codeset file.\n\nCannot open file.\n\nError 2: "))
        << ov_error_get();
}

TEST_F(Codeset, WriteFailuresKeepTheOldFile)
{
    TempDir dir;
    const std::string path = dir.file("a.codeset");
    ov::test::write_file(path, "old");

    CodesetPtr codeset(ov_codeset_new());
    codeset->name = make_langstr({{"en-uk", "Name"}});
    for (int i = 0; i < 2000; i++) {
        std::string code = "R" + std::to_string(i);
        ov_remark_list_add_remark_last(codeset->remarks, make_remark(code.c_str(), {{"en-uk", "A remark"}}));
    }
    int status = ov::test::run_in_child([&] {
        signal(SIGXFSZ, SIG_IGN);
        struct rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        ov_error_clear();
        return !ov_codeset_io_write_to_file(codeset.get(), path.c_str()) &&
               g_strcmp0(ov_error_get(), "File I/O error when writing to file.") == 0;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ov::test::read_file(path), "old");

    ov_error_clear();
    EXPECT_FALSE(ov_codeset_io_write_to_file(codeset.get(), dir.file("missing/a.codeset").c_str()));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot create file.\n\nCannot open file.\n\nError 2: "))
        << ov_error_get();

    GDir *listing = g_dir_open(dir.path().c_str(), 0, nullptr);
    int entries = 0;
    while (g_dir_read_name(listing) != nullptr)
        entries++;
    g_dir_close(listing);
    EXPECT_EQ(entries, 1);
}

} // namespace
