#include "docs/codeset.h"
#include "docs/codeset_io.h"
#include "docs/remark.h"

#include "core/raii.h"
#include "docs_test_util.h"

#include <random>
#include <sstream>

namespace
{

using namespace ov::test;
using RemarkListPtr = ov::Owned<OvRemarkList, ov_remark_list_destroy>;
using CodesetPtr = ov::Owned<OvCodeset, ov_codeset_destroy>;
using Codeset = ErrorCleared;

const OvLocale *swedish()
{
    return ov_locale_get_by_tag("sv");
}

OvRemark *make_remark(const char *code, const char *english = "x", const char *swedish_text = nullptr)
{
    OvRemark *remark = ov_remark_new();
    remark->code = g_strdup(code);
    ov_langstr_set_translation(&remark->description, ov_locale_get_uk_english(), english);
    if (swedish_text != nullptr)
        ov_langstr_set_translation(&remark->description, swedish(), swedish_text);
    return remark;
}

// Remarks "code", "code:english" or "code:english/swedish" ("-" for no
// code), appended or inserted sorted.
RemarkListPtr make_list(const char *remarks, bool sorted = false)
{
    RemarkListPtr list(ov_remark_list_new());
    std::istringstream in(remarks);
    for (std::string text; in >> text;) {
        ov::GStrv parts(g_strsplit_set(text.c_str(), ":/", 3));
        char **part = parts.get();
        OvRemark *remark = make_remark(text == "-" ? nullptr : part[0], part[1] ? part[1] : "x",
                                       part[1] ? part[2] : nullptr);
        (sorted ? ov_remark_list_add_remark_sorted : ov_remark_list_add_remark_last)(list.get(), remark);
    }
    return list;
}

// "code" or "code:english" per remark, space-separated.
std::string describe(const OvRemarkList *list, bool with_text = false)
{
    std::string text;
    for (const OvRemark *remark : *list) {
        text += std::string(text.empty() ? "" : " ") + (remark->code != nullptr ? remark->code : "-");
        if (with_text)
            text += std::string(":") + ov_langstr_get_text(remark->description, ov_locale_get_uk_english());
    }
    return text;
}

TEST_F(Codeset, SortedInsertionFollowsTheCascade)
{
    const std::pair<const char *, const char *> cases[] = {
        // clang-format off
        {"R10 R2 R1", "R1 R2 R10"},
        // Case and leading zeros decide only after the looser tests tie.
        {"r2 R2 r02 R02", "R02 r02 R2 r2"}, {"R007 R7 r7", "R007 R7 r7"}, {"b A a B", "A a B b"},
        // A remark without a code goes last when added; later codes walk past it.
        {"- B :x A", "- A B "},
        // clang-format on
    };
    for (const auto &[codes, expected] : cases)
        EXPECT_EQ(describe(make_list(codes, true).get()), expected) << codes;
}

TEST_F(Codeset, EqualCodesKeepInsertionOrderAndLookupsTakeTheFirst)
{
    RemarkListPtr list = make_list("R1:one R2:two R1:uno", true);
    EXPECT_EQ(describe(list.get(), true), "R1:one R1:uno R2:two");
    EXPECT_EQ(ov_remark_list_get_remark_for_code(list.get(), "R1"), list->first());
    EXPECT_EQ(ov_remark_list_get_remark_for_code(list.get(), "r1"), nullptr);
    RemarkListPtr probes = make_list("R1:one R1:one/ett");
    EXPECT_TRUE(ov_remark_list_has_remark(list.get(), "R1", probes->first()->description));
    EXPECT_FALSE(ov_remark_list_has_remark(list.get(), "R1", probes->last()->description));
}

TEST_F(Codeset, SubsetMergeableAndMerge)
{
    // A remark is in a list when some remark of its code holds all its translations.
    const char *big = "A:uno B:b A:one/ett";
    EXPECT_TRUE(ov_remark_list_is_subset(make_list("A:one").get(), make_list(big).get()));
    EXPECT_FALSE(ov_remark_list_is_subset(make_list(big).get(), make_list("A:one").get()));

    RemarkListPtr list = make_list("R10:ten R1:one", true);
    RemarkListPtr others = make_list("R1:one/ett R2:two R1:uno");
    std::string mergeable;
    for (const OvRemark *remark : *others)
        mergeable += ov_remark_list_remark_is_mergeable(list.get(), remark) ? 'T' : 'F';
    EXPECT_EQ(mergeable, "TTF");
    EXPECT_FALSE(ov_remark_list_remarks_are_mergeable(list.get(), others.get()));
    ov_remark_destroy(others->last());
    EXPECT_TRUE(ov_remark_list_remarks_are_mergeable(list.get(), others.get()));
    // A known code takes the new translations; an unknown one is inserted sorted as a copy.
    for (const OvRemark *remark : *others)
        ov_remark_list_merge_remark(list.get(), remark);
    others.reset();
    EXPECT_EQ(describe(list.get(), true), "R1:one R2:two R10:ten");
    EXPECT_STREQ(ov_langstr_get_text(list->first()->description, swedish()), "ett");
}

// Sorting and merging whole lists give what one remark at a time gives,
// whatever the order of the list they go into: equal codes, codes that
// compare alike but differ, empty codes and remarks without a code.
TEST_F(Codeset, WholeListInsertionAndMergeEqualOneAtATime)
{
    const char *pool[] = {"R1", "r1", "R01", "R2", "R10", "a", "A", "9", "09", "10", "", nullptr};
    const char *texts[] = {"one", "uno", "ett"};
    std::mt19937 random(14);
    auto pick = [&](auto &from) { return from[random() % std::size(from)]; };
    auto random_list = [&](int length, bool sorted) {
        RemarkListPtr list(ov_remark_list_new());
        for (int i = 0; i < length; ++i)
            (sorted ? ov_remark_list_add_remark_sorted
                    : ov_remark_list_add_remark_last)(list.get(), make_remark(pick(pool), pick(texts)));
        return list;
    };
    auto clone = [](const OvRemarkList *list) {
        RemarkListPtr copy(ov_remark_list_new());
        ov_remark_list_copy_remarks(copy.get(), list);
        return copy;
    };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        RemarkListPtr base = random_list(random() % 12, round % 2 == 0);
        RemarkListPtr others = random_list(random() % 12, false);

        RemarkListPtr one_by_one = clone(base.get()), whole = clone(base.get()), moved = clone(others.get());
        for (const OvRemark *remark : *others)
            ov_remark_list_add_remark_sorted(one_by_one.get(), ov_remark_clone(remark));
        ov_remark_list_add_remarks_sorted(whole.get(), moved.get());
        EXPECT_TRUE(moved->is_empty());
        EXPECT_EQ(describe(whole.get(), true), describe(one_by_one.get(), true));

        one_by_one = clone(base.get());
        whole = clone(base.get());
        for (const OvRemark *remark : *others)
            ov_remark_list_merge_remark(one_by_one.get(), remark);
        ov_remark_list_merge_remarks(whole.get(), others.get());
        EXPECT_EQ(describe(whole.get(), true), describe(one_by_one.get(), true));
    }
}

