#include "frame/settings.h"

#include "core/atomic_file.h"
#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "core/strings.h"
#include "core/util.h"
#include "core/xml.h"
#include "frame/workspace.h"
#include "lang/langstr_xml.h"

#include <array>
#include <cstring>
#include <string_view>

namespace
{

constexpr const char *settings_file_name = "settings.xml";

constexpr std::array<const char *, 4> identifier_setting_texts = {"None", "Object ID", "Inventory ID",
                                                                  "Inventory ID or Object ID"};
constexpr std::array<const char *, 2> orientation_texts = {"Portrait", "Landscape"};
// Filter levels start at 1.
constexpr std::array<const char *, 3> codeset_filter_level_texts = {
    "From all codesets", "From primary codeset only", "From no codeset"};
constexpr std::array<const char *, 3> mark_filter_level_texts = {"From all views", "From this view only",
                                                                 "From no view"};

// The printing module is not part of this program; these are the paper
// sizes its printouts know, by the names the settings file uses.
constexpr std::array<const char *, 5> paper_names = {"A3", "A4", "A5", "Letter", "Legal"};
constexpr int default_paper_index = 1;

template <size_t N> const char *text_at(const std::array<const char *, N> &texts, int index, int first)
{
    const int position = index - first;
    return position >= 0 && position < static_cast<int>(N) ? texts[position] : nullptr;
}

// The value whose text is text, or -1.
template <size_t N> int find_text(const std::array<const char *, N> &texts, const char *text, int first)
{
    for (size_t i = 0; i < N; i++)
        if (strcmp(texts[i], text) == 0)
            return static_cast<int>(i) + first;
    return -1;
}

struct PrintoutSettings {
    int identifier_setting = OV_SETTINGS_IDENTIFIER_OBJECT_ID;
    ov::GStr layout_file_name;
    int paper_index = default_paper_index;
    int paper_orientation = OV_SETTINGS_ORIENTATION_PORTRAIT;
    gboolean details_on_text_page = TRUE;
    gboolean details_on_view_pages = FALSE;
    gboolean legend_on_text_page = FALSE;
    gboolean legend_on_view_pages = TRUE;
    gboolean show_page_numbers = TRUE;
    gboolean show_report_type = TRUE;
    int text_page_legend_codeset_filter_level = OV_SETTINGS_FILTER_PRIMARY_OR_THIS;
    int text_page_legend_mark_filter_level = OV_SETTINGS_FILTER_ALL;
    int view_page_legend_codeset_filter_level = OV_SETTINGS_FILTER_PRIMARY_OR_THIS;
    int view_page_legend_mark_filter_level = OV_SETTINGS_FILTER_ALL;
};

struct Settings {
    ov::GStr settings_file_path;
    ov::GStr archive_path = ov::gstr(g_strdup(""));
    gboolean automatically_place_id = FALSE;
    int default_mark_id_style = 0;
    PrintoutSettings printout;
    ov::GStr export_folder_path = ov::gstr(g_strdup(""));
    ov::GStr last_used_legacy_layout_file_name = ov::gstr(g_strdup(""));
    ov::GStr last_used_legacy_paper_id = ov::gstr(g_strdup("A4_P"));
    gboolean left_handed = FALSE;
    OvRemarkList *recent_custom_remarks = ov_remark_list_new();
    gboolean remember_tool_choice = FALSE;

