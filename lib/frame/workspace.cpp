#include "frame/workspace.h"

#include "core/atomic_file.h"
#include "core/error.h"
#include "core/file_type.h"
#include "core/fs_utils.h"
#include "core/list.h"
#include "core/platform.h"
#include "core/raii.h"
#include "core/stream.h"
#include "core/strings.h"
#include "core/util.h"
#include "core/xml.h"
#include "docs/codeset_io.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

namespace
{

constexpr const char *pointer_folder_name = "orvane";
constexpr const char *pointer_file_name = "orvane.xml";
constexpr const char *default_folder_name = "Orvane Workspace";

struct WorkspaceState {
    ov::GStr codesets_folder_path;
    ov::GStr font_files_folder_path;
    ov::GStr layouts_folder_path;
    ov::GStr object_files_folder_path;
    ov::GStr templates_folder_path;
    ov::GStr workspace_folder_path;

    OvWorkspaceObjectFileCallback added = nullptr;
    gpointer added_data = nullptr;
    OvWorkspaceObjectFileCallback changed = nullptr;
    gpointer changed_data = nullptr;
    OvWorkspaceObjectFileCallback removed = nullptr;
    gpointer removed_data = nullptr;

    ov::SentinelList<OvWorkspaceObjectFile> object_files;
    guint64 generation = 0;
};

WorkspaceState *state = nullptr;
ov::GStr install_folder_override;

// Keeps the error text of a failure while cleaning up after it, since the
// clean-up may set texts of its own.
class ErrorKeeper
{
  public:
    ErrorKeeper() : text_(g_strdup(ov_error_get())) {}
    ~ErrorKeeper() { ov_error_set(text_.get()); }

