// Settings files: any bytes load without harm; what loads saves bytes that
// load and save as the same bytes again.
#include "core/error.h"
#include "frame/settings.h"
#include "frame/workspace.h"
#include "fuzz_support.h"

#include <glib/gstdio.h>

extern "C" void g_set_user_dirs(const gchar *first_dir_type, ...) G_GNUC_NULL_TERMINATED;

namespace
{

// The settings file of a workspace in the fuzz folder's home.
const std::string &settings_path()
{
    static const std::string path = [] {
        const std::string home = ov::fuzz::path_in_folder("home"),
                          config = ov::fuzz::path_in_folder("config");
        const std::string workspace = home + "/Orvane Workspace";
        g_mkdir_with_parents(workspace.c_str(), 0700);
        g_setenv("HOME", home.c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
        g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
        OV_FUZZ_CHECK(ov_workspace_open());
        return workspace + "/settings.xml";
    }();
    return path;
}

std::string loaded_and_saved()
{
    OV_FUZZ_CHECK(ov_settings_init());
    ov_settings_load(OV_SETTINGS_ALL);
    ov_error_clear();
    if (!ov_settings_save(OV_SETTINGS_ALL)) {
        ov_error_clear();
        ov_settings_clean_up();
        return {};
    }
    ov_settings_clean_up();
    return ov::fuzz::read_bytes(settings_path());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ov::fuzz::write_bytes(settings_path(), data, size);
    const std::string first = loaded_and_saved();
    if (!first.empty())
        OV_FUZZ_CHECK(loaded_and_saved() == first);
    return 0;
}
