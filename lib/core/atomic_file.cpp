#include "core/atomic_file.h"

#include "core/error.h"
#include "core/raii.h"

#include <glib/gstdio.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{

struct AtomicFile {
    ov::GStr target_path;    // file-system encoding, symbolic links resolved
    ov::GStr temporary_path; // file-system encoding
    FILE *stream = nullptr;
    gboolean keeps_mode = FALSE;
    mode_t mode = 0;
};

// Sets the errno text with the sentence of the file-system layer on top.
void set_errno_error(int error_number, const char *sentence)
{
    errno = error_number;
    ov_error_set_from_errno();
    ov_error_append(sentence);
}

// The path to replace: a symbolic link is followed so that the link stays a
// link and its target gets the new contents.
ov::GStr resolve_target(const char *fs_path)
{
    struct stat info;
    if (lstat(fs_path, &info) == 0 && S_ISLNK(info.st_mode)) {
        char *resolved = realpath(fs_path, nullptr);
        if (resolved != nullptr) {
            ov::GStr copy = ov::gstr(g_strdup(resolved));
            free(resolved);
            return copy;
        }
    }
    return ov::gstr(g_strdup(fs_path));
}

void sync_folder_of(const char *fs_path)
{
    ov::GStr folder = ov::gstr(g_path_get_dirname(fs_path));
    int fd = open(folder.get(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    // Some file systems refuse to sync a folder; the rename has happened by
    // then, so that is no reason to report a failed save.
    fsync(fd);
    close(fd);
}

// Closes and removes the temporary file unless committed.
void discard(AtomicFile *file)
{
    if (file->stream != nullptr) {
        fclose(file->stream);
        g_unlink(file->temporary_path.get());
    }
    delete file;
}

using AtomicFilePtr = std::unique_ptr<AtomicFile, decltype(&discard)>;

// Creates the temporary file beside path; null with the error text of a
// failed file open on failure.
AtomicFilePtr open_temporary(const char *path)
{

    ov::GErrorPtr error;
    ov::GStr fs_path = ov::gstr(g_filename_from_utf8(path, -1, nullptr, nullptr, ov::out(error)));
    if (!fs_path) {
        ov_error_set_from_gerror_and_free(error.release());
        ov_error_append("Could not use filename.");
        return AtomicFilePtr(nullptr, discard);
    }

    AtomicFilePtr file(new AtomicFile, discard);
    file->target_path = resolve_target(fs_path.get());

    struct stat info;
    if (stat(file->target_path.get(), &info) == 0 && S_ISREG(info.st_mode)) {
        file->keeps_mode = TRUE;
        file->mode = info.st_mode & 07777;
    }

    file->temporary_path = ov::gstr(g_strconcat(file->target_path.get(), ".XXXXXX", nullptr));
    // The mode given here is narrowed by the umask, as for any new file.
    int fd = g_mkstemp_full(file->temporary_path.get(), O_RDWR | O_CLOEXEC, 0666);
    if (fd < 0) {
        set_errno_error(errno, "Cannot open file.");
        return AtomicFilePtr(nullptr, discard);
    }
    file->stream = fdopen(fd, "wb");
    if (file->stream == nullptr) {
        int saved = errno;
        close(fd);
        g_unlink(file->temporary_path.get());
        set_errno_error(saved, "Cannot open file.");
        return AtomicFilePtr(nullptr, discard);
    }
    return file;
}

// Flushes, syncs and closes the temporary file, gives it the old file's mode
// and renames it over the target, then syncs the folder. The temporary file
// is gone afterwards, renamed or removed.
bool commit(AtomicFile *file)
{
    FILE *stream = std::exchange(file->stream, nullptr);
    bool written = fflush(stream) == 0 && ferror(stream) == 0;
    if (written && file->keeps_mode)
        fchmod(fileno(stream), file->mode);
    written = written && fsync(fileno(stream)) == 0;
    written = (fclose(stream) == 0) && written;
    if (!written) {
        g_unlink(file->temporary_path.get());
        ov_error_set_file_io_writing();
        return false;
    }

    if (rename(file->temporary_path.get(), file->target_path.get()) != 0) {
        int saved = errno;
        g_unlink(file->temporary_path.get());
        set_errno_error(saved, "Cannot rename file/folder.");
        return false;
    }
    sync_folder_of(file->target_path.get());
    return true;
}

} // namespace

gboolean ov_atomic_file_write(const char *path, const std::function<bool(FILE *stream)> &writer,
                              const char *open_failure)
{
    g_return_val_if_fail(path != nullptr && writer, FALSE);
    AtomicFilePtr file = open_temporary(path);
    if (!file) {
        if (open_failure != nullptr)
            ov_error_append(open_failure);
        return FALSE;
    }
    if (!writer(file->stream))
        return FALSE;
    return commit(file.get());
}
