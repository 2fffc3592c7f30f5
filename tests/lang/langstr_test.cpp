#include "lang/langstr.h"

#include <gtest/gtest.h>

#include "lang/active_locale.h"
#include "lang/lang_test_util.h"

namespace
{

using ov::test::describe;
using ov::test::langstr_of;
using ov::test::LangstrPtr;
using ov::test::locale;

// Restores the process-wide active locale.
struct Langstr : ::testing::Test {
    const OvLocale *saved = nullptr;
    void SetUp() override { saved = ov_ovinternal_get_active_locale(); }
    void TearDown() override { ov_ovinternal_set_active_locale(saved); }
};

TEST_F(Langstr, TextChoiceFallsBackInFourSteps)
{
    struct Case {
        const char *translations;
        const char *shown_for;
        const char *expected;
    } cases[] = {
        // 1: exact locale.
        {"en-us=Color en-uk=Colour", "en-us", "Color"},
        // 2: same language, smallest tag.
        {"sv=Hus", "sv-fi", "Hus"},
        {"en-us=Color en-uk=Colour", "en-au", "Colour"},
        {"fr-ca=A fr-be=B fr-ch=C", "fr-fr", "B"},
        // 3: UK English, exactly or by language.
        {"de-de=Haus en-uk=House", "fr-fr", "House"},
        {"de-de=Haus en-us=Home", "fr-fr", "Home"},
        // 4: smallest tag of all; the undefined text is the neutral default.
        {"sv=Hus", "en-us", "Hus"},
        {"de-de=Y =X", "fr-fr", "X"},
        {"sv=Hus da=Hus2", "fi", "Hus2"},
        // The undefined text takes part in step 2 only for the undefined locale.
        {"=X sv=Hus", "sv-fi", "Hus"},
        {"sv=Hus =X", "", "X"},
        // Ties keep the earlier translation.
        {"=first =second", "fi", "first"},
        {"", "sv", nullptr},
    };
    for (const Case &c : cases) {
        LangstrPtr ls = langstr_of(c.translations);
        EXPECT_STREQ(ov_langstr_get_text(ls.get(), locale(c.shown_for)), c.expected)
            << c.translations << " for " << c.shown_for;
    }
}

TEST_F(Langstr, TextChoiceFollowsTheActiveLocale)
{
    LangstrPtr ls = langstr_of("sv=Hus da=Hus2 en-uk=House");
    ov_ovinternal_set_active_locale(locale("da"));
    EXPECT_STREQ(ov_langstr_get_text(ls.get(), nullptr), "Hus2");
    ov_ovinternal_set_active_locale(locale("sv-fi"));
    EXPECT_STREQ(ov_langstr_get_text(ls.get(), nullptr), "Hus");
    ov_ovinternal_set_active_locale(nullptr);
    EXPECT_STREQ(ov_langstr_get_text(ls.get(), nullptr), "House");
}

TEST_F(Langstr, PartialLookups)
{
    LangstrPtr ls = langstr_of("en-us=Color en-uk=Colour =X sv=Hus");
    EXPECT_STREQ(ov_langstr_get_text_for_locale_or_language(ls.get(), locale("en-au")), "Colour");
    EXPECT_EQ(ov_langstr_get_text_for_locale_or_language(ls.get(), locale("de-de")), nullptr);
    EXPECT_STREQ(ov_langstr_get_text_for_language(ls.get(), locale("en-us")->language), "Colour");
    EXPECT_STREQ(ov_langstr_get_text_for_language(ls.get(), nullptr), "X");
    EXPECT_EQ(ov_langstr_get_text_for_language(ls.get(), locale("da")->language), nullptr);
    EXPECT_STREQ(ov_langstr_get_text_for_locale(ls.get(), locale("sv")), "Hus");
    EXPECT_EQ(ov_langstr_get_text_for_locale(ls.get(), locale("sv-fi")), nullptr);
    EXPECT_EQ(ov_langstr_get_text_for_locale(nullptr, locale("sv")), nullptr);
    EXPECT_EQ(ov_langstr_get_text_for_locale_or_language(nullptr, locale("sv")), nullptr);
}

// Runs an operation that takes the place holding the first translation.
template <class Op> gboolean through_reference(LangstrPtr &ls, Op op)
{
    langstr *raw = ls.release();
    gboolean result = op(&raw);
    ls.reset(raw);
    return result;
}

TEST_F(Langstr, SetTranslation)
{
    struct Case {
        const char *before;
        const char *tag;
        const char *text;
        gboolean changed;
        const char *after;
    } cases[] = {
        {"", "sv", "Hus", TRUE, "sv=Hus"},
        {"", "", "Hus", TRUE, "=Hus"},
        {"sv=Hus", "sv", "Hus", FALSE, "sv=Hus"},
        {"sv=Hus da=B", "sv", "Hem", TRUE, "sv=Hem da=B"},
        {"sv=Hus", "da", "Hus", TRUE, "sv=Hus da=Hus"},
        // A defined locale re-labels an undefined translation in place.
        {"sv=A =Hus nb=C", "da", "Hus", TRUE, "sv=A da=Hus nb=C"},
        {"=Hus", "da", "Hus", TRUE, "da=Hus"},
        // An undefined text that any translation has is not added.
        {"da=Hus", "", "Hus", FALSE, "da=Hus"},
        {"=Hus", "", "Hus", FALSE, "=Hus"},
        {"=Hus da=B", "", "Hem", TRUE, "=Hus da=B =Hem"},
        {"sv=Hus", "sv", "", TRUE, "sv="},
    };
    for (const Case &c : cases) {
        LangstrPtr ls = langstr_of(c.before);
        EXPECT_EQ(through_reference(
                      ls, [&](langstr **r) { return ov_langstr_set_translation(r, locale(c.tag), c.text); }),
                  c.changed)
            << c.before << " + " << c.tag << "=" << c.text;
        EXPECT_EQ(describe(ls.get()), c.after);
    }
}

TEST_F(Langstr, RemoveTranslationAndClone)
{
    LangstrPtr ls = langstr_of("=A sv=Hus =B da=C");
    LangstrPtr copy(ov_langstr_clone(ls.get()));
    auto remove = [&](const char *tag) {
        return through_reference(ls,
                                 [&](langstr **r) { return ov_langstr_remove_translation(r, locale(tag)); });
    };
    EXPECT_TRUE(remove(""));
    EXPECT_EQ(describe(ls.get()), "sv=Hus =B da=C");
    EXPECT_FALSE(remove("nb"));
    EXPECT_TRUE(remove("da"));
    EXPECT_TRUE(remove("sv"));
    EXPECT_TRUE(remove(""));
    EXPECT_EQ(ls.get(), nullptr);
    EXPECT_FALSE(remove(""));

    // The clone is deep and unaffected.
    EXPECT_EQ(describe(copy.get()), "=A sv=Hus =B da=C");
    EXPECT_EQ(ov_langstr_clone(nullptr), nullptr);
    ov_langstr_free(nullptr);
}

TEST_F(Langstr, IdenticalAndSubset)
{
    struct Case {
        const char *a;
        const char *b;
        bool identical;
        bool subset;
    } cases[] = {
        {"", "", true, true},
        {"", "sv=A", false, true},
        {"sv=A", "", false, false},
        {"sv=A da=B", "sv=A da=B", true, true},
        {"sv=A da=B", "da=B sv=A", false, true},
        {"sv=A", "sv=A da=B", false, true},
        {"sv=A", "sv=B da=A", false, false},
        {"sv=A", "da=A", false, false},
        // An undefined translation is matched by its text in any locale.
        {"=A", "da=A", false, true},
        {"=A sv=B", "sv=B =C", false, false},
        {"da=A", "=A", false, false},
        {"=A", "=A", true, true},
    };
    for (const Case &c : cases) {
        LangstrPtr a = langstr_of(c.a), b = langstr_of(c.b);
        EXPECT_EQ(bool(ov_langstr_is_identical(a.get(), b.get())), c.identical) << c.a << " / " << c.b;
        EXPECT_EQ(bool(ov_langstr_is_subset(a.get(), b.get())), c.subset) << c.a << " / " << c.b;
    }
}

TEST_F(Langstr, MergeableAndMerge)
{
    struct Case {
        const char *a;
        const char *b;
        bool mergeable;
        gboolean changed;
        const char *merged;
    } cases[] = {
        {"sv=A", "sv=B", false, FALSE, "sv=A"},
        {"sv=A", "da=B", false, FALSE, "sv=A"},
        {"sv=A da=B", "sv=A en-uk=C", true, TRUE, "sv=A da=B en-uk=C"},
        {"", "sv=A", false, FALSE, ""},
        {"sv=A", "", false, FALSE, "sv=A"},
        {"sv=A", "sv=A", true, FALSE, "sv=A"},
        // An undefined translation pairs with everything but never conflicts.
        {"=A", "da=A", true, TRUE, "da=A"},
        {"=A nb=X", "da=A sv=B", true, TRUE, "da=A nb=X sv=B"},
        {"da=A", "=A =B", true, TRUE, "da=A =B"},
        {"=A", "=B", false, FALSE, "=A"},
        // One agreement does not outweigh a contradiction.
        {"sv=A da=B", "sv=A da=C", false, FALSE, "sv=A da=B"},
    };
    for (const Case &c : cases) {
        LangstrPtr a = langstr_of(c.a), b = langstr_of(c.b);
        EXPECT_EQ(bool(ov_langstr_is_mergeable(a.get(), b.get())), c.mergeable) << c.a << " / " << c.b;
        EXPECT_EQ(through_reference(a, [&](langstr **r) { return ov_langstr_merge(r, b.get()); }), c.changed)
            << c.a << " / " << c.b;
        EXPECT_EQ(describe(a.get()), c.merged) << c.a << " / " << c.b;
        if (c.mergeable) {
            EXPECT_TRUE(ov_langstr_is_subset(b.get(), a.get())) << c.a << " / " << c.b;
        }
    }
}

} // namespace
