// The thin layer over libxml2 through which every XML file of the suite is
// read and built: fixed error texts, the UTF-8 / Latin-1 boundary, reading
// rules for attributes (fallback, required, non-empty, ranged), distinct
// child elements, compact text content, and a hand-written streaming writer
// for Latin-1 text.
//
// Every function returning a string returns a new GLib allocation. Failures
// return FALSE or null and leave the reason in the error buffer.
#pragma once

#include <glib.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <zip.h>

#include <cstdio>
#include <string>

// Reading and writing whole documents.
xmlDoc *ov_xml_parse_file(const char *path);
// TRUE with a null document when the path does not exist.
gboolean ov_xml_parse_file_if_exists(xmlDoc **out_doc, const char *path);
xmlDoc *ov_xml_parse_zip_file(zip_t *archive, const char *entry_name);
xmlDoc *ov_xml_new_doc();
void ov_xml_free_doc(xmlDoc *doc);
gboolean ov_xml_write_to_file(xmlDoc *doc, const char *path, const char *encoding);
gboolean ov_xml_write_to_stream(xmlDoc *doc, FILE *stream, const char *encoding);
// out_length is optional.
gchar *ov_xml_write_to_string(xmlDoc *doc, gsize *out_length);

// Building trees. Texts and values are UTF-8 unless the name says Latin-1.
xmlNode *ov_xml_add_root_element(xmlDoc *doc, const char *name);
xmlNode *ov_xml_add_child_element(xmlNode *parent, const char *name);
xmlNode *ov_xml_add_child_element_with_utf8_text_content(xmlNode *parent, const char *name, const char *text);
xmlNode *ov_xml_add_child_element_with_ascii_text_content(xmlNode *parent, const char *name,
                                                          const char *text);
xmlNode *ov_xml_add_child_element_with_latin1_text_content(xmlNode *parent, const char *name,
                                                           const char *latin1_text);
xmlAttr *ov_xml_set_attribute(xmlNode *node, const char *name, const char *value);
xmlAttr *ov_xml_set_attribute_with_ascii_content(xmlNode *node, const char *name, const char *value);
xmlAttr *ov_xml_set_attribute_with_latin1_content(xmlNode *node, const char *name, const char *latin1_value);
xmlAttr *ov_xml_set_attribute_to_boolean(xmlNode *node, const char *name, gboolean value);
xmlAttr *ov_xml_set_attribute_to_int(xmlNode *node, const char *name, int value);
xmlAttr *ov_xml_set_attribute_to_double(xmlNode *node, const char *name, double value);

// Optional attributes: an absent attribute is success with a null result
// (or the fallback). On failure string outs are null and number outs keep
// their value.
gboolean ov_xml_get_attribute_value_as_utf8(gchar **out, const xmlNode *node, const char *name);
gboolean ov_xml_get_attribute_value_as_ascii(gchar **out, const xmlNode *node, const char *name);
gboolean ov_xml_get_attribute_value_as_latin1(gchar **out, const xmlNode *node, const char *name);
gboolean ov_xml_get_nonempty_attribute_value_as_utf8(gchar **out, const xmlNode *node, const char *name);
gboolean ov_xml_get_attribute_value_as_boolean_with_fallback(gboolean *out, const xmlNode *node,
                                                             const char *name, gboolean fallback);
gboolean ov_xml_get_attribute_value_as_int_in_range_with_fallback(int *out, const xmlNode *node,
                                                                  const char *name, int minimum, int maximum,
                                                                  int fallback);
gboolean ov_xml_get_attribute_value_as_double_in_range_with_fallback(double *out, const xmlNode *node,
                                                                     const char *name, double minimum,
                                                                     double maximum, double fallback);

// Required attributes: an absent attribute fails with
// "Missing XML attribute: <name>".
gchar *ov_xml_get_required_attribute_value_as_utf8(const xmlNode *node, const char *name);
gchar *ov_xml_get_required_attribute_value_as_ascii(const xmlNode *node, const char *name);
gchar *ov_xml_get_required_attribute_value_as_latin1(const xmlNode *node, const char *name);
gchar *ov_xml_get_nonempty_required_attribute_value_as_utf8(const xmlNode *node, const char *name);
gchar *ov_xml_get_nonempty_required_attribute_value_as_latin1(const xmlNode *node, const char *name);
gboolean ov_xml_get_required_attribute_value_as_boolean(gboolean *out, const xmlNode *node, const char *name);
gboolean ov_xml_get_required_attribute_value_as_int(int *out, const xmlNode *node, const char *name);
gboolean ov_xml_get_required_attribute_value_as_int_in_range(int *out, const xmlNode *node, const char *name,
                                                             int minimum, int maximum);
gboolean ov_xml_get_required_attribute_value_as_double_in_range(double *out, const xmlNode *node,
                                                                const char *name, double minimum,
                                                                double maximum);

// The same reads for an attribute value a SAX parse hands over: value is the
// attribute's UTF-8 text, null when the element has no such attribute.
gchar *ov_xml_copy_required_attribute_value_as_ascii(const char *value, const char *name);
gchar *ov_xml_copy_nonempty_required_attribute_value_as_latin1(const char *value, const char *name);
gboolean ov_xml_parse_attribute_value_as_boolean_with_fallback(gboolean *out, const char *value,
                                                               const char *name, gboolean fallback);