    Settings() = default;
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;
    ~Settings() { ov_remark_list_destroy(recent_custom_remarks); }
};

Settings *settings = nullptr;

// Reading

// The attribute's UTF-8 value, or null when it is absent or unreadable.
ov::GStr attribute(const xmlNode *node, const char *name)
{
    ov::GStr value;
    if (!ov_xml_get_attribute_value_as_utf8(ov::out(value), node, name))
        ov_error_clear();
    return value;
}

void read_string(ov::GStr &field, const xmlNode *node, const char *name)
{
    if (ov::GStr value = attribute(node, name))
        field = std::move(value);
}

void read_boolean(gboolean &field, const xmlNode *node, const char *name)
{
    if (ov::GStr value = attribute(node, name))
        field = strcmp(value.get(), "true") == 0;
}

void read_integer(int &field, const xmlNode *node, const char *name)
{
    if (ov::GStr value = attribute(node, name)) {
        if (!ov_util_parse_int(&field, value.get()))
            ov_error_clear();
    }
}

template <size_t N>
void read_enumeration(int &field, const xmlNode *node, const char *name,
                      const std::array<const char *, N> &texts, int first)
{
    if (ov::GStr value = attribute(node, name)) {
        int found = find_text(texts, value.get(), first);
        if (found >= 0)
            field = found;
    }
}

bool is_element(const xmlNode *node, const char *name)
{
    return node->type == XML_ELEMENT_NODE && ov_xml_node_has_name(node, name);
}

void load_printout_settings(PrintoutSettings &printout, const xmlNode *element)
{
    for (const xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (is_element(child, "identifier")) {
            read_enumeration(printout.identifier_setting, child, "setting", identifier_setting_texts, 0);
        } else if (is_element(child, "layout")) {
            read_string(printout.layout_file_name, child, "filename");
        } else if (is_element(child, "paper")) {
            if (ov::GStr name = attribute(child, "name")) {
                int index = ov_settings_find_paper_index(name.get());
                if (index >= 0)
                    printout.paper_index = index;
            }
            read_enumeration(printout.paper_orientation, child, "orientation", orientation_texts, 0);
        } else if (is_element(child, "details")) {
            read_boolean(printout.details_on_text_page, child, "show-on-text-page");
            read_boolean(printout.details_on_view_pages, child, "show-on-view-pages");
        } else if (is_element(child, "legend")) {
            read_boolean(printout.legend_on_text_page, child, "show-on-text-page");
            read_boolean(printout.legend_on_view_pages, child, "show-on-view-pages");
            read_enumeration(printout.text_page_legend_codeset_filter_level, child,
                             "text-page-codeset-filter-level", codeset_filter_level_texts, 1);
            read_enumeration(printout.text_page_legend_mark_filter_level, child,
                             "text-page-mark-filter-level", mark_filter_level_texts, 1);
            read_enumeration(printout.view_page_legend_codeset_filter_level, child,
                             "view-page-codeset-filter-level", codeset_filter_level_texts, 1);
            read_enumeration(printout.view_page_legend_mark_filter_level, child,
                             "view-page-mark-filter-level", mark_filter_level_texts, 1);
        } else if (is_element(child, "page-numbers")) {
            read_boolean(printout.show_page_numbers, child, "show");
        } else if (is_element(child, "report-type")) {
            read_boolean(printout.show_report_type, child, "show");
        }
    }
}

// FALSE when a remark could not be read; the others are kept.
bool load_recent_custom_remarks(xmlDoc *document, xmlNode *element)
{
    ov_remark_list_destroy_remarks(settings->recent_custom_remarks);
    bool ok = true;
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        if (!is_element(child, "remark"))
            continue;
        OvRemark *remark = ov_xml_parse_remark(document, child);
        if (remark == nullptr)
            ok = false;
        else
            ov_remark_list_add_remark_last(settings->recent_custom_remarks, remark);
    }
    return ok;
}

