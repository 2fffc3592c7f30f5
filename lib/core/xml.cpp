#include "core/xml.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "core/strings.h"
#include "core/util.h"
#include "core/zip.h"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlsave.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace
{

constexpr int parser_message_line_limit = 15;

// Parsing never reaches the network and keeps libxml2's size and depth
// limits. xmlRead* entry points take entity substitution and external DTD
// loading from their options rather than from the global defaults, so both
// are asked for here as well.
constexpr int parse_options = XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_NONET;

const xmlChar *xml_text(const char *text)
{
    return reinterpret_cast<const xmlChar *>(text);
}

const char *char_text(const xmlChar *text)
{
    return reinterpret_cast<const char *>(text);
}

// ---------------------------------------------------------------------------
// Parser messages.

// Gathers libxml2's error and warning messages during one parse. Empty
// between parses; kept for the life of the process.
GString *collector = nullptr;

void collect_message(void *, const char *format, ...) G_GNUC_PRINTF(2, 3);

void collect_message(void *, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    g_string_append_vprintf(collector, format, args);
    va_end(args);
}

// Entity substitution and external DTD loading on for one parse, the
// previous defaults restored afterwards.
class ParserDefaults
{
  public:
    ParserDefaults()
        : saved_substitute_(xmlSubstituteEntitiesDefault(1)), saved_load_ext_dtd_(xmlLoadExtDtdDefaultValue)
    {
        xmlLoadExtDtdDefaultValue = 1;
    }
    ParserDefaults(const ParserDefaults &) = delete;
    ParserDefaults &operator=(const ParserDefaults &) = delete;
    ~ParserDefaults()
    {
        xmlSubstituteEntitiesDefault(saved_substitute_);
        xmlLoadExtDtdDefaultValue = saved_load_ext_dtd_;
    }

  private:
    int saved_substitute_;
    int saved_load_ext_dtd_;
};

// An archive entry being parsed. The entry's checksum is only verified when
// its end is read or the entry is closed, so a failed close means the data
// already parsed was damaged.
struct ZipEntryInput {
    zip_file_t *file;
    bool close_failed = false;
};

int read_zip_entry(void *context, char *buffer, int length)
{
    gsize read = 0;
    auto *input = static_cast<ZipEntryInput *>(context);
    if (length < 0 || !ov_zip_read_from_file(input->file, buffer, static_cast<gsize>(length), &read))
        return -1;
    return static_cast<int>(read);
}

int close_zip_entry(void *context)
{
    auto *input = static_cast<ZipEntryInput *>(context);
    if (ov_zip_close_file(std::exchange(input->file, nullptr)))
        return 0;
    input->close_failed = true;
    return -1;
}

// ---------------------------------------------------------------------------
// External entities.

ov::XmlEntityFence *active_fence = nullptr;

xmlParserInputPtr fenced_entity_loader(const char *url, const char *, xmlParserCtxtPtr context)
{
    return active_fence != nullptr ? active_fence->load(url, context) : nullptr;
}

// An address with a scheme other than "file:" names something that is not a
// local file.
bool has_foreign_scheme(std::string_view url)
{
    const auto colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0 || !g_ascii_isalpha(url[0]))
        return false;
    for (char c : url.substr(0, colon))
        if (!g_ascii_isalnum(c) && c != '+' && c != '-' && c != '.')
            return false;
    return url.substr(0, colon) != "file";
}

// The local path an entity address names, relative ones taken from folder;
// empty when it names none.
std::string entity_path(const char *url, const std::string &folder)
{
    if (g_str_has_prefix(url, "file:")) {
        ov::GStr path(g_filename_from_uri(url, nullptr, nullptr));
        return path ? std::string(path.get()) : std::string();
    }
    if (has_foreign_scheme(url))
        return {};
    if (g_path_is_absolute(url))
        return url;
    return folder + url;
}

// Opens path for reading without blocking or following a FIFO; -1 unless it
// is a regular file. libxml2 hands over addresses percent-escaped, so an
// escaped name is tried unescaped too.
int open_entity_file(const std::string &path)
{
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int fd = open(path.c_str(), flags);
    if (fd < 0 && path.find('%') != std::string::npos) {
        ov::GStr unescaped(g_uri_unescape_string(path.c_str(), nullptr));
        if (unescaped)
            fd = open(unescaped.get(), flags);
    }
    struct stat info {
    };
    if (fd >= 0 && (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))) {
        close(fd);
        return -1;
    }
    return fd;
}

// The resolved path of what fd has open.
std::string opened_path(int fd)
{
    ov::GStr link(g_strdup_printf("/proc/self/fd/%d", fd));
    ov::GStr target(g_file_read_link(link.get(), nullptr));
    return target ? std::string(target.get()) : std::string();
}

