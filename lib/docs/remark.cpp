#include "docs/remark.h"

#include "core/error.h"
#include "core/natcmp.h"
#include "core/raii.h"
#include "core/xml.h"
#include "lang/langstr_xml.h"

#include <cstring>
#include <map>
#include <string_view>
#include <unordered_map>

namespace
{

bool has_code(const OvRemark *remark)
{
    return remark->code != nullptr && remark->code[0] != '\0';
}

const OvRemark *first_remark_with_code(const OvRemarkList *list, const char *code)
{
    for (const OvRemark *remark : *list)
        if (remark->code != nullptr && strcmp(remark->code, code) == 0)
            return remark;
    return nullptr;
}

// The first remark of each code, for tests that look up every remark of one
// list in another: one pass over the other list instead of one per remark.
using FirstByCode = std::unordered_map<std::string_view, const OvRemark *>;

FirstByCode index_first_by_code(const OvRemarkList *list)
{
    FirstByCode index;
    for (const OvRemark *remark : *list)
        if (remark->code != nullptr)
            index.try_emplace(remark->code, remark);
    return index;
}

struct CodeOrder {
    bool operator()(const char *a, const char *b) const { return ov_remark_compare_codes(a, b) < 0; }
};

// Places remarks where ov_remark_list_add_remark_sorted puts them, without
// a walk per remark. A remark goes before the first one with a greater
// code; that one is greater than all before it, so it is among the
// "records" (remarks whose code is greater than every earlier code), which
// grow along the list and are found by a search. A remark placed before a
// record becomes a record itself unless an equal code came first.
class SortedPlaces
{
  public:
    explicit SortedPlaces(OvRemarkList *list) : list_(list)
    {
        for (OvRemark *remark : *list)
            note_last(remark);
    }

    void insert(OvRemark *remark)
    {
        if (!has_code(remark)) {
            ov::list_insert_before(remark, list_->tail);
            note_last(remark);
            return;
        }
        auto greater = records_.upper_bound(remark->code);
        ov::list_insert_before(remark, greater != records_.end() ? greater->second : list_->tail);
        records_.emplace(remark->code, remark);
    }

  private:
    // For a remark at the end of the list.
    void note_last(OvRemark *remark)
    {
        if (remark->code != nullptr &&
            (records_.empty() || ov_remark_compare_codes(records_.rbegin()->first, remark->code) < 0))
            records_.emplace(remark->code, remark);
    }

    OvRemarkList *list_;
    std::map<const char *, OvRemark *, CodeOrder> records_;
};

} // namespace

// Remarks

OvRemark *ov_remark_new()
{
    return new OvRemark{};
}

OvRemark *ov_remark_clone(const OvRemark *remark)
{
    g_return_val_if_fail(remark != nullptr, nullptr);
    OvRemark *copy = ov_remark_new();
    copy->code = g_strdup(remark->code);
    copy->description = ov_langstr_clone(remark->description);
    return copy;
}

void ov_remark_remove(OvRemark *remark)
{
    g_return_if_fail(remark != nullptr);
    ov::list_unlink(remark);
}

void ov_remark_destroy(OvRemark *remark)
{
    if (remark == nullptr)
        return;
    ov::list_unlink(remark);
    g_free(remark->code);
    ov_langstr_free(remark->description);
    delete remark;
}

int ov_remark_get_index(const OvRemark *remark)
{
    g_return_val_if_fail(remark != nullptr && remark->previous != nullptr, -1);
    return static_cast<int>(ov::list_index(remark));
}

int ov_remark_compare_codes(const char *a, const char *b)
{
    // Each test runs only when the looser one before it found a tie.
    constexpr int (*cascade[])(const char *, const char *) = {strnatzerocasecmp, strnatcasecmp, strnatzerocmp,
                                                              strnatcmp, g_strcmp0};
    for (auto compare : cascade) {
        int result = compare(a, b);
        if (result != 0)
            return result;
    }
    return 0;
}

