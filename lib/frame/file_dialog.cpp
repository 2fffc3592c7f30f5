#include "frame/file_dialog.h"

#include "core/raii.h"
#include "core/strings.h"
#include "frame/window_stack.h"

#include <gtk/gtk.h>

namespace
{

// Folder paths (UTF-8) by the key of a list of file kinds.
GHashTable *remembered_folders = nullptr;

enum class Chooser { OPEN, OPEN_MULTIPLE, SAVE, FOLDER };

struct ChooserRequest {
    Chooser chooser;
    const char *title;
    const char *filter_name;
    const OvFileType *types;
    gsize count;
    const char *suggested_name;
};

GtkFileFilter *filter_for_kind(OvFileType type, GtkFileFilter *filter)
{
    if (const char *media_type = ov_file_type_get_media_type(type);
        media_type != nullptr && *media_type != '\0')
        gtk_file_filter_add_mime_type(filter, media_type);
    gtk_file_filter_add_pattern(filter, ov_file_type_get_default_file_name_extension_wildcard_pattern(type));
    if (const char *pattern = ov_file_type_get_alternative_file_name_extension_wildcard_pattern(type))
        gtk_file_filter_add_pattern(filter, pattern);
    return filter;
}

void add_filters(GtkFileChooser *chooser, const char *filter_name, const OvFileType *types, gsize count)
{
    if (count >= 2) {
        GtkFileFilter *combined = gtk_file_filter_new();
        gtk_file_filter_set_name(combined, filter_name != nullptr ? filter_name : "Matching files");
        for (gsize i = 0; i < count; ++i)
            filter_for_kind(types[i], combined);
        gtk_file_chooser_add_filter(chooser, combined);
        gtk_file_chooser_set_filter(chooser, combined);
    }
    for (gsize i = 0; i < count; ++i) {
        GtkFileFilter *filter = filter_for_kind(types[i], gtk_file_filter_new());
        ov::GStr name(g_strdup_printf("%s files", ov_file_type_get_name(types[i])));
        gtk_file_filter_set_name(filter, name.get());
        gtk_file_chooser_add_filter(chooser, filter);
        if (count == 1)
            gtk_file_chooser_set_filter(chooser, filter);
    }
    GtkFileFilter *all = gtk_file_filter_new();
    gtk_file_filter_set_name(all, "All files");
    gtk_file_filter_add_pattern(all, "*");
    gtk_file_chooser_add_filter(chooser, all);
    if (count == 0)
        gtk_file_chooser_set_filter(chooser, all);
}

void remember_folder(const ChooserRequest &request, const char *utf8_path)
{
    if (remembered_folders == nullptr)
        remembered_folders = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    g_hash_table_replace(remembered_folders, ov_file_dialog_make_folder_key(request.types, request.count),
                         g_path_get_dirname(utf8_path));
}

char *to_utf8(const char *file_name)
{
    return file_name != nullptr ? g_filename_to_utf8(file_name, -1, nullptr, nullptr, nullptr) : nullptr;
}

// Runs the chooser and returns the accepted UTF-8 paths in order.
GSList *run_chooser(const ChooserRequest &request)
{
    GtkWindow *parent = ov_window_stack_push_native_window();
    const bool with_filters = request.chooser != Chooser::FOLDER;
    GtkFileChooserAction action = request.chooser == Chooser::SAVE     ? GTK_FILE_CHOOSER_ACTION_SAVE
                                  : request.chooser == Chooser::FOLDER ? GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER
                                                                       : GTK_FILE_CHOOSER_ACTION_OPEN;
    const char *accept = request.chooser == Chooser::SAVE     ? "_Save"
                         : request.chooser == Chooser::FOLDER ? "_OK"
                                                              : "_Open";
    GtkFileChooserNative *native =
        gtk_file_chooser_native_new(request.title, parent, action, accept, "_Cancel");
    GtkFileChooser *chooser = GTK_FILE_CHOOSER(native);
    gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(native), TRUE);

