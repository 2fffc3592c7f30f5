// Multilingual strings: a chain of translations, one Latin-1 text per locale.
// An empty multilingual string is a null pointer; every function accepts it.
// Chain order is insertion order. At most one translation per defined
// locale; several undefined-locale translations may exist, never two with
// the same text.
#pragma once

#include <glib.h>

#include "lang/locale.h"

#include <memory>

struct langstr {
    const OvLocale *locale;
    char *text; // Latin-1, owned, never null once set
    langstr *next;
};

// Deep copy in the same order; null gives null.
langstr *ov_langstr_clone(const langstr *ls);
void ov_langstr_free(langstr *ls);

// Copies text in. TRUE when the multilingual string changed. An existing
// translation of that locale gets the new text; a defined locale re-labels
// an undefined translation with the same text in place; an undefined text
// that any translation already has is not added.
gboolean ov_langstr_set_translation(langstr **reference, const OvLocale *locale, const char *text);
// Removes the first translation of that locale; TRUE if one was removed.
gboolean ov_langstr_remove_translation(langstr **reference, const OvLocale *locale);

// The text to show for locale (null: the active locale): exact locale, then
// the same language (smallest tag), then the same for UK English, then the
// smallest tag of all (the undefined text, whose tag is "", wins there).
// Borrowed; null only for an empty multilingual string.
const char *ov_langstr_get_text(const langstr *ls, const OvLocale *locale);
// The first two steps of ov_langstr_get_text only (null: the active locale).
const char *ov_langstr_get_text_for_locale_or_language(const langstr *ls, const OvLocale *locale);
// Among the translations of that language (null: any), the one with the
// smallest tag; ties keep the earlier one.
const char *ov_langstr_get_text_for_language(const langstr *ls, const OvLanguage *language);
// Exact locale only.
const char *ov_langstr_get_text_for_locale(const langstr *ls, const OvLocale *locale);

// Same translations in the same order.
gboolean ov_langstr_is_identical(const langstr *a, const langstr *b);
// Every translation of a is found in b (an undefined one by its text alone).
gboolean ov_langstr_is_subset(const langstr *a, const langstr *b);
// They agree on at least one text and contradict on none.
gboolean ov_langstr_is_mergeable(const langstr *a, const langstr *b);
// Sets every translation of b into a when mergeable; TRUE if a changed.
gboolean ov_langstr_merge(langstr **reference_to_a, const langstr *b);

namespace ov
{

// Builds a multilingual string translation by translation, with the outcome
// of ov_langstr_set_translation called for each in turn, but in time that
// does not grow with the number of translations already added (readers
// meet texts with thousands of them). Owns what it built until release().
class LangstrBuilder
{
  public:
    LangstrBuilder();
    LangstrBuilder(const LangstrBuilder &) = delete;
    LangstrBuilder &operator=(const LangstrBuilder &) = delete;
    ~LangstrBuilder();

    // As ov_langstr_set_translation; TRUE when the string changed.
    gboolean set_translation(const OvLocale *locale, const char *text);
    bool is_empty() const { return head_ == nullptr; }
    langstr *release();

  private:
    struct Index;
    langstr *head_ = nullptr;
    langstr **tail_ = &head_;
    std::unique_ptr<Index> index_; // made once the chain is long
};

} // namespace ov
