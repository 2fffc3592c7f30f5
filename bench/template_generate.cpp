// Writes a large template for the template benchmark: 2,000 blocks of ten
// rows, every text in UK English, Swedish and German (about 10 MB).
//
//   ov_bench_template_generate OUTPUT [BLOCKS]
#include "template_generator.h"

#include "core/error.h"
#include "docs/template_io.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT [BLOCKS]\n", argv[0]);
        return 2;
    }
    const int blocks = argc > 2 ? std::atoi(argv[2]) : 2000;
    ov_template *tmpl = ov_bench_make_large_template(blocks);
    const gboolean ok = ov_template_io_write_to_file(tmpl, argv[1]);
    ov_template_destroy(tmpl);
    if (!ok) {
        std::fprintf(stderr, "%s\n", ov_error_get());
        return 1;
    }
    return 0;
}
