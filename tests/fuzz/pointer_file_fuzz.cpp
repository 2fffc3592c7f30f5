// The workspace pointer file: any bytes read without harm; a folder path
// that reads is saved and read back unchanged.
#include "frame/workspace.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string pointer_file = ov::fuzz::use_private_home("") + "/orvane/orvane.xml";
    ov::fuzz::write_bytes(pointer_file, data, size);
    char *path = nullptr;
    if (ov_workspace_get_saved_folder_path(&path) && path != nullptr) {
        const std::string first = path;
        g_free(std::exchange(path, nullptr));
        if (ov_workspace_save_folder_path(first.c_str()))
            OV_FUZZ_CHECK(ov_workspace_get_saved_folder_path(&path) && path != nullptr && first == path);
    }
    g_free(path);
    ov_error_clear();
    return 0;
}
