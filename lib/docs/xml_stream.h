// Reading a document file as a stream with libxml2's text reader, the way
// the template and codeset readers do: no tree of the whole file is built.
#pragma once

#include "core/raii.h"
#include "core/xml.h"

#include <glib.h>
#include <libxml/xmlreader.h>

#include <memory>

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
    xmlTextReader *reader() const { return reader_.get(); }
    // Runs walk to its end; FALSE with the reason in the error buffer when
    // the file could not be read as XML or its root is missing or wrong.
    gboolean read(XmlStreamReader &walk, const char *root_name);

  private:
    const char *path_;
    const char *kind_;
    FilePtr file_;
    XmlMessageCollector messages_;
    XmlEntityFence fence_;
    Owned<xmlTextReader, xmlFreeTextReader> reader_;
};

} // namespace ov
