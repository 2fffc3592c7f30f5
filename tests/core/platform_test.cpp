#include "core/platform.h"

#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace
{

using ov::test::TempDir;

std::string quote(const std::string &text)
{
    ov::GStr quoted = ov::gstr(ov_platform_escape_string_for_command_line(text.c_str()));
    return quoted.get();
}

// Waits up to five seconds for a file that another process writes.
bool wait_for_file(const std::string &path)
{
    for (int i = 0; i < 500; ++i) {
        if (ov::test::file_exists(path))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

std::string own_exe_path()
{
    ov::GStr target = ov::gstr(g_file_read_link("/proc/self/exe", nullptr));
    return target ? target.get() : "";
}

class PlatformTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
    TempDir dir;
};

TEST_F(PlatformTest, TempFilesLiveInTmp)
{
    ov::GStr folder = ov::gstr(ov_platform_get_temp_files_folder_path());
    EXPECT_STREQ(folder.get(), "/tmp");

    ov::FilePtr file(ov_platform_create_temp_file());
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(fputs("scratch", file.get()), 1);
    rewind(file.get());
    char buffer[16] = {};
    ASSERT_NE(fgets(buffer, sizeof buffer, file.get()), nullptr);
    EXPECT_STREQ(buffer, "scratch");
}

// The name must match what the start-up clean-up removes later.
TEST_F(PlatformTest, PrintoutPathIsMadeFromTheProcessAndItsExecutable)
{
    struct stat status;
    ASSERT_EQ(stat("/proc/self/exe", &status), 0);
    ov::GStr expected = ov::gstr(g_strdup_printf("/tmp/orvane-%ld.%d.odt", static_cast<long>(getpid()),
                                                 static_cast<int>(status.st_size & 0x7fffffff)));
    ov::GStr path = ov::gstr(ov_platform_get_temp_legacy_printout_file_path());
    ASSERT_NE(path, nullptr);
    EXPECT_STREQ(path.get(), expected.get());
    EXPECT_TRUE(g_regex_match_simple("^orvane-[0-9]+[.][0-9]+[.]o[du]t$",
                                     ov_fs_utils_find_entry_name_in_path(path.get()), G_REGEX_DEFAULT,
                                     G_REGEX_MATCH_DEFAULT));
}

TEST_F(PlatformTest, FindsExecutablesOfThisAndOtherProcesses)
{
    ov::GStr own = ov::gstr(ov_platform_get_exe_path(getpid()));
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own.get(), own_exe_path());

    ov::GStr folder = ov::gstr(ov_platform_get_install_folder_path());
    ASSERT_NE(folder, nullptr);
    ov::GStr expected_folder = ov::gstr(g_path_get_dirname(own.get()));
    EXPECT_STREQ(folder.get(), expected_folder.get());

    ov::GStr sleep_path = ov::gstr(g_find_program_in_path("sleep"));
    ASSERT_NE(sleep_path, nullptr);
    ov::GStr resolved_sleep = ov::gstr(realpath(sleep_path.get(), nullptr));
    const char *argv[] = {sleep_path.get(), "10", nullptr};
    GPid child = 0;
    ASSERT_TRUE(g_spawn_async(nullptr, const_cast<char **>(argv), nullptr, G_SPAWN_DO_NOT_REAP_CHILD, nullptr,
                              nullptr, &child, nullptr));
    // The child's executable is sleep only once it has called exec.
    ov::GStr other;
    for (int i = 0; i < 500; ++i) {
        other = ov::gstr(ov_platform_get_exe_path(child));
        if (other && std::strcmp(other.get(), resolved_sleep.get()) == 0)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    g_spawn_close_pid(child);
    EXPECT_STREQ(other.get(), resolved_sleep.get());

    // Process ids never reach this value on Linux (pid_max is at most 2^22).
    EXPECT_EQ(ov_platform_get_exe_path(0x7ffffff0), nullptr);
    EXPECT_STREQ(ov_error_get(), "Error getting exe path from system.");
}

// Each hostile text must reach a program through /bin/sh unchanged, and
// nothing inside it may run.
TEST_F(PlatformTest, QuotedTextsSurviveTheShell)
{
    const std::string pwned = dir.file("pwned");
    const std::vector<std::string> texts = {
        "",
        "plain",
        "with  two spaces",
        "it's",
        "'",
        "''",
        "\"double\" quotes",
        "$(touch " + pwned + ")",
        "`touch " + pwned + "`",
        "a; touch " + pwned,
        "$HOME ${PATH} $0",
        "back\\slash\\",
        "new\nline\ttab",
        "*.template ? [a-z]",
        "-n",
        "\xc3\xbcmlaut \xe2\x82\xac",
        "& | > < ! # ~",
    };
    const std::string output = dir.file("out");
    for (const std::string &text : texts) {
        SCOPED_TRACE(text);
        const std::string script = "printf %s " + quote(text) + " > " + quote(output);
        const std::string command_line = "/bin/sh -c " + quote(script);
        ASSERT_TRUE(ov_platform_run_command_line_and_wait(command_line.c_str())) << ov_error_get();
        EXPECT_EQ(ov::test::read_file(output), text);
    }
    EXPECT_FALSE(ov::test::file_exists(pwned));
}

TEST_F(PlatformTest, RunningAndWaitingReturnsAfterTheCommandEnded)
{
    const std::string marker = dir.file("done marker");
    const std::string script = "sleep 0.3; echo finished > " + quote(marker) + "; exit 3";
    EXPECT_TRUE(ov_platform_run_command_line_and_wait(("/bin/sh -c " + quote(script)).c_str()));
    // A failing exit status still means the command ran.
    EXPECT_EQ(ov::test::read_file(marker), "finished\n");
}

TEST_F(PlatformTest, RunsCommandLinesWithoutWaiting)
{
    const std::string marker = dir.file("async marker");
    const std::string script = "echo started > " + quote(marker);
    EXPECT_TRUE(ov_platform_run_command_line(("/bin/sh -c " + quote(script)).c_str()));
    EXPECT_TRUE(wait_for_file(marker));
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(PlatformTest, CommandsThatCannotStartFail)
{
    const std::string missing = quote(dir.file("no such program"));
    const std::vector<std::string> command_lines = {missing, "/bin/sh -c 'unterminated", ""};
    for (const std::string &command_line : command_lines) {
        SCOPED_TRACE(command_line);
        for (auto run : {ov_platform_run_command_line, ov_platform_run_command_line_and_wait}) {
            ov_error_clear();
            EXPECT_FALSE(run(command_line.c_str()));
            EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "GError ")) << ov_error_get();
        }
    }
    ov_error_clear();
    EXPECT_FALSE(ov_platform_run_command_line("/bin/true \xff"));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not use filename.\n\n"));
}

// Runs the launch in a child with its own desktop configuration, so that no
// real application of the user is ever started.
TEST_F(PlatformTest, OpensFilesWithTheDefaultApplication)
{
    const std::string root = dir.path();
    const std::string document = dir.file("my 'report' $(x).txt");
    ov::test::write_file(document, "plain text for a viewer\n");
    const std::string copy = dir.file("viewer got");
    const std::string viewer = dir.file("viewer.sh");
    ov::test::write_file(viewer, "#!/bin/sh\ncp \"$1\" " + quote(copy) + ".part && mv " + quote(copy) +
                                     ".part " + quote(copy) + "\n");
    ASSERT_EQ(chmod(viewer.c_str(), 0755), 0);
    ASSERT_TRUE(ov_fs_utils_create_folder_recursively((root + "/data/applications").c_str()));
    ASSERT_TRUE(ov_fs_utils_create_folder((root + "/config").c_str()));
    ov::test::write_file(root + "/data/applications/ovtest-viewer.desktop",
                         "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + viewer +
                             " %f\nMimeType=text/plain;\n");
    ov::test::write_file(root + "/config/mimeapps.list",
                         "[Default Applications]\ntext/plain=ovtest-viewer.desktop\n");

    EXPECT_EQ(ov::test::run_in_child([&] {
                  g_setenv("XDG_DATA_HOME", (root + "/data").c_str(), TRUE);
                  g_setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), TRUE);
                  g_setenv("XDG_CURRENT_DESKTOP", "", TRUE);
                  return ov_platform_open_file_with_default_app(document.c_str()) == TRUE;
              }),
              0);
    EXPECT_TRUE(wait_for_file(copy));
    EXPECT_EQ(ov::test::read_file(copy), "plain text for a viewer\n");

    // Nothing is registered and xdg-open cannot be found.
    const std::string empty = dir.file("empty");
    ASSERT_TRUE(ov_fs_utils_create_folder(empty.c_str()));
    EXPECT_EQ(ov::test::run_in_child([&] {
                  g_setenv("XDG_DATA_HOME", empty.c_str(), TRUE);
                  g_setenv("XDG_DATA_DIRS", empty.c_str(), TRUE);
                  g_setenv("XDG_CONFIG_HOME", empty.c_str(), TRUE);
                  g_setenv("XDG_CONFIG_DIRS", empty.c_str(), TRUE);
                  g_setenv("PATH", empty.c_str(), TRUE);
                  return !ov_platform_open_file_with_default_app(document.c_str()) &&
                         g_str_has_prefix(ov_error_get(), "GError ");
              }),
              0);
}