int read_entity_file(void *context, char *buffer, int length)
{
    const ssize_t count = read(static_cast<int>(reinterpret_cast<intptr_t>(context)), buffer,
                               static_cast<size_t>(std::max(length, 0)));
    return static_cast<int>(count);
}

int close_entity_file(void *context)
{
    return close(static_cast<int>(reinterpret_cast<intptr_t>(context)));
}

// ---------------------------------------------------------------------------
// Attributes.

enum class Lookup { absent, found, failed };

// An attribute's value in UTF-8: the text of its one text node, read in
// place, or libxml2's joined copy of anything else.
class AttributeValue
{
  public:
    explicit operator bool() const { return text_ != nullptr; }
    const xmlChar *get() const { return text_; }
    void borrow(const xmlChar *text) { text_ = text; }
    void take(xmlChar *text)
    {
        owned_.reset(text);
        text_ = text;
    }

  private:
    const xmlChar *text_ = nullptr;
    ov::XmlCharPtr owned_;
};

Lookup lookup_attribute(const xmlNode *node, const char *name, AttributeValue &value)
{
    const xmlAttr *attribute = node != nullptr ? xmlHasProp(node, xml_text(name)) : nullptr;
    if (attribute == nullptr)
        return Lookup::absent;
    const xmlNode *child = attribute->children;
    if (attribute->type == XML_ATTRIBUTE_NODE && child != nullptr && child->next == nullptr &&
        child->type == XML_TEXT_NODE && child->content != nullptr)
        value.borrow(child->content);
    else
        value.take(xmlGetProp(node, xml_text(name)));
    if (!value) {
        ov_error_set("Error when reading XML attribute.");
        return Lookup::failed;
    }
    return Lookup::found;
}

void refuse_missing_attribute(const char *name)
{
    ov_error_set_utf8_printf("Missing XML attribute: %s", name);
}

// The value of a required attribute, or null with the reason.
AttributeValue required_attribute(const xmlNode *node, const char *name)
{
    AttributeValue value;
    if (lookup_attribute(node, name, value) == Lookup::absent)
        refuse_missing_attribute(name);
    return value;
}

gchar *utf8_copy(const xmlChar *value)
{
    return g_strdup(char_text(value));
}

// Reads an optional attribute: an absent one runs on_absent and succeeds, a
// failed read fails, a present value goes to on_found.
template <class Absent, class Found>
gboolean read_optional_attribute(const xmlNode *node, const char *name, Absent on_absent, Found on_found)
{
    AttributeValue value;
    switch (lookup_attribute(node, name, value)) {
    case Lookup::absent:
        on_absent();
        return TRUE;
    case Lookup::failed:
        return FALSE;
    case Lookup::found:
        break;
    }
    return on_found(value.get()) ? TRUE : FALSE;
}

// An optional text attribute: out is null when it is absent or unusable.
template <class Copy>
gboolean optional_string_attribute(gchar **out, const xmlNode *node, const char *name, Copy copy)
{
    *out = nullptr;
    return read_optional_attribute(
        node, name, [] {},
        [&](const xmlChar *value) {
            *out = copy(value);
            return *out != nullptr;
        });
}

gchar *ascii_attribute_copy(const xmlChar *value)
{
    if (ov_ascii_assert_in_utf8(char_text(value)) == nullptr) {
        ov_error_append("Invalid XML attribute content.");
        return nullptr;
    }
    return g_strdup(char_text(value));
}

gchar *latin1_attribute_copy(const xmlChar *value)
{
    gchar *latin1 = ov_convert_utf8_to_latin1(char_text(value));
    if (latin1 == nullptr)
        ov_error_append("Invalid XML attribute content.");
    return latin1;
}

gboolean refuse_empty_attribute(const xmlChar *value, const char *name)
{
    if (value[0] != '\0')
        return FALSE;
    ov_error_set_utf8_printf("Empty XML attribute: %s", name);
    return TRUE;
}

gboolean parse_boolean_attribute(gboolean *out, const xmlChar *value, const char *name)
{
    if (refuse_empty_attribute(value, name))
        return FALSE;
    const std::string_view text = char_text(value);
    if (text == "true") {
        *out = TRUE;
        return TRUE;
    }
    if (text == "false") {
        *out = FALSE;
        return TRUE;
    }
    ov_error_set_utf8_printf("Invalid boolean value in XML attribute: %s", name);
    return FALSE;
}