// FALSE for the faults that fail the load: a paper id that is not ASCII and
// a remark that cannot be read.
bool load_element(xmlDoc *document, xmlNode *element, guint mask)
{
    auto wanted = [&](guint bit, const char *name) { return (mask & bit) != 0 && is_element(element, name); };

    if (wanted(OV_SETTINGS_ARCHIVE, "archive")) {
        read_string(settings->archive_path, element, "path");
    } else if (wanted(OV_SETTINGS_AUTOMATICALLY_PLACE_ID, "automatically-place-id")) {
        read_boolean(settings->automatically_place_id, element, "active");
    } else if (wanted(OV_SETTINGS_DEFAULT_MARK_ID_STYLE, "default-mark-id-style")) {
        read_integer(settings->default_mark_id_style, element, "style");
    } else if (wanted(OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS, "default-printout-settings")) {
        load_printout_settings(settings->printout, element);
    } else if (wanted(OV_SETTINGS_EXPORT, "export")) {
        for (const xmlNode *child = element->children; child != nullptr; child = child->next)
            if (is_element(child, "folder"))
                read_string(settings->export_folder_path, child, "path");
    } else if (wanted(OV_SETTINGS_LAST_USED_LAYOUT, "last-used-layout")) {
        read_string(settings->last_used_legacy_layout_file_name, element, "filename");
    } else if (wanted(OV_SETTINGS_LAST_USED_PAPER, "last-used-paper")) {
        ov::GStr value;
        if (!ov_xml_get_attribute_value_as_ascii(ov::out(value), element, "id"))
            return false;
        if (value)
            settings->last_used_legacy_paper_id = std::move(value);
    } else if (wanted(OV_SETTINGS_LEFT_HANDED, "left-handed")) {
        read_boolean(settings->left_handed, element, "active");
    } else if (wanted(OV_SETTINGS_RECENT_CUSTOM_REMARKS, "recent-custom-remarks")) {
        return load_recent_custom_remarks(document, element);
    } else if (wanted(OV_SETTINGS_REMEMBER_TOOL_CHOICE, "remember-tool-choice")) {
        read_boolean(settings->remember_tool_choice, element, "active");
    }
    return true;
}

// Writing

void remove_blank_text_nodes(xmlNode *node)
{
    xmlNode *child = node->children;
    while (child != nullptr) {
        xmlNode *next = child->next;
        if (child->type == XML_TEXT_NODE && xmlIsBlankNode(child)) {
            xmlUnlinkNode(child);
            xmlFreeNode(child);
        } else if (child->type == XML_ELEMENT_NODE) {
            remove_blank_text_nodes(child);
        }
        child = next;
    }
}

// The first element of that name under root, made when missing; later ones
// of the same name are removed.
xmlNode *find_or_add_group(xmlNode *root, const char *name)
{
    xmlNode *group = nullptr;
    xmlNode *child = root->children;
    while (child != nullptr) {
        xmlNode *next = child->next;
        if (is_element(child, name)) {
            if (group == nullptr) {
                group = child;
            } else {
                xmlUnlinkNode(child);
                xmlFreeNode(child);
            }
        }
        child = next;
    }
    return group != nullptr ? group : ov_xml_add_child_element(root, name);
}

void remove_children(xmlNode *node)
{
    while (node->children != nullptr) {
        xmlNode *child = node->children;
        xmlUnlinkNode(child);
        xmlFreeNode(child);
    }
}

bool set_boolean(xmlNode *node, const char *name, gboolean value)
{
    return ov_xml_set_attribute_to_boolean(node, name, value) != nullptr;
}

bool set_text(xmlNode *node, const char *name, const char *value)
{
    return ov_xml_set_attribute(node, name, value) != nullptr;
}

