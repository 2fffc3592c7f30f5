#include "frame/exe_launcher.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/platform.h"
#include "core/raii.h"

namespace
{

constexpr const char *object_editor = "Orvane Editor";

// Starts the tool with the argument text (already quoted where needed).
gboolean launch_bundled_program(const char *tool_name, const char *arguments)
{
    const ov::GStr install_folder = ov::gstr(ov_platform_get_install_folder_path());
    if (!install_folder)
        return FALSE;
    const ov::GStr name = ov::gstr(ov_exe_get_executable_name(tool_name));
    const ov::GStr path =
        ov::gstr(ov_fs_utils_create_path_in_folder(install_folder.get(), name.get(), nullptr));
    OvFileInfo info;
    if (!ov_fs_utils_get_info(path.get(), &info))
        return FALSE;
    if (!info.is_regular_file) {
        ov_error_set_utf8_printf("Couldn't find the program: %s", path.get());
        return FALSE;
    }
    const ov::GStr quoted = ov::gstr(ov_platform_escape_string_for_command_line(path.get()));
    const ov::GStr command_line = ov::gstr(
        arguments != nullptr ? g_strdup_printf("%s %s", quoted.get(), arguments) : g_strdup(quoted.get()));
    return ov_platform_run_command_line(command_line.get());
}

// The option alone, or the option and the quoted path.
gboolean launch_object_editor(const char *option, const char *path)
{
    if (path == nullptr)
        return launch_bundled_program(object_editor, option);
    const ov::GStr quoted = ov::gstr(ov_platform_escape_string_for_command_line(path));
    const ov::GStr arguments = ov::gstr(g_strdup_printf("%s %s", option, quoted.get()));
    return launch_bundled_program(object_editor, arguments.get());
}

gboolean launch_with_optional_path(const char *tool_name, const char *path)
{
    if (path == nullptr)
        return launch_bundled_program(tool_name, nullptr);
    const ov::GStr quoted = ov::gstr(ov_platform_escape_string_for_command_line(path));
    return launch_bundled_program(tool_name, quoted.get());
}

} // namespace

char *ov_exe_get_executable_name(const char *tool_name)
{
    g_return_val_if_fail(tool_name != nullptr, nullptr);
    char *name = g_ascii_strdown(tool_name, -1);
    g_strdelimit(name, " ", '-');
    return name;
}

gboolean ov_exe_create_new_object_file()
{
    return launch_object_editor("-n", nullptr);
}

gboolean ov_exe_open_object_file(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    return launch_object_editor("-e", path);
}

gboolean ov_exe_peek_at_object_file(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    return launch_object_editor("-p", path);
}

gboolean ov_exe_launch_layout_editor(const char *path)
{
    return launch_with_optional_path("Orvane Layout Editor", path);
}

gboolean ov_exe_launch_remark_codeset_editor(const char *path)
{
    return launch_with_optional_path("Orvane Remark Codeset Editor", path);
}

gboolean ov_exe_launch_template_editor(const char *path)
{
    return launch_with_optional_path("Orvane Template Editor", path);
}

gboolean ov_exe_launch_workspace_tool()
{
    return launch_bundled_program("Orvane Workspace Tool", nullptr);
}
