#include "docs/codeset_io.h"

#include "core/atomic_file.h"
#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "core/util.h"
#include "core/xml.h"
#include "lang/langstr_xml.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace
{

using CodesetPtr = std::unique_ptr<OvCodeset, decltype([](OvCodeset *c) { ov_codeset_destroy(c); })>;

bool read_remarks(OvCodeset *codeset, xmlDoc *document, xmlNode *root)
{
    // The remarks in code order, as ov_remark_list_add_remark_sorted would
    // link them one by one: a stable sort, since equal codes keep their
    // order there.
    std::vector<OvRemark *> sorted;
    auto owner = [&] {
        for (OvRemark *remark : sorted)
            ov_remark_destroy(remark);
    };
    // Codes seen so far, pointing into the remarks.
    std::unordered_set<std::string_view> codes;
    for (xmlNode *child = root->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE || !ov_xml_node_has_name(child, "remark"))
            continue;
        OvRemark *remark = ov_xml_parse_remark(document, child);
        if (remark == nullptr) {
            owner();
            return false;
        }
        if (!codes.insert(remark->code).second) {
            ov_remark_destroy(remark);
            owner();
            ov_error_set("Duplicate remark codes.");
            return false;
        }
        sorted.push_back(remark);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const OvRemark *a, const OvRemark *b) {
        return ov_remark_compare_codes(a->code, b->code) < 0;
    });
    if (sorted.empty()) {
        ov_error_set("Missing remarks.");
        return false;
    }
    for (OvRemark *remark : sorted)
        ov_remark_list_add_remark_last(codeset->remarks, remark);
    return true;
}

bool read_codeset(OvCodeset *codeset, xmlDoc *document, xmlNode *root)
{
    codeset->name = ov_xml_parse_required_langstr(document, root, "name", TRUE);
    if (codeset->name == nullptr)
        return false;
    if (!ov_xml_parse_langstr(&codeset->author, document, root, "author", TRUE))
        return false;
    if (!ov_xml_get_nonempty_text_content_from_distinct_child_node_as_compact_latin1(
            &codeset->version, document, root, "version"))
        return false;
    return read_remarks(codeset, document, root);
}

bool write_codeset(FILE *stream, const OvCodeset *codeset)
{
    if (!ov_util_fprintf(stream, "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<codeset>\n\n"))
        return false;
    if (!ov_xml_write_langstr(stream, codeset->name, "name", 1) ||
        !ov_xml_write_langstr(stream, codeset->author, "author", 1))
        return false;
    if (codeset->version != nullptr) {
        if (!ov_util_fprintf(stream, "\t<version>") || !ov_xml_write_string(stream, codeset->version) ||
            !ov_util_fprintf(stream, "</version>\n"))
            return false;
    }
    for (const OvRemark *remark : *codeset->remarks) {
        // The code goes in as it stands, unlike every other text.
        if (!ov_util_fprintf(stream, "\n\t<remark>\n\t\t<code>%s</code>\n",
                             remark->code != nullptr ? remark->code : "") ||
            !ov_xml_write_langstr(stream, remark->description, "description", 2) ||
            !ov_util_fprintf(stream, "\t</remark>\n"))
            return false;
    }
    return ov_util_fprintf(stream, "\n</codeset>\n");
}

} // namespace

OvCodeset *ov_codeset_io_read_from_file(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    ov::XmlDocPtr document(ov_xml_parse_file(path));
    if (!document) {
        ov_error_append("Error loading codeset file.");
        return nullptr;
    }
    xmlNode *root = ov_xml_get_root_element(document.get());
    if (root == nullptr) {
        ov_error_append("Invalid codeset file.");
        return nullptr;
    }
    if (!ov_xml_node_has_name(root, "codeset")) {
        ov_error_set("Not a codeset file.");
        return nullptr;
    }
    CodesetPtr codeset(ov_codeset_new());
    if (!read_codeset(codeset.get(), document.get(), root)) {
        ov_error_append("Error parsing codeset file.");
        return nullptr;
    }
    return codeset.release();
}

gboolean ov_codeset_io_write_to_file(const OvCodeset *codeset, const char *path)
{
    g_return_val_if_fail(codeset != nullptr && path != nullptr, FALSE);
    OvAtomicFile *file = ov_atomic_file_open(path);
    if (file == nullptr) {
        ov_error_append("Cannot create file.");
        return FALSE;
    }
    if (!write_codeset(ov_atomic_file_get_stream(file), codeset)) {
        ov_atomic_file_discard(file);
        return FALSE;
    }
    return ov_atomic_file_commit(file);
}