// Remark lists

OvRemarkList *ov_remark_list_new()
{
    auto list = new OvRemarkList;
    ov::list_init(*list);
    return list;
}

void ov_remark_list_destroy(OvRemarkList *list)
{
    if (list == nullptr)
        return;
    ov::list_destroy(*list, ov_remark_destroy);
    delete list;
}

void ov_remark_list_destroy_remarks(OvRemarkList *list)
{
    g_return_if_fail(list != nullptr);
    while (!list->is_empty())
        ov_remark_destroy(list->first());
}

void ov_remark_list_add_remark_first(OvRemarkList *list, OvRemark *remark)
{
    g_return_if_fail(list != nullptr && remark != nullptr);
    ov::list_prepend(*list, remark);
}

void ov_remark_list_add_remark_last(OvRemarkList *list, OvRemark *remark)
{
    g_return_if_fail(list != nullptr && remark != nullptr);
    ov::list_append(*list, remark);
}

void ov_remark_list_add_remark_sorted(OvRemarkList *list, OvRemark *remark)
{
    g_return_if_fail(list != nullptr && remark != nullptr);
    OvRemark *position = list->tail;
    if (has_code(remark)) {
        for (OvRemark *existing : *list) {
            if (existing->code != nullptr && ov_remark_compare_codes(existing->code, remark->code) > 0) {
                position = existing;
                break;
            }
        }
    }
    ov::list_insert_before(remark, position);
}

void ov_remark_list_add_remarks_sorted(OvRemarkList *list, OvRemarkList *source)
{
    g_return_if_fail(list != nullptr && source != nullptr && list != source);
    SortedPlaces places(list);
    while (!source->is_empty()) {
        OvRemark *remark = source->first();
        ov::list_unlink(remark);
        places.insert(remark);
    }
}

void ov_remark_list_copy_remarks(OvRemarkList *destination, const OvRemarkList *source)
{
    g_return_if_fail(destination != nullptr && source != nullptr);
    ov::list_clone_into(*destination, *source, ov_remark_clone);
}

OvRemark *ov_remark_list_get_remark_for_code(const OvRemarkList *list, const char *code)
{
    g_return_val_if_fail(list != nullptr && code != nullptr, nullptr);
    return const_cast<OvRemark *>(first_remark_with_code(list, code));
}

gboolean ov_remark_list_has_remark(const OvRemarkList *list, const char *code, const langstr *description)
{
    g_return_val_if_fail(list != nullptr && code != nullptr, FALSE);
    const OvRemark *remark = first_remark_with_code(list, code);
    return remark != nullptr && ov_langstr_is_identical(remark->description, description);
}

gboolean ov_remark_list_is_empty(const OvRemarkList *list)
{
    g_return_val_if_fail(list != nullptr, TRUE);
    return list->is_empty();
}

gboolean ov_remark_list_is_subset(const OvRemarkList *a, const OvRemarkList *b)
{
    g_return_val_if_fail(a != nullptr && b != nullptr, FALSE);
    if (a->is_empty())
        return TRUE;
    std::unordered_multimap<std::string_view, const OvRemark *> b_by_code;
    for (const OvRemark *remark : *b)
        if (remark->code != nullptr)
            b_by_code.emplace(remark->code, remark);
    for (const OvRemark *remark : *a) {
        if (remark->code == nullptr)
            return FALSE;
        auto [begin, end] = b_by_code.equal_range(remark->code);
        bool found = false;
        for (auto it = begin; it != end && !found; ++it)
            found = ov_langstr_is_subset(remark->description, it->second->description);
        if (!found)
            return FALSE;
    }
    return TRUE;
}

gboolean ov_remark_list_remark_is_mergeable(const OvRemarkList *list, const OvRemark *remark)
{
    g_return_val_if_fail(list != nullptr && remark != nullptr, FALSE);
    if (remark->code == nullptr)
        return TRUE;
    const OvRemark *existing = first_remark_with_code(list, remark->code);
    return existing == nullptr || ov_langstr_is_mergeable(existing->description, remark->description);
}

