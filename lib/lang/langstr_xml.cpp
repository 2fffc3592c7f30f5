#include "lang/langstr_xml.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/strings.h"
#include "core/util.h"
#include "core/xml.h"

#include <utility>

namespace
{

bool is_element_named(const xmlNode *node, const char *name)
{
    return node->type == XML_ELEMENT_NODE &&
           xmlStrcmp(node->name, reinterpret_cast<const xmlChar *>(name)) == 0;
}

// One translation, checked: raw_tag is the element's tag (null when it could
// not be read, with the reason set) and read_text gives its text in Latin-1;
// set hands the translation on.
template <class ReadText, class Set>
gboolean check_translation(ov::GStr raw_tag, ReadText read_text, gboolean refuse_empty_tag, gboolean compact,
                           Set set)
{
    if (raw_tag == nullptr)
        return FALSE;
    const char *tag = ov_strip_surrounding_and_spacify_compactly_within_original_for_ascii(raw_tag.get());
    if (refuse_empty_tag && tag[0] == '\0') {
        ov_error_set("Empty XML lang attribute where not allowed.");
        return FALSE;
    }
    const OvLocale *locale = ov_locale_get_by_legacy_tag(tag);
    if (locale == nullptr) {
        ov_error_set("Unsupported locale in XML lang attribute.");
        return FALSE;
    }
    ov::GStr raw_text(read_text());
    if (raw_text == nullptr)
        return FALSE;
    const char *text =
        compact ? ov_strip_surrounding_and_spacify_compactly_within_original_for_latin1(raw_text.get())
                : ov_strip_surrounding_and_detabify_within_original_for_latin1(raw_text.get());
    if (text[0] == '\0') {
        ov_error_set("Empty text content in XML where not allowed.");
        return FALSE;
    }
    set(locale, text);
    return TRUE;
}

// One element's translation, read and checked; set hands it on.
template <class Set>
gboolean read_translation(xmlDoc *document, xmlNode *element, gboolean refuse_empty_tag, gboolean compact,
                          Set set)
{
    return check_translation(
        ov::GStr(ov_xml_get_required_attribute_value_as_ascii(element, "lang")),
        [&] { return ov_xml_get_text_content_as_latin1(document, element); }, refuse_empty_tag, compact, set);
}

} // namespace

gboolean ov_xml_parse_langstr_translation(langstr **ls, xmlDoc *document, xmlNode *element,
                                          gboolean refuse_empty_tag, gboolean compact)
{
    g_return_val_if_fail(ls != nullptr && element != nullptr, FALSE);
    return read_translation(
        document, element, refuse_empty_tag, compact,
        [&](const OvLocale *locale, const char *text) { ov_langstr_set_translation(ls, locale, text); });
}

gboolean ov_xml_read_langstr_translation_into(ov::LangstrBuilder &built, const char *lang, const char *text,
                                              gboolean refuse_empty_tag, gboolean compact)
{
    return check_translation(
        ov::GStr(ov_xml_copy_required_attribute_value_as_ascii(lang, "lang")),
        [&] { return ov_xml_convert_text_content_to_latin1(text); }, refuse_empty_tag, compact,
        [&](const OvLocale *locale, const char *translation) { built.set_translation(locale, translation); });
}

void ov::LangstrElements::add(const char *lang, const std::string &text)
{
    seen_ = true;
    if (!failed_ && !ov_xml_read_langstr_translation_into(built_, lang, text.c_str(), FALSE, compact_)) {
        failed_ = true;
        error_ = ov_error_get();
    }
}

bool ov::LangstrElements::finish(langstr **out)
{
    *out = nullptr;
    if (failed_) {
        ov_error_set(error_.c_str());
        return false;
    }
    *out = built_.release();
    return true;
}

bool ov::LangstrElements::finish_required(langstr **out, const char *name)
{
    if (!finish(out))
        return false;
    if (*out == nullptr) {
        ov_error_set_utf8_printf("Missing XML node: %s", name);
        return false;
    }
    return true;
}

gboolean ov_xml_parse_langstr(langstr **out, xmlDoc *document, xmlNode *node, const char *element_name,
                              gboolean compact)
{
    g_return_val_if_fail(out != nullptr, FALSE);
    *out = nullptr;
    g_return_val_if_fail(node != nullptr && element_name != nullptr, FALSE);
    ov::LangstrBuilder built;
    auto set = [&](const OvLocale *locale, const char *text) { built.set_translation(locale, text); };
    for (xmlNode *child = node->children; child != nullptr; child = child->next)
        if (is_element_named(child, element_name) && !read_translation(document, child, FALSE, compact, set))
            return FALSE;
    *out = built.release();
    return TRUE;
}

langstr *ov_xml_parse_required_langstr(xmlDoc *document, xmlNode *node, const char *element_name,
                                       gboolean compact)
{
    langstr *ls = nullptr;
    if (!ov_xml_parse_langstr(&ls, document, node, element_name, compact))
        return nullptr;
    if (ls == nullptr)
        ov_error_set_utf8_printf("Missing XML node: %s", element_name);
    return ls;
}

gboolean ov_xml_add_langstr(xmlNode *parent, const char *element_name, const langstr *ls)
{
    g_return_val_if_fail(parent != nullptr && element_name != nullptr, FALSE);
    for (; ls != nullptr; ls = ls->next) {
        xmlNode *child = ov_xml_add_child_element_with_latin1_text_content(parent, element_name, ls->text);
        if (child == nullptr)
            return FALSE;
        if (ls->locale == nullptr || ls->locale->tag == nullptr) {
            ov_error_set("Missing value for XML attribute.");
            return FALSE;
        }
        if (ov_xml_set_attribute_with_ascii_content(child, "lang", ls->locale->tag) == nullptr)
            return FALSE;
    }
    return TRUE;
}

gboolean ov_xml_write_langstr(FILE *stream, const langstr *ls, const char *element_name, int depth)
{
    g_return_val_if_fail(stream != nullptr && element_name != nullptr, FALSE);
    for (; ls != nullptr; ls = ls->next) {
        ov::GStr escaped(ov_xml_latin1_to_xml(ls->text));
        if (!ov_xml_write_tabs(stream, depth) ||
            !ov_util_fprintf(stream, "<%s lang=\"%s\">%s</%s>\n", element_name, ls->locale->tag,
                             escaped.get(), element_name))
            return FALSE;
    }
    return TRUE;
}
