// Archives in memory: every entry of any bytes opens, reads and parses as
// XML without harm, within a bound on what is read.
#include "core/error.h"
#include "core/raii.h"
#include "core/xml.h"
#include "core/zip.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    zip_t *archive = ov_zip_open_archive_for_reading_from_buffer(data, size);
    if (archive == nullptr) {
        ov_error_clear();
        return 0;
    }
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count && index < 16; ++index) {
        const char *name = zip_get_name(archive, static_cast<zip_uint64_t>(index), 0);
        if (name == nullptr)
            continue;
        if (zip_file_t *file = ov_zip_open_file(archive, name)) {
            char buffer[4096];
            gsize read = 0, total = 0;
            while (total < (1u << 22) && ov_zip_read_from_file(file, buffer, sizeof buffer, &read) &&
                   read > 0)
                total += read;
            ov_zip_close_file(file);
        }
        if (zip_stat_t stat; ov_zip_stat_file(archive, name, &stat) && stat.size < (1u << 22))
            ov_xml_free_doc(ov_xml_parse_zip_file(archive, name));
        ov_error_clear();
    }
    ov_zip_close_archive(archive);
    ov_error_clear();
    return 0;
}