// parse(out, text) is one of the strict number parsers; its text stays
// below the sentence naming the attribute.
template <class T, class Parse>
gboolean parse_number_attribute(T *out, const xmlChar *value, const char *name, const char *sentence,
                                Parse parse)
{
    if (refuse_empty_attribute(value, name))
        return FALSE;
    if (!parse(out, char_text(value))) {
        ov_error_append_utf8_printf(sentence, name);
        return FALSE;
    }
    return TRUE;
}

constexpr const char *invalid_integer = "Invalid integer value in XML attribute: %s";
constexpr const char *invalid_double = "Invalid floating point number in XML attribute: %s";

// ---------------------------------------------------------------------------
// Text content.

// Normalises a new string in place, keeping its allocation start.
char *compact_within(char *text, char *(*normalise)(char *))
{
    const char *start = normalise(text);
    if (start != text)
        std::memmove(text, start, std::strlen(start) + 1);
    return text;
}

char *compact_latin1(char *text)
{
    return compact_within(text, ov_strip_surrounding_and_spacify_compactly_within_original_for_latin1);
}

char *compact_utf8(char *text)
{
    return compact_within(text, ov_strip_surrounding_and_spacify_compactly_within_original_for_utf8);
}

gchar *refuse_empty_content(gchar *text)
{
    if (text == nullptr)
        return nullptr;
    if (ov_utf8_assert_nonempty_or_free(text) == nullptr) {
        ov_error_append("Missing text content in XML.");
        return nullptr;
    }
    return text;
}

gchar *text_content_as_compact_utf8(xmlDoc *doc, const xmlNode *node)
{
    gchar *text = ov_xml_get_text_content_as_utf8(doc, node);
    return text != nullptr ? compact_utf8(text) : nullptr;
}

using ContentReader = gchar *(*)(xmlDoc *, const xmlNode *);

gboolean content_of_distinct_child(gchar **out, xmlDoc *doc, const xmlNode *node, const char *child_name,
                                   ContentReader read)
{
    *out = nullptr;
    xmlNode *child = nullptr;
    if (!ov_xml_get_distinct_child_node(&child, node, child_name))
        return FALSE;
    if (child == nullptr)
        return TRUE;
    *out = read(doc, child);
    return *out != nullptr;
}

gchar *nonempty_compact_utf8(xmlDoc *doc, const xmlNode *node)
{
    return refuse_empty_content(text_content_as_compact_utf8(doc, node));
}

// ---------------------------------------------------------------------------
// Hand-written writer.

constexpr std::array<std::string_view, 256> escapes = [] {
    std::array<std::string_view, 256> table{};
    table['\t'] = "&#x9;";
    table['\n'] = "&#xA;";
    // Written as a carriage return followed by a tab, as the suite's files
    // have always carried it.
    table['\r'] = "&#xD;&#x9;";
    table['"'] = "&quot;";
    table['&'] = "&amp;";
    table['\''] = "&apos;";
    table['<'] = "&lt;";
    table['>'] = "&gt;";
    return table;
}();

} // namespace

ov::XmlMessageCollector::XmlMessageCollector()
    : saved_handler_(xmlGenericError), saved_context_(xmlGenericErrorContext)
{
    if (collector == nullptr)
        collector = g_string_new(nullptr);
    g_string_truncate(collector, 0);
    xmlSetGenericErrorFunc(nullptr, collect_message);
}

ov::XmlMessageCollector::~XmlMessageCollector()
{
    xmlSetGenericErrorFunc(saved_context_, saved_handler_);
    g_string_truncate(collector, 0);
}

ov::XmlEntityFence::XmlEntityFence(const char *document_path)
    : saved_loader_(xmlGetExternalEntityLoader()), saved_fence_(active_fence)
{
    if (document_path != nullptr) {
        ov::GStr folder(g_path_get_dirname(document_path));
        ov::GStr resolved(realpath(folder.get(), nullptr));
        if (resolved)
            folder_ = std::string(resolved.get()) + (g_str_has_suffix(resolved.get(), "/") ? "" : "/");
    }
    active_fence = this;
    xmlSetExternalEntityLoader(fenced_entity_loader);
}

ov::XmlEntityFence::~XmlEntityFence()
{
    xmlSetExternalEntityLoader(saved_loader_);
    active_fence = saved_fence_;
}

bool ov::XmlEntityFence::check() const
{
    if (refused_.empty())
        return true;
    ov::GStr shown(g_utf8_make_valid(refused_.c_str(), -1));
    ov_error_set_utf8_printf("External entity outside the document's folder refused: %s", shown.get());
    return false;
}