bool save_printout_settings(xmlNode *group, const PrintoutSettings &printout)
{
    remove_children(group);
    xmlNode *identifier = ov_xml_add_child_element(group, "identifier");
    if (identifier == nullptr ||
        !set_text(identifier, "setting", text_at(identifier_setting_texts, printout.identifier_setting, 0)))
        return false;
    if (printout.layout_file_name) {
        xmlNode *layout = ov_xml_add_child_element(group, "layout");
        if (layout == nullptr || !set_text(layout, "filename", printout.layout_file_name.get()))
            return false;
    }
    xmlNode *paper = ov_xml_add_child_element(group, "paper");
    if (paper == nullptr || !set_text(paper, "name", ov_settings_get_paper_name(printout.paper_index)) ||
        !set_text(paper, "orientation", text_at(orientation_texts, printout.paper_orientation, 0)))
        return false;
    xmlNode *details = ov_xml_add_child_element(group, "details");
    if (details == nullptr || !set_boolean(details, "show-on-text-page", printout.details_on_text_page) ||
        !set_boolean(details, "show-on-view-pages", printout.details_on_view_pages))
        return false;
    xmlNode *legend = ov_xml_add_child_element(group, "legend");
    if (legend == nullptr || !set_boolean(legend, "show-on-text-page", printout.legend_on_text_page) ||
        !set_boolean(legend, "show-on-view-pages", printout.legend_on_view_pages) ||
        !set_text(legend, "text-page-codeset-filter-level",
                  text_at(codeset_filter_level_texts, printout.text_page_legend_codeset_filter_level, 1)) ||
        !set_text(legend, "text-page-mark-filter-level",
                  text_at(mark_filter_level_texts, printout.text_page_legend_mark_filter_level, 1)) ||
        !set_text(legend, "view-page-codeset-filter-level",
                  text_at(codeset_filter_level_texts, printout.view_page_legend_codeset_filter_level, 1)) ||
        !set_text(legend, "view-page-mark-filter-level",
                  text_at(mark_filter_level_texts, printout.view_page_legend_mark_filter_level, 1)))
        return false;
    xmlNode *page_numbers = ov_xml_add_child_element(group, "page-numbers");
    if (page_numbers == nullptr || !set_boolean(page_numbers, "show", printout.show_page_numbers))
        return false;
    xmlNode *report_type = ov_xml_add_child_element(group, "report-type");
    return report_type != nullptr && set_boolean(report_type, "show", printout.show_report_type);
}

bool save_recent_custom_remarks(xmlNode *group)
{
    remove_children(group);
    for (const OvRemark *remark : *settings->recent_custom_remarks) {
        xmlNode *element = ov_xml_add_child_element(group, "remark");
        if (element == nullptr ||
            ov_xml_add_child_element_with_latin1_text_content(element, "code", remark->code) == nullptr ||
            !ov_xml_add_langstr(element, "description", remark->description))
            return false;
    }
    return true;
}

bool save_group(xmlNode *root, guint bit)
{
    switch (bit) {
    case OV_SETTINGS_ARCHIVE: {
        xmlNode *group = find_or_add_group(root, "archive");
        return group != nullptr && set_text(group, "path", settings->archive_path.get());
    }
    case OV_SETTINGS_AUTOMATICALLY_PLACE_ID: {
        xmlNode *group = find_or_add_group(root, "automatically-place-id");
        return group != nullptr && set_boolean(group, "active", settings->automatically_place_id);
    }
    case OV_SETTINGS_DEFAULT_MARK_ID_STYLE: {
        xmlNode *group = find_or_add_group(root, "default-mark-id-style");
        return group != nullptr &&
               ov_xml_set_attribute_to_int(group, "style", settings->default_mark_id_style);
    }
    case OV_SETTINGS_DEFAULT_PRINTOUT_SETTINGS: {
        xmlNode *group = find_or_add_group(root, "default-printout-settings");
        return group != nullptr && save_printout_settings(group, settings->printout);
    }
    case OV_SETTINGS_EXPORT: {
        xmlNode *group = find_or_add_group(root, "export");
        xmlNode *folder = group != nullptr ? find_or_add_group(group, "folder") : nullptr;
        return folder != nullptr && set_text(folder, "path", settings->export_folder_path.get());
    }
    case OV_SETTINGS_LAST_USED_LAYOUT: {
        xmlNode *group = find_or_add_group(root, "last-used-layout");
        return group != nullptr &&
               set_text(group, "filename", settings->last_used_legacy_layout_file_name.get());
    }
    case OV_SETTINGS_LAST_USED_PAPER: {
        xmlNode *group = find_or_add_group(root, "last-used-paper");
        return group != nullptr && set_text(group, "id", settings->last_used_legacy_paper_id.get());
    }
    case OV_SETTINGS_LEFT_HANDED: {
        xmlNode *group = find_or_add_group(root, "left-handed");
        return group != nullptr && set_boolean(group, "active", settings->left_handed);
    }
    case OV_SETTINGS_RECENT_CUSTOM_REMARKS: {
        xmlNode *group = find_or_add_group(root, "recent-custom-remarks");
        return group != nullptr && save_recent_custom_remarks(group);
    }
    case OV_SETTINGS_REMEMBER_TOOL_CHOICE: {
        xmlNode *group = find_or_add_group(root, "remember-tool-choice");
        return group != nullptr && set_boolean(group, "active", settings->remember_tool_choice);
    }
    default:
        return true;
    }
}

