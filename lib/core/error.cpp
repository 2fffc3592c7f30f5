#include "core/error.h"

#include <cerrno>
#include <cstring>

const char *ov_error_message_unknown = "An unknown program error has occured.";

namespace
{

char *buffer = nullptr;
gboolean out_of_memory = FALSE;

constexpr const char *informative_out_of_memory =
    "The program has run out of memory.\n\n"
    "Suggestion: Consider increasing memory by adding more RAM to the computer or by\n"
    "increasing the amount of virtual memory on your system.\n\n"
    "Alternatively, it could be that you have too many things open/running on your\n"
    "computer simultaneously.";

// Takes ownership of text; every setter goes through here.
void replace_with(char *text)
{
    g_free(buffer);
    buffer = text;
    out_of_memory = FALSE;
}

// Puts an owned text on top of the buffer.
void append_owned(char *text)
{
    if (buffer == nullptr) {
        buffer = text;
        return;
    }
    char *joined = g_strdup_printf("%s\n\n%s", text, buffer);
    g_free(text);
    g_free(buffer);
    buffer = joined;
}

} // namespace

const char *ov_error_set(const char *text)
{
    replace_with(g_strdup(text));
    return buffer;
}

void ov_error_set_utf8_printf(const char *format, ...)
{
    ov_error_clear();
    va_list args;
    va_start(args, format);
    char *text = g_strdup_vprintf(format, args);
    va_end(args);
    replace_with(text);
}

void ov_error_append(const char *text)
{
    append_owned(g_strdup(text));
}

void ov_error_append_utf8_printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    ov_error_append_utf8_vprintf(format, args);
    va_end(args);
}

void ov_error_append_utf8_vprintf(const char *format, va_list args)
{
    append_owned(g_strdup_vprintf(format, args));
}

void ov_error_clear()
{
    replace_with(nullptr);
}

const char *ov_error_get()
{
    return buffer != nullptr ? buffer : "";
}

void ov_error_set_unknown()
{
    ov_error_set(ov_error_message_unknown);
}

void ov_error_set_file_io_reading()
{
    ov_error_set("File I/O error when reading file.");
}

void ov_error_set_file_io_reading_broken_file()
{
    ov_error_set("File I/O error when reading file: The file is broken.");
}

void ov_error_set_file_io_writing()
{
    ov_error_set("File I/O error when writing to file.");
}

void ov_error_set_not_enough_diskspace()
{
    ov_error_set("There is not enough disk space on this computer.");
}

void ov_error_set_out_of_memory()
{
    ov_error_set("The program has run out of memory.");
    out_of_memory = TRUE;
}

void ov_error_set_informative_out_of_memory()
{
    ov_error_set(informative_out_of_memory);
    out_of_memory = TRUE;
}

void ov_error_set_from_errno()
{
    const int code = errno;
    replace_with(g_strdup_printf("Error %d: %s", code, g_strerror(code)));
}

void ov_error_set_from_gerror_and_free(GError *error)
{
    if (error == nullptr) {
        ov_error_set_unknown();
        return;
    }
    replace_with(g_strdup_printf("GError %d: %s", error->code, error->message));
    g_error_free(error);
}

void ov_error_set_from_zip_error(zip_error_t *error)
{
    // zip_error_strerror caches its text in the record, and records that
    // libzip owns are not always finished: describe a private copy instead.
    zip_error_t copy;
    zip_error_init(&copy);
    zip_error_set(&copy, zip_error_code_zip(error), zip_error_code_system(error));
    ov_error_set(zip_error_strerror(&copy));
    zip_error_fini(&copy);
}

void ov_error_set_from_zip_error_code(int code)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_error_init_with_code(&error, code);
    ov_error_set(zip_error_strerror(&error));
    zip_error_fini(&error);
}

void ov_error_set_from_cairo_status(cairo_status_t status)
{
    switch (status) {
    case CAIRO_STATUS_NO_MEMORY:
        ov_error_set_out_of_memory();
        break;
    case CAIRO_STATUS_READ_ERROR:
        ov_error_set("Error reading data.");
        break;
    case CAIRO_STATUS_WRITE_ERROR:
        ov_error_set("Error writing data.");
        break;
    case CAIRO_STATUS_FILE_NOT_FOUND:
        ov_error_set("File not found error.");
        break;
    case CAIRO_STATUS_PNG_ERROR:
        ov_error_set("PNG error.");
        break;
    default:
        ov_error_set("An internal error in the graphics subsystem occurred.");
        break;
    }
}

gboolean ov_error_did_run_out_of_memory()
{
    return out_of_memory;
}

gboolean ov_error_make_more_informative_if_out_of_memory()
{
    if (!out_of_memory)
        return FALSE;
    ov_error_set_informative_out_of_memory();
    return TRUE;
}

void ov_error_limit_line_count(int max_lines)
{
    if (buffer == nullptr || max_lines < 0)
        return;
    // The cut point lies just after the N-th line feed; a text with fewer
    // line feeds is left alone, one with exactly N still gets the note.
    char *cut = buffer;
    for (int found = 0; found < max_lines; ++found) {
        char *feed = std::strchr(cut, '\n');
        if (feed == nullptr)
            return;
        cut = feed + 1;
    }
    while (cut > buffer && cut[-1] == '\n')
        --cut;
    *cut = '\0';
    char *text = g_strdup_printf("%s\n\n(Error message truncated.)", buffer);
    const gboolean keep_flag = out_of_memory;
    replace_with(text);
    out_of_memory = keep_flag;
}