xmlParserInput *ov::XmlEntityFence::load(const char *url, xmlParserCtxt *context)
{
    auto refuse = [&] {
        if (refused_.empty())
            refused_ = url != nullptr && url[0] != '\0' ? url : "(none)";
        return nullptr;
    };
    if (url == nullptr || folder_.empty())
        return refuse();
    const std::string path = entity_path(url, folder_);
    if (path.empty())
        return refuse();
    const int fd = open_entity_file(path);
    if (fd < 0)
        return refuse();
    // What was opened decides, so a link swapped in after a check cannot
    // lead outside.
    const std::string real = opened_path(fd);
    const int flags = fcntl(fd, F_GETFL);
    if (!g_str_has_prefix(real.c_str(), folder_.c_str()) || flags < 0 ||
        fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        close(fd);
        return refuse();
    }
    xmlParserInputBufferPtr buffer = xmlParserInputBufferCreateIO(
        read_entity_file, close_entity_file, reinterpret_cast<void *>(static_cast<intptr_t>(fd)),
        XML_CHAR_ENCODING_NONE);
    if (buffer == nullptr) {
        close(fd);
        return nullptr;
    }
    xmlParserInputPtr input = xmlNewIOInputStream(context, buffer, XML_CHAR_ENCODING_NONE);
    if (input == nullptr) {
        xmlFreeParserInputBuffer(buffer);
        return nullptr;
    }
    // Addresses inside the entity are taken from its own folder.
    input->filename = reinterpret_cast<char *>(xmlStrdup(xml_text(real.c_str())));
    return input;
}

void ov::XmlMessageCollector::report_failure(const char *sentence)
{
    if (collector->len == 0) {
        ov_error_set("Unknown XML error.");
    } else {
        // Messages quote the offending input, which need not be UTF-8.
        ov::GStr text(g_utf8_make_valid(collector->str, static_cast<gssize>(collector->len)));
        ov_error_set(g_strstrip(text.get()));
        ov_error_limit_line_count(parser_message_line_limit);
        g_string_truncate(collector, 0);
    }
    ov_error_append(sentence);
}

void ov::XmlMessageCollector::report_file_failure(const char *path)
{
    const std::string own(collector->str, collector->len);
    ov::XmlDocPtr doc(ov_xml_parse_file(path));
    if (doc) {
        g_string_assign(collector, own.c_str());
        report_failure("Could not parse XML data.");
    }
}

// ---------------------------------------------------------------------------
// Documents.

xmlDoc *ov_xml_parse_file(const char *path)
{
    ov::FilePtr file(ov_fs_utils_open_file(path, "rb"));
    if (!file)
        return nullptr;
    ov::XmlMessageCollector messages;
    ParserDefaults defaults;
    ov::XmlEntityFence fence(path);
    ov::XmlDocPtr doc(xmlReadFd(fileno(file.get()), nullptr, nullptr, parse_options));
    if (!fence.check()) {
        ov_error_append("Could not parse XML data.");
        return nullptr;
    }
    if (!doc)
        messages.report_failure("Could not parse XML data.");
    return doc.release();
}

gboolean ov_xml_parse_file_if_exists(xmlDoc **out_doc, const char *path)
{
    *out_doc = ov_xml_parse_file(path);
    if (*out_doc != nullptr)
        return TRUE;
    ov::GStr reason(g_strdup(ov_error_get()));
    OvFileInfo info{};
    if (ov_fs_utils_get_info(path, &info) && !info.exists) {
        ov_error_clear();
        return TRUE;
    }
    ov_error_set(reason.get());
    return FALSE;
}

xmlDoc *ov_xml_parse_zip_file(zip_t *archive, const char *entry_name)
{
    ZipEntryInput input{ov_zip_open_file(archive, entry_name)};
    if (input.file == nullptr)
        return nullptr;
    ov::XmlMessageCollector messages;
    ParserDefaults defaults;
    // An archive entry has no folder: nothing outside it is loaded.
    ov::XmlEntityFence fence(nullptr);
    // libxml2 closes the entry through close_zip_entry, also on failure.
    ov::XmlDocPtr doc(xmlReadIO(read_zip_entry, close_zip_entry, &input, nullptr, nullptr, parse_options));
    if (!fence.check()) {
        ov_error_append("Could not parse compressed XML data.");
        return nullptr;
    }
    if (input.close_failed) {
        // The reason is the close's own text.
        ov_error_append("Could not parse compressed XML data.");
        return nullptr;
    }
    if (!doc)
        messages.report_failure("Could not parse compressed XML data.");
    return doc.release();
}

xmlDoc *ov_xml_new_doc()
{
    xmlDoc *doc = xmlNewDoc(xml_text("1.0"));
    if (doc == nullptr)
        ov_error_set("Error when creating new empty XML tree.");
    return doc;
}

void ov_xml_free_doc(xmlDoc *doc)
{
    if (doc != nullptr)
        xmlFreeDoc(doc);
}

