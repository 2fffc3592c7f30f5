#include "lang/langstr.h"

#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "lang/active_locale.h"

namespace
{

langstr *translation_new(const OvLocale *locale, const char *text)
{
    return new langstr{locale, g_strdup(text), nullptr};
}

void translation_free(langstr *translation)
{
    g_free(translation->text);
    delete translation;
}

bool same_text(const char *a, const char *b)
{
    return std::strcmp(a, b) == 0;
}

const langstr *find_locale(const langstr *ls, const OvLocale *locale)
{
    for (; ls != nullptr; ls = ls->next)
        if (ls->locale == locale)
            return ls;
    return nullptr;
}

const langstr *find_text(const langstr *ls, const char *text)
{
    for (; ls != nullptr; ls = ls->next)
        if (same_text(ls->text, text))
            return ls;
    return nullptr;
}

// Among the translations of language (null: all of them) the one with the
// smallest tag; a later one wins only with a strictly smaller tag.
const langstr *smallest_tag_of_language(const langstr *ls, const OvLanguage *language)
{
    const langstr *best = nullptr;
    for (; ls != nullptr; ls = ls->next) {
        if (language != nullptr && ls->locale->language != language)
            continue;
        if (best == nullptr || std::strcmp(ls->locale->tag, best->locale->tag) < 0)
            best = ls;
    }
    return best;
}

const char *text_for_locale_or_language(const langstr *ls, const OvLocale *locale)
{
    if (const langstr *exact = find_locale(ls, locale); exact != nullptr && exact->text != nullptr)
        return exact->text;
    const langstr *same_language = smallest_tag_of_language(ls, locale->language);
    return same_language != nullptr ? same_language->text : nullptr;
}

langstr **last_place(langstr **reference)
{
    while (*reference != nullptr)
        reference = &(*reference)->next;
    return reference;
}

} // namespace

langstr *ov_langstr_clone(const langstr *ls)
{
    langstr *copy = nullptr;
    langstr **place = &copy;
    for (; ls != nullptr; ls = ls->next) {
        *place = translation_new(ls->locale, ls->text);
        place = &(*place)->next;
    }
    return copy;
}

void ov_langstr_free(langstr *ls)
{
    while (ls != nullptr) {
        langstr *next = ls->next;
        translation_free(ls);
        ls = next;
    }
}

gboolean ov_langstr_set_translation(langstr **reference, const OvLocale *locale, const char *text)
{
    g_return_val_if_fail(reference != nullptr && locale != nullptr && text != nullptr, FALSE);
    langstr *ls = *reference;
    bool undefined = ov_locale_is_undefined(locale);
    // Undefined translations are told apart by their texts alone, so several
    // of them may exist; a defined locale has at most one translation.
    if (auto *existing = undefined ? nullptr : const_cast<langstr *>(find_locale(ls, locale));
        existing != nullptr) {
        if (same_text(existing->text, text))
            return FALSE;
        char *replaced = existing->text;
        existing->text = g_strdup(text);
        g_free(replaced);
        return TRUE;
    }
    if (ls != nullptr) {
        if (undefined) {
            if (find_text(ls, text) != nullptr)
                return FALSE;
        } else {
            for (langstr *walk = ls; walk != nullptr; walk = walk->next) {
                if (ov_locale_is_undefined(walk->locale) && same_text(walk->text, text)) {
                    walk->locale = locale;
                    return TRUE;
                }
            }
        }
    }
    *last_place(reference) = translation_new(locale, text);
    return TRUE;
}

gboolean ov_langstr_remove_translation(langstr **reference, const OvLocale *locale)
{
    g_return_val_if_fail(reference != nullptr, FALSE);
    for (langstr **place = reference; *place != nullptr; place = &(*place)->next) {
        if ((*place)->locale == locale) {
            langstr *removed = *place;
            *place = removed->next;
            translation_free(removed);
            return TRUE;
        }
    }
    return FALSE;
}

const char *ov_langstr_get_text(const langstr *ls, const OvLocale *locale)
{
    if (ls == nullptr)
        return nullptr;
    if (locale == nullptr)
        locale = ov_ovinternal_get_active_locale();
    if (locale != nullptr)
        if (const char *text = text_for_locale_or_language(ls, locale); text != nullptr)
            return text;
    if (const char *text = text_for_locale_or_language(ls, ov_locale_get_uk_english()); text != nullptr)
        return text;
    const langstr *any = smallest_tag_of_language(ls, nullptr);
    return any != nullptr ? any->text : nullptr;
}

const char *ov_langstr_get_text_for_locale_or_language(const langstr *ls, const OvLocale *locale)
{
    if (locale == nullptr)
        locale = ov_ovinternal_get_active_locale();
    if (ls == nullptr || locale == nullptr)
        return nullptr;
    return text_for_locale_or_language(ls, locale);
}

const char *ov_langstr_get_text_for_language(const langstr *ls, const OvLanguage *language)
{
    const langstr *best = smallest_tag_of_language(ls, language);
    return best != nullptr ? best->text : nullptr;
}

