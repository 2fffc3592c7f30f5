// Builds large templates for the template benchmark.
#pragma once

#include "docs/template.h"

// A template with the given number of blocks of ten rows, every text in UK
// English, Swedish and German. One block in ten is basic data (its text
// fields carry contents and one checkbox per row is ticked); the others are
// spread over two report types of ten segments each.
ov_template *ov_bench_make_large_template(int block_count);

// A template whose one report type holds every block (ten segments, blocks
// of ten rows): one long page for the text sheet editor. Rows hold a text
// field and one to three checkboxes.
ov_template *ov_bench_make_long_sheet_template(int block_count);