gboolean ov_xml_write_to_file(xmlDoc *doc, const char *path, const char *encoding)
{
    FILE *stream = ov_fs_utils_open_file(path, "wb");
    if (stream == nullptr)
        return FALSE;
    if (!ov_xml_write_to_stream(doc, stream, encoding)) {
        std::fclose(stream);
        return FALSE;
    }
    return ov_fs_utils_close_file(stream);
}

gboolean ov_xml_write_to_stream(xmlDoc *doc, FILE *stream, const char *encoding)
{
    // libxml2 goes through the caller's stdio stream, so what the caller
    // wrote before stays first, and every write is counted: writing to the
    // bare descriptor let a short write (a full disk) pass as success.
    constexpr auto write_all = [](void *context, const char *buffer, int length) -> int {
        if (length > 0 && std::fwrite(buffer, 1, static_cast<size_t>(length), static_cast<FILE *>(context)) !=
                              static_cast<size_t>(length))
            return -1;
        return length;
    };
    constexpr auto close_nothing = [](void *) -> int { return 0; };
    ov::XmlMessageCollector messages;
    xmlSaveCtxt *context = xmlSaveToIO(write_all, close_nothing, stream, encoding, XML_SAVE_FORMAT);
    if (context == nullptr) {
        ov_error_set("Could not create XML saving context for file.");
        return FALSE;
    }
    const long saved = xmlSaveDoc(context, doc);
    // Buffered output reaches the stream only when the context closes.
    const int closed = xmlSaveClose(context);
    if (saved < 0 || closed < 0 || std::fflush(stream) != 0 || std::ferror(stream) != 0) {
        ov_error_set("Could not write XML data.");
        return FALSE;
    }
    return TRUE;
}

gchar *ov_xml_write_to_string(xmlDoc *doc, gsize *out_length)
{
    if (out_length != nullptr)
        *out_length = 0;
    xmlChar *memory = nullptr;
    int size = 0;
    if (doc != nullptr) {
        ov::XmlMessageCollector messages;
        xmlDocDumpMemory(doc, &memory, &size);
    }
    ov::XmlCharPtr owned(memory);
    if (!owned || size <= 0) {
        ov_error_set("Could not write XML data to memory buffer.");
        return nullptr;
    }
    if (out_length != nullptr)
        *out_length = static_cast<gsize>(size);
    return g_strndup(char_text(owned.get()), static_cast<gsize>(size));
}

// ---------------------------------------------------------------------------
// Building trees.

xmlNode *ov_xml_add_root_element(xmlDoc *doc, const char *name)
{
    xmlNode *root = doc != nullptr ? xmlNewDocNode(doc, nullptr, xml_text(name), nullptr) : nullptr;
    if (root == nullptr) {
        ov_error_set("Error when creating an XML element.");
        return nullptr;
    }
    xmlDocSetRootElement(doc, root);
    return root;
}

xmlNode *ov_xml_add_child_element(xmlNode *parent, const char *name)
{
    xmlNode *child = xmlNewChild(parent, nullptr, xml_text(name), nullptr);
    if (child == nullptr)
        ov_error_set("Error when creating an XML child element.");
    return child;
}

xmlNode *ov_xml_add_child_element_with_utf8_text_content(xmlNode *parent, const char *name, const char *text)
{
    xmlNode *child = xmlNewTextChild(parent, nullptr, xml_text(name), xml_text(text));
    if (child == nullptr)
        ov_error_set("Error when creating an XML text child element.");
    return child;
}

xmlNode *ov_xml_add_child_element_with_ascii_text_content(xmlNode *parent, const char *name, const char *text)
{
    return ov_xml_add_child_element_with_utf8_text_content(parent, name, text);
}

xmlNode *ov_xml_add_child_element_with_latin1_text_content(xmlNode *parent, const char *name,
                                                           const char *latin1_text)
{
    ov::GStr utf8(latin1_text != nullptr ? ov_convert_latin1_to_utf8(latin1_text) : nullptr);
    return ov_xml_add_child_element_with_utf8_text_content(parent, name, utf8.get());
}

xmlAttr *ov_xml_set_attribute(xmlNode *node, const char *name, const char *value)
{
    if (value == nullptr) {
        ov_error_set("Missing value for XML attribute.");
        return nullptr;
    }
    xmlAttr *attribute = xmlSetProp(node, xml_text(name), xml_text(value));
    if (attribute == nullptr)
        ov_error_set("Error when setting an XML attribute.");
    return attribute;
}

xmlAttr *ov_xml_set_attribute_with_ascii_content(xmlNode *node, const char *name, const char *value)
{
    return ov_xml_set_attribute(node, name, value);
}

