#include "core/fs_utils.h"

#include "core/error.h"
#include "core/raii.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

constexpr char delimiter = '/';

int last_errno = 0;

// Records errno, sets the C library's text and puts the sentence on top.
// Must be called before anything else can change errno.
void fail_with_errno(const char *sentence)
{
    const int code = errno;
    last_errno = code;
    errno = code;
    ov_error_set_from_errno();
    ov_error_append(sentence);
}

// Closes a descriptor it still holds.
class FdGuard
{
  public:
    explicit FdGuard(int fd) : fd_(fd) {}
    FdGuard(const FdGuard &) = delete;
    FdGuard &operator=(const FdGuard &) = delete;
    ~FdGuard()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }

  private:
    int fd_;
};

// Opens a file for reading only when it is a regular file. The open does
// not block, so a FIFO or a device is refused instead of waiting for a
// writer, and the check looks at what was opened, not at what the path
// named a moment earlier. Null with the error set on failure.
FILE *open_regular_file(const char *os_path, const char *mode)
{
    const int access = std::strchr(mode, '+') != nullptr ? O_RDWR : O_RDONLY;
    FdGuard fd(open(os_path, access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {
    };
    if (fd.get() < 0 || fstat(fd.get(), &info) != 0) {
        fail_with_errno("Cannot open file.");
        return nullptr;
    }
    if (S_ISDIR(info.st_mode)) {
        errno = EISDIR;
        fail_with_errno("Cannot open file.");
        return nullptr;
    }
    if (!S_ISREG(info.st_mode)) {
        last_errno = EINVAL;
        ov_error_set("Not a regular file.");
        ov_error_append("Cannot open file.");
        return nullptr;
    }
    const int flags = fcntl(fd.get(), F_GETFL);
    FILE *stream = nullptr;
    if (flags < 0 || fcntl(fd.get(), F_SETFL, flags & ~O_NONBLOCK) != 0 ||
        (stream = fdopen(fd.get(), mode)) == nullptr) {
        fail_with_errno("Cannot open file.");
        return nullptr;
    }
    fd.release();
    return stream;
}

ov::GStr to_os(const char *path)
{
    return ov::gstr(ov_fs_utils_convert_utf8_to_osfsenc(path));
}

// Length of the text once the run of delimiters ending it is removed.
size_t length_without_ending_delimiters(std::string_view path)
{
    size_t length = path.size();
    while (length > 0 && path[length - 1] == delimiter)
        --length;
    return length;
}

} // namespace

FILE *ov_fs_utils_open_file(const char *path, const char *mode)
{
    g_return_val_if_fail(path != nullptr && mode != nullptr, nullptr);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return nullptr;
    if (mode[0] == 'r')
        return open_regular_file(os_path.get(), mode);
    FILE *stream = fopen(os_path.get(), mode);
    if (stream == nullptr)
        fail_with_errno("Cannot open file.");
    return stream;
}

gboolean ov_fs_utils_close_file(FILE *stream)
{
    if (stream == nullptr)
        return TRUE;
    if (fclose(stream) != 0) {
        fail_with_errno("Cannot close file.");
        return FALSE;
    }
    return TRUE;
}

DIR *ov_fs_utils_open_folder(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return nullptr;
    DIR *folder = opendir(os_path.get());
    if (folder == nullptr)
        fail_with_errno("Cannot open folder.");
    return folder;
}

gboolean ov_fs_utils_close_folder(DIR *folder)
{
    if (folder == nullptr)
        return TRUE;
    if (closedir(folder) != 0) {
        fail_with_errno("Cannot close folder.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_fs_utils_next_folder_entry(DIR *folder, char **name)
{
    g_return_val_if_fail(folder != nullptr && name != nullptr, FALSE);
    *name = nullptr;
    errno = 0;
    const dirent *entry = readdir(folder);
    if (entry == nullptr) {
        if (errno == 0)
            return TRUE;
        fail_with_errno("Cannot read folder contents.");
        return FALSE;
    }
    *name = ov_fs_utils_convert_osfsenc_to_utf8(entry->d_name);
    return *name != nullptr;
}

gboolean ov_fs_utils_create_folder(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return FALSE;
    // Owner only, on purpose: workspaces hold personal data.
    if (mkdir(os_path.get(), 0700) != 0) {
        fail_with_errno("Cannot create folder.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_fs_utils_create_folder_recursively(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    const ov::GStr parent(g_strdup(path));
    ov_fs_utils_strip_ending_path_delimiters(parent.get());
    ov_fs_utils_strip_entry_name_from_path(parent.get());
    ov_fs_utils_strip_ending_path_delimiters(parent.get());
    // A relative or root-level path ends the recursion at the empty parent.
    if (parent.get()[0] != '\0') {
        OvFileInfo info;
        if (ov_fs_utils_get_info(parent.get(), &info) && !info.exists &&
            !ov_fs_utils_create_folder_recursively(parent.get()))
            return FALSE;
    }
    return ov_fs_utils_create_folder(path);
}

gboolean ov_fs_utils_delete_file_if_exists(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return FALSE;
    if (unlink(os_path.get()) != 0 && errno != ENOENT) {
        fail_with_errno("Cannot unlink file.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_fs_utils_delete_folder_if_exists(const char *path)
{
    g_return_val_if_fail(path != nullptr, FALSE);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return FALSE;
    if (rmdir(os_path.get()) != 0 && errno != ENOENT) {
        fail_with_errno("Cannot delete folder.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_fs_utils_rename(const char *from, const char *to)
{
    g_return_val_if_fail(from != nullptr && to != nullptr, FALSE);
    const ov::GStr os_from = to_os(from);
    if (!os_from)
        return FALSE;
    const ov::GStr os_to = to_os(to);
    if (!os_to)
        return FALSE;
    if (rename(os_from.get(), os_to.get()) != 0) {
        fail_with_errno("Cannot rename file/folder.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_fs_utils_get_info(const char *path, OvFileInfo *info)
{
    g_return_val_if_fail(path != nullptr && info != nullptr, FALSE);
    *info = OvFileInfo{};
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return FALSE;
    struct stat status;
    if (stat(os_path.get(), &status) != 0) {
        if (errno == ENOENT)
            return TRUE;
        fail_with_errno("Cannot get file status.");
        return FALSE;
    }
    info->exists = TRUE;
    info->is_folder = S_ISDIR(status.st_mode) ? TRUE : FALSE;
    info->is_regular_file = S_ISREG(status.st_mode) ? TRUE : FALSE;
    info->modification_time = status.st_mtime;
    info->size = static_cast<guint64>(status.st_size);
    return TRUE;
}

char *ov_fs_utils_read_link(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    const ov::GStr os_path = to_os(path);
    if (!os_path)
        return nullptr;
    // readlink does not say how long the target is: grow until it fits.
    std::vector<char> target(256);
    for (;;) {
        const ssize_t length = readlink(os_path.get(), target.data(), target.size());
        if (length < 0) {
            fail_with_errno("Could not read symlink contents.");
            return nullptr;
        }
        if (static_cast<size_t>(length) < target.size()) {
            target[static_cast<size_t>(length)] = '\0';
            break;
        }
        target.resize(target.size() * 2);
    }
    char *utf8 = ov_fs_utils_convert_osfsenc_to_utf8(target.data());
    if (utf8 == nullptr)
        ov_error_append("Could not convert symlink contents to unicode.");
    return utf8;
}

char *ov_fs_utils_convert_utf8_to_osfsenc(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    ov::GErrorPtr error;
    char *converted = g_filename_from_utf8(path, -1, nullptr, nullptr, ov::out(error));
    if (converted == nullptr) {
        ov_error_set_from_gerror_and_free(error.release());
        ov_error_append("Could not use filename.");
    }
    return converted;
}

char *ov_fs_utils_convert_utf8_to_glibfsenc(const char *path)
{
    return ov_fs_utils_convert_utf8_to_osfsenc(path);
}

char *ov_fs_utils_convert_osfsenc_to_utf8(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    ov::GErrorPtr error;
    char *converted = g_filename_to_utf8(path, -1, nullptr, nullptr, ov::out(error));
    if (converted == nullptr) {
        ov_error_set_from_gerror_and_free(error.release());
        ov_error_append("Could not convert filename to unicode.");
    }
    return converted;
}

char *ov_fs_utils_convert_glibfsenc_to_utf8(const char *path)
{
    return ov_fs_utils_convert_osfsenc_to_utf8(path);
}

int ov_fs_utils_get_last_errno()
{
    return last_errno;
}

size_t ov_fs_utils_strip_ending_path_delimiters(char *path)
{
    g_return_val_if_fail(path != nullptr, 0);
    const size_t length = length_without_ending_delimiters(path);
    path[length] = '\0';
    return length;
}

void ov_fs_utils_strip_entry_name_from_path(char *path)
{
    g_return_if_fail(path != nullptr);
    char *last = strrchr(path, delimiter);
    if (last == nullptr) {
        path[0] = '\0';
        return;
    }
    while (last > path && last[-1] == delimiter)
        --last;
    *last = '\0';
}

const char *ov_fs_utils_find_entry_name_in_path(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    const char *last = strrchr(path, delimiter);
    return last != nullptr ? last + 1 : path;
}

char *ov_fs_utils_find_entry_name_in_path(char *path)
{
    return const_cast<char *>(ov_fs_utils_find_entry_name_in_path(static_cast<const char *>(path)));
}

gboolean ov_fs_utils_is_file_name_in_path(const char *path, const char *name)
{
    g_return_val_if_fail(path != nullptr && name != nullptr, FALSE);
    const std::string_view whole(path);
    const std::string_view file_name(name);
    if (!whole.ends_with(file_name))
        return FALSE;
    const size_t start = whole.size() - file_name.size();
    return start == 0 || whole[start - 1] == delimiter;
}

char *ov_fs_utils_end_folder_path_with_a_single_delimiter(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    const std::string_view folder(path);
    if (folder.empty())
        return g_strdup("");
    const size_t length = length_without_ending_delimiters(folder);
    return g_strdup_printf("%.*s%c", static_cast<int>(length), path, delimiter);
}

char *ov_fs_utils_create_path_in_folder_(const char *folder, const char *const *names, int count)
{
    g_return_val_if_fail(folder != nullptr && (names != nullptr || count <= 0), nullptr);
    const std::string_view folder_text(folder);
    const size_t folder_length = length_without_ending_delimiters(folder_text);
    GString *path = g_string_new_len(folder, static_cast<gssize>(folder_length));
    // The root folder keeps its delimiter: "/" and "a" make "/a".
    const bool is_root = folder_length == 0 && !folder_text.empty();
    if (is_root)
        g_string_append_c(path, delimiter);
    for (int i = 0; i < count; ++i) {
        if (names[i] == nullptr || names[i][0] == '\0')
            continue;
        if (path->len > (is_root ? 1u : 0u))
            g_string_append_c(path, delimiter);
        g_string_append(path, names[i]);
    }
    return g_string_free(path, FALSE);
}

char *ov_fs_utils_create_path_in_folder(const char *folder, ...)
{
    std::vector<const char *> names;
    va_list args;
    va_start(args, folder);
    while (const char *name = va_arg(args, const char *))
        names.push_back(name);
    va_end(args);
    return ov_fs_utils_create_path_in_folder_(folder, names.data(), static_cast<int>(names.size()));
}

gboolean ov::for_each_folder_entry(const char *path, const std::function<bool(ov::GStr &name)> &visit)
{
    DIR *folder = ov_fs_utils_open_folder(path);
    if (folder == nullptr)
        return FALSE;
    bool ok = true;
    while (ok) {
        char *raw_name = nullptr;
        if (!ov_fs_utils_next_folder_entry(folder, &raw_name)) {
            ok = false;
            break;
        }
        ov::GStr name(raw_name);
        if (!name)
            break;
        if (std::strcmp(name.get(), ".") != 0 && std::strcmp(name.get(), "..") != 0)
            ok = visit(name);
    }
    return ov_fs_utils_close_folder(folder) && ok;
}
