// Codesets: any bytes read without harm; what reads writes bytes that read
// back and write the same bytes again, and its remarks stand where adding
// them one at a time, sorted, puts them.
#include "docs/codeset.h"
#include "docs/codeset_io.h"

#include "core/list.h"
#include "core/raii.h"
#include "fuzz_support.h"

namespace
{

// Added last to first, one at a time.
void check_order(const OvCodeset *codeset)
{
    ov::Owned<OvRemarkList, ov_remark_list_destroy> one_by_one(ov_remark_list_new());
    for (OvRemark *remark = codeset->remarks->last(); remark != codeset->remarks->head;
         remark = remark->previous)
        ov_remark_list_add_remark_sorted(one_by_one.get(), ov_remark_clone(remark));
    OV_FUZZ_CHECK(ov::list_count(*one_by_one) == ov::list_count(*codeset->remarks));
    for (auto a = one_by_one->begin(), b = codeset->remarks->begin(); a != one_by_one->end(); ++a, ++b)
        OV_FUZZ_CHECK(g_strcmp0((*a)->code, (*b)->code) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ov::fuzz::check_round_trip<OvCodeset>(data, size, "in.codeset", ov_codeset_io_read_from_file,
                                          ov_codeset_io_write_to_file, ov_codeset_destroy, check_order);
    return 0;
}
