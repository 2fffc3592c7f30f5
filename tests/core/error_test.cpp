#include "core/error.h"

#include "support/test_support.h"

#include <cerrno>
#include <string>

namespace
{

using ErrorBuffer = ov::test::ErrorCleared;

// An empty buffer reads as empty text, never null.
TEST_F(ErrorBuffer, AppendPutsNewestSentenceOnTop)
{
    EXPECT_STREQ(ov_error_get(), "");
    ov_error_append("Cause.");
    EXPECT_STREQ(ov_error_get(), "Cause.");
    ov_error_append("Context.");
    EXPECT_STREQ(ov_error_get(), "Context.\n\nCause.");
    ov_error_append_utf8_printf("Could not open: %s", "a.template");
    EXPECT_STREQ(ov_error_get(), "Could not open: a.template\n\nContext.\n\nCause.");
    ov_error_set_utf8_printf("Missing XML attribute: %s", "lang"); // replaces the whole text
    EXPECT_STREQ(ov_error_get(), "Missing XML attribute: lang");
}

TEST_F(ErrorBuffer, OutOfMemoryFlagFollowsLastReplacementThroughAppends)
{
    ov_error_set_out_of_memory();
    ov_error_append("Could not load the template.");
    EXPECT_TRUE(ov_error_did_run_out_of_memory());

    EXPECT_TRUE(ov_error_make_more_informative_if_out_of_memory());
    EXPECT_TRUE(ov_error_did_run_out_of_memory());
    const std::string informative = ov_error_get();
    EXPECT_EQ(informative.rfind("The program has run out of memory.\n\nSuggestion: Consider", 0), 0u);
    EXPECT_EQ(informative.find("Could not load"), std::string::npos);

    ov_error_set("Plain.");
    EXPECT_FALSE(ov_error_did_run_out_of_memory() || ov_error_make_more_informative_if_out_of_memory());
}

TEST_F(ErrorBuffer, LineLimitCutsAfterNthFeedAndDropsTheRunBeforeIt)
{
    const struct {
        const char *text;
        int limit;
        const char *expected;
    } cases[] = {
        // clang-format off
        {"l1\nl2\n\n\nl5", 3, "l1\nl2\n\n(Error message truncated.)"},
        {"l1\nl2\n", 2, "l1\nl2\n\n(Error message truncated.)"}, {"l1\nl2", 2, "l1\nl2"}, {"l1\nl2", -1, "l1\nl2"},
        // clang-format on
    };
    for (const auto &c : cases) {
        ov_error_set(c.text);
        ov_error_limit_line_count(c.limit);
        EXPECT_STREQ(ov_error_get(), c.expected) << "limit " << c.limit << " of " << c.text;
    }
}

TEST_F(ErrorBuffer, ForeignErrorsAreTranslated)
{
    errno = ENOENT;
    ov_error_set_from_errno();
    EXPECT_EQ(std::string(ov_error_get()), std::string("Error 2: ") + g_strerror(ENOENT));

    GError *error = g_error_new_literal(G_FILE_ERROR, 4, "Broken");
    ov_error_set_from_gerror_and_free(error);
    EXPECT_STREQ(ov_error_get(), "GError 4: Broken");
}

TEST_F(ErrorBuffer, CairoNoMemoryIsOutOfMemory)
{
    ov_error_set_from_cairo_status(CAIRO_STATUS_NO_MEMORY);
    EXPECT_TRUE(ov_error_did_run_out_of_memory());
    ov_error_set_from_cairo_status(CAIRO_STATUS_SUCCESS);
    EXPECT_STREQ(ov_error_get(), "An internal error in the graphics subsystem occurred.");
    EXPECT_FALSE(ov_error_did_run_out_of_memory());
}

} // namespace