gboolean ov_remark_list_remarks_are_mergeable(const OvRemarkList *list, const OvRemarkList *other)
{
    g_return_val_if_fail(list != nullptr && other != nullptr, FALSE);
    FirstByCode index = index_first_by_code(list);
    for (const OvRemark *remark : *other) {
        if (remark->code == nullptr)
            continue;
        auto found = index.find(remark->code);
        if (found != index.end() && !ov_langstr_is_mergeable(found->second->description, remark->description))
            return FALSE;
    }
    return TRUE;
}

void ov_remark_list_merge_remark(OvRemarkList *list, const OvRemark *remark)
{
    g_return_if_fail(list != nullptr && remark != nullptr);
    OvRemark *existing = remark->code != nullptr
                             ? const_cast<OvRemark *>(first_remark_with_code(list, remark->code))
                             : nullptr;
    if (existing != nullptr)
        ov_langstr_merge(&existing->description, remark->description);
    else
        ov_remark_list_add_remark_sorted(list, ov_remark_clone(remark));
}

void ov_remark_list_merge_remarks(OvRemarkList *list, const OvRemarkList *other)
{
    g_return_if_fail(list != nullptr && other != nullptr && list != other);
    FirstByCode first = index_first_by_code(list);
    SortedPlaces places(list);
    for (const OvRemark *remark : *other) {
        auto found = remark->code != nullptr ? first.find(remark->code) : first.end();
        if (found != first.end()) {
            ov_langstr_merge(&const_cast<OvRemark *>(found->second)->description, remark->description);
            continue;
        }
        OvRemark *copy = ov_remark_clone(remark);
        places.insert(copy);
        if (copy->code != nullptr)
            first.emplace(copy->code, copy);
    }
}

// The remark element

void ov::RemarkElements::fail()
{
    if (!failed_) {
        failed_ = true;
        error_ = ov_error_get();
    }
}

void ov::RemarkElements::add_code(const char *text)
{
    if (failed_)
        return;
    if (code_) {
        ov_error_set("Remark in XML has multiple codes.");
        fail();
        return;
    }
    code_.reset(ov_xml_convert_text_content_to_nonempty_compact_latin1(text));
    if (!code_) {
        ov_error_append("Missing or invalid remark code in XML data.");
        fail();
    }
}

void ov::RemarkElements::add_description(const char *lang, const char *text)
{
    if (!failed_ && !ov_xml_read_langstr_translation_into(description_, lang, text, FALSE, TRUE))
        fail();
}

OvRemark *ov::RemarkElements::finish()
{
    if (!code_ || description_.is_empty()) {
        ov_error_set("Missing remark content in XML data.");
        return nullptr;
    }
    if (failed_) {
        ov_error_set(error_.c_str());
        return nullptr;
    }
    OvRemark *remark = ov_remark_new();
    remark->code = code_.release();
    remark->description = description_.release();
    return remark;
}

OvRemark *ov_xml_parse_remark(xmlDoc *document, xmlNode *node)
{
    g_return_val_if_fail(document != nullptr && node != nullptr, nullptr);
    ov::RemarkElements remark;
    for (xmlNode *child = node->children; child != nullptr && !remark.failed(); child = child->next) {
        const bool is_code = ov_xml_node_has_name(child, "code");
        if (child->type != XML_ELEMENT_NODE || (!is_code && !ov_xml_node_has_name(child, "description")))
            continue;
        gchar *lang_value = nullptr;
        const bool read_lang = is_code || ov_xml_get_attribute_value_as_utf8(&lang_value, child, "lang");
        ov::GStr lang(lang_value), text(ov_xml_get_text_content_as_utf8(document, child));
        if (!read_lang || !text)
            remark.fail();
        else if (is_code)
            remark.add_code(text.get());
        else
            remark.add_description(lang.get(), text.get());
    }
    return remark.finish();
}
