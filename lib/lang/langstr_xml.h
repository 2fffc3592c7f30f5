// The XML form of a multilingual string: a run of sibling elements of one
// name, each with a "lang" attribute holding the locale tag and the text as
// content. Older two-letter tags and the empty tag (the undefined locale)
// are accepted when reading.
#pragma once

#include <glib.h>
#include <libxml/tree.h>

#include <cstdio>
#include <string>

#include "lang/langstr.h"

// Reads every child element named element_name, in document order. None
// found: *out null and TRUE. On failure *out is null.
gboolean ov_xml_parse_langstr(langstr **out, xmlDoc *document, xmlNode *node, const char *element_name,
                              gboolean compact);
// As above; none found fails with "Missing XML node: %s".
langstr *ov_xml_parse_required_langstr(xmlDoc *document, xmlNode *node, const char *element_name,
                                       gboolean compact);
// Reads one element as a translation into *ls. compact spacifies the text
// compactly, otherwise it is detabified (line feeds survive).
gboolean ov_xml_parse_langstr_translation(langstr **ls, xmlDoc *document, xmlNode *element,
                                          gboolean refuse_empty_tag, gboolean compact);
// As above, for an element a SAX parse hands over: lang is its "lang"
// attribute (null when it has none) and text its joined text, both UTF-8.
gboolean ov_xml_read_langstr_translation_into(ov::LangstrBuilder &built, const char *lang, const char *text,
                                              gboolean refuse_empty_tag, gboolean compact);

namespace ov
{

// A multilingual string read from sibling elements of one name as a SAX
// parse hands them over, one translation at a time: what was read and the
// first failure. Elements after a failure are not read.
class LangstrElements
{
  public:
    explicit LangstrElements(gboolean compact) : compact_(compact) {}

    // lang is the element's "lang" attribute, null when it has none.
    void add(const char *lang, const std::string &text);
    bool seen() const { return seen_; }

    // TRUE with the string (null when there was no element); FALSE with
    // the first failure in the error buffer.
    bool finish(langstr **out);
    // As finish; no element fails with "Missing XML node: <name>".
    bool finish_required(langstr **out, const char *name);

  private:
    gboolean compact_;
    bool seen_ = false;
    bool failed_ = false;
    LangstrBuilder built_;
    std::string error_;
};

} // namespace ov

// Adds one child element per translation; null adds nothing.
gboolean ov_xml_add_langstr(xmlNode *parent, const char *element_name, const langstr *ls);
// Writes one line per translation, indented by depth tabs.
gboolean ov_xml_write_langstr(FILE *stream, const langstr *ls, const char *element_name, int depth);