xmlAttr *ov_xml_set_attribute_with_latin1_content(xmlNode *node, const char *name, const char *latin1_value)
{
    ov::GStr utf8(latin1_value != nullptr ? ov_convert_latin1_to_utf8(latin1_value) : nullptr);
    return ov_xml_set_attribute(node, name, utf8.get());
}

xmlAttr *ov_xml_set_attribute_to_boolean(xmlNode *node, const char *name, gboolean value)
{
    return ov_xml_set_attribute(node, name, value ? "true" : "false");
}

xmlAttr *ov_xml_set_attribute_to_int(xmlNode *node, const char *name, int value)
{
    char text[16];
    g_snprintf(text, sizeof text, "%d", value);
    return ov_xml_set_attribute(node, name, text);
}

xmlAttr *ov_xml_set_attribute_to_double(xmlNode *node, const char *name, double value)
{
    char text[G_ASCII_DTOSTR_BUF_SIZE];
    ov_util_format_double_into(text, sizeof text, value);
    return ov_xml_set_attribute(node, name, text);
}

// ---------------------------------------------------------------------------
// Optional attributes.

gboolean ov_xml_get_attribute_value_as_utf8(gchar **out, const xmlNode *node, const char *name)
{
    return optional_string_attribute(out, node, name, [](const xmlChar *value) { return utf8_copy(value); });
}

gboolean ov_xml_get_attribute_value_as_ascii(gchar **out, const xmlNode *node, const char *name)
{
    return optional_string_attribute(out, node, name, ascii_attribute_copy);
}

gboolean ov_xml_get_attribute_value_as_latin1(gchar **out, const xmlNode *node, const char *name)
{
    return optional_string_attribute(out, node, name, latin1_attribute_copy);
}

gboolean ov_xml_get_nonempty_attribute_value_as_utf8(gchar **out, const xmlNode *node, const char *name)
{
    return optional_string_attribute(out, node, name, [name](const xmlChar *value) {
        return refuse_empty_attribute(value, name) ? nullptr : utf8_copy(value);
    });
}

gboolean ov_xml_get_attribute_value_as_boolean_with_fallback(gboolean *out, const xmlNode *node,
                                                             const char *name, gboolean fallback)
{
    return read_optional_attribute(
        node, name, [&] { *out = fallback; },
        [&](const xmlChar *value) { return parse_boolean_attribute(out, value, name); });
}

gboolean ov_xml_parse_attribute_value_as_boolean_with_fallback(gboolean *out, const char *value,
                                                               const char *name, gboolean fallback)
{
    if (value == nullptr) {
        *out = fallback;
        return TRUE;
    }
    return parse_boolean_attribute(out, xml_text(value), name);
}

gboolean ov_xml_get_attribute_value_as_int_in_range_with_fallback(int *out, const xmlNode *node,
                                                                  const char *name, int minimum, int maximum,
                                                                  int fallback)
{
    return read_optional_attribute(
        node, name, [&] { *out = fallback; },
        [&](const xmlChar *value) {
            return parse_number_attribute(
                out, value, name, invalid_integer, [=](int *result, const char *text) {
                    return ov_util_parse_int_in_range(result, text, minimum, maximum);
                });
        });
}

gboolean ov_xml_get_attribute_value_as_double_in_range_with_fallback(double *out, const xmlNode *node,
                                                                     const char *name, double minimum,
                                                                     double maximum, double fallback)
{
    return read_optional_attribute(
        node, name, [&] { *out = fallback; },
        [&](const xmlChar *value) {
            return parse_number_attribute(
                out, value, name, invalid_double, [=](double *result, const char *text) {
                    return ov_util_parse_double_in_range(result, text, minimum, maximum);
                });
        });
}

// ---------------------------------------------------------------------------
// Required attributes.

gchar *ov_xml_get_required_attribute_value_as_utf8(const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    return value ? g_strdup(char_text(value.get())) : nullptr;
}

gchar *ov_xml_get_required_attribute_value_as_ascii(const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    return value ? ascii_attribute_copy(value.get()) : nullptr;
}

gchar *ov_xml_copy_required_attribute_value_as_ascii(const char *value, const char *name)
{
    if (value == nullptr) {
        refuse_missing_attribute(name);
        return nullptr;
    }
    return ascii_attribute_copy(xml_text(value));
}

gchar *ov_xml_get_required_attribute_value_as_latin1(const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    return value ? latin1_attribute_copy(value.get()) : nullptr;
}

gchar *ov_xml_get_nonempty_required_attribute_value_as_utf8(const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    if (!value || refuse_empty_attribute(value.get(), name))
        return nullptr;
    return g_strdup(char_text(value.get()));
}

gchar *ov_xml_get_nonempty_required_attribute_value_as_latin1(const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    if (!value || refuse_empty_attribute(value.get(), name))
        return nullptr;
    return latin1_attribute_copy(value.get());
}

