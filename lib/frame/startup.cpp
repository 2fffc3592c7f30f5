#include "frame/startup.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/platform.h"
#include "core/raii.h"
#include "core/util.h"
#include "frame/file_dialog.h"
#include "frame/resources.h"
#include "gui/style.h"
#include "lang/event_bus.h"

#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <libxml/parser.h>

#include <cstring>
#include <string_view>
#include <utility>

namespace
{

constexpr double high_resolution = 144.0;
constexpr std::string_view temp_file_prefix = "orvane-";
constexpr const char *temp_file_pattern = "^orvane-[0-9]+[.][0-9]+[.]o[du]t$";
constexpr guint64 stamp_mask = 0x7fffffffu;
constexpr const char *fonts_folder = "fonts";
constexpr const char *view_font_file = "LiberationSans-Bold.ttf";

struct StartupState {
    gboolean successful;
    FT_Library ft_library;
    OvImage *checkbox_off_icon_img;
    OvImage *checkbox_on_icon_img;
    OvImage *text_tab_menu_icon_img;
    cairo_font_face_t *view_font_face;
    int live_ft_faces;
    gboolean ft_library_release_pending;
};

StartupState state;

// Ties the FreeType face's life to the cairo face that draws with it. Cairo
// may keep the face in its caches after we let it go, so the FreeType
// library is released only once no face made from it is left.
const cairo_user_data_key_t ft_face_key{};

void release_ft_library_when_unused()
{
    if (state.ft_library_release_pending && state.live_ft_faces == 0) {
        FT_Done_FreeType(std::exchange(state.ft_library, nullptr));
        state.ft_library_release_pending = FALSE;
    }
}

void done_ft_face(void *face)
{
    FT_Done_Face(static_cast<FT_Face>(face));
    --state.live_ft_faces;
    release_ft_library_when_unused();
}

using RegexPtr = ov::Owned<GRegex, g_regex_unref>;

gboolean init_freetype()
{
    state.ft_library_release_pending = FALSE;
    if (state.ft_library != nullptr)
        return TRUE;
    if (FT_Init_FreeType(&state.ft_library) != 0) {
        state.ft_library = nullptr;
        ov_error_set("Couldn't initialize the FreeType font library.");
        return FALSE;
    }
    return TRUE;
}

void adjust_screen_resolution()
{
    GdkScreen *screen = gdk_screen_get_default();
    if (screen == nullptr)
        return;
    const double dpi = gdk_screen_get_resolution(screen);
    const double adjusted = ov_startup_adjust_resolution(dpi);
    if (adjusted != dpi)
        gdk_screen_set_resolution(screen, adjusted);
}

// The process identifier and stamp of a temporary file name that matched the
// pattern; false when the name does not split.
bool split_temp_file_name(std::string_view name, long *out_pid, int *out_stamp)
{
    name.remove_prefix(temp_file_prefix.size());
    const size_t pid_end = name.find('.');
    if (pid_end == std::string_view::npos)
        return false;
    std::string_view rest = name.substr(pid_end + 1);
    rest = rest.substr(0, rest.find('.'));
    const ov::GStr pid_text = ov::gstr(g_strndup(name.data(), pid_end));
    const ov::GStr stamp_text = ov::gstr(g_strndup(rest.data(), rest.size()));
    gint64 pid = 0;
    int stamp = 0;
    if (!ov_util_parse_int64_in_range(&pid, pid_text.get(), 0, G_MAXLONG) ||
        !ov_util_parse_int(&stamp, stamp_text.get()))
        return false;
    *out_pid = static_cast<long>(pid);
    *out_stamp = stamp;
    return true;
}

// Whether the file was left behind: its writer has ended, or the writer's
// process identifier now belongs to a program file of another size. When
// the process's program cannot be examined the file is kept.
bool is_stale_temp_file(long pid, int stamp)
{
    const ov::GStr proc_entry = ov::gstr(g_strdup_printf("/proc/%ld", pid));
    if (pid <= 0 || !g_file_test(proc_entry.get(), G_FILE_TEST_IS_DIR))
        return true;
    const ov::GStr exe_path = ov::gstr(ov_platform_get_exe_path(static_cast<pid_t>(pid)));
    if (!exe_path)
        return false;
    OvFileInfo info;
    if (!ov_fs_utils_get_info(exe_path.get(), &info) || !info.exists)
        return false;
    return static_cast<int>(info.size & stamp_mask) != stamp;
}

gboolean load_view_font()
{
    const ov::GStr install_folder = ov::gstr(ov_platform_get_install_folder_path());
    if (!install_folder) {
        ov_error_append("Couldn't find required fonts.");
        return FALSE;
    }
    const ov::GStr path = ov::gstr(
        ov_fs_utils_create_path_in_folder(install_folder.get(), fonts_folder, view_font_file, nullptr));
    const ov::GStr os_path = ov::gstr(ov_fs_utils_convert_utf8_to_osfsenc(path.get()));
    FT_Face ft_face = nullptr;
    if (!os_path || FT_New_Face(state.ft_library, os_path.get(), 0, &ft_face) != 0) {
        ov_error_set("Couldn't open required fonts.");
        return FALSE;
    }
    cairo_font_face_t *face = cairo_ft_font_face_create_for_ft_face(ft_face, 0);
    const char *failure = nullptr;
    if (cairo_font_face_status(face) != CAIRO_STATUS_SUCCESS)
        failure = "Couldn't load required fonts.";
    else if (cairo_font_face_set_user_data(face, &ft_face_key, ft_face, done_ft_face) != CAIRO_STATUS_SUCCESS)
        failure = "Couldn't use required fonts.";
    if (failure != nullptr) {
        cairo_font_face_destroy(face);
        FT_Done_Face(ft_face);
        ov_error_set(failure);
        return FALSE;
    }
    ++state.live_ft_faces;
    state.view_font_face = face;
    return TRUE;
}

} // namespace