const std::string shipped = std::string(OV_SOURCE_DIR) + "/resources/install/codesets/";
const std::string name_element = "<name lang=\"en-uk\">N</name>\n";
const std::string description = "<description lang=\"sv\">b</description>";

std::string codeset_file(const std::string &body)
{
    return "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<codeset>\n" + body + "</codeset>\n";
}

std::string remark_element(const std::string &code, const std::string &rest = description)
{
    return "<remark><code>" + code + "</code>" + rest + "</remark>\n";
}

TEST_F(Codeset, ShippedCodesetsRoundTripByteForByte)
{
    TempDir dir;
    ov::Owned<GDir, g_dir_close> listing(g_dir_open(shipped.c_str(), 0, nullptr));
    int files = 0;
    for (const char *name; listing && (name = g_dir_read_name(listing.get())) != nullptr; ++files) {
        SCOPED_TRACE(name);
        CodesetPtr codeset(ov_codeset_io_read_from_file((shipped + name).c_str()));
        ASSERT_NE(codeset, nullptr) << ov_error_get();
        EXPECT_GE(ov::list_count(*codeset->remarks), 30u);
        ASSERT_TRUE(ov_codeset_io_write_to_file(codeset.get(), dir.file(name).c_str())) << ov_error_get();
        EXPECT_TRUE(read_file(dir.file(name)) == read_file(shipped + name));
    }
    EXPECT_GE(files, 1);
}

TEST_F(Codeset, EntitiesDefaultsAndCharacterDataReadAsTheTreeHasThem)
{
    // Entities with markup, a parsed entity beside the file, a language a
    // DTD gives by default; the text of elements inside a text is left out.
    CodesetPtr codeset(ov_codeset_io_read_from_file(fixture("codesets/dtd.codeset").c_str()));
    ASSERT_NE(codeset, nullptr) << ov_error_get();
    TempDir dir;
    ASSERT_TRUE(ov_codeset_io_write_to_file(codeset.get(), dir.file("out.codeset").c_str()))
        << ov_error_get();
    EXPECT_EQ(read_file(dir.file("out.codeset")), read_file(fixture("codesets/dtd_expected.codeset")));
}

TEST_F(Codeset, BadInputGivesTheExactMessageChain)
{
    const std::string A = remark_element("A"), D = description;
    const std::string X = "<description lang=\"xx\">c</description>";
    auto with = [&](const std::string &remark) { return codeset_file(name_element + remark); };
    const std::string P = "Error parsing codeset file.\n\n";
    const std::string L = libxml_refusal("codeset");
    const std::string missing = P + "Missing remark content in XML data.";
    TempDir dir;
    const std::vector<BadFile> cases = {
        {"truncated", "<codeset>", L},
        {"NUL bytes after the root", codeset_file(name_element + A) + std::string(3, '\0'),
         L + "Extra content"},
        {"wrong root", "<template/>", "Not a codeset file."},
        {"no name", codeset_file(A), P + "Missing XML node: name"},
        {"no remarks", codeset_file(name_element), P + "Missing remarks."},
        {"codes equal after compaction", with(A + remark_element(" A ")), P + "Duplicate remark codes."},
        // The earlier fault counts; the duplicate is found only after sorting.
        {"duplicate before a bad remark",
         with(remark_element("B") + A + remark_element("B") + remark_element(" ")),
         P + "Duplicate remark codes."},
        // Within a remark the message depends on what comes first.
        {"two codes after a description", with("<remark>" + D + "<code>A</code><code>B</code></remark>"),
         P + "Remark in XML has multiple codes."},
        {"unknown locale, second description", with(remark_element("A", D + X)),
         P + "Unsupported locale in XML lang attribute."},
    };
    expect_refusals(
        "codeset", dir,
        [](const char *path) { return CodesetPtr(ov_codeset_io_read_from_file(path)) != nullptr; }, cases);
}

TEST_F(Codeset, FailedSaveKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    CodesetPtr codeset(ov_codeset_io_read_from_file((shipped + "condition_remarks.codeset").c_str()));
    ASSERT_NE(codeset, nullptr);
    expect_failed_saves_keep_the_old_file(
        "a.codeset", [&](const char *path) { return ov_codeset_io_write_to_file(codeset.get(), path); });
}

} // namespace
