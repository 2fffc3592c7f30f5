// The Linux platform layer.
#include "core/platform.h"

#include "core/fs_utils.h"
#include "core/raii.h"
#include "core_test.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
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

TEST_F(PlatformTest, OurOwnExecutable)
{
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
         {std::string(), std::string("it's ''"), "$(touch " + pwned + ")",
          "`touch " + pwned + "`; touch " + pwned, std::string("$HOME \\ \n*.template -n")}) {
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
    EXPECT_FALSE(ov_platform_run_command_line(quote(dir.file("no such program")).c_str()));
    EXPECT_TRUE(g_str_has_prefix(result(FALSE).c_str(), "GError "));
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

} // namespace
