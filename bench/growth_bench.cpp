// Prints how the readers and the remark list operations grow with the size
// of what they handle, at 1k, 10k and 100k elements, so that growth can be
// read off (each step is ten times the last: about 10x per step is linear,
// 100x quadratic). Times are processor time of one run; memory is the peak
// resident size of a child that reads the file, over the file's size.
//
//   ov_bench_growth                 the table
//   ov_bench_growth --files FOLDER  writes the codesets the whole-process
//                                   comparisons with xmllint read (5,000
//                                   remarks, and 100,000 shuffled)
//   ov_bench_growth --read template|codeset FILE
//                                   reads one file (for hyperfine)
#include "core/error.h"
#include "core/raii.h"
#include "docs/codeset.h"
#include "docs/codeset_io.h"
#include "docs/remark.h"
#include "docs/template.h"
#include "docs/template_io.h"

#include <glib.h>
#include <glib/gstdio.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using RemarkListPtr = ov::Owned<OvRemarkList, ov_remark_list_destroy>;

double cpu_seconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double timed(const std::function<void()> &work)
{
    const double start = cpu_seconds();
    work();
    return cpu_seconds() - start;
}

// A figure of this process's memory in bytes: "VmHWM" (the peak so far, per
// address space, so a fresh process starts anew unlike getrusage's figure)
// or "VmRSS" (now).
double own_memory_bytes(const char *field)
{
    gchar *status = nullptr;
    double kib = 0;
    if (g_file_get_contents("/proc/self/status", &status, nullptr, nullptr))
        if (const char *line = std::strstr(status, field))
            kib = g_ascii_strtod(line + std::strlen(field) + 1, nullptr);
    g_free(status);
    return kib * 1024;
}

// Peak resident bytes of a fresh process of this program run with the
// arguments and "--peak", and what it held at the end of its work.
std::pair<double, double> child_peak_bytes(std::vector<std::string> arguments)
{
    std::vector<char *> argv = {const_cast<char *>("/proc/self/exe")};
    for (std::string &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(const_cast<char *>("--peak"));
    argv.push_back(nullptr);
    gchar *output = nullptr;
    std::pair<double, double> figures;
    if (g_spawn_sync(nullptr, argv.data(), nullptr, G_SPAWN_DEFAULT, nullptr, nullptr, &output, nullptr,
                     nullptr, nullptr)) {
        char *rest = nullptr;
        figures.first = g_ascii_strtod(output, &rest);
        figures.second = g_ascii_strtod(rest, nullptr);
    }
    g_free(output);
    return figures;
}

double file_size(const std::string &path)
{
    struct stat info = {};
    stat(path.c_str(), &info);
    return static_cast<double>(info.st_size);
}

void write_text(const std::string &path, const std::string &text)
{
    g_file_set_contents(path.c_str(), text.data(), static_cast<gssize>(text.size()), nullptr);
}

const std::string report_type =
    "<report-type><name lang=\"en-uk\">R</name><segment><block><row><header lang=\"en-uk\">H</header>"
    "</row></block></segment></report-type>\n";

// A template whose name has n undefined-language translations.
std::string untagged_template(int n)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<template>\n";
    for (int i = 0; i < n; ++i)
        text += "\t<name lang=\"\">Name number " + std::to_string(i) + "</name>\n";
    return text + report_type + "</template>\n";
}

std::string row(int i)
{
    const std::string number = std::to_string(i);
    return "\t\t\t\t<row>\n\t\t\t\t\t<header lang=\"en-uk\">Row " + number +
           "</header>\n\t\t\t\t\t<header lang=\"sv\">Rad " + number +
           "</header>\n\t\t\t\t\t<textfield/>\n\t\t\t\t\t<checkbox>\n\t\t\t\t\t\t<label "
           "lang=\"en-uk\">Yes</label>"
           "\n\t\t\t\t\t</checkbox>\n\t\t\t\t</row>\n";
}