  private:
    ov::GStr text_;
};

ov::GStr path_in(const char *folder, const char *name)
{
    return ov::gstr(ov_fs_utils_create_path_in_folder(folder, name, nullptr));
}

bool get_info(const char *path, OvFileInfo *info)
{
    return ov_fs_utils_get_info(path, info);
}

// Deletes the regular files of a folder (not its subfolders) and then the
// folder itself; stops at the first failure.
bool delete_folder_with_files(const char *path)
{
    const bool ok = ov::for_each_folder_entry(path, [path](ov::GStr &name) {
        ov::GStr entry = path_in(path, name.get());
        OvFileInfo info;
        if (!get_info(entry.get(), &info))
            return false;
        return !info.is_regular_file || ov_fs_utils_delete_file_if_exists(entry.get());
    });
    return ok && ov_fs_utils_delete_folder_if_exists(path);
}

ov::GStr get_install_folder_path()
{
    if (install_folder_override)
        return ov::gstr(g_strdup(install_folder_override.get()));
    return ov::gstr(ov_platform_get_install_folder_path());
}

ov::GStr get_pointer_folder_path()
{
    ov::GStr config = ov::gstr(ov_fs_utils_convert_glibfsenc_to_utf8(g_get_user_config_dir()));
    if (!config) {
        ov_error_set("Error locating user config dir.");
        return nullptr;
    }
    return path_in(config.get(), pointer_folder_name);
}

// Replaces target with a copy of source; the old target stays when the copy
// fails.
bool copy_file_over(const char *source, const char *target)
{
    char *raw_data = nullptr;
    gsize length = 0;
    if (!ov_stream_copy_from_file_path_to_memory(source, &raw_data, &length))
        return false;
    ov::GStr data = ov::gstr(raw_data);
    return ov_atomic_file_write(target, [&](FILE *stream) {
        if (length > 0 && fwrite(data.get(), 1, length, stream) != length) {
            ov_error_set_file_io_writing();
            return false;
        }
        return true;
    });
}

bool file_has_md5sum(const char *path, const char *md5sum)
{
    guint8 digest[16];
    if (!ov_util_get_file_md5sum(path, digest))
        return false;
    return ov_util_verify_md5sum(digest, md5sum);
}

bool install_components(const char *workspace_folder_path, const char *kind)
{
    ov::GStr install_folder = get_install_folder_path();
    if (!install_folder)
        return false;
    ov::GStr source = path_in(install_folder.get(), kind);
    OvFileInfo info;
    if (!get_info(source.get(), &info))
        return false;
    if (!info.exists)
        return true;

    ov::GStr destination = path_in(workspace_folder_path, kind);
    if (!get_info(destination.get(), &info))
        return false;
    const bool existed = info.exists;
    if (!existed && !ov_fs_utils_create_folder(destination.get()))
        return false;

    const bool ok = ov::for_each_folder_entry(source.get(), [&](ov::GStr &name) {
        ov::GStr from = path_in(source.get(), name.get());
        if (!get_info(from.get(), &info))
            return false;
        if (!info.is_regular_file)
            return true;
        ov::GStr to = path_in(destination.get(), name.get());
        if (!get_info(to.get(), &info))
            return false;
        return info.exists || ov_stream_copy_from_file_path_to_file_path(from.get(), to.get());
    });

    if (!ok && !existed) {
        ErrorKeeper keep;
        delete_folder_with_files(destination.get());
    }
    return ok;
}

// Layouts shipped earlier that a later edition replaces while the user has
// not changed them.
constexpr OvLayoutEdition earlier_layout_editions[] = {
    {"bundled_grey_blocks.layout", "aa4e1af1ed60d7e3e8c5efa44377f207"},
    {"bundled_modern.layout", "a2e28f8bd698b869d9e47f1c59f7092d"},
    {"bundled_simple.layout", "a03d1a613373bc8f9765210b128ccdcf"},
    {"bundled_white_blocks.layout", "6deb29cead8c3f577ca2f9eb4d7fe28d"},
    {"bundled_grey_blocks.layout", "654c93ccc429308d49345b7ce8e3b992"},
    {"bundled_modern.layout", "33afda9bcf867ddd84ad06d49f796460"},
    {"bundled_simple.layout", "5daeefabb08e012aa358fb50fbf7687c"},
    {"bundled_white_blocks.layout", "9f5172002cafc9e6a1ba3faff18f0234"},
};

constexpr const char *replaced_standard_layout_md5sum = "fbf64e8b689a7e27434603f2cbb84636";

void destroy_object_file(OvWorkspaceObjectFile *object_file)
{
    if (object_file == nullptr)
        return;
    ov::list_unlink(object_file);
    g_free(object_file->file_name);
    g_free(object_file->path);
    g_free(object_file->object_id);
    delete object_file;
}

void destroy_state(WorkspaceState *workspace)
{
    if (workspace->object_files.head != nullptr)
        ov::list_destroy(workspace->object_files, destroy_object_file);
    delete workspace;
}

// Finds or makes the folder of the workspace; create says whether a missing
// one is made.
ov::GStr resolve_folder(const char *workspace_folder_path, const char *name, bool create)
{
    ov::GStr path = path_in(workspace_folder_path, name);
    if (!create)
        return path;
    OvFileInfo info;
    if (!get_info(path.get(), &info))
        return nullptr;
    if (!info.exists) {
        if (!ov_fs_utils_create_folder(path.get()))
            return nullptr;
    } else if (!info.is_folder) {
        ov_error_set_utf8_printf("Not a folder: %s", path.get());
        return nullptr;
    }
    return path;
}

bool open_folders(WorkspaceState *workspace, const char *folder)
{
    OvFileInfo info;
    if (!get_info(folder, &info))
        return false;
    if (!info.exists) {
        ov_error_set_utf8_printf("Workspace folder not found: %s", folder);
        return false;
    }
    if (!info.is_folder) {
        ov_error_set_utf8_printf("Not a folder: %s", folder);
        return false;
    }
    workspace->workspace_folder_path = ov::gstr(g_strdup(folder));
    struct Entry {
        ov::GStr WorkspaceState::*field;
        const char *name;
        bool create;
    };
    constexpr Entry entries[] = {
        {&WorkspaceState::codesets_folder_path, "codesets", true},
        {&WorkspaceState::font_files_folder_path, "fonts", false},
        {&WorkspaceState::layouts_folder_path, "layouts", true},
        {&WorkspaceState::object_files_folder_path, "documents", true},
        {&WorkspaceState::templates_folder_path, "templates", true},
    };
    for (const Entry &entry : entries) {
        workspace->*entry.field = resolve_folder(folder, entry.name, entry.create);
        if (!(workspace->*entry.field))
            return false;
    }
    return true;
}

} // namespace

// The pointer file