void set_string(ov::GStr &field, const char *value)
{
    field = ov::gstr(g_strdup(value != nullptr ? value : ""));
}

} // namespace

// Enumerations and papers

const char *ov_settings_get_identifier_setting_text(int setting)
{
    return text_at(identifier_setting_texts, setting, 0);
}

const char *ov_settings_get_orientation_text(int orientation)
{
    return text_at(orientation_texts, orientation, 0);
}

const char *ov_settings_get_codeset_filter_level_text(int level)
{
    return text_at(codeset_filter_level_texts, level, 1);
}

const char *ov_settings_get_mark_filter_level_text(int level)
{
    return text_at(mark_filter_level_texts, level, 1);
}

int ov_settings_get_paper_count()
{
    return static_cast<int>(paper_names.size());
}

const char *ov_settings_get_paper_name(int index)
{
    return text_at(paper_names, index, 0);
}

int ov_settings_find_paper_index(const char *name)
{
    g_return_val_if_fail(name != nullptr, -1);
    return find_text(paper_names, name, 0);
}

int ov_settings_get_default_paper_index()
{
    return default_paper_index;
}

// Life cycle

gboolean ov_settings_init()
{
    const char *workspace = ov_workspace_get_workspace_folder_path();
    if (workspace == nullptr) {
        ov_error_set("No workspace is open.");
        return FALSE;
    }
    ov_settings_clean_up();
    settings = new Settings;
    settings->settings_file_path =
        ov::gstr(ov_fs_utils_create_path_in_folder(workspace, settings_file_name, nullptr));
    return TRUE;
}

void ov_settings_clean_up()
{
    delete settings;
    settings = nullptr;
}

gboolean ov_settings_load(guint mask)
{
    g_return_val_if_fail(settings != nullptr, FALSE);
    ov::XmlDocPtr document;
    if (!ov_xml_parse_file_if_exists(ov::out(document), settings->settings_file_path.get()))
        return FALSE;
    if (!document)
        return TRUE;
    xmlNode *root = ov_xml_get_root_element(document.get());
    if (root == nullptr)
        return FALSE;
    if (!ov_xml_node_has_name(root, "settings")) {
        ov_error_set("Not a settings file.");
        return FALSE;
    }
    bool ok = true;
    for (xmlNode *element = root->children; element != nullptr; element = element->next)
        ok = load_element(document.get(), element, mask) && ok;
    return ok;
}

gboolean ov_settings_save(guint mask)
{
    g_return_val_if_fail(settings != nullptr, FALSE);
    const char *path = settings->settings_file_path.get();
    ov::XmlDocPtr document;
    if (!ov_xml_parse_file_if_exists(ov::out(document), path))
        return FALSE;
    xmlNode *root = nullptr;
    if (document) {
        root = ov_xml_get_root_element(document.get());
        if (root == nullptr)
            return FALSE;
        if (!ov_xml_node_has_name(root, "settings")) {
            ov_error_set("Not a settings file.");
            return FALSE;
        }
        // The whole file is indented afresh when written.
        remove_blank_text_nodes(root);
    } else {
        document.reset(ov_xml_new_doc());
        if (!document)
            return FALSE;
        root = ov_xml_add_root_element(document.get(), "settings");
        if (root == nullptr)
            return FALSE;
    }

    for (guint bit = 1; bit <= OV_SETTINGS_REMEMBER_TOOL_CHOICE; bit <<= 1)
        if ((mask & bit) != 0 && !save_group(root, bit))
            return FALSE;

    return ov_atomic_file_write(path, [&document](FILE *stream) {
        return ov_xml_write_to_stream(document.get(), stream, "UTF-8") != FALSE;
    });
}

