// The XML form of a multilingual string: a run of sibling elements of one
// name, each with a "lang" attribute holding the locale tag and the text as
// content. Older two-letter tags and the empty tag (the undefined locale)
// are accepted when reading.
#pragma once

#include <glib.h>
#include <libxml/tree.h>

#include <cstdio>

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
// As above, into a builder: for readers that collect many translations.
gboolean ov_xml_parse_langstr_translation_into(ov::LangstrBuilder &built, xmlDoc *document, xmlNode *element,
                                               gboolean refuse_empty_tag, gboolean compact);
// As above, for an element a SAX parse hands over: lang is its "lang"
// attribute (null when it has none) and text its joined text, both UTF-8.
gboolean ov_xml_read_langstr_translation_into(ov::LangstrBuilder &built, const char *lang, const char *text,
                                              gboolean refuse_empty_tag, gboolean compact);

// Adds one child element per translation; null adds nothing.
gboolean ov_xml_add_langstr(xmlNode *parent, const char *element_name, const langstr *ls);
// Writes one line per translation, indented by depth tabs.
gboolean ov_xml_write_langstr(FILE *stream, const langstr *ls, const char *element_name, int depth);
