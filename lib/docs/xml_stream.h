// Reading a document file as a stream with libxml2's text reader, the way
// the template and codeset readers do: no tree of the whole file is built.
#pragma once

#include "core/raii.h"
#include "core/xml.h"

#include <glib.h>
#include <libxml/xmlreader.h>

#include <memory>
#include <string>

namespace ov
{

// The walk over the document. A reader derived from it reads the root
// element's contents in read_root(); the rest of the document is read too,
// since it must be well-formed whatever the root holds.
class XmlStreamReader
{
  public:
    enum class Outcome { xml_failure, no_root, wrong_root, done };

    explicit XmlStreamReader(xmlTextReader *reader) : reader_(reader) {}
    XmlStreamReader(const XmlStreamReader &) = delete;
    XmlStreamReader &operator=(const XmlStreamReader &) = delete;
    virtual ~XmlStreamReader() = default;

    // Finds the root element and reads it when it is named root_name.
    Outcome run(const char *root_name);

  protected:
    // Reads the root element's contents, leaving the reader after it.
    virtual void read_root() = 0;
    // TRUE once the reader has seen all it wants; the rest is not read.
    virtual bool stopped() const { return false; }

    bool read() { return (status_ = xmlTextReaderRead(reader_)) == 1; }
    bool next() { return (status_ = xmlTextReaderNext(reader_)) == 1; }
    // The current element as a tree, or null (an XML failure).
    xmlNode *expand();

    // Calls visit with the name of each child element of the current
    // element; visit leaves the reader after that child, by next() or a
    // nested for_each_child. Ends after the current element.
    template <class Visit> void for_each_child(Visit visit)
    {
        if (xmlTextReaderIsEmptyElement(reader_)) {
            read();
            return;
        }
        const int depth = xmlTextReaderDepth(reader_);
        read();
        while (status_ == 1 && !stopped()) {
            if (xmlTextReaderDepth(reader_) <= depth) {
                read();
                return;
            }
            if (xmlTextReaderNodeType(reader_) == XML_READER_TYPE_ELEMENT)
                visit(xmlTextReaderConstLocalName(reader_));
            else
                read();
        }
    }

    xmlTextReader *reader_;
    int status_ = 1;
};

// A reader fed by libxml2's SAX parser, which builds no tree at all: it sees
// the elements inside the root element as they start and end, and the text
// between them (entities substituted, character data sections included).
class XmlSaxReader
{
  public:
    // The attributes of an element, as the parser hands them over (values
    // are not terminated). Attributes a DTD gives by default are included.
    class Attributes
    {
      public:
        Attributes(const xmlChar **attributes, int count) : attributes_(attributes), count_(count) {}
        // FALSE when the element has no attribute of that local name;
        // otherwise value holds the first one's text.
        bool find(const char *name, std::string &value) const;

      private:
        const xmlChar **attributes_;
        int count_;
    };

    XmlSaxReader() = default;
    XmlSaxReader(const XmlSaxReader &) = delete;
    XmlSaxReader &operator=(const XmlSaxReader &) = delete;
    virtual ~XmlSaxReader() = default;

    // An element inside the root starts or ends.
    virtual void start_element(const xmlChar *name, const Attributes &attributes) = 0;
    virtual void end_element() = 0;
    // A piece of text directly inside the innermost open element.
    virtual void text(const xmlChar *text, int length) = 0;
    // The root element ends.
    virtual void end_root() = 0;

    // Ends the parse at once: nothing more is read or reported, and the
    // read succeeds.
    void stop();

  private:
    friend class XmlStreamFile;
    struct Events;
    xmlParserCtxt *context_ = nullptr;
    const char *root_name_ = nullptr;
    int depth_ = 0;
    bool root_seen_ = false;
    bool wrong_root_ = false;
    bool stopped_ = false;
};

// One document file open for a stream read: entities substituted, external
// DTDs loaded from the document's folder only, never from the network, and
// libxml2's messages collected. kind names the document in the messages
// ("template" gives "Error loading template file.").
class XmlStreamFile
{
  public:
    XmlStreamFile(const char *path, const char *kind);
    XmlStreamFile(const XmlStreamFile &) = delete;
    XmlStreamFile &operator=(const XmlStreamFile &) = delete;
    ~XmlStreamFile();

    // Null when the file could not be opened or read.
    xmlTextReader *reader();
    // Runs walk to its end; FALSE with the reason in the error buffer when
    // the file could not be read as XML or its root is missing or wrong.
    gboolean read(XmlStreamReader &walk, const char *root_name);
    // The same with a SAX reader. A file is read either way, once.
    gboolean read(XmlSaxReader &walk, const char *root_name);

  private:
    gboolean report(XmlStreamReader::Outcome outcome);

    const char *path_;
    const char *kind_;
    FilePtr file_;
    XmlMessageCollector messages_;
    XmlEntityFence fence_;
    Owned<xmlTextReader, xmlFreeTextReader> reader_;
};

} // namespace ov