OvImage *ov_get_checkbox_icon_image(gboolean checked)
{
    return checked ? state.checkbox_on_icon_img : state.checkbox_off_icon_img;
}

OvImage *ov_get_text_tab_menu_icon_image()
{
    return state.text_tab_menu_icon_img;
}

cairo_font_face_t *ov_get_view_font_face()
{
    return state.view_font_face;
}

double ov_startup_adjust_resolution(double dpi)
{
    return dpi >= high_resolution ? dpi / 2.0 : dpi;
}

gboolean ov_startup_clean_up_temp_files_in(const char *folder)
{
    g_return_val_if_fail(folder != nullptr, FALSE);
    ov::GErrorPtr regex_error;
    const RegexPtr pattern(
        g_regex_new(temp_file_pattern, G_REGEX_OPTIMIZE, GRegexMatchFlags(0), ov::out(regex_error)));
    if (!pattern) {
        ov_error_set("Regex error.");
        return FALSE;
    }
    const gboolean listed = ov::for_each_folder_entry(folder, [&](ov::GStr &name) {
        long pid = 0;
        int stamp = 0;
        if (!g_regex_match(pattern.get(), name.get(), GRegexMatchFlags(0), nullptr) ||
            !split_temp_file_name(name.get(), &pid, &stamp) || !is_stale_temp_file(pid, stamp))
            return true;
        const ov::GStr path = ov::gstr(ov_fs_utils_create_path_in_folder(folder, name.get(), nullptr));
        // A file that cannot be deleted now is tried again at the next start.
        ov_fs_utils_delete_file_if_exists(path.get());
        return true;
    });
    if (!listed) {
        ov_error_append("Couldn't open temp files folder.");
        return FALSE;
    }
    // The questions about processes leave no reason behind on success.
    ov_error_clear();
    return TRUE;
}

gboolean ov_startup_load_icon_images()
{
    if (!ov_resources_open()) {
        ov_error_append("Couldn't load resources.");
        return FALSE;
    }
    struct Icon {
        OvImage **slot;
        const char *entry_name;
    };
    const Icon icons[] = {
        {&state.checkbox_off_icon_img, "checkbox_off.png"},
        {&state.checkbox_on_icon_img, "checkbox_on.png"},
        {&state.text_tab_menu_icon_img, "text_tab_menu.png"},
    };
    for (const Icon &icon : icons) {
        if (*icon.slot != nullptr)
            continue;
        *icon.slot = ov_resources_load_image(icon.entry_name, OV_FILE_TYPE_PNG);
        if (*icon.slot == nullptr)
            return FALSE;
    }
    return TRUE;
}

gboolean ov_startup_prepare()
{
    if (state.successful)
        return TRUE;
    if (!init_freetype())
        return FALSE;
    adjust_screen_resolution();
    const ov::GStr temp_folder = ov::gstr(ov_platform_get_temp_files_folder_path());
    if (!ov_startup_clean_up_temp_files_in(temp_folder.get())) {
        ov_error_append("Couldn't clean up temp files.");
        return FALSE;
    }
    if (!ov_startup_load_icon_images())
        return FALSE;
    if (state.view_font_face == nullptr && !load_view_font())
        return FALSE;
    state.successful = TRUE;
    return TRUE;
}

gboolean ov_startup_is_successful()
{
    return state.successful;
}

void ov_startup_release(const OvApplicationConfiguration *configuration)
{
    for (OvImage **image :
         {&state.checkbox_off_icon_img, &state.checkbox_on_icon_img, &state.text_tab_menu_icon_img})
        ov_image_destroy(std::exchange(*image, nullptr));
    if (state.view_font_face != nullptr)
        cairo_font_face_destroy(std::exchange(state.view_font_face, nullptr));
    ov_event_bus_clean_up();
    ov_file_dialog_clean_up();
    if (configuration != nullptr && configuration->clean_up_text_drawing != nullptr)
        configuration->clean_up_text_drawing();
    ov_gui_style_clean_up();
    ov_resources_clean_up();
    state.ft_library_release_pending = state.ft_library != nullptr;
    release_ft_library_when_unused();
    xmlCleanupParser();
    state.successful = FALSE;
}