    if (with_filters) {
        add_filters(chooser, request.filter_name, request.types, request.count);
        if (const char *folder = ov_file_dialog_get_remembered_folder(request.types, request.count)) {
            ov::GStr local(g_filename_from_utf8(folder, -1, nullptr, nullptr, nullptr));
            if (local)
                gtk_file_chooser_set_current_folder(chooser, local.get());
        }
    }
    if (request.chooser == Chooser::SAVE) {
        ov::GStr untitled;
        const char *name = request.suggested_name;
        if (name == nullptr) {
            untitled.reset(g_strconcat(
                "untitled",
                request.count > 0 ? ov_file_type_get_default_file_name_extension_with_period(request.types[0])
                                  : "",
                nullptr));
            name = untitled.get();
        }
        gtk_file_chooser_set_current_name(chooser, name);
        gtk_file_chooser_set_do_overwrite_confirmation(chooser, TRUE);
    }
    if (request.chooser == Chooser::OPEN_MULTIPLE)
        gtk_file_chooser_set_select_multiple(chooser, TRUE);

    GSList *paths = nullptr;
    if (gtk_native_dialog_run(GTK_NATIVE_DIALOG(native)) == GTK_RESPONSE_ACCEPT) {
        GSList *files = gtk_file_chooser_get_filenames(chooser);
        for (GSList *walk = files; walk != nullptr; walk = walk->next)
            if (char *utf8 = to_utf8(static_cast<const char *>(walk->data)))
                paths = g_slist_prepend(paths, utf8);
        g_slist_free_full(files, g_free);
        paths = g_slist_reverse(paths);
        if (with_filters && paths != nullptr)
            remember_folder(request, static_cast<const char *>(paths->data));
    }
    gtk_native_dialog_destroy(GTK_NATIVE_DIALOG(native));
    g_object_unref(native);
    ov_window_stack_pop_window();
    return paths;
}

char *run_for_one(const ChooserRequest &request)
{
    GSList *paths = run_chooser(request);
    if (paths == nullptr)
        return nullptr;
    char *first = static_cast<char *>(paths->data);
    paths->data = nullptr;
    g_slist_free_full(paths, g_free);
    return first;
}

} // namespace

char *ov_file_dialog_make_folder_key(const OvFileType *types, gsize count)
{
    GString *key = g_string_new(nullptr);
    for (gsize i = 0; i < count; ++i) {
        if (i > 0)
            g_string_append_c(key, '#');
        g_string_append(key, ov_file_type_get_name(types[i]));
    }
    return g_string_free(key, FALSE);
}

const char *ov_file_dialog_get_remembered_folder(const OvFileType *types, gsize count)
{
    if (remembered_folders == nullptr)
        return nullptr;
    ov::GStr key(ov_file_dialog_make_folder_key(types, count));
    return static_cast<const char *>(g_hash_table_lookup(remembered_folders, key.get()));
}

char *ov_file_dialog_get_file_path_for_reading_(const char *title, const char *filter_name,
                                                const OvFileType *types, gsize count)
{
    return run_for_one({Chooser::OPEN, title, filter_name, types, count, nullptr});
}

GSList *ov_file_dialog_get_multiple_file_paths_for_reading_(const char *title, const char *filter_name,
                                                            const OvFileType *types, gsize count)
{
    return run_chooser({Chooser::OPEN_MULTIPLE, title, filter_name, types, count, nullptr});
}

char *ov_file_dialog_get_file_path_for_writing(const char *suggested_name, OvFileType type)
{
    return run_for_one({Chooser::SAVE, "Save As", nullptr, &type, 1, suggested_name});
}

char *ov_file_dialog_get_printout_file_path(const char *object_id, OvFileType type)
{
    ov::GStr safe(ov_convert_object_id_to_ntfs_safe_file_name_format(object_id != nullptr ? object_id : ""));
    ov::GStr name(g_strconcat(safe ? safe.get() : "",
                              ov_file_type_get_default_file_name_extension_with_period(type), nullptr));
    return ov_file_dialog_get_file_path_for_writing(name.get(), type);
}

char *ov_file_dialog_get_folder_path(const char *title)
{
    return run_for_one({Chooser::FOLDER, title, nullptr, nullptr, 0, nullptr});
}

void ov_file_dialog_clean_up()
{
    if (remembered_folders != nullptr) {
        g_hash_table_destroy(remembered_folders);
        remembered_folders = nullptr;
    }
}
