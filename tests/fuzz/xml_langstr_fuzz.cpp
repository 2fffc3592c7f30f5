// The XML layer and the multilingual-text reader: any bytes parse without
// harm; every element's translations that read are written and read back
// to the same translations.
#include "core/error.h"
#include "core/raii.h"
#include "core/xml.h"
#include "fuzz_support.h"
#include "lang/langstr_xml.h"

#include <cstdio>

namespace
{

using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;

void check_round_trip(const langstr *ls, gboolean compact)
{
    gchar *text = nullptr;
    gsize length = 0;
    FILE *stream = open_memstream(&text, &length);
    OV_FUZZ_CHECK(stream != nullptr);
    std::fputs("<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<r>\n", stream);
    OV_FUZZ_CHECK(ov_xml_write_langstr(stream, ls, "t", 1));
    std::fputs("</r>\n", stream);
    std::fclose(stream);
    const std::string path = ov::fuzz::path_in_folder("langstr.xml");
    ov::fuzz::write_bytes(path, text, length);
    std::free(text);
    ov::XmlDocPtr doc(ov_xml_parse_file(path.c_str()));
    OV_FUZZ_CHECK(doc != nullptr);
    langstr *read = nullptr;
    OV_FUZZ_CHECK(ov_xml_parse_langstr(&read, doc.get(), ov_xml_get_root_element(doc.get()), "t", compact));
    LangstrPtr owned(read);
    OV_FUZZ_CHECK(ov_langstr_is_identical(read, ls));
}

void visit(xmlDoc *doc, xmlNode *node)
{
    for (xmlNode *child = node->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        for (gboolean compact : {0, 1}) {
            langstr *ls = nullptr;
            if (ov_xml_parse_langstr(&ls, doc, node, reinterpret_cast<const char *>(child->name), compact)) {
                LangstrPtr owned(ls);
                check_round_trip(ls, compact);
            }
            ov_error_clear();
        }
        g_free(ov_xml_get_text_content_as_compact_latin1(doc, child));
        ov_error_clear();
        visit(doc, child);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string path = ov::fuzz::path_in_folder("in.xml");
    ov::fuzz::write_bytes(path, data, size);
    ov::XmlDocPtr doc(ov_xml_parse_file(path.c_str()));
    ov_error_clear();
    if (doc)
        if (xmlNode *root = ov_xml_get_root_element(doc.get()); root != nullptr)
            visit(doc.get(), root);
    return 0;
}
