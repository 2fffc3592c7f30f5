#include "docs/xml_stream.h"

#include "core/error.h"
#include "core/fs_utils.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace ov
{

const char *XmlSaxReader::Attributes::find(const char *name, std::string &value) const
{
    // Five entries each: local name, prefix, namespace, value, value's end.
    for (int i = 0; i < count_; i++) {
        const xmlChar **attribute = attributes_ + 5 * i;
        if (std::strcmp(reinterpret_cast<const char *>(attribute[0]), name) == 0) {
            value.assign(reinterpret_cast<const char *>(attribute[3]),
                         static_cast<size_t>(attribute[4] - attribute[3]));
            return value.c_str();
        }
    }
    return nullptr;
}

void XmlSaxReader::stop()
{
    stopped_ = true;
    xmlStopParser(context_);
}

namespace
{

constexpr int parse_options = XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_NONET;

// The reader of the SAX parse under way. An external entity is parsed with a
// context of its own, so the reader is not found through the context.
XmlSaxReader *active_sax_reader = nullptr;

void free_context(xmlParserCtxt *context)
{
    xmlFreeDoc(context->myDoc); // holds the DTD and its entities
    context->myDoc = nullptr;
    xmlFreeParserCtxt(context);
}

} // namespace

// libxml2's callbacks, handing the events inside the root on to the reader.
struct XmlSaxReader::Events {
    static void start(void *, const xmlChar *name, const xmlChar *, const xmlChar *, int, const xmlChar **,
                      int attribute_count, int, const xmlChar **attributes)
    {
        XmlSaxReader *reader = active_sax_reader;
        if (reader->stopped_ || reader->wrong_root_)
            return;
        if (reader->depth_++ == 0) {
            reader->root_seen_ = true;
            reader->wrong_root_ = std::strcmp(reinterpret_cast<const char *>(name), reader->root_name_) != 0;
            return;
        }
        const bool wants_text =
            reader->start_element(name, XmlSaxReader::Attributes(attributes, attribute_count));
        reader->wants_text_.push_back(wants_text);
        if (wants_text)
            reader->text_.clear();
    }

    static void end(void *, const xmlChar *, const xmlChar *, const xmlChar *)
    {
        XmlSaxReader *reader = active_sax_reader;
        if (reader->stopped_ || reader->wrong_root_)
            return;
        if (--reader->depth_ == 0) {
            reader->end_root();
            return;
        }
        const bool wanted_text = reader->wants_text_.back();
        reader->wants_text_.pop_back();
        static const std::string none;
        reader->end_element(wanted_text ? reader->text_ : none);
    }

    static void text(void *, const xmlChar *text, int length)
    {
        XmlSaxReader *reader = active_sax_reader;
        if (!reader->stopped_ && !reader->wrong_root_ && !reader->wants_text_.empty() &&
            reader->wants_text_.back())
            reader->text_.append(reinterpret_cast<const char *>(text), static_cast<size_t>(length));
    }
};

void DistinctTextElement::add(const std::string &text)
{
    if (count_++ == 0)
        text_ = text;
}

bool DistinctTextElement::finish_nonempty_compact_latin1(gchar **out) const
{
    *out = nullptr;
    if (count_ > 1) {
        ov_error_set("Duplicate XML nodes found where not allowed.");
        return false;
    }
    if (count_ == 1)
        *out = ov_xml_convert_text_content_to_nonempty_compact_latin1(text_.c_str());
    return count_ == 0 || *out != nullptr;
}

XmlStreamFile::XmlStreamFile(const char *path, const char *kind)
    : path_(path), kind_(kind), file_(ov_fs_utils_open_file(path, "rb")), fence_(path)
{
}

XmlStreamFile::~XmlStreamFile() = default;

gboolean XmlStreamFile::read(XmlSaxReader &walk, const char *root_name)
{
    if (!file_)
        return report(Outcome::xml_failure);
    // The handlers of a tree build, for the document and its DTD (entity
    // declarations are kept there), with the elements and text sent to walk
    // instead; comments and processing instructions are not wanted.
    xmlSAXHandler handler;
    xmlSAXVersion(&handler, 2);
    handler.startElementNs = XmlSaxReader::Events::start;
    handler.endElementNs = XmlSaxReader::Events::end;
    handler.characters = XmlSaxReader::Events::text;
    handler.ignorableWhitespace = XmlSaxReader::Events::text;
    handler.cdataBlock = XmlSaxReader::Events::text;
    handler.comment = nullptr;
    handler.processingInstruction = nullptr;
    // Fed in pieces, as the text reader does: the parser then also finds
    // what follows the root element (a NUL byte included).
    const int fd = fileno(file_.get());
    char buffer[1 << 16];
    ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count < 0)
        return report(Outcome::xml_failure);
    // The first bytes tell the encoding.
    const int head = static_cast<int>(std::min<ssize_t>(count, 4));
    Owned<xmlParserCtxt, free_context> context(
        xmlCreatePushParserCtxt(&handler, nullptr, buffer, head, nullptr));
    if (!context)
        return report(Outcome::xml_failure);
    xmlCtxtUseOptions(context.get(), parse_options);
    walk.context_ = context.get();
    walk.root_name_ = root_name;
    XmlSaxReader *saved = std::exchange(active_sax_reader, &walk);
    // Any error the parser reports fails the file, as with the text reader.
    int status = XML_ERR_OK;
    for (int offset = head; count > 0 && !walk.stopped_ && status == XML_ERR_OK; offset = 0) {
        status = xmlParseChunk(context.get(), buffer + offset, static_cast<int>(count) - offset, 0);
        count = ::read(fd, buffer, sizeof buffer);
    }
    if (!walk.stopped_ && count == 0 && status == XML_ERR_OK)
        status = xmlParseChunk(context.get(), nullptr, 0, 1);
    active_sax_reader = saved;
    walk.context_ = nullptr;
    if (walk.stopped_)
        return report(Outcome::done);
    if (count < 0 || status != XML_ERR_OK || !context->wellFormed)
        return report(Outcome::xml_failure);
    if (!walk.root_seen_)
        return report(Outcome::no_root);
    return report(walk.wrong_root_ ? Outcome::wrong_root : Outcome::done);
}

gboolean XmlStreamFile::report(Outcome outcome)
{
    if (!file_) {
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    }
    if (!fence_.check()) {
        ov_error_append("Could not parse XML data.");
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    }
    switch (outcome) {
    case Outcome::xml_failure:
        messages_.report_file_failure(path_);
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    case Outcome::no_root:
        ov_error_set("Missing root element in XML tree.");
        ov_error_append_utf8_printf("Invalid %s file.", kind_);
        return FALSE;
    case Outcome::wrong_root:
        ov_error_set_utf8_printf("Not a %s file.", kind_);
        return FALSE;
    case Outcome::done:
        break;
    }
    return TRUE;
}

} // namespace ov