const char *ov_langstr_get_text_for_locale(const langstr *ls, const OvLocale *locale)
{
    const langstr *exact = find_locale(ls, locale);
    return exact != nullptr ? exact->text : nullptr;
}

gboolean ov_langstr_is_identical(const langstr *a, const langstr *b)
{
    for (; a != nullptr && b != nullptr; a = a->next, b = b->next)
        if (a->locale != b->locale || !same_text(a->text, b->text))
            return FALSE;
    return a == nullptr && b == nullptr;
}

gboolean ov_langstr_is_subset(const langstr *a, const langstr *b)
{
    if (a == nullptr)
        return TRUE;
    if (b == nullptr)
        return FALSE;
    for (; a != nullptr; a = a->next) {
        if (ov_locale_is_undefined(a->locale)) {
            if (find_text(b, a->text) == nullptr)
                return FALSE;
            continue;
        }
        const langstr *match = find_locale(b, a->locale);
        if (match == nullptr || !same_text(match->text, a->text))
            return FALSE;
    }
    return TRUE;
}

gboolean ov_langstr_is_mergeable(const langstr *a, const langstr *b)
{
    if (a == nullptr || b == nullptr)
        return FALSE;
    bool agree = false;
    for (const langstr *ta = a; ta != nullptr; ta = ta->next) {
        bool a_undefined = ov_locale_is_undefined(ta->locale);
        for (const langstr *tb = b; tb != nullptr; tb = tb->next) {
            bool b_undefined = ov_locale_is_undefined(tb->locale);
            if (ta->locale != tb->locale && !a_undefined && !b_undefined)
                continue;
            bool equal = same_text(ta->text, tb->text);
            if (!equal && !a_undefined && !b_undefined)
                return FALSE;
            agree = agree || equal;
        }
    }
    return agree;
}

gboolean ov_langstr_merge(langstr **reference_to_a, const langstr *b)
{
    g_return_val_if_fail(reference_to_a != nullptr, FALSE);
    if (b == nullptr || !ov_langstr_is_mergeable(*reference_to_a, b))
        return FALSE;
    gboolean changed = FALSE;
    for (; b != nullptr; b = b->next)
        if (ov_langstr_set_translation(reference_to_a, b->locale, b->text))
            changed = TRUE;
    return changed;
}

// The builder walks the chain like ov_langstr_set_translation while it is
// short; past that it keeps the translation of each defined locale, the
// undefined translation of each text (there is at most one) and how many
// translations have each text.
namespace
{
constexpr gsize builder_walk_limit = 8;
}

struct ov::LangstrBuilder::Index {
    std::unordered_map<const OvLocale *, langstr *> by_locale;
    std::unordered_map<std::string_view, langstr *> undefined_by_text;
    // Owns its keys: a counted text may outlive the translation it came from.
    std::unordered_map<std::string, gsize> text_count;

    void add(langstr *translation)
    {
        if (ov_locale_is_undefined(translation->locale))
            undefined_by_text.emplace(translation->text, translation);
        else
            by_locale.emplace(translation->locale, translation);
        ++text_count[translation->text];
    }

    void forget_text(const char *text)
    {
        auto found = text_count.find(text);
        if (--found->second == 0)
            text_count.erase(found);
    }
};

ov::LangstrBuilder::LangstrBuilder() = default;

ov::LangstrBuilder::~LangstrBuilder()
{
    ov_langstr_free(head_);
}

langstr *ov::LangstrBuilder::release()
{
    index_.reset();
    tail_ = &head_;
    return std::exchange(head_, nullptr);
}

gboolean ov::LangstrBuilder::set_translation(const OvLocale *locale, const char *text)
{
    g_return_val_if_fail(locale != nullptr && text != nullptr, FALSE);
    if (index_ == nullptr) {
        const gboolean changed = ov_langstr_set_translation(&head_, locale, text);
        gsize count = 0;
        for (tail_ = &head_; *tail_ != nullptr; tail_ = &(*tail_)->next)
            ++count;
        if (count > builder_walk_limit) {
            index_ = std::make_unique<Index>();
            for (langstr *walk = head_; walk != nullptr; walk = walk->next)
                index_->add(walk);
        }
        return changed;
    }
    Index &index = *index_;
    if (ov_locale_is_undefined(locale)) {
        if (index.text_count.contains(text))
            return FALSE;
    } else if (auto found = index.by_locale.find(locale); found != index.by_locale.end()) {
        langstr *existing = found->second;
        if (same_text(existing->text, text))
            return FALSE;
        index.forget_text(existing->text);
        char *replaced = std::exchange(existing->text, g_strdup(text));
        g_free(replaced);
        ++index.text_count[existing->text];
        return TRUE;
    } else if (auto undefined = index.undefined_by_text.find(text);
               undefined != index.undefined_by_text.end()) {
        langstr *relabelled = undefined->second;
        index.undefined_by_text.erase(undefined);
        relabelled->locale = locale;
        index.by_locale.emplace(locale, relabelled);
        return TRUE;
    }
    langstr *added = translation_new(locale, text);
    *tail_ = added;
    tail_ = &added->next;
    index.add(added);
    return TRUE;
}