const std::string template_head =
    "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<template>\n\t<name lang=\"en-uk\">Big"
    "</name>\n\t<version>1</version>\n\t<report-type>\n\t\t<name lang=\"en-uk\">R</name>\n";
const std::string template_tail = "\t</report-type>\n</template>\n";

// A template of n rows, all in one block.
std::string one_block_template(int n)
{
    std::string text = template_head + "\t\t<segment>\n\t\t\t<block>\n";
    for (int i = 0; i < n; ++i)
        text += row(i);
    return text + "\t\t\t</block>\n\t\t</segment>\n" + template_tail;
}

// The other extreme: n blocks of one row each, ten to a segment, every
// segment and block with a header.
std::string one_row_blocks_template(int n)
{
    std::string text = template_head;
    for (int i = 0; i < n; ++i) {
        if (i % 10 == 0)
            text += "\t\t<segment>\n\t\t\t<header lang=\"en-uk\">Segment " + std::to_string(i / 10) +
                    "</header>\n";
        text += "\t\t\t<block>\n\t\t\t\t<header lang=\"en-uk\">Block " + std::to_string(i) + "</header>\n" +
                row(i) + "\t\t\t</block>\n";
        if (i % 10 == 9 || i == n - 1)
            text += "\t\t</segment>\n";
    }
    return text + template_tail;
}

std::string code(int i)
{
    return "K" + std::to_string(i);
}

// A codeset of the codes in the given order.
std::string codeset_file(const std::vector<int> &order)
{
    std::string text =
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<codeset>\n\t<name lang=\"en-uk\">C</name>\n";
    for (int i : order)
        text += "\t<remark>\n\t\t<code>" + code(i) + "</code>\n\t\t<description lang=\"en-uk\">Remark " +
                std::to_string(i) + "</description>\n\t\t<description lang=\"sv\">Anm\xe4rkning " +
                std::to_string(i) + "</description>\n\t</remark>\n";
    return text + "</codeset>\n";
}

RemarkListPtr remark_list(const std::vector<int> &order, const char *text)
{
    RemarkListPtr list(ov_remark_list_new());
    for (int i : order) {
        OvRemark *remark = ov_remark_new();
        remark->code = g_strdup(code(i).c_str());
        ov_langstr_set_translation(&remark->description, ov_locale_get_uk_english(), text);
        ov_remark_list_add_remark_last(list.get(), remark);
    }
    return list;
}

std::vector<int> shuffled(int n, unsigned seed)
{
    std::vector<int> order(static_cast<size_t>(n));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    return order;
}

void check(bool ok)
{
    if (!ok) {
        std::fprintf(stderr, "failed: %s\n", ov_error_get());
        std::exit(1);
    }
}

