// Settings files: any bytes load without harm; what loads saves bytes that
// load and save as the same bytes again.
#include "frame/settings.h"
#include "frame/workspace.h"
#include "fuzz_support.h"

namespace
{

// The settings file of a workspace in the fuzz folder's home.
const std::string &settings_path()
{
    static const std::string path = [] {
        ov::fuzz::use_private_home("Orvane Workspace");
        OV_FUZZ_CHECK(ov_workspace_open());
        return ov::fuzz::path_in_folder("home/Orvane Workspace/settings.xml");
    }();
    return path;
}

std::string loaded_and_saved()
{
    OV_FUZZ_CHECK(ov_settings_init());
    ov_settings_load(OV_SETTINGS_ALL);
    ov_error_clear();
    const bool saved = ov_settings_save(OV_SETTINGS_ALL);
    ov_error_clear();
    ov_settings_clean_up();
    return saved ? ov::fuzz::read_bytes(settings_path()) : std::string();
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
