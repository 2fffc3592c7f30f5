// The built program started as a child process with its own home and
// configuration folders, looked at and typed into through the X server as
// a user would: the first start's assistant, start-up failures, the command
// line, and two starts at once.
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

constexpr guint window_wait_ms = 8000;

// Runs xdotool and returns its output (empty on failure).
std::string xdotool(const std::vector<std::string> &arguments)
{
    std::vector<const char *> argv{"xdotool"};
    for (const std::string &argument : arguments)
        argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    char *out = nullptr;
    int status = 0;
    if (!g_spawn_sync(nullptr, const_cast<char **>(argv.data()), nullptr, G_SPAWN_SEARCH_PATH, nullptr,
                      nullptr, &out, nullptr, &status, nullptr))
        return "";
    std::string text = out != nullptr ? out : "";
    g_free(out);
    return text;
}

std::vector<std::string> lines(const std::string &text)
{
    std::vector<std::string> result;
    ov::GStrv parts(g_strsplit(text.c_str(), "\n", -1));
    for (char **part = parts.get(); *part != nullptr; ++part)
        if (**part != '\0')
            result.emplace_back(*part);
    return result;
}

// One start of the editor; killed at the end of the test if still running.
class Program
{
  public:
    Program(const std::string &home, const std::string &config, const std::vector<std::string> &arguments,
            const std::string &exe = OV_EDITOR_EXE, const std::string &folder = "")
        : stderr_path_(home + "/../stderr-" + std::to_string(g_random_int()))
    {
        std::vector<const char *> argv{exe.c_str()};
        for (const std::string &argument : arguments)
            argv.push_back(argument.c_str());
        argv.push_back(nullptr);
        ov::GStrv env(g_get_environ());
        env.reset(g_environ_setenv(env.release(), "HOME", home.c_str(), TRUE));
        env.reset(g_environ_setenv(env.release(), "XDG_CONFIG_HOME", config.c_str(), TRUE));
        const int err = open(stderr_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        started_ = g_spawn_async_with_fds(
            folder.empty() ? nullptr : folder.c_str(), const_cast<char **>(argv.data()), env.get(),
            G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr, &pid_, -1, -1, err, nullptr);
        close(err);
        EXPECT_TRUE(started_);
    }
    ~Program()
    {
        if (started_ && status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        unlink(stderr_path_.c_str());
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    GPid pid() const { return pid_; }
    // This process's shown windows with the title, once there is one.
    std::vector<std::string> wait_for_window(const std::string &title, guint limit_ms = window_wait_ms)
    {
        std::vector<std::string> found;
        for (guint waited = 0; started_ && waited < limit_ms && status_ < 0; waited += 100) {
            found = windows(title);
            if (!found.empty())
                return found;
            g_usleep(100 * 1000);
            reap();
        }
        ADD_FAILURE() << "No window \"" << title << "\" appeared.";
        return found;
    }
    std::vector<std::string> windows(const std::string &title)
    {
        return lines(xdotool({"search", "--all", "--onlyvisible", "--pid", std::to_string(pid_), "--name",
                              "^" + title + "$"}));
    }
    // Keys typed into the window, focused first as a click would.
    static void keys(const std::string &window, const std::vector<std::string> &keys)
    {
        std::vector<std::string> arguments{"windowfocus", "--sync", window, "key", "--delay", "30"};
        arguments.insert(arguments.end(), keys.begin(), keys.end());
        xdotool(arguments);
    }
    static void type(const std::string &window, const std::string &text)
    {
        xdotool({"windowfocus", "--sync", window, "type", "--delay", "10", text});
    }
    // The exit status, or -1 when the program is still running after the
    // limit.
    int wait_for_exit(guint limit_ms = window_wait_ms)
    {
        for (guint waited = 0; started_ && status_ < 0 && waited < limit_ms; waited += 50) {
            reap();
            if (status_ < 0)
                g_usleep(50 * 1000);
        }
        return status_;
    }
    std::string error_output() const { return read_file(stderr_path_); }

  private:
    void reap()
    {
        int status = 0;
        if (status_ < 0 && waitpid(pid_, &status, WNOHANG) == pid_)
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    std::string stderr_path_;
    GPid pid_ = 0;
    bool started_ = false;
    int status_ = -1;
};

class ProgramTest : public ::testing::Test
{
  protected:
    ProgramTest() : home_(dir_.file("home")), config_(dir_.file("config")), workspace_(home_ + "/Workspace")
    {
        make_folder(home_);
        write_file(dir_.file("museum.template"),
                   read_file(OV_SOURCE_DIR "/resources/install/templates/painting.template"));
    }
    // A workspace made ready before the program starts.
    void make_workspace()
    {
        make_folder(workspace_);
        make_folder(config_ + "/orvane");
        write_file(config_ + "/orvane/orvane.xml",
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orvane><workspace path=\"" + workspace_ +
                       "\"/></orvane>\n");
    }
    Program start(const std::vector<std::string> &arguments) { return Program(home_, config_, arguments); }

    TempDir dir_;
    std::string home_, config_, workspace_;
};

TEST_F(ProgramTest, FirstStartCreatesTheWorkspaceThenOpensTheTemplate)
{
    Program program(home_, config_, {dir_.file("museum.template")});
    std::vector<std::string> assistant = program.wait_for_window("Orvane");
    ASSERT_EQ(assistant.size(), 1u);
    Program::keys(assistant[0], {"alt+n"});
    g_usleep(300 * 1000);
    Program::keys(assistant[0], {"ctrl+a"});
    Program::type(assistant[0], workspace_);
    Program::keys(assistant[0], {"alt+a"});
    g_usleep(300 * 1000);
    Program::keys(assistant[0], {"alt+c"});
    std::vector<std::string> document =
        program.wait_for_window("museum.template - Orvane Template Editor 3.3.0");
    ASSERT_EQ(document.size(), 1u);
    EXPECT_TRUE(file_exists(workspace_ + "/templates"));
    EXPECT_TRUE(file_exists(config_ + "/orvane/orvane.xml"));
    Program::keys(document[0], {"ctrl+w"});
    EXPECT_EQ(program.wait_for_exit(), 0);
}

TEST_F(ProgramTest, CancellingTheAssistantEndsTheProgramWithoutAWorkspace)
{
    Program program(home_, config_, {dir_.file("museum.template")});
    std::vector<std::string> assistant = program.wait_for_window("Orvane");
    ASSERT_EQ(assistant.size(), 1u);
    Program::keys(assistant[0], {"Escape"});
    EXPECT_EQ(program.wait_for_exit(), 0);
    EXPECT_FALSE(file_exists(config_ + "/orvane/orvane.xml"));
    EXPECT_FALSE(file_exists(home_ + "/Orvane Workspace"));
}

// Every start is a process of its own; options reach the program as a path.
TEST_F(ProgramTest, TwoStartsAreTwoProcessesAndOptionsAreTemplatePaths)
{
    make_workspace();
    Program first(home_, config_, {dir_.file("museum.template"), "ignored"});
    Program second(home_, config_, {"--help"}, OV_EDITOR_EXE, dir_.path());
    ASSERT_EQ(first.wait_for_window("museum.template - Orvane Template Editor 3.3.0").size(), 1u);
    // A path that does not exist yet is a new, modified template.
    std::vector<std::string> help = second.wait_for_window("\\*--help - Orvane Template Editor 3.3.0");
    ASSERT_EQ(help.size(), 1u);
    EXPECT_NE(first.pid(), second.pid());
    Program::keys(help[0], {"ctrl+w"});
    std::vector<std::string> question = second.wait_for_window("Save before closing\\?");
    ASSERT_EQ(question.size(), 1u);
    Program::keys(question[0], {"Escape"});
    EXPECT_EQ(second.wait_for_exit(), 0);
    EXPECT_FALSE(file_exists(dir_.file("--help")));
    // The first is still there, untouched by the second's end.
    EXPECT_EQ(first.windows("museum.template - Orvane Template Editor 3.3.0").size(), 1u);
}

// A program folder without the view font: one message, then the end.
TEST_F(ProgramTest, MissingFontGivesOneMessageAndNoWindow)
{
    make_workspace();
    const std::string folder = dir_.file("bare");
    make_folder(folder);
    const std::string exe = folder + "/orvane-template-editor";
    write_file(exe, read_file(OV_EDITOR_EXE));
    chmod(exe.c_str(), 0700);
    Program program(home_, config_, {dir_.file("museum.template")}, exe);
    std::vector<std::string> errors = program.wait_for_window("Error");
    ASSERT_EQ(errors.size(), 1u);
    const std::string output = program.error_output();
    EXPECT_NE(output.find("Couldn't open required fonts."), std::string::npos) << output;
    EXPECT_NE(output.find("Startup failed."), std::string::npos) << output;
    Program::keys(errors[0], {"Escape"});
    EXPECT_EQ(program.wait_for_exit(), 0);
    EXPECT_EQ(program.windows(".*").size(), 0u);
}

} // namespace
