// Feeds every file of the given files and folders to the fuzz target once,
// in name order, so that a corpus replays deterministically without a
// fuzzer.
#include <glib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        if (!std::filesystem::is_directory(argv[i], error))
            files.push_back(argv[i]);
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i], error))
            if (!entry.is_directory())
                files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const std::string &file : files) {
        gchar *contents = nullptr;
        gsize length = 0;
        if (!g_file_get_contents(file.c_str(), &contents, &length, nullptr))
            return std::fprintf(stderr, "cannot read %s\n", file.c_str()), 1;
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(contents), length);
        g_free(contents);
    }
    std::printf("%zu inputs replayed\n", files.size());
    return files.empty() ? 1 : 0;
}
