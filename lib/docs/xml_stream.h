// Reading a document file as a stream with libxml2's SAX parser, the way the
// template and codeset readers do: no tree of the file is built at all.
#pragma once

#include "core/raii.h"
#include "core/xml.h"

#include <glib.h>
#include <libxml/parser.h>

#include <string>
#include <vector>

namespace ov
{

// A reader fed by the parser: it sees the elements inside the root element
// as they start and end (entities substituted), with the text of those
// that ask for it.
class XmlSaxReader
{
  public:
    // The attributes of an element, as the parser hands them over (values
    // are not terminated). Attributes a DTD gives by default are included.
    class Attributes
    {
      public:
        Attributes(const xmlChar **attributes, int count) : attributes_(attributes), count_(count) {}
        // The first attribute of that local name's text, kept in value;
        // null when the element has none.
        const char *find(const char *name, std::string &value) const;

      private:
        const xmlChar **attributes_;
        int count_;
    };

    XmlSaxReader() = default;
    XmlSaxReader(const XmlSaxReader &) = delete;
    XmlSaxReader &operator=(const XmlSaxReader &) = delete;
    virtual ~XmlSaxReader() = default;

    // An element inside the root starts; TRUE asks for its text: the text
    // directly inside it (character data sections included, elements inside
    // it left out), joined. Elements whose text is asked for do not nest.
    virtual bool start_element(const xmlChar *name, const Attributes &attributes) = 0;
    // The innermost open element ends; text is its text, if asked for.
    virtual void end_element(const std::string &text) = 0;
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
    std::vector<bool> wants_text_; // per open element inside the root
    std::string text_;
};

// The text of an element that may appear once at most (a version).
class DistinctTextElement
{
  public:
    void add(const std::string &text);
    // TRUE with the text made compact, null when there was no element;
    // FALSE with the reason set: a second element, or an empty text.
    bool finish_nonempty_compact_latin1(gchar **out) const;

  private:
    int count_ = 0;
    std::string text_;
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

    // Runs walk to its end; FALSE with the reason in the error buffer when
    // the file could not be read as XML or its root is missing or wrong.
    gboolean read(XmlSaxReader &walk, const char *root_name);

  private:
    enum class Outcome { xml_failure, no_root, wrong_root, done };
    gboolean report(Outcome outcome);

    const char *path_;
    const char *kind_;
    FilePtr file_;
    XmlMessageCollector messages_;
    XmlEntityFence fence_;
};

} // namespace ov