char *ov_workspace_get_default_folder_path()
{
    ov::GStr home = ov::gstr(ov_fs_utils_convert_glibfsenc_to_utf8(g_get_home_dir()));
    if (!home)
        return nullptr;
    return ov_fs_utils_create_path_in_folder(home.get(), default_folder_name, nullptr);
}

gboolean ov_workspace_get_saved_folder_path(char **path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    *path = nullptr;
    ov::GStr folder = get_pointer_folder_path();
    if (!folder)
        return FALSE;
    ov::GStr file = path_in(folder.get(), pointer_file_name);
    ov::XmlDocPtr document;
    if (!ov_xml_parse_file_if_exists(ov::out(document), file.get()))
        return FALSE;
    if (!document)
        return TRUE;
    xmlNode *root = ov_xml_get_root_element(document.get());
    if (root == nullptr)
        return FALSE;
    xmlNode *workspace = ov_xml_get_required_distinct_child_node(root, "workspace");
    if (workspace == nullptr)
        return FALSE;
    ov::GStr value(ov_xml_get_nonempty_required_attribute_value_as_utf8(workspace, "path"));
    if (!value)
        return FALSE;
    ov_fs_utils_strip_ending_path_delimiters(value.get());
    // A relative path would put the workspace wherever the program was
    // started, and "/" strips down to such a path: both are refused.
    if (!g_path_is_absolute(value.get())) {
        ov_error_set_utf8_printf("Workspace path is not an absolute folder path: %s", value.get());
        return FALSE;
    }
    *path = value.release();
    return TRUE;
}

gboolean ov_workspace_save_folder_path(const char *path)
{
    ov::GStr folder = get_pointer_folder_path();
    if (!folder)
        return FALSE;
    ov::GStr file = path_in(folder.get(), pointer_file_name);
    if (path == nullptr)
        return ov_fs_utils_delete_file_if_exists(file.get());

    OvFileInfo info;
    bool ok = get_info(folder.get(), &info);
    if (ok && !info.exists)
        ok = ov_fs_utils_create_folder_recursively(folder.get());
    else if (ok && !info.is_folder) {
        ov_error_set_utf8_printf("Not a folder: %s", folder.get());
        ok = false;
    }
    if (!ok) {
        ov_error_append("Error creating/accessing directory for settings in user config dir.");
        return FALSE;
    }

    ov::XmlDocPtr document(ov_xml_new_doc());
    if (!document)
        return FALSE;
    xmlNode *root = ov_xml_add_root_element(document.get(), "orvane");
    if (root == nullptr)
        return FALSE;
    xmlNode *workspace = ov_xml_add_child_element(root, "workspace");
    if (workspace == nullptr || ov_xml_set_attribute(workspace, "path", path) == nullptr)
        return FALSE;

    return ov_atomic_file_write(file.get(), [&document](FILE *stream) {
        return ov_xml_write_to_stream(document.get(), stream, "UTF-8") != FALSE;
    });
}

// Opening, closing and creating

gboolean ov_workspace_open()
{
    ov_workspace_close();

    ov::GStr folder;
    if (!ov_workspace_get_saved_folder_path(ov::out(folder)))
        ov_error_clear();
    if (!folder) {
        folder = ov::gstr(ov_workspace_get_default_folder_path());
        if (!folder)
            return FALSE;
    }

    auto workspace = new WorkspaceState;
    ov::list_init(workspace->object_files);
    if (!open_folders(workspace, folder.get())) {
        destroy_state(workspace);
        return FALSE;
    }
    state = workspace;
    ov_workspace_upgrade_layouts(replaced_standard_layout_md5sum, earlier_layout_editions,
                                 G_N_ELEMENTS(earlier_layout_editions));
    return TRUE;
}

void ov_workspace_close()
{
    if (state == nullptr)
        return;
    destroy_state(std::exchange(state, nullptr));
}

void ov_workspace_set_install_folder_path(const char *path)
{
    install_folder_override = ov::gstr(g_strdup(path));
}

