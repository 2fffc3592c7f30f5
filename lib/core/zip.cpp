#include "core/zip.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"

namespace
{

// A libzip error record that finalises itself.
class ZipError
{
  public:
    ZipError() { zip_error_init(&error_); }
    ZipError(const ZipError &) = delete;
    ZipError &operator=(const ZipError &) = delete;
    ~ZipError() { zip_error_fini(&error_); }
    zip_error_t *get() { return &error_; }

    // Sets libzip's text with the given sentence on top.
    void report(const char *sentence)
    {
        ov_error_set_from_zip_error(&error_);
        ov_error_append(sentence);
    }

  private:
    zip_error_t error_;
};

// Sets the text of a record that libzip owns (an archive's, an entry's, a
// source's). zip_error_strerror keeps the text it makes in the record, and
// libzip does not release that text with a source, so the text is made from
// a copy of our own.
void set_text(const zip_error_t *error)
{
    ZipError copy;
    zip_error_set(copy.get(), zip_error_code_zip(error), zip_error_code_system(error));
    ov_error_set_from_zip_error(copy.get());
}

void report(const zip_error_t *error, const char *sentence)
{
    set_text(error);
    ov_error_append(sentence);
}

constexpr const char *cannot_open_from_source = "Could not open data from source.";
constexpr const char *cannot_create_buffer_source = "Could not create buffer data source.";

} // namespace

zip_t *ov_zip_open_archive_for_reading(const char *path)
{
    FILE *file = ov_fs_utils_open_file(path, "rb");
    if (file == nullptr) {
        ov_error_append("Could not open file.");
        return nullptr;
    }
    // The source takes the stream once it exists.
    ov::ZipSourcePtr source(ov_zip_create_filep_source(file, 0, -1));
    if (source == nullptr) {
        fclose(file);
        ov_error_append("Could not open file.");
        return nullptr;
    }
    zip_t *archive = ov_zip_open_archive_for_reading_from_source(source.get());
    if (archive == nullptr) {
        ov_error_append("Could not open file.");
        return nullptr;
    }
    source.release();
    return archive;
}

zip_t *ov_zip_open_archive_for_reading_from_buffer(const void *data, gsize length)
{
    return ov_zip_open_archive_from_buffer(data, length, ZIP_RDONLY);
}

zip_t *ov_zip_open_archive_from_buffer(const void *data, gsize length, int flags)
{
    ov::ZipSourcePtr source(ov_zip_create_buffer_source(data, length, FALSE));
    if (source == nullptr)
        return nullptr;
    zip_t *archive = ov_zip_open_archive_from_source(source.get(), flags);
    if (archive != nullptr)
        source.release();
    return archive;
}

zip_t *ov_zip_open_archive_for_reading_from_source(zip_source_t *source)
{
    return ov_zip_open_archive_from_source(source, ZIP_RDONLY);
}

zip_t *ov_zip_open_archive_from_source(zip_source_t *source, int flags)
{
    ZipError error;
    zip_t *archive = zip_open_from_source(source, flags, error.get());
    if (archive == nullptr)
        error.report(cannot_open_from_source);
    return archive;
}

gboolean ov_zip_close_archive(zip_t *archive)
{
    if (archive == nullptr)
        return TRUE;
    if (zip_close(archive) == 0)
        return TRUE;
    // zip_close leaves the archive open when it fails; give it up anyway
    // so that closing always releases it.
    set_text(zip_get_error(archive));
    zip_discard(archive);
    return FALSE;
}

zip_source_t *ov_zip_create_buffer_source(const void *data, gsize length, gboolean free_data)
{
    ZipError error;
    zip_source_t *source = zip_source_buffer_create(data, length, free_data ? 1 : 0, error.get());
    if (source == nullptr)
        error.report(cannot_create_buffer_source);
    return source;
}

zip_source_t *ov_zip_create_filep_source(FILE *file, zip_uint64_t start, zip_int64_t length)
{
    ZipError error;
    zip_source_t *source = zip_source_filep_create(file, start, length, error.get());
    if (source == nullptr)
        error.report("Could not create file data source.");
    return source;
}

zip_source_t *ov_zip_create_function_source(zip_source_callback callback, void *user_data)
{
    ZipError error;
    zip_source_t *source = zip_source_function_create(callback, user_data, error.get());
    if (source == nullptr)
        error.report("Could not create function data source.");
    return source;
}

void ov_zip_free_source(zip_source_t *source)
{
    if (source != nullptr)
        zip_source_free(source);
}

gboolean ov_zip_add_file_to_archive_from_source(zip_t *archive, const char *entry_name, gboolean overwrite,
                                                zip_source_t *source)
{
    zip_flags_t flags = ZIP_FL_ENC_UTF_8;
    if (overwrite)
        flags |= ZIP_FL_OVERWRITE;
    if (zip_file_add(archive, entry_name, source, flags) < 0) {
        report(zip_get_error(archive), "Could not add file from source.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_zip_add_file_to_archive_from_buffer(zip_t *archive, const char *entry_name, gboolean overwrite,
                                                const void *data, gsize length)
{
    ov::ZipSourcePtr source(ov_zip_create_buffer_source(data, length, FALSE));
    if (source == nullptr ||
        !ov_zip_add_file_to_archive_from_source(archive, entry_name, overwrite, source.get())) {
        ov_error_append("Could not add file from buffer.");
        return FALSE;
    }
    source.release();
    return TRUE;
}

zip_file_t *ov_zip_open_file(zip_t *archive, const char *entry_name)
{
    zip_file_t *file = zip_fopen(archive, entry_name, 0);
    if (file == nullptr)
        report(zip_get_error(archive), "Could not open compressed file.");
    return file;
}

gboolean ov_zip_close_file(zip_file_t *file)
{
    if (file == nullptr)
        return TRUE;
    const int code = zip_fclose(file);
    if (code != 0) {
        ov_error_set_from_zip_error_code(code);
        return FALSE;
    }
    return TRUE;
}

gboolean ov_zip_open_source(zip_source_t *source)
{
    if (zip_source_open(source) < 0) {
        report(zip_source_error(source), "Could not open source.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_zip_close_source(zip_source_t *source)
{
    if (zip_source_close(source) < 0) {
        report(zip_source_error(source), "Could not close source.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_zip_read_from_file(zip_file_t *file, void *buffer, gsize count, gsize *out_read)
{
    const zip_int64_t read = zip_fread(file, buffer, count);
    if (read < 0) {
        *out_read = 0;
        report(zip_file_get_error(file), "Error reading compressed file.");
        return FALSE;
    }
    *out_read = static_cast<gsize>(read);
    return TRUE;
}

gboolean ov_zip_read_from_source(zip_source_t *source, void *buffer, gsize count, gsize *out_read)
{
    const zip_int64_t read = zip_source_read(source, buffer, count);
    if (read < 0) {
        *out_read = 0;
        report(zip_source_error(source), "Error reading source data.");
        return FALSE;
    }
    *out_read = static_cast<gsize>(read);
    return TRUE;
}

gboolean ov_zip_stat_file(zip_t *archive, const char *entry_name, zip_stat_t *out_stat)
{
    if (zip_stat(archive, entry_name, 0, out_stat) < 0) {
        report(zip_get_error(archive), "Could not stat compressed file.");
        return FALSE;
    }
    return TRUE;
}

gboolean ov_zip_stat_source(zip_source_t *source, zip_stat_t *out_stat)
{
    if (zip_source_stat(source, out_stat) < 0) {
        report(zip_source_error(source), "Could not stat source.");
        return FALSE;
    }
    return TRUE;
}
