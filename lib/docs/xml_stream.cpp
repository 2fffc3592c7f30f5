#include "docs/xml_stream.h"

#include "core/error.h"
#include "core/fs_utils.h"

namespace ov
{

XmlStreamReader::Outcome XmlStreamReader::run(const char *root_name)
{
    while (read() && xmlTextReaderNodeType(reader_) != XML_READER_TYPE_ELEMENT) {
    }
    if (status_ < 0)
        return Outcome::xml_failure;
    if (status_ == 0)
        return Outcome::no_root;
    const bool is_root = xmlStrcmp(xmlTextReaderConstLocalName(reader_), BAD_CAST root_name) == 0;
    if (is_root)
        read_root();
    while (status_ > 0 && !stopped())
        read();
    if (status_ < 0)
        return Outcome::xml_failure;
    return is_root ? Outcome::done : Outcome::wrong_root;
}

xmlNode *XmlStreamReader::expand()
{
    xmlNode *node = xmlTextReaderExpand(reader_);
    if (node == nullptr)
        status_ = -1;
    return node;
}

XmlStreamFile::XmlStreamFile(const char *path, const char *kind)
    : path_(path), kind_(kind), file_(ov_fs_utils_open_file(path, "rb")), fence_(path)
{
    if (file_)
        reader_.reset(xmlReaderForFd(fileno(file_.get()), nullptr, nullptr,
                                     XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_NONET));
}

XmlStreamFile::~XmlStreamFile() = default;

gboolean XmlStreamFile::read(XmlStreamReader &walk, const char *root_name)
{
    if (!file_) {
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    }
    const auto outcome = reader_ ? walk.run(root_name) : XmlStreamReader::Outcome::xml_failure;
    if (!fence_.check()) {
        ov_error_append("Could not parse XML data.");
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    }
    switch (outcome) {
    case XmlStreamReader::Outcome::xml_failure:
        messages_.report_file_failure(path_);
        ov_error_append_utf8_printf("Error loading %s file.", kind_);
        return FALSE;
    case XmlStreamReader::Outcome::no_root:
        ov_error_set("Missing root element in XML tree.");
        ov_error_append_utf8_printf("Invalid %s file.", kind_);
        return FALSE;
    case XmlStreamReader::Outcome::wrong_root:
        ov_error_set_utf8_printf("Not a %s file.", kind_);
        return FALSE;
    case XmlStreamReader::Outcome::done:
        break;
    }
    return TRUE;
}

} // namespace ov
