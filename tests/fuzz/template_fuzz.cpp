// Templates: any bytes read without harm; what reads writes bytes that read
// back and write the same bytes again; the list heading reads too.
#include "docs/template.h"
#include "docs/template_io.h"

#include "core/error.h"
#include "core/raii.h"
#include "fuzz_support.h"

namespace
{

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;

std::string written(const ov_template *tmpl, const char *name)
{
    const std::string path = ov::fuzz::path_in_folder(name);
    OV_FUZZ_CHECK(ov_template_io_write_to_file(tmpl, path.c_str()));
    return ov::fuzz::read_bytes(path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string path = ov::fuzz::path_in_folder("in.template");
    ov::fuzz::write_bytes(path, data, size);
    g_free(ov_template_io_format_ui_string(path.c_str()));
    TemplatePtr tmpl(ov_template_io_read_from_file(path.c_str()));
    ov_error_clear();
    if (!tmpl)
        return 0;
    const std::string first = written(tmpl.get(), "first.template");
    TemplatePtr again(ov_template_io_read_from_file(ov::fuzz::path_in_folder("first.template").c_str()));
    OV_FUZZ_CHECK(again != nullptr);
    OV_FUZZ_CHECK(written(again.get(), "second.template") == first);
    return 0;
}