void ov_workspace_upgrade_layouts(const char *replaced_standard_md5sum, const OvLayoutEdition *editions,
                                  int edition_count)
{
    g_return_if_fail(state != nullptr && replaced_standard_md5sum != nullptr);
    const char *workspace_folder = state->workspace_folder_path.get();
    const char *layouts_folder = state->layouts_folder_path.get();

    ov::GStr standard = path_in(layouts_folder, "standard.layout");
    if (file_has_md5sum(standard.get(), replaced_standard_md5sum) &&
        ov_fs_utils_delete_file_if_exists(standard.get()))
        install_components(workspace_folder, "layouts");

    ov::GStr install_folder = get_install_folder_path();
    if (install_folder) {
        ov::GStr shipped_layouts = path_in(install_folder.get(), "layouts");
        for (int i = 0; i < edition_count; i++) {
            ov::GStr copy = path_in(layouts_folder, editions[i].file_name);
            ov::GStr shipped = path_in(shipped_layouts.get(), editions[i].file_name);
            OvFileInfo info;
            if (file_has_md5sum(copy.get(), editions[i].md5sum) && get_info(shipped.get(), &info) &&
                info.is_regular_file)
                copy_file_over(shipped.get(), copy.get());
        }
    }
    ov_error_clear();
}

gboolean ov_workspace_install_components(const char *workspace_folder_path, const char *kind)
{
    g_return_val_if_fail(workspace_folder_path != nullptr && kind != nullptr, FALSE);
    return install_components(workspace_folder_path, kind);
}

gboolean ov_workspace_create(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    ov::GStr folder = ov::gstr(g_strdup(path));
    ov_fs_utils_strip_ending_path_delimiters(folder.get());

    OvFileInfo info;
    if (!get_info(folder.get(), &info))
        return FALSE;
    if (info.exists) {
        ov_error_set_utf8_printf("There is already a folder or a file at: %s", folder.get());
        return FALSE;
    }
    if (!ov_fs_utils_create_folder(folder.get()))
        return FALSE;

    constexpr const char *kinds[] = {"codesets", "layouts", "templates"};
    bool ok = true;
    for (const char *kind : kinds) {
        ok = install_components(folder.get(), kind);
        if (!ok)
            break;
    }
    ok = ok && ov_workspace_save_folder_path(folder.get());
    if (!ok) {
        // Undo in reverse: the installed component folders, then the
        // workspace folder itself.
        ErrorKeeper keep;
        for (int i = G_N_ELEMENTS(kinds) - 1; i >= 0; i--) {
            ov::GStr component = path_in(folder.get(), kinds[i]);
            if (get_info(component.get(), &info) && info.is_folder)
                delete_folder_with_files(component.get());
        }
        ov_fs_utils_delete_folder_if_exists(folder.get());
        return FALSE;
    }
    return TRUE;
}

// Folder paths

const char *ov_workspace_get_codesets_folder_path()
{
    return state != nullptr ? state->codesets_folder_path.get() : nullptr;
}

const char *ov_workspace_get_font_files_folder_path()
{
    return state != nullptr ? state->font_files_folder_path.get() : nullptr;
}

const char *ov_workspace_get_layouts_folder_path()
{
    return state != nullptr ? state->layouts_folder_path.get() : nullptr;
}

const char *ov_workspace_get_object_files_folder_path()
{
    return state != nullptr ? state->object_files_folder_path.get() : nullptr;
}

const char *ov_workspace_get_templates_folder_path()
{
    return state != nullptr ? state->templates_folder_path.get() : nullptr;
}

const char *ov_workspace_get_workspace_folder_path()
{
    return state != nullptr ? state->workspace_folder_path.get() : nullptr;
}

// Object files

void ov_workspace_set_object_file_added_callback(OvWorkspaceObjectFileCallback callback, gpointer data)
{
    g_return_if_fail(state != nullptr);
    state->added = callback;
    state->added_data = data;
}

void ov_workspace_set_object_file_changed_callback(OvWorkspaceObjectFileCallback callback, gpointer data)
{
    g_return_if_fail(state != nullptr);
    state->changed = callback;
    state->changed_data = data;
}

void ov_workspace_set_object_file_removed_callback(OvWorkspaceObjectFileCallback callback, gpointer data)
{
    g_return_if_fail(state != nullptr);
    state->removed = callback;
    state->removed_data = data;
}