// Nodes. Names compare exactly; the child searches look at every child
// node whatever its kind.
xmlNode *ov_xml_get_root_element(xmlDoc *doc);
gboolean ov_xml_node_has_name(const xmlNode *node, const char *name);
const char *ov_xml_get_node_name(const xmlNode *node);
gboolean ov_xml_node_has_attribute(const xmlNode *node, const char *name);
gboolean ov_xml_node_has_child_node_with_name(const xmlNode *node, const char *name);
// TRUE with a null out when there is no such child.
gboolean ov_xml_get_distinct_child_node(xmlNode **out, const xmlNode *node, const char *name);
xmlNode *ov_xml_get_required_distinct_child_node(const xmlNode *node, const char *name);

// Text content: the node's children concatenated, entity references
// substituted; a node without children gives "".
gchar *ov_xml_get_text_content_as_utf8(xmlDoc *doc, const xmlNode *node);
gchar *ov_xml_get_text_content_as_latin1(xmlDoc *doc, const xmlNode *node);
gchar *ov_xml_get_text_content_as_compact_latin1(xmlDoc *doc, const xmlNode *node);
gchar *ov_xml_get_nonempty_text_content_as_compact_latin1(xmlDoc *doc, const xmlNode *node);

// Text content joined from a SAX parse's pieces, in UTF-8.
gchar *ov_xml_convert_text_content_to_latin1(const char *text);
gchar *ov_xml_convert_text_content_to_nonempty_compact_latin1(const char *text);

// Content of the distinct child of that name; no such child gives TRUE with
// a null out.
gboolean ov_xml_get_text_content_from_distinct_child_node_as_utf8(gchar **out, xmlDoc *doc,
                                                                  const xmlNode *node,
                                                                  const char *child_name);
gboolean ov_xml_get_text_content_from_distinct_child_node_as_latin1(gchar **out, xmlDoc *doc,
                                                                    const xmlNode *node,
                                                                    const char *child_name);
gboolean ov_xml_get_text_content_from_distinct_child_node_as_compact_utf8(gchar **out, xmlDoc *doc,
                                                                          const xmlNode *node,
                                                                          const char *child_name);
gboolean ov_xml_get_text_content_from_distinct_child_node_as_compact_latin1(gchar **out, xmlDoc *doc,
                                                                            const xmlNode *node,
                                                                            const char *child_name);
gboolean ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_utf8(gchar **out, xmlDoc *doc,
                                                                                   const xmlNode *node,
                                                                                   const char *child_name);
gboolean ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1(gchar **out, xmlDoc *doc,
                                                                                     const xmlNode *node,
                                                                                     const char *child_name);
gchar *ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(
    xmlDoc *doc, const xmlNode *node, const char *child_name);

// Hand-written writer for Latin-1 XML files. Each stops at the first failed
// write and returns FALSE.
gboolean ov_xml_write_tabs(FILE *stream, int count);
gboolean ov_xml_write_string(FILE *stream, const char *latin1_text);
// Escapes markup characters, tabs, line feeds and carriage returns; null for
// a null input.
gchar *ov_xml_latin1_to_xml(const char *latin1_text);

namespace ov
{

// Routes libxml2's generic error output into one collector for the life of
// the object and puts the previous handler back afterwards. What it still
// holds at the end (warnings of a successful parse) is dropped. For readers
// that drive libxml2 themselves and must report as the parsers here do.
class XmlMessageCollector
{
  public:
    XmlMessageCollector();
    XmlMessageCollector(const XmlMessageCollector &) = delete;
    XmlMessageCollector &operator=(const XmlMessageCollector &) = delete;
    ~XmlMessageCollector();

    // Sets the error to the collected messages (trimmed, valid UTF-8, cut to
    // 15 lines) or "Unknown XML error.", then puts sentence on top.
    void report_failure(const char *sentence);
    // For a streaming parse of a file, which stops at the first error: reads
    // the file again with the tree parser, which goes on after it, and
    // reports its messages under "Could not parse XML data."; its own
    // messages when the second parse succeeds.
    void report_file_failure(const char *path);

  private:
    xmlGenericErrorFunc saved_handler_;
    void *saved_context_;
};

// Lets libxml2 load external entities and DTDs only from regular files
// inside the folder of the document being read (after symbolic links and
// ".." are resolved) for the life of the object, and puts the previous
// loader back afterwards. Without a document path every external load is
// refused. A refused load yields nothing; the parse must then be failed.
class XmlEntityFence
{
  public:
    explicit XmlEntityFence(const char *document_path);
    XmlEntityFence(const XmlEntityFence &) = delete;
    XmlEntityFence &operator=(const XmlEntityFence &) = delete;
    ~XmlEntityFence();

    // FALSE with the error set when a load was refused.
    bool check() const;

    // Used by the loader while the fence stands.
    xmlParserInput *load(const char *url, xmlParserCtxt *context);

  private:
    xmlExternalEntityLoader saved_loader_;
    XmlEntityFence *saved_fence_;
    std::string folder_;  // resolved, with a trailing '/'; empty: none
    std::string refused_; // the first refused address
};

} // namespace ov
