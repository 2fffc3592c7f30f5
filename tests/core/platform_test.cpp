#include "core/platform.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace
{

std::string str(char *text)
{
    ov::GStr owned(text);
    return text != nullptr ? text : "(null)";
}

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

class PlatformTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
    ov::test::TempDir dir;
};

TEST_F(PlatformTest, TemporaryFilesAndOurOwnExecutable)
{
    EXPECT_EQ(str(ov_platform_get_temp_files_folder_path()), "/tmp");
    ov::FilePtr file(ov_platform_create_temp_file());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(fputs("scratch", file.get()), 1);

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
        EXPECT_EQ(ov::test::read_file(output), text);
    }
    EXPECT_FALSE(ov::test::file_exists(pwned));
}

TEST_F(PlatformTest, RunsCommandLinesWithAndWithoutWaiting)
{
    // A failing exit status still means the command ran.
    const std::string waited = dir.file("waited for"), started = dir.file("started");
    const std::string script = "sleep 0.3; echo finished > " + quote(waited) + "; exit 3";
    EXPECT_TRUE(ov_platform_run_command_line_and_wait(("/bin/sh -c " + quote(script)).c_str()));
    EXPECT_EQ(ov::test::read_file(waited), "finished\n");
    EXPECT_TRUE(ov_platform_run_command_line(("/bin/sh -c " + quote("echo > " + quote(started))).c_str()));
    EXPECT_TRUE(eventually([&] { return ov::test::file_exists(started); }));
    EXPECT_STREQ(ov_error_get(), "");

    for (const std::string &command_line :
         {quote(dir.file("no such program")), std::string("/bin/sh -c 'cut"), std::string()}) {
        for (auto run : {ov_platform_run_command_line, ov_platform_run_command_line_and_wait}) {
            ov_error_clear();
            EXPECT_FALSE(run(command_line.c_str()));
            EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "GError "))
                << command_line << ": " << ov_error_get();
        }
    }
    EXPECT_FALSE(ov_platform_run_command_line("/bin/true \xff"));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not use filename.\n\n"));
}

// Runs the launch in a child with its own desktop configuration, so that no
// real application of the user is ever started.
TEST_F(PlatformTest, OpensFilesWithTheDefaultApplication)
{
    const std::string root = dir.path(), document = dir.file("my 'report' $(x).txt"), copy = dir.file("got");
    const std::string viewer = dir.file("viewer.sh");
    ov::test::write_file(document, "plain text\n");
    ov::test::write_file(viewer, "#!/bin/sh\ncp \"$1\" " + quote(copy) + ".part && mv " + quote(copy) +
                                     ".part " + quote(copy) + "\n");
    ASSERT_EQ(chmod(viewer.c_str(), 0755), 0);
    ASSERT_TRUE(ov_fs_utils_create_folder_recursively((root + "/data/applications").c_str()));
    ASSERT_TRUE(ov_fs_utils_create_folder((root + "/config").c_str()));
    ASSERT_TRUE(ov_fs_utils_create_folder((root + "/empty").c_str()));
    ov::test::write_file(root + "/data/applications/ovtest-viewer.desktop",
                         "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + viewer +
                             " %f\nMimeType=text/plain;\n");
    ov::test::write_file(root + "/config/mimeapps.list",
                         "[Default Applications]\ntext/plain=ovtest-viewer.desktop\n");
    // First nothing is registered and xdg-open cannot be found; then our viewer is.
    for (const bool registered : {false, true}) {
        EXPECT_EQ(ov::test::run_in_child([&] {
                      const std::string empty = root + "/empty";
                      g_setenv("XDG_CURRENT_DESKTOP", "", TRUE);
                      g_setenv("XDG_DATA_HOME", registered ? (root + "/data").c_str() : empty.c_str(), TRUE);
                      g_setenv("XDG_CONFIG_HOME", registered ? (root + "/config").c_str() : empty.c_str(),
                               TRUE);
                      for (const char *name : {"XDG_DATA_DIRS", "XDG_CONFIG_DIRS", "PATH"})
                          if (!registered)
                              g_setenv(name, empty.c_str(), TRUE);
                      return ov_platform_open_file_with_default_app(document.c_str()) == registered &&
                             (registered || g_str_has_prefix(ov_error_get(), "GError "));
                  }),
                  0)
            << registered;
    }
    EXPECT_TRUE(eventually([&] { return ov::test::file_exists(copy); }));
    EXPECT_EQ(ov::test::read_file(copy), "plain text\n");
}

TEST_F(PlatformTest, ComparesPathsByTheFileTheyName)
{
    ov::test::write_file(dir.file("file"), "x");
    ov::test::write_file(dir.file("other"), "x");
    ASSERT_EQ(mkdir(dir.file("sub").c_str(), 0755), 0);
    ASSERT_EQ(symlink(dir.file("file").c_str(), dir.file("symlink").c_str()), 0);
    ASSERT_EQ(link(dir.file("file").c_str(), dir.file("hardlink").c_str()), 0);
    ov_error_set("untouched");
    for (auto [a, b, same] : {std::tuple{"file", "symlink", true},
                              {"hardlink", "symlink", true},
                              {"file", "sub/../file", true},
                              {"sub", "sub/", true},
                              {"", "sub/..", true},
                              {"file", "other", false},
                              {"file", "sub", false},
                              {"missing", "missing", false},
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
    GDate date, invalid, cleared;
    g_date_clear(&date, 1);
    g_date_set_dmy(&date, 5, G_DATE_MARCH, 2024);
    g_date_clear(&invalid, 1);
    invalid.dmy = 1; // 30 February 24
    invalid.day = 30;
    invalid.month = G_DATE_FEBRUARY;
    invalid.year = 24;
    g_date_clear(&cleared, 1);
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
    EXPECT_EQ(ov_platform_get_date_string(nullptr), nullptr);
}

} // namespace