gchar *ov_xml_copy_nonempty_required_attribute_value_as_latin1(const char *value, const char *name)
{
    if (value == nullptr) {
        refuse_missing_attribute(name);
        return nullptr;
    }
    if (refuse_empty_attribute(xml_text(value), name))
        return nullptr;
    return latin1_attribute_copy(xml_text(value));
}

gboolean ov_xml_get_required_attribute_value_as_boolean(gboolean *out, const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    return value && parse_boolean_attribute(out, value.get(), name);
}

gboolean ov_xml_get_required_attribute_value_as_int(int *out, const xmlNode *node, const char *name)
{
    const AttributeValue value = required_attribute(node, name);
    return value && parse_number_attribute(out, value.get(), name, invalid_integer, ov_util_parse_int);
}

gboolean ov_xml_get_required_attribute_value_as_int_in_range(int *out, const xmlNode *node, const char *name,
                                                             int minimum, int maximum)
{
    const AttributeValue value = required_attribute(node, name);
    return value && parse_number_attribute(
                        out, value.get(), name, invalid_integer, [=](int *result, const char *text) {
                            return ov_util_parse_int_in_range(result, text, minimum, maximum);
                        });
}

gboolean ov_xml_get_required_attribute_value_as_double_in_range(double *out, const xmlNode *node,
                                                                const char *name, double minimum,
                                                                double maximum)
{
    const AttributeValue value = required_attribute(node, name);
    return value && parse_number_attribute(
                        out, value.get(), name, invalid_double, [=](double *result, const char *text) {
                            return ov_util_parse_double_in_range(result, text, minimum, maximum);
                        });
}

// ---------------------------------------------------------------------------
// Nodes.

xmlNode *ov_xml_get_root_element(xmlDoc *doc)
{
    xmlNode *root = doc != nullptr ? xmlDocGetRootElement(doc) : nullptr;
    if (root == nullptr)
        ov_error_set("Missing root element in XML tree.");
    return root;
}

gboolean ov_xml_node_has_name(const xmlNode *node, const char *name)
{
    return node != nullptr && node->name != nullptr && xmlStrcmp(node->name, xml_text(name)) == 0;
}

const char *ov_xml_get_node_name(const xmlNode *node)
{
    return char_text(node->name);
}

gboolean ov_xml_node_has_attribute(const xmlNode *node, const char *name)
{
    return node != nullptr && xmlHasProp(node, xml_text(name)) != nullptr;
}

gboolean ov_xml_node_has_child_node_with_name(const xmlNode *node, const char *name)
{
    if (node == nullptr)
        return FALSE;
    for (const xmlNode *child = node->children; child != nullptr; child = child->next) {
        if (ov_xml_node_has_name(child, name))
            return TRUE;
    }
    return FALSE;
}

gboolean ov_xml_get_distinct_child_node(xmlNode **out, const xmlNode *node, const char *name)
{
    *out = nullptr;
    if (node == nullptr)
        return TRUE;
    xmlNode *found = nullptr;
    for (xmlNode *child = node->children; child != nullptr; child = child->next) {
        if (!ov_xml_node_has_name(child, name))
            continue;
        if (found != nullptr) {
            ov_error_set("Duplicate XML nodes found where not allowed.");
            return FALSE;
        }
        found = child;
    }
    *out = found;
    return TRUE;
}

xmlNode *ov_xml_get_required_distinct_child_node(const xmlNode *node, const char *name)
{
    xmlNode *child = nullptr;
    if (!ov_xml_get_distinct_child_node(&child, node, name))
        return nullptr;
    if (child == nullptr)
        ov_error_set_utf8_printf("Missing XML node: %s", name);
    return child;
}

// ---------------------------------------------------------------------------
// Text content.

namespace
{

// Runs read on the node's text content in UTF-8. A single text child, what
// nearly every element holds, is read in place; anything else (entity
// references, several pieces) is joined by libxml2 first.
template <class Read> gchar *with_text_content(xmlDoc *doc, const xmlNode *node, Read read)
{
    if (node == nullptr || node->children == nullptr)
        return read("");
    const xmlNode *child = node->children;
    if (child->next == nullptr && child->type == XML_TEXT_NODE && child->content != nullptr)
        return read(char_text(child->content));
    ov::XmlCharPtr text(xmlNodeListGetString(doc, child, 1));
    if (!text) {
        ov_error_set("Error reading text content from XML node.");
        return nullptr;
    }
    return read(char_text(text.get()));
}

} // namespace

gchar *ov_xml_get_text_content_as_utf8(xmlDoc *doc, const xmlNode *node)
{
    return with_text_content(doc, node, [](const char *text) { return g_strdup(text); });
}