TEST_F(PlatformTest, ComparesPathsByTheFileTheyName)
{
    ov::test::write_file(dir.file("file"), "x");
    ov::test::write_file(dir.file("other"), "x");
    ASSERT_EQ(mkdir(dir.file("sub").c_str(), 0755), 0);
    ASSERT_EQ(symlink(dir.file("file").c_str(), dir.file("symlink").c_str()), 0);
    ASSERT_EQ(link(dir.file("file").c_str(), dir.file("hardlink").c_str()), 0);

    struct Case {
        std::string a;
        std::string b;
        bool same;
    };
    const std::vector<Case> cases = {
        {dir.file("file"), dir.file("file"), true},        {dir.file("file"), dir.file("symlink"), true},
        {dir.file("hardlink"), dir.file("symlink"), true}, {dir.file("file"), dir.file("sub/../file"), true},
        {dir.file("sub"), dir.file("sub/"), true},         {dir.path(), dir.file("sub/.."), true},
        {dir.file("file"), dir.file("other"), false},      {dir.file("file"), dir.file("sub"), false},
        {dir.file("missing"), dir.file("missing"), false}, {dir.file("file"), dir.file("missing"), false},
        {dir.file("bad\xff"), dir.file("file"), false},
    };
    ov_error_set("untouched");
    for (const Case &c : cases) {
        SCOPED_TRACE(c.a + " | " + c.b);
        EXPECT_EQ(ov_platform_compare_file_system_paths(c.a.c_str(), c.b.c_str()) != FALSE, c.same);
        EXPECT_EQ(ov_platform_compare_file_system_paths(c.b.c_str(), c.a.c_str()) != FALSE, c.same);
    }
    EXPECT_STREQ(ov_error_get(), "untouched");
}