const char *ov_settings_get_settings_file_path()
{
    g_return_val_if_fail(settings != nullptr, nullptr);
    return settings->settings_file_path.get();
}

// Fields

#define OV_SETTINGS_CHECK(value) g_return_val_if_fail(settings != nullptr, value)
#define OV_SETTINGS_CHECK_VOID() g_return_if_fail(settings != nullptr)

const char *ov_settings_get_archive_path()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->archive_path.get();
}

void ov_settings_set_archive_path(const char *path)
{
    OV_SETTINGS_CHECK_VOID();
    set_string(settings->archive_path, path);
}

gboolean ov_settings_get_automatically_place_id()
{
    OV_SETTINGS_CHECK(FALSE);
    return settings->automatically_place_id;
}

void ov_settings_set_automatically_place_id(gboolean active)
{
    OV_SETTINGS_CHECK_VOID();
    settings->automatically_place_id = active != FALSE;
}

int ov_settings_get_default_mark_id_style()
{
    OV_SETTINGS_CHECK(0);
    return settings->default_mark_id_style;
}

void ov_settings_set_default_mark_id_style(int style)
{
    OV_SETTINGS_CHECK_VOID();
    settings->default_mark_id_style = style;
}

int ov_settings_get_default_printout_settings_identifier_setting()
{
    OV_SETTINGS_CHECK(OV_SETTINGS_IDENTIFIER_OBJECT_ID);
    return settings->printout.identifier_setting;
}

void ov_settings_set_default_printout_settings_identifier_setting(int setting)
{
    OV_SETTINGS_CHECK_VOID();
    g_return_if_fail(ov_settings_get_identifier_setting_text(setting) != nullptr);
    settings->printout.identifier_setting = setting;
}

const char *ov_settings_get_default_printout_settings_layout_file_name()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->printout.layout_file_name.get();
}

void ov_settings_set_default_printout_settings_layout_file_name(const char *file_name)
{
    OV_SETTINGS_CHECK_VOID();
    settings->printout.layout_file_name = ov::gstr(g_strdup(file_name));
}

int ov_settings_get_default_printout_settings_paper_index()
{
    OV_SETTINGS_CHECK(default_paper_index);
    return settings->printout.paper_index;
}

void ov_settings_set_default_printout_settings_paper_index(int index)
{
    OV_SETTINGS_CHECK_VOID();
    g_return_if_fail(ov_settings_get_paper_name(index) != nullptr);
    settings->printout.paper_index = index;
}

int ov_settings_get_default_printout_settings_paper_orientation()
{
    OV_SETTINGS_CHECK(OV_SETTINGS_ORIENTATION_PORTRAIT);
    return settings->printout.paper_orientation;
}

void ov_settings_set_default_printout_settings_paper_orientation(int orientation)
{
    OV_SETTINGS_CHECK_VOID();
    g_return_if_fail(ov_settings_get_orientation_text(orientation) != nullptr);
    settings->printout.paper_orientation = orientation;
}

#define OV_SETTINGS_PRINTOUT_BOOLEAN(field)                                                                  \
    gboolean ov_settings_get_default_printout_settings_##field()                                             \
    {                                                                                                        \
        OV_SETTINGS_CHECK(FALSE);                                                                            \
        return settings->printout.field;                                                                     \
    }                                                                                                        \
    void ov_settings_set_default_printout_settings_##field(gboolean value)                                   \
    {                                                                                                        \
        OV_SETTINGS_CHECK_VOID();                                                                            \
        settings->printout.field = value != FALSE;                                                           \
    }

OV_SETTINGS_PRINTOUT_BOOLEAN(details_on_text_page)
OV_SETTINGS_PRINTOUT_BOOLEAN(details_on_view_pages)
OV_SETTINGS_PRINTOUT_BOOLEAN(legend_on_text_page)
OV_SETTINGS_PRINTOUT_BOOLEAN(legend_on_view_pages)
OV_SETTINGS_PRINTOUT_BOOLEAN(show_page_numbers)
OV_SETTINGS_PRINTOUT_BOOLEAN(show_report_type)

