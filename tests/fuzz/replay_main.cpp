// Feeds every file of the given files and folders to the fuzz target once,
// in name order, so that a corpus replays deterministically without a
// fuzzer.
#include <glib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace
{

void collect(const std::string &path, std::vector<std::string> &files)
{
    if (!g_file_test(path.c_str(), G_FILE_TEST_IS_DIR)) {
        files.push_back(path);
        return;
    }
    GDir *folder = g_dir_open(path.c_str(), 0, nullptr);
    if (folder == nullptr)
        return;
    std::vector<std::string> names;
    while (const char *name = g_dir_read_name(folder))
        names.emplace_back(name);
    g_dir_close(folder);
    std::sort(names.begin(), names.end());
    for (const std::string &name : names)
        collect(path + "/" + name, files);
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i)
        collect(argv[i], files);
    for (const std::string &file : files) {
        gchar *contents = nullptr;
        gsize length = 0;
        if (!g_file_get_contents(file.c_str(), &contents, &length, nullptr)) {
            std::fprintf(stderr, "cannot read %s\n", file.c_str());
            return 1;
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(contents), length);
        g_free(contents);
    }
    std::printf("%zu inputs replayed\n", files.size());
    return files.empty() ? 1 : 0;
}
