// Codesets: any bytes read without harm; what reads writes bytes that read
// back and write the same bytes again, and its remarks stand where adding
// them one at a time, sorted, puts them.
#include "docs/codeset.h"
#include "docs/codeset_io.h"

#include "core/error.h"
#include "core/list.h"
#include "core/raii.h"
#include "fuzz_support.h"

namespace
{

using CodesetPtr = ov::Owned<OvCodeset, ov_codeset_destroy>;
using RemarkListPtr = ov::Owned<OvRemarkList, ov_remark_list_destroy>;

std::string written(const OvCodeset *codeset, const char *name)
{
    const std::string path = ov::fuzz::path_in_folder(name);
    OV_FUZZ_CHECK(ov_codeset_io_write_to_file(codeset, path.c_str()));
    return ov::fuzz::read_bytes(path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string path = ov::fuzz::path_in_folder("in.codeset");
    ov::fuzz::write_bytes(path, data, size);
    CodesetPtr codeset(ov_codeset_io_read_from_file(path.c_str()));
    ov_error_clear();
    if (!codeset)
        return 0;

    // Added last to first, one at a time.
    RemarkListPtr one_by_one(ov_remark_list_new());
    for (OvRemark *remark = codeset->remarks->last(); remark != codeset->remarks->head;
         remark = remark->previous)
        ov_remark_list_add_remark_sorted(one_by_one.get(), ov_remark_clone(remark));
    OV_FUZZ_CHECK(ov::list_count(*one_by_one) == ov::list_count(*codeset->remarks));
    for (auto a = one_by_one->begin(), b = codeset->remarks->begin(); a != one_by_one->end(); ++a, ++b)
        OV_FUZZ_CHECK(g_strcmp0((*a)->code, (*b)->code) == 0);

    const std::string first = written(codeset.get(), "first.codeset");
    CodesetPtr again(ov_codeset_io_read_from_file(ov::fuzz::path_in_folder("first.codeset").c_str()));
    OV_FUZZ_CHECK(again != nullptr);
    OV_FUZZ_CHECK(written(again.get(), "second.codeset") == first);
    return 0;
}
