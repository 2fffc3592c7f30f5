#include "widgets/spell_check.h"

#include "lang/spell_dictionary.h"

const GspellLanguage *ov_spell_check_get_language(const OvLocale *locale)
{
    if (locale == nullptr)
        return nullptr;
    const char *name = ov_spellcheck_get_dict_name_for_locale_tag(locale->tag);
    return name != nullptr ? gspell_language_lookup(name) : nullptr;
}

GspellChecker *ov_spell_check_get_entry_checker(GtkEntry *entry)
{
    g_return_val_if_fail(GTK_IS_ENTRY(entry), nullptr);
    GspellEntryBuffer *buffer = gspell_entry_buffer_get_from_gtk_entry_buffer(gtk_entry_get_buffer(entry));
    return gspell_entry_buffer_get_spell_checker(buffer);
}

GspellChecker *ov_spell_check_get_text_view_checker(GtkTextView *view)
{
    g_return_val_if_fail(GTK_IS_TEXT_VIEW(view), nullptr);
    GspellTextBuffer *buffer = gspell_text_buffer_get_from_gtk_text_buffer(gtk_text_view_get_buffer(view));
    return gspell_text_buffer_get_spell_checker(buffer);
}

void ov_spell_check_set_up_entry(GtkEntry *entry)
{
    g_return_if_fail(GTK_IS_ENTRY(entry));
    gspell_entry_basic_setup(gspell_entry_get_from_gtk_entry(entry));
}

void ov_spell_check_set_up_text_view(GtkTextView *view)
{
    g_return_if_fail(GTK_IS_TEXT_VIEW(view));
    GspellTextView *spell_view = gspell_text_view_get_from_gtk_text_view(view);
    gspell_text_view_basic_setup(spell_view);
    gspell_text_view_set_enable_language_menu(spell_view, FALSE);
}

gboolean ov_spell_check_apply_locale_to_entry(GtkEntry *entry, const OvLocale *locale)
{
    g_return_val_if_fail(GTK_IS_ENTRY(entry), FALSE);
    const GspellLanguage *language = ov_spell_check_get_language(locale);
    GspellChecker *checker = ov_spell_check_get_entry_checker(entry);
    if (language != nullptr && checker != nullptr)
        gspell_checker_set_language(checker, language);
    gboolean on = language != nullptr && checker != nullptr;
    gspell_entry_set_inline_spell_checking(gspell_entry_get_from_gtk_entry(entry), on);
    return on;
}

gboolean ov_spell_check_apply_locale_to_text_view(GtkTextView *view, const OvLocale *locale)
{
    g_return_val_if_fail(GTK_IS_TEXT_VIEW(view), FALSE);
    const GspellLanguage *language = ov_spell_check_get_language(locale);
    GspellChecker *checker = ov_spell_check_get_text_view_checker(view);
    if (language != nullptr && checker != nullptr)
        gspell_checker_set_language(checker, language);
    gboolean on = language != nullptr && checker != nullptr;
    gspell_text_view_set_inline_spell_checking(gspell_text_view_get_from_gtk_text_view(view), on);
    return on;
}
