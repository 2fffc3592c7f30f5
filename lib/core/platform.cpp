#include "core/platform.h"

#include "core/error.h"
#include "core/file_type.h"
#include "core/fs_utils.h"
#include "core/raii.h"

#include <gio/gio.h>

#include <unistd.h>

#include <array>
#include <clocale>
#include <cstring>
#include <string_view>

namespace
{

constexpr const char *temp_files_folder = "/tmp";
constexpr const char *exe_path_failure = "Error getting exe path from system.";

// Room for the date text: starts small and doubles while it does not fit.
constexpr size_t first_date_buffer_size = 11;
constexpr size_t date_buffer_limit = 10000;

using GFilePtr = ov::Owned<GFile, g_object_unref>;
using GFileInfoPtr = ov::Owned<GFileInfo, g_object_unref>;

// The file identifier GIO gives the path, or null when it cannot be queried.
ov::GStr file_identifier(const char *path)
{
    // Identity questions leave the error buffer alone: no answer is FALSE.
    ov::GStr os_path(g_filename_from_utf8(path, -1, nullptr, nullptr, nullptr));
    if (!os_path)
        return nullptr;
    const GFilePtr file(g_file_new_for_path(os_path.get()));
    const GFileInfoPtr info(
        g_file_query_info(file.get(), G_FILE_ATTRIBUTE_ID_FILE, G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    if (!info)
        return nullptr;
    const char *id = g_file_info_get_attribute_string(info.get(), G_FILE_ATTRIBUTE_ID_FILE);
    return ov::GStr(g_strdup(id));
}

// Locales that write dates year first in every case.
bool uses_iso_dates(const char *locale_name)
{
    return locale_name != nullptr && std::strlen(locale_name) >= 5 &&
           std::string_view(locale_name).substr(2, 3) == "_SE";
}

// g_date_valid only asks whether a representation is set; this also checks
// the fields of the one that is.
bool is_valid_date(const GDate *date)
{
    if (date->julian)
        return g_date_valid_julian(date->julian_days);
    return date->dmy &&
           g_date_valid_dmy(static_cast<GDateDay>(date->day), static_cast<GDateMonth>(date->month),
                            static_cast<GDateYear>(date->year));
}

char *format_date(const GDate *date, const char *format)
{
    for (size_t size = first_date_buffer_size; size < date_buffer_limit; size *= 2) {
        ov::GStr buffer(static_cast<char *>(g_malloc(size)));
        if (g_date_strftime(buffer.get(), size, format, date) > 0)
            return buffer.release();
    }
    return nullptr;
}

} // namespace

char *ov_platform_get_temp_files_folder_path()
{
    return g_strdup(temp_files_folder);
}

FILE *ov_platform_create_temp_file()
{
    FILE *file = tmpfile();
    if (file == nullptr)
        ov_error_set_from_errno();
    return file;
}

char *ov_platform_get_temp_legacy_printout_file_path()
{
    const ov::GStr exe_path = ov::gstr(ov_platform_get_exe_path(getpid()));
    if (!exe_path) {
        ov_error_set("Couldn't locate program file.");
        return nullptr;
    }
    OvFileInfo info;
    if (!ov_fs_utils_get_info(exe_path.get(), &info) || !info.exists) {
        ov_error_set("Couldn't analyse program file.");
        return nullptr;
    }
    const int size_bits = static_cast<int>(info.size & 0x7fffffffu);
    return g_strdup_printf(
        "/tmp/orvane-%ld.%d%s", static_cast<long>(getpid()), size_bits,
        ov_file_type_get_default_file_name_extension_with_period(OV_FILE_TYPE_OPENDOCUMENT_TEXT));
}

char *ov_platform_get_exe_path(pid_t process_id)
{
    const ov::GStr link = ov::gstr(g_strdup_printf("/proc/%ld/exe", static_cast<long>(process_id)));
    std::array<char, 4096> target;
    const ssize_t length = readlink(link.get(), target.data(), target.size());
    if (length <= 0 || static_cast<size_t>(length) >= target.size()) {
        ov_error_set(exe_path_failure);
        return nullptr;
    }
    target[static_cast<size_t>(length)] = '\0';
    return ov_fs_utils_convert_osfsenc_to_utf8(target.data());
}

char *ov_platform_get_install_folder_path()
{
    char *path = ov_platform_get_exe_path(getpid());
    if (path == nullptr) {
        ov_error_set(exe_path_failure);
        return nullptr;
    }
    ov_fs_utils_strip_entry_name_from_path(path);
    return path;
}

char *ov_platform_escape_string_for_command_line(const char *text)
{
    g_return_val_if_fail(text != nullptr, nullptr);
    return g_shell_quote(text);
}

gboolean ov_platform_open_file_with_default_app(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    const ov::GStr os_path = ov::gstr(ov_fs_utils_convert_utf8_to_osfsenc(path));
    if (!os_path)
        return FALSE;
    const GFilePtr file(g_file_new_for_path(os_path.get()));
    const ov::GStr uri = ov::gstr(g_file_get_uri(file.get()));
    ov::GErrorPtr error;
    if (g_app_info_launch_default_for_uri(uri.get(), nullptr, ov::out(error)))
        return TRUE;
    // Desktops whose associations GIO cannot read still have xdg-open.
    const char *argv[] = {"xdg-open", os_path.get(), nullptr};
    if (g_spawn_async(nullptr, const_cast<char **>(argv), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                      nullptr, nullptr))
        return TRUE;
    ov_error_set_from_gerror_and_free(error.release());
    return FALSE;
}

gboolean ov_platform_run_command_line(const char *command_line)
{
    g_return_val_if_fail(command_line != nullptr, FALSE);
    const ov::GStr os_command_line = ov::gstr(ov_fs_utils_convert_utf8_to_osfsenc(command_line));
    if (!os_command_line)
        return FALSE;
    ov::GErrorPtr error;
    if (!g_spawn_command_line_async(os_command_line.get(), ov::out(error))) {
        ov_error_set_from_gerror_and_free(error.release());
        return FALSE;
    }
    return TRUE;
}

gboolean ov_platform_run_command_line_and_wait(const char *command_line)
{
    g_return_val_if_fail(command_line != nullptr, FALSE);
    const ov::GStr os_command_line = ov::gstr(ov_fs_utils_convert_utf8_to_osfsenc(command_line));
    if (!os_command_line)
        return FALSE;
    ov::GErrorPtr error;
    int wait_status = 0;
    if (!g_spawn_command_line_sync(os_command_line.get(), nullptr, nullptr, &wait_status, ov::out(error))) {
        ov_error_set_from_gerror_and_free(error.release());
        return FALSE;
    }
    return TRUE;
}

gboolean ov_platform_has_enough_disk_space_for_printing()
{
    return TRUE;
}

gboolean ov_platform_compare_file_system_paths(const char *path_a, const char *path_b)
{
    g_return_val_if_fail(path_a != nullptr && path_b != nullptr, FALSE);
    const ov::GStr id_a = file_identifier(path_a);
    if (!id_a)
        return FALSE;
    const ov::GStr id_b = file_identifier(path_b);
    return id_b && std::strcmp(id_a.get(), id_b.get()) == 0;
}

char *ov_platform_get_date_string(const GDate *date)
{
    // A cleared date holds neither representation: there is nothing to show.
    if (date == nullptr || (!date->julian && !date->dmy))
        return nullptr;
    if (is_valid_date(date)) {
        const char *format = uses_iso_dates(setlocale(LC_TIME, nullptr)) ? "%F" : "%x";
        if (char *text = format_date(date, format))
            return text;
        return g_strdup_printf("%04d-%02d-%02d", static_cast<int>(g_date_get_year(date)),
                               static_cast<int>(g_date_get_month(date)),
                               static_cast<int>(g_date_get_day(date)));
    }
    return g_strdup_printf("%04d-%02d-%02d", static_cast<int>(date->year), static_cast<int>(date->month),
                           static_cast<int>(date->day));
}