gboolean ov_workspace_refresh()
{
    g_return_val_if_fail(state != nullptr, FALSE);
    const guint64 generation = ++state->generation;
    const char *extension =
        ov_file_type_get_default_file_name_extension_with_period(OV_FILE_TYPE_OBJECT_FILE);
    const size_t extension_length = strlen(extension);
    const char *documents = state->object_files_folder_path.get();

    // Every record is unseen when the pass starts; a found one leaves the map.
    std::unordered_map<std::string_view, OvWorkspaceObjectFile *> unseen;
    for (OvWorkspaceObjectFile *object_file : state->object_files)
        unseen.try_emplace(object_file->file_name, object_file);

    const bool ok = ov::for_each_folder_entry(documents, [&](ov::GStr &name) {
        const size_t length = strlen(name.get());
        if (length <= extension_length || !ov_utf8_has_suffix_case_insensitive_ascii(name.get(), extension))
            return true;

        OvWorkspaceObjectFile *object_file = nullptr;
        ov::GStr object_id;
        if (auto found = unseen.find(name.get()); found != unseen.end()) {
            object_file = found->second;
            unseen.erase(found);
        } else {
            object_id = ov::gstr(
                ov_convert_fat_safe_file_name_format_to_object_id(name.get(), length - extension_length));
            if (!object_id)
                return true;
        }

        ov::GStr path = path_in(documents, name.get());
        OvFileInfo info;
        if (!get_info(path.get(), &info) || !info.exists || !info.is_regular_file) {
            ov_error_clear();
            return true;
        }

        bool is_new = object_file == nullptr;
        bool changed = false;
        if (is_new) {
            object_file = new OvWorkspaceObjectFile{};
            object_file->file_name = name.release();
            object_file->path = path.release();
            object_file->object_id = object_id.release();
            object_file->modification_time = info.modification_time;
            ov::list_append(state->object_files, object_file);
        } else if (object_file->modification_time != info.modification_time) {
            object_file->modification_time = info.modification_time;
            changed = true;
        }
        object_file->generation = generation;
        ov::list_unlink(object_file);
        ov::list_append(state->object_files, object_file);
        if (is_new && state->added != nullptr)
            state->added(object_file, state->added_data);
        else if (changed && state->changed != nullptr)
            state->changed(object_file, state->changed_data);
        return true;
    });
    if (!ok)
        return FALSE;

    // Seen records were moved to the end, so the vanished ones lead.
    while (OvWorkspaceObjectFile *object_file = state->object_files.first()) {
        if (object_file->generation == generation)
            break;
        if (state->removed != nullptr)
            state->removed(object_file, state->removed_data);
        destroy_object_file(object_file);
    }
    return TRUE;
}

char *ov_workspace_create_object_file_path(const char *object_id)
{
    g_return_val_if_fail(state != nullptr && object_id != nullptr, nullptr);
    ov::GStr safe = ov::gstr(ov_convert_object_id_to_fat_safe_file_name_format(object_id));
    ov::GStr name = ov::gstr(g_strconcat(
        safe.get(), ov_file_type_get_default_file_name_extension_with_period(OV_FILE_TYPE_OBJECT_FILE),
        nullptr));
    return ov_fs_utils_create_path_in_folder(state->object_files_folder_path.get(), name.get(), nullptr);
}

gboolean ov_workspace_get_object_file_status(const char *object_id)
{
    g_return_val_if_fail(state != nullptr && object_id != nullptr, FALSE);
    ov::GStr path = ov::gstr(ov_workspace_create_object_file_path(object_id));
    OvFileInfo info;
    if (!get_info(path.get(), &info)) {
        ov_error_clear();
        return FALSE;
    }
    return info.exists && info.is_regular_file;
}

gboolean ov_workspace_has_object_file_path(const char *path)
{
    g_return_val_if_fail(state != nullptr && path != nullptr, FALSE);
    return ov_util_is_file_path_in_folder(state->object_files_folder_path.get(), path);
}

OvCodeset *ov_codeset_io_read_from_file_in_workspace(const char *file_name)
{
    g_return_val_if_fail(file_name != nullptr, nullptr);
    const char *folder = ov_workspace_get_codesets_folder_path();
    if (folder == nullptr) {
        ov_error_set("No workspace is open.");
        return nullptr;
    }
    ov::GStr path = ov::gstr(ov_fs_utils_create_path_in_folder(folder, file_name, nullptr));
    return ov_codeset_io_read_from_file(path.get());
}
