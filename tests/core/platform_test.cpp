// The Linux platform layer.
#include "core/platform.h"

#include "core/fs_utils.h"
#include "core/raii.h"
#include "core_test.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <thread>

namespace
{

using namespace ov::test;

std::string quote(const std::string &text)
{
    return str(ov_platform_escape_string_for_command_line(text.c_str()));
}

// Asks up to five seconds until ready() holds, for what another process does.
bool eventually(const std::function<bool()> &ready)
{
    for (int i = 0; i < 500 && !ready(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return ready();
}

class PlatformTest : public CoreTest
{
  protected:
    TempDir dir;
};

TEST_F(PlatformTest, TemporaryFilesAndOurOwnExecutable)
{
    EXPECT_EQ(str(ov_platform_get_temp_files_folder_path()), "/tmp");
    ov::FilePtr file(ov_platform_create_temp_file());
    EXPECT_TRUE(file != nullptr && fputs("scratch", file.get()) >= 0);

    // The start-up clean-up finds old printouts by this name.
    struct stat status;
    ASSERT_EQ(stat("/proc/self/exe", &status), 0);
    EXPECT_EQ(str(ov_platform_get_temp_legacy_printout_file_path()),
              str(g_strdup_printf("/tmp/orvane-%d.%d.odt", getpid(),
                                  static_cast<int>(status.st_size & 0x7fffffff))));

    const std::string own = str(g_file_read_link("/proc/self/exe", nullptr));
    EXPECT_EQ(str(ov_platform_get_exe_path(getpid())), own);
    EXPECT_EQ(str(ov_platform_get_install_folder_path()), str(g_path_get_dirname(own.c_str())));
    // Process ids never reach this value on Linux (pid_max is at most 2^22).
    EXPECT_EQ(ov_platform_get_exe_path(0x7ffffff0), nullptr);
    EXPECT_STREQ(ov_error_get(), "Error getting exe path from system.");
}

// Each hostile text must reach a program through /bin/sh unchanged, and
// nothing inside it may run.
TEST_F(PlatformTest, QuotedTextsSurviveTheShell)
{
    const std::string pwned = dir.file("pwned"), output = dir.file("out");
    for (const std::string &text :
         {std::string(), std::string("with  two spaces"), std::string("it's"), std::string("''"),
          std::string("\"double\" quotes"), "$(touch " + pwned + ")", "`touch " + pwned + "`",
          "a; touch " + pwned, std::string("$HOME ${PATH} $0"), std::string("back\\slash\\"),
          std::string("new\nline\ttab"), std::string("*.template ? [a-z]"), std::string("-n"),
          std::string("\xc3\xbcmlaut \xe2\x82\xac"), std::string("& | > < ! # ~")}) {
        const std::string script = "printf %s " + quote(text) + " > " + quote(output);
        ASSERT_TRUE(ov_platform_run_command_line_and_wait(("/bin/sh -c " + quote(script)).c_str()))
            << ov_error_get();
        EXPECT_EQ(read_file(output), text);
    }
    EXPECT_FALSE(file_exists(pwned));
}

TEST_F(PlatformTest, RunsCommandLinesWithAndWithoutWaiting)
{
    // A failing exit status still means the command ran.
    const std::string waited = dir.file("waited for"), started = dir.file("started");
    const std::string script = "sleep 0.3; echo finished > " + quote(waited) + "; exit 3";
    EXPECT_TRUE(ov_platform_run_command_line_and_wait(("/bin/sh -c " + quote(script)).c_str()));
    EXPECT_EQ(read_file(waited), "finished\n");
    EXPECT_TRUE(ov_platform_run_command_line(("/bin/sh -c " + quote("echo > " + quote(started))).c_str()));
    EXPECT_TRUE(eventually([&] { return file_exists(started); }));
    EXPECT_STREQ(ov_error_get(), "");

    for (const std::string &command_line :
         {quote(dir.file("no such program")), std::string("/bin/sh -c 'cut")})
        for (auto run : {ov_platform_run_command_line, ov_platform_run_command_line_and_wait}) {
            EXPECT_FALSE(run(command_line.c_str()));
            EXPECT_TRUE(g_str_has_prefix(result(FALSE).c_str(), "GError ")) << command_line;
        }
}

// Runs the launch in a child with its own desktop configuration, so that no
// real application of the user is ever started.
TEST_F(PlatformTest, OpensFilesWithTheDefaultApplication)
{
    const std::string root = dir.path(), document = dir.file("my 'report' $(x).txt"), copy = dir.file("got");
    const std::string viewer = dir.file("viewer.sh");
    write_file(document, "plain text\n");
    write_file(viewer, "#!/bin/sh\ncp \"$1\" " + quote(copy) + ".part && mv " + quote(copy) + ".part " +
                           quote(copy) + "\n");
    ASSERT_EQ(chmod(viewer.c_str(), 0755), 0);
    ASSERT_TRUE(ov_fs_utils_create_folder_recursively((root + "/applications").c_str()));
    write_file(root + "/applications/ovtest-viewer.desktop",
               "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + viewer +
                   " %f\nMimeType=text/plain;\n");
    write_file(root + "/mimeapps.list", "[Default Applications]\ntext/plain=ovtest-viewer.desktop\n");
    EXPECT_EQ(run_in_child([&] {
                  g_setenv("XDG_CURRENT_DESKTOP", "", TRUE);
                  g_setenv("XDG_DATA_HOME", root.c_str(), TRUE);
                  g_setenv("XDG_CONFIG_HOME", root.c_str(), TRUE);
                  return ov_platform_open_file_with_default_app(document.c_str());
              }),
              0);
    EXPECT_TRUE(eventually([&] { return file_exists(copy); }));
    EXPECT_EQ(read_file(copy), "plain text\n");
}

TEST_F(PlatformTest, ComparesPathsByTheFileTheyName)
{
    write_file(dir.file("file"), "x");
    write_file(dir.file("other"), "x");
    ASSERT_EQ(mkdir(dir.file("sub").c_str(), 0755), 0);
    ASSERT_EQ(symlink(dir.file("file").c_str(), dir.file("symlink").c_str()), 0);
    ov_error_set("untouched");
    for (auto [a, b, same] : {std::tuple{"file", "symlink", true},
                              {"", "sub/..", true},
                              {"file", "other", false},
                              {"bad\xff", "file", false}}) {
        const std::string path_a = dir.file(a), path_b = dir.file(b);
        EXPECT_EQ(ov_platform_compare_file_system_paths(path_a.c_str(), path_b.c_str()) != FALSE, same)
            << a << "|" << b;
        EXPECT_EQ(ov_platform_compare_file_system_paths(path_b.c_str(), path_a.c_str()) != FALSE, same)
            << b << "|" << a;
    }
    EXPECT_STREQ(ov_error_get(), "untouched");
}

TEST_F(PlatformTest, FormatsDatesForTheTimeLocale)
{
    GDate date{}, cleared{}, invalid{}; // 30 February 24
    g_date_set_dmy(&date, 5, G_DATE_MARCH, 2024);
    invalid.dmy = 1, invalid.day = 30, invalid.month = G_DATE_FEBRUARY, invalid.year = 24;
    const std::string previous = std::setlocale(LC_TIME, nullptr);
    for (auto [locale, expected] : {std::pair{"C", "03/05/24"}, {"sv_SE.UTF-8", "2024-03-05"}}) {
        if (std::setlocale(LC_TIME, locale) == nullptr) {
            ADD_FAILURE() << locale << " is not generated on this machine";
            continue;
        }
        // An invalid date shows its digits, an empty one nothing.
        EXPECT_EQ(str(ov_platform_get_date_string(&date)) + " " + str(ov_platform_get_date_string(&invalid)) +
                      " " + str(ov_platform_get_date_string(&cleared)),
                  std::string(expected) + " 0024-02-30 (null)");
    }
    std::setlocale(LC_TIME, previous.c_str());
}

} // namespace
