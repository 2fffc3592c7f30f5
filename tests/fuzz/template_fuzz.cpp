// Templates: any bytes read without harm; what reads writes bytes that read
// back and write the same bytes again; the list heading reads too.
#include "docs/template.h"
#include "docs/template_io.h"

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ov::fuzz::write_bytes(ov::fuzz::path_in_folder("in.template"), data, size);
    g_free(ov_template_io_format_ui_string(ov::fuzz::path_in_folder("in.template").c_str()));
    ov::fuzz::check_round_trip<ov_template>(data, size, "in.template", ov_template_io_read_from_file,
                                            ov_template_io_write_to_file, ov_template_destroy);
    return 0;
}