void print_table(const std::string &folder)
{
    const int sizes[] = {1000, 10000, 100000};
    const std::string path = folder + "/file";
    std::printf("%-58s %10s %10s %10s\n", "operation", "1k", "10k", "100k");

    auto line = [&](const char *what, const char *unit, const std::function<double(int)> &measure) {
        std::printf("%-58s", what);
        for (int n : sizes) {
            std::printf(" %8.3f%-2s", measure(n), unit);
            std::fflush(stdout);
        }
        std::printf("\n");
    };

    line("template: a text with N untagged translations", " s", [&](int n) {
        write_text(path, untagged_template(n));
        return timed([&] {
            ov_template *tmpl = ov_template_io_read_from_file(path.c_str());
            check(tmpl != nullptr);
            ov_template_destroy(tmpl);
        });
    });
    line("codeset: N remarks in descending order, read", " s", [&](int n) {
        std::vector<int> order(static_cast<size_t>(n));
        std::iota(order.rbegin(), order.rend(), 0);
        write_text(path, codeset_file(order));
        return timed([&] {
            OvCodeset *codeset = ov_codeset_io_read_from_file(path.c_str());
            check(codeset != nullptr);
            ov_codeset_destroy(codeset);
        });
    });
    line("remarks: N in random order, inserted sorted", " s", [&](int n) {
        RemarkListPtr list(ov_remark_list_new()), source = remark_list(shuffled(n, 1), "x");
        return timed([&] { ov_remark_list_add_remarks_sorted(list.get(), source.get()); });
    });
    line("remarks: N merged into N (half the codes shared)", " s", [&](int n) {
        std::vector<int> base = shuffled(n, 2), others = shuffled(n, 3);
        for (int &i : others)
            i += n / 2;
        RemarkListPtr list(ov_remark_list_new()), source = remark_list(base, "x");
        ov_remark_list_add_remarks_sorted(list.get(), source.get());
        RemarkListPtr merged = remark_list(others, "x");
        return timed([&] { ov_remark_list_merge_remarks(list.get(), merged.get()); });
    });
    line("template list: one template of N rows", " s", [&](int n) {
        const std::string list_folder = folder + "/list";
        g_mkdir(list_folder.c_str(), 0700);
        write_text(list_folder + "/big.template", one_block_template(n));
        return timed([&] {
            ov_template_list *list = ov_template_list_load_from_folder(list_folder.c_str());
            check(list->entries.first() != list->entries.tail);
            ov_template_list_destroy(list);
        });
    });
    // Reading needs what the model it builds holds, and the reader's own
    // memory on top: both are given.
    std::pair<double, double> held[std::size(sizes)];
    size_t at = 0;
    line("template: N rows in one block, peak resident / file", " x", [&](int n) {
        write_text(path, one_block_template(n));
        const double base = child_peak_bytes({"--idle"}).first;
        const auto [peak, model] = child_peak_bytes({"--read", "template", path});
        held[at++] = {model - base, file_size(path)};
        return (peak - base) / file_size(path);
    });
    at = 0;
    line("template: the same, model held after reading / file", " x", [&](int) {
        const auto [model, size] = held[at++];
        return model / size;
    });
    line("template: N blocks of one row, peak resident / file", " x", [&](int n) {
        write_text(path, one_row_blocks_template(n));
        const double base = child_peak_bytes({"--idle"}).first;
        return (child_peak_bytes({"--read", "template", path}).first - base) / file_size(path);
    });
}

} // namespace

int main(int argc, char **argv)
{
    const bool peak = argc > 1 && std::strcmp(argv[argc - 1], "--peak") == 0;
    if (peak)
        --argc;
    if (argc == 2 && std::strcmp(argv[1], "--idle") == 0) {
        std::printf("%.0f\n", own_memory_bytes("VmHWM:"));
        return 0;
    }
    if (argc == 4 && std::strcmp(argv[1], "--read") == 0) {
        double held = 0;
        if (std::strcmp(argv[2], "template") == 0) {
            ov_template *tmpl = ov_template_io_read_from_file(argv[3]);
            check(tmpl != nullptr);
            held = peak ? own_memory_bytes("VmRSS:") : 0;
            ov_template_destroy(tmpl);
        } else {
            OvCodeset *codeset = ov_codeset_io_read_from_file(argv[3]);
            check(codeset != nullptr);
            held = peak ? own_memory_bytes("VmRSS:") : 0;
            ov_codeset_destroy(codeset);
        }
        if (peak)
            std::printf("%.0f %.0f\n", own_memory_bytes("VmHWM:"), held);
        return 0;
    }
    if (argc == 3 && std::strcmp(argv[1], "--files") == 0) {
        std::vector<int> ascending(5000);
        std::iota(ascending.begin(), ascending.end(), 0);
        write_text(std::string(argv[2]) + "/remarks-5000.codeset", codeset_file(ascending));
        write_text(std::string(argv[2]) + "/remarks-100000-shuffled.codeset",
                   codeset_file(shuffled(100000, 4)));
        return 0;
    }
    gchar *folder = g_dir_make_tmp("ov-growth-XXXXXX", nullptr);
    print_table(folder);
    ov::GStr command(g_strdup_printf("rm -rf '%s'", folder));
    g_free(folder);
    return system(command.get()) == 0 ? 0 : 1;
}
