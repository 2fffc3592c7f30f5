// The built program started as a child process with its own home and
// configuration folders, looked at and typed into through the X server as
// a user would: the first start's assistant, a start-up failure, the
// command line, and two starts at once.
#include "frame/frame_test_support.h"

#include "core/raii.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace
{

using namespace ov::test;

using Strings = std::vector<std::string>;
constexpr int limit_ms = 8000;
constexpr const char *museum = "museum.template - Orvane Template Editor 3.3.0";

// xdotool's output lines.
Strings xdotool(Strings arguments)
{
    arguments.insert(arguments.begin(), "xdotool");
    std::vector<const char *> argv;
    for (const std::string &argument : arguments)
        argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    ov::GStr out;
    g_spawn_sync(nullptr, const_cast<char **>(argv.data()), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                 ov::out(out), nullptr, nullptr, nullptr);
    Strings lines;
    ov::GStrv parts(g_strsplit(out ? out.get() : "", "\n", -1));
    for (char **part = parts.get(); *part != nullptr; ++part)
        if (**part != '\0')
            lines.emplace_back(*part);
    return lines;
}

// Keys typed into the window, focused first as a click would.
void keys(const std::string &window, Strings keys)
{
    keys.insert(keys.begin(), {"windowfocus", "--sync", window, "key", "--delay", "30"});
    xdotool(keys);
}

// One start of the editor, killed at the end of the test if still running.
class Program
{
  public:
    Program(const TempDir &dir, const Strings &arguments, const std::string &exe = OV_EDITOR_EXE)
        : errors_(dir.file("stderr" + std::to_string(g_random_int())))
    {
        std::vector<const char *> argv{exe.c_str()};
        for (const std::string &argument : arguments)
            argv.push_back(argument.c_str());
        argv.push_back(nullptr);
        ov::GStrv env(g_environ_setenv(g_get_environ(), "HOME", dir.file("home").c_str(), TRUE));
        env.reset(g_environ_setenv(env.release(), "XDG_CONFIG_HOME", dir.file("config").c_str(), TRUE));
        const int err = open(errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        EXPECT_TRUE(g_spawn_async_with_fds(nullptr, const_cast<char **>(argv.data()), env.get(),
                                           G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr, &pid_, -1, -1, err,
                                           nullptr));
        close(err);
    }
    ~Program()
    {
        if (pid_ > 0 && status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    GPid pid() const { return pid_; }
    Strings windows(const std::string &title)
    {
        return xdotool(
            {"search", "--all", "--onlyvisible", "--pid", std::to_string(pid_), "--name", "^" + title + "$"});
    }
    // The one shown window with the title, once it is there ("" if never).
    std::string wait_for_window(const std::string &title)
    {
        for (int waited = 0; waited < limit_ms && wait_for_exit(0) < 0; waited += 100) {
            if (const Strings found = windows(title); found.size() == 1)
                return found[0];
            g_usleep(100 * 1000);
        }
        ADD_FAILURE() << "No window \"" << title << "\".";
        return "";
    }
    // The exit status, or -1 while the program still runs after the limit.
    int wait_for_exit(int wait_ms = limit_ms)
    {
        for (int waited = 0; status_ < 0; waited += 50) {
            int status = 0;
            if (waitpid(pid_, &status, WNOHANG) == pid_)
                status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            else if (waited >= wait_ms)
                break;
            else
                g_usleep(50 * 1000);
        }
        return status_;
    }
    std::string error_output() const { return read_file(errors_); }

  private:
    std::string errors_;
    GPid pid_ = 0;
    int status_ = -1;
};

class ProgramTest : public ::testing::Test
{
  protected:
    ProgramTest()
    {
        make_folder(dir_.file("home"));
        write_file(template_, read_file(OV_SOURCE_DIR "/resources/install/templates/painting.template"));
    }
    // A workspace and its pointer file, made before the program starts.
    void make_workspace()
    {
        make_folder(workspace_);
        make_folder(dir_.file("config/orvane"));
        write_file(dir_.file("config/orvane/orvane.xml"),
                   "<orvane><workspace path=\"" + workspace_ + "\"/></orvane>\n");
    }

    TempDir dir_;
    const std::string template_ = dir_.file("museum.template"), workspace_ = dir_.file("home/Workspace");
};

// Cancelled, the assistant ends the program with nothing made; driven to its
// end, it makes the workspace and the template's window opens.
TEST_F(ProgramTest, FirstStartRunsTheAssistantBeforeTheDocumentWindow)
{
    Program cancelled(dir_, {template_});
    keys(cancelled.wait_for_window("Orvane"), {"Escape"});
    EXPECT_EQ(cancelled.wait_for_exit(), 0);
    EXPECT_FALSE(file_exists(dir_.file("config/orvane/orvane.xml")));
    EXPECT_FALSE(file_exists(dir_.file("home/Orvane Workspace")));

    Program program(dir_, {template_});
    const std::string assistant = program.wait_for_window("Orvane");
    keys(assistant, {"alt+n"});
    g_usleep(300 * 1000);
    keys(assistant, {"ctrl+a"});
    xdotool({"type", "--delay", "10", workspace_});
    keys(assistant, {"alt+a"});
    g_usleep(300 * 1000);
    keys(assistant, {"alt+c"});
    keys(program.wait_for_window(museum), {"ctrl+w"});
    EXPECT_EQ(program.wait_for_exit(), 0);
    EXPECT_TRUE(file_exists(workspace_ + "/templates/painting.template"));
    EXPECT_NE(read_file(dir_.file("config/orvane/orvane.xml")).find(workspace_), std::string::npos);
}

// Every start is a process of its own; an option reaches the program as a
// path (here of a new, hence modified, template in the current folder).
TEST_F(ProgramTest, TwoStartsAreTwoProcessesAndOptionsAreTemplatePaths)
{
    make_workspace();
    Program first(dir_, {template_, "ignored"});
    Program second(dir_, {"--help"});
    EXPECT_NE(first.wait_for_window(museum), "");
    keys(second.wait_for_window("\\*--help - Orvane Template Editor 3.3.0"), {"ctrl+w"});
    keys(second.wait_for_window("Save before closing\\?"), {"Escape"});
    EXPECT_EQ(second.wait_for_exit(), 0);
    EXPECT_FALSE(file_exists("--help"));
    EXPECT_NE(first.pid(), second.pid());
    EXPECT_EQ(first.windows(museum).size(), 1u);
}

// A program folder without the view font: one message, then the end.
TEST_F(ProgramTest, MissingFontGivesOneMessageAndNoWindow)
{
    make_workspace();
    const std::string exe = dir_.file("orvane-template-editor");
    write_file(exe, read_file(OV_EDITOR_EXE));
    chmod(exe.c_str(), 0700);
    Program program(dir_, {template_}, exe);
    keys(program.wait_for_window("Error"), {"Escape"});
    EXPECT_EQ(program.wait_for_exit(), 0);
    const std::string output = program.error_output();
    EXPECT_NE(output.find("Startup failed.\n\nCouldn't open required fonts."), std::string::npos) << output;
    EXPECT_TRUE(program.windows(".*").empty());
}

} // namespace