gchar *ov_xml_convert_text_content_to_latin1(const char *text)
{
    gchar *latin1 = ov_convert_utf8_to_latin1(text);
    if (latin1 == nullptr)
        ov_error_append("Invalid XML node content.");
    return latin1;
}

gchar *ov_xml_convert_text_content_to_nonempty_compact_latin1(const char *text)
{
    gchar *latin1 = ov_xml_convert_text_content_to_latin1(text);
    return refuse_empty_content(latin1 != nullptr ? compact_latin1(latin1) : nullptr);
}

gchar *ov_xml_get_text_content_as_latin1(xmlDoc *doc, const xmlNode *node)
{
    return with_text_content(doc, node, ov_xml_convert_text_content_to_latin1);
}

gchar *ov_xml_get_text_content_as_compact_latin1(xmlDoc *doc, const xmlNode *node)
{
    gchar *text = ov_xml_get_text_content_as_latin1(doc, node);
    return text != nullptr ? compact_latin1(text) : nullptr;
}

gchar *ov_xml_get_nonempty_text_content_as_compact_latin1(xmlDoc *doc, const xmlNode *node)
{
    return refuse_empty_content(ov_xml_get_text_content_as_compact_latin1(doc, node));
}

gboolean ov_xml_get_text_content_from_distinct_child_node_as_utf8(gchar **out, xmlDoc *doc,
                                                                  const xmlNode *node, const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name, ov_xml_get_text_content_as_utf8);
}

gboolean ov_xml_get_text_content_from_distinct_child_node_as_latin1(gchar **out, xmlDoc *doc,
                                                                    const xmlNode *node,
                                                                    const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name, ov_xml_get_text_content_as_latin1);
}

gboolean ov_xml_get_text_content_from_distinct_child_node_as_compact_utf8(gchar **out, xmlDoc *doc,
                                                                          const xmlNode *node,
                                                                          const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name, text_content_as_compact_utf8);
}

gboolean ov_xml_get_text_content_from_distinct_child_node_as_compact_latin1(gchar **out, xmlDoc *doc,
                                                                            const xmlNode *node,
                                                                            const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name, ov_xml_get_text_content_as_compact_latin1);
}

gboolean ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_utf8(gchar **out, xmlDoc *doc,
                                                                                   const xmlNode *node,
                                                                                   const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name, nonempty_compact_utf8);
}

gboolean ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1(gchar **out, xmlDoc *doc,
                                                                                     const xmlNode *node,
                                                                                     const char *child_name)
{
    return content_of_distinct_child(out, doc, node, child_name,
                                     ov_xml_get_nonempty_text_content_as_compact_latin1);
}

gchar *ov_xml_get_nonempty_text_content_from_required_distinct_child_node_as_compact_utf8(
    xmlDoc *doc, const xmlNode *node, const char *child_name)
{
    xmlNode *child = ov_xml_get_required_distinct_child_node(node, child_name);
    return child != nullptr ? nonempty_compact_utf8(doc, child) : nullptr;
}

// ---------------------------------------------------------------------------
// Hand-written writer.

gboolean ov_xml_write_tabs(FILE *stream, int count)
{
    static constexpr std::string_view tabs = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
    while (count > 0) {
        const int piece = std::min(count, static_cast<int>(tabs.size()));
        if (!ov_util_fprintf(stream, "%.*s", piece, tabs.data()))
            return FALSE;
        count -= piece;
    }
    return TRUE;
}

gboolean ov_xml_write_string(FILE *stream, const char *latin1_text)
{
    if (latin1_text == nullptr || latin1_text[0] == '\0')
        return TRUE;
    ov::GStr escaped(ov_xml_latin1_to_xml(latin1_text));
    return ov_util_fprintf(stream, "%s", escaped.get());
}

gchar *ov_xml_latin1_to_xml(const char *latin1_text)
{
    if (latin1_text == nullptr)
        return nullptr;
    const auto *bytes = reinterpret_cast<const unsigned char *>(latin1_text);
    gsize length = 0;
    for (const unsigned char *byte = bytes; *byte != '\0'; ++byte)
        length += escapes[*byte].empty() ? 1 : escapes[*byte].size();
    auto *result = static_cast<gchar *>(g_malloc(length + 1));
    gchar *end = result;
    for (const unsigned char *byte = bytes; *byte != '\0'; ++byte) {
        const std::string_view escape = escapes[*byte];
        if (escape.empty()) {
            *end++ = static_cast<gchar>(*byte);
        } else {
            std::memcpy(end, escape.data(), escape.size());
            end += escape.size();
        }
    }
    *end = '\0';
    return result;
}
