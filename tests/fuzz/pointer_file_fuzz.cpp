// The workspace pointer file: any bytes read without harm; a folder path
// that reads is saved and read back unchanged.
#include "core/error.h"
#include "frame/workspace.h"
#include "fuzz_support.h"

#include <glib/gstdio.h>

extern "C" void g_set_user_dirs(const gchar *first_dir_type, ...) G_GNUC_NULL_TERMINATED;

namespace
{

const std::string &pointer_path()
{
    static const std::string path = [] {
        const std::string home = ov::fuzz::path_in_folder("home"),
                          config = ov::fuzz::path_in_folder("config");
        g_mkdir_with_parents((config + "/orvane").c_str(), 0700);
        g_mkdir_with_parents(home.c_str(), 0700);
        g_setenv("HOME", home.c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
        g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
        return config + "/orvane/orvane.xml";
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ov::fuzz::write_bytes(pointer_path(), data, size);
    char *path = nullptr;
    if (ov_workspace_get_saved_folder_path(&path) && path != nullptr) {
        const std::string first = path;
        g_free(path);
        path = nullptr;
        if (ov_workspace_save_folder_path(first.c_str())) {
            OV_FUZZ_CHECK(ov_workspace_get_saved_folder_path(&path) && path != nullptr && first == path);
        }
    }
    g_free(path);
    ov_error_clear();
    return 0;
}
