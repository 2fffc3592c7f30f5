// Remarks: short coded statements (a code and a multilingual description)
// that a report can carry, and the remark lists that hold them. Lists are
// kept in natural code order by ov_remark_list_add_remark_sorted: R2 comes
// before R10, and codes that differ only in case or leading zeros are told
// apart by a cascade of ever stricter comparisons.
#pragma once

#include <string>

#include <glib.h>
#include <libxml/tree.h>

#include "core/list.h"
#include "core/raii.h"
#include "lang/langstr.h"

struct OvRemark {
    char *code;           // Latin-1, owned; compacted and never empty when read
    langstr *description; // owned
    OvRemark *previous;
    OvRemark *next;
};

// Head and tail sentinel remarks; iterate with `for (OvRemark *r : *list)`.
struct OvRemarkList : ov::SentinelList<OvRemark> {
};

// Remarks.
OvRemark *ov_remark_new();
// Code and description copied deeply; the copy is unlinked.
OvRemark *ov_remark_clone(const OvRemark *remark);
// Unlinks only.
void ov_remark_remove(OvRemark *remark);
// Unlinks and frees; null is a no-op.
void ov_remark_destroy(OvRemark *remark);
int ov_remark_get_index(const OvRemark *remark);

// The order of ov_remark_list_add_remark_sorted: natural order ignoring case
// and leading zeros, then ignoring case, then ignoring leading zeros, then
// natural order, then bytes. Negative, zero or positive like strcmp.
int ov_remark_compare_codes(const char *a, const char *b);

// Remark lists.
OvRemarkList *ov_remark_list_new();
// Frees the list and its remarks; null is a no-op.
void ov_remark_list_destroy(OvRemarkList *list);
// Empties the list and keeps it.
void ov_remark_list_destroy_remarks(OvRemarkList *list);
void ov_remark_list_add_remark_first(OvRemarkList *list, OvRemark *remark);
void ov_remark_list_add_remark_last(OvRemarkList *list, OvRemark *remark);
// Before the first remark whose code compares greater; equal codes keep
// their insertion order; a remark without a code goes last.
void ov_remark_list_add_remark_sorted(OvRemarkList *list, OvRemark *remark);
// Moves every remark of source into list, in source order, each where
// ov_remark_list_add_remark_sorted would put it; in n log n time.
void ov_remark_list_add_remarks_sorted(OvRemarkList *list, OvRemarkList *source);
// Appends clones of every source remark, in order, without sorting.
void ov_remark_list_copy_remarks(OvRemarkList *destination, const OvRemarkList *source);
// The first remark whose code equals code byte for byte, or null.
OvRemark *ov_remark_list_get_remark_for_code(const OvRemarkList *list, const char *code);
// TRUE when the first remark with code has a description identical to
// description.
gboolean ov_remark_list_has_remark(const OvRemarkList *list, const char *code, const langstr *description);
gboolean ov_remark_list_is_empty(const OvRemarkList *list);
// TRUE when every remark of a has, among the remarks of b with its code, one
// whose description holds all of its translations.
gboolean ov_remark_list_is_subset(const OvRemarkList *a, const OvRemarkList *b);
// TRUE when list has no remark with that code, or the first one's
// description can be merged with the remark's.
gboolean ov_remark_list_remark_is_mergeable(const OvRemarkList *list, const OvRemark *remark);
gboolean ov_remark_list_remarks_are_mergeable(const OvRemarkList *list, const OvRemarkList *other);
// Merges the description into the first remark with that code, or inserts a
// clone sorted when there is none.
void ov_remark_list_merge_remark(OvRemarkList *list, const OvRemark *remark);

// ov_remark_list_merge_remark for every remark of other in turn, in n log n
// time; other is another list.
void ov_remark_list_merge_remarks(OvRemarkList *list, const OvRemarkList *other);
// Reads a "remark" element: one "code" and one or more "description"
// translations. Null with the reason on failure.
OvRemark *ov_xml_parse_remark(xmlDoc *document, xmlNode *node);

namespace ov
{

// A "remark" element read from its child elements one at a time, in
// document order, as a tree walk or a SAX parse gives them. The first
// failure ends the reading; a missing code or description outranks it.
class RemarkElements
{
  public:
    // Texts and the "lang" attribute in UTF-8; lang is null when absent.
    void add_code(const char *text);
    void add_description(const char *lang, const char *text);
    // Records the failure in the error buffer unless an earlier one counts.
    void fail();
    bool failed() const { return failed_; }
    // The remark, or null with the reason set.
    OvRemark *finish();

  private:
    GStr code_;
    LangstrBuilder description_;
    bool failed_ = false;
    std::string error_;
};

} // namespace ov
