// Measures the sorted insertion of remarks and the reading and writing of a
// large codeset file. Run by hand: ov_bench_codeset [remark count].
//
// Sorted insertion walks the list from the front for every remark, so
// building a list is quadratic in the number of remarks; the figures show
// what that costs at the sizes codesets have.
#include "core/error.h"
#include "core/raii.h"
#include "docs/codeset.h"
#include "docs/codeset_io.h"
#include "docs/remark.h"

#include <glib/gstdio.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace
{

double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Codes such as "K12", "k0012" and "K12a", with three-language descriptions.
std::vector<OvRemark *> make_remarks(int count)
{
    std::vector<OvRemark *> remarks;
    const OvLocale *locales[] = {ov_locale_get_uk_english(), ov_locale_get_swedish_swedish(),
                                 ov_locale_get_by_tag("de-de")};
    const char *words[] = {"Scratch on the surface", "Repa i ytan",
                           "Kratzer auf der Oberfl\xe4"
                           "che"};
    for (int i = 0; i < count; i++) {
        OvRemark *remark = ov_remark_new();
        char letter = static_cast<char>('A' + i % 26);
        remark->code = i % 7 == 0 ? g_strdup_printf("%c%04d", letter + 32, i / 26)
                                  : g_strdup_printf("%c%d%s", letter, i / 26, i % 5 == 0 ? "a" : "");
        for (int l = 0; l < 3; l++) {
            ov::GStr text = ov::gstr(g_strdup_printf("%s %d", words[l], i));
            ov_langstr_set_translation(&remark->description, locales[l], text.get());
        }
        remarks.push_back(remark);
    }
    return remarks;
}

double time_sorted_insertion(std::vector<OvRemark *> order)
{
    OvRemarkList *list = ov_remark_list_new();
    auto start = std::chrono::steady_clock::now();
    for (OvRemark *remark : order)
        ov_remark_list_add_remark_sorted(list, ov_remark_clone(remark));
    double elapsed = seconds_since(start);
    ov_remark_list_destroy(list);
    return elapsed;
}

long peak_rss_kib()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char **argv)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : 5000;
    std::vector<OvRemark *> remarks = make_remarks(count);

    std::vector<OvRemark *> shuffled = remarks;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(42));
    OvRemarkList *sorted = ov_remark_list_new();
    for (OvRemark *remark : remarks)
        ov_remark_list_add_remark_sorted(sorted, ov_remark_clone(remark));
    std::vector<OvRemark *> ascending;
    for (OvRemark *remark : *sorted)
        ascending.push_back(remark);
    std::vector<OvRemark *> descending(ascending.rbegin(), ascending.rend());

    std::printf("Sorted insertion of %d remarks\n", count);
    std::printf("  random order:     %8.3f s\n", time_sorted_insertion(shuffled));
    std::printf("  ascending order:  %8.3f s (each walks the whole list)\n",
                time_sorted_insertion(ascending));
    std::printf("  descending order: %8.3f s (each stops at the first)\n", time_sorted_insertion(descending));

    OvCodeset *codeset = ov_codeset_new();
    ov_langstr_set_translation(&codeset->name, ov_locale_get_uk_english(), "Benchmark remarks");
    ov_remark_list_copy_remarks(codeset->remarks, sorted);
    ov_remark_list_destroy(sorted);
    for (OvRemark *remark : remarks)
        ov_remark_destroy(remark);

    ov::GStr folder = ov::gstr(g_dir_make_tmp("ov-codeset-bench-XXXXXX", nullptr));
    ov::GStr path = ov::gstr(g_build_filename(folder.get(), "bench.codeset", nullptr));

    auto start = std::chrono::steady_clock::now();
    if (!ov_codeset_io_write_to_file(codeset, path.get())) {
        std::fprintf(stderr, "%s\n", ov_error_get());
        return 1;
    }
    const double write_time = seconds_since(start);
    ov_codeset_destroy(codeset);

    GStatBuf info;
    g_stat(path.get(), &info);
    const long rss_before_read = peak_rss_kib();

    start = std::chrono::steady_clock::now();
    OvCodeset *read = ov_codeset_io_read_from_file(path.get());
    const double read_time = seconds_since(start);
    if (read == nullptr) {
        std::fprintf(stderr, "%s\n", ov_error_get());
        return 1;
    }
    ov_codeset_destroy(read);

    ov::GStr command = ov::gstr(g_strdup_printf("xmllint --noout '%s'", path.get()));
    start = std::chrono::steady_clock::now();
    const int lint_status = std::system(command.get());
    const double lint_time = seconds_since(start);

    std::printf("Codeset file of %d remarks, %.1f MB\n", count, info.st_size / 1e6);
    std::printf("  write:            %8.3f s (write / read %.2f)\n", write_time, write_time / read_time);
    std::printf("  read:             %8.3f s\n", read_time);
    if (lint_status == 0)
        std::printf("  xmllint --noout:  %8.3f s (read / xmllint %.2f)\n", lint_time, read_time / lint_time);
    std::printf("  peak RSS:         %8.1f MB (before reading %.1f MB)\n", peak_rss_kib() / 1024.0,
                rss_before_read / 1024.0);

    g_unlink(path.get());
    g_rmdir(folder.get());
    return 0;
}