// Sets the time locale for one scope.
class TimeLocale
{
  public:
    explicit TimeLocale(const char *name)
        : previous_(g_strdup(setlocale(LC_TIME, nullptr))), active_(setlocale(LC_TIME, name) != nullptr)
    {
    }
    ~TimeLocale() { setlocale(LC_TIME, previous_.get()); }
    bool active() const { return active_; }

  private:
    ov::GStr previous_;
    bool active_;
};

TEST_F(PlatformTest, FormatsDatesForTheTimeLocale)
{
    GDate date;
    g_date_clear(&date, 1);
    g_date_set_dmy(&date, 5, G_DATE_MARCH, 2024);
    {
        TimeLocale locale("C");
        ov::GStr text = ov::gstr(ov_platform_get_date_string(&date));
        EXPECT_STREQ(text.get(), "03/05/24");
    }
    {
        TimeLocale locale("sv_SE.UTF-8");
        if (locale.active()) {
            ov::GStr text = ov::gstr(ov_platform_get_date_string(&date));
            EXPECT_STREQ(text.get(), "2024-03-05");
        }
    }

    // A date known only by its day number formats the same.
    GDate julian;
    g_date_clear(&julian, 1);
    g_date_set_julian(&julian, g_date_get_julian(&date));
    {
        TimeLocale locale("C");
        ov::GStr text = ov::gstr(ov_platform_get_date_string(&julian));
        EXPECT_STREQ(text.get(), "03/05/24");
    }
}

TEST_F(PlatformTest, InvalidDatesShowTheirDigitsAndEmptyDatesNothing)
{
    GDate invalid;
    g_date_clear(&invalid, 1);
    invalid.dmy = 1;
    invalid.day = 30;
    invalid.month = G_DATE_FEBRUARY;
    invalid.year = 24;
    ov::GStr text = ov::gstr(ov_platform_get_date_string(&invalid));
    EXPECT_STREQ(text.get(), "0024-02-30");

    GDate bad_day_number;
    g_date_clear(&bad_day_number, 1);
    bad_day_number.julian = 1;
    text = ov::gstr(ov_platform_get_date_string(&bad_day_number));
    EXPECT_STREQ(text.get(), "0000-00-00");

    GDate cleared;
    g_date_clear(&cleared, 1);
    EXPECT_EQ(ov_platform_get_date_string(&cleared), nullptr);
    EXPECT_EQ(ov_platform_get_date_string(nullptr), nullptr);
}

} // namespace