#define OV_SETTINGS_PRINTOUT_LEVEL(field, texts)                                                             \
    int ov_settings_get_default_printout_settings_##field()                                                  \
    {                                                                                                        \
        OV_SETTINGS_CHECK(OV_SETTINGS_FILTER_ALL);                                                           \
        return settings->printout.field;                                                                     \
    }                                                                                                        \
    void ov_settings_set_default_printout_settings_##field(int level)                                        \
    {                                                                                                        \
        OV_SETTINGS_CHECK_VOID();                                                                            \
        g_return_if_fail(text_at(texts, level, 1) != nullptr);                                               \
        settings->printout.field = level;                                                                    \
    }

OV_SETTINGS_PRINTOUT_LEVEL(text_page_legend_codeset_filter_level, codeset_filter_level_texts)
OV_SETTINGS_PRINTOUT_LEVEL(text_page_legend_mark_filter_level, mark_filter_level_texts)
OV_SETTINGS_PRINTOUT_LEVEL(view_page_legend_codeset_filter_level, codeset_filter_level_texts)
OV_SETTINGS_PRINTOUT_LEVEL(view_page_legend_mark_filter_level, mark_filter_level_texts)

const char *ov_settings_get_export_folder_path()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->export_folder_path.get();
}

void ov_settings_set_export_folder_path(const char *path)
{
    OV_SETTINGS_CHECK_VOID();
    set_string(settings->export_folder_path, path);
}

const char *ov_settings_get_last_used_legacy_layout_file_name()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->last_used_legacy_layout_file_name.get();
}

void ov_settings_set_last_used_legacy_layout_file_name(const char *file_name)
{
    OV_SETTINGS_CHECK_VOID();
    set_string(settings->last_used_legacy_layout_file_name, file_name);
}

const char *ov_settings_get_last_used_legacy_paper_id()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->last_used_legacy_paper_id.get();
}

void ov_settings_set_last_used_legacy_paper_id(const char *paper_id)
{
    OV_SETTINGS_CHECK_VOID();
    set_string(settings->last_used_legacy_paper_id, paper_id);
}

gboolean ov_settings_get_left_handed()
{
    OV_SETTINGS_CHECK(FALSE);
    return settings->left_handed;
}

void ov_settings_set_left_handed(gboolean left_handed)
{
    OV_SETTINGS_CHECK_VOID();
    settings->left_handed = left_handed != FALSE;
}

gboolean ov_settings_get_remember_tool_choice()
{
    OV_SETTINGS_CHECK(FALSE);
    return settings->remember_tool_choice;
}

void ov_settings_set_remember_tool_choice(gboolean remember)
{
    OV_SETTINGS_CHECK_VOID();
    settings->remember_tool_choice = remember != FALSE;
}

OvRemarkList *ov_settings_get_recent_custom_remarks()
{
    OV_SETTINGS_CHECK(nullptr);
    return settings->recent_custom_remarks;
}

void ov_settings_set_most_recent_custom_remark(const char *code, const langstr *description)
{
    OV_SETTINGS_CHECK_VOID();
    g_return_if_fail(code != nullptr);
    OvRemarkList *list = settings->recent_custom_remarks;
    OvRemark *entry = nullptr;
    for (OvRemark *remark : *list) {
        if (remark->code != nullptr && strcmp(remark->code, code) == 0 &&
            ov_langstr_is_identical(remark->description, description)) {
            entry = remark;
            break;
        }
    }
    if (entry != nullptr) {
        ov_remark_remove(entry);
    } else {
        entry = ov_remark_new();
        entry->code = g_strdup(code);
        entry->description = ov_langstr_clone(description);
    }
    ov_remark_list_add_remark_first(list, entry);

    int kept = 0;
    for (OvRemark *remark = list->first(); remark != nullptr && !list->is_end(remark);) {
        OvRemark *next = remark->next;
        if (++kept > OV_SETTINGS_RECENT_CUSTOM_REMARK_COUNT)
            ov_remark_destroy(remark);
        remark = next;
    }
}
