#include "support/test_support.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace ov::test
{
namespace
{

int allowed_depth = 0;
int let_through = 0;
std::vector<int> helper_wait_depths;

GLogWriterOutput fail_on_warnings(GLogLevelFlags level, const GLogField *fields, gsize n_fields, gpointer)
{
    if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING | G_LOG_LEVEL_ERROR)) != 0) {
        if (allowed_depth > 0 && (level & G_LOG_LEVEL_ERROR) == 0) {
            ++let_through;
            return G_LOG_WRITER_HANDLED;
        }
        const char *message = "";
        for (gsize i = 0; i < n_fields; ++i)
            if (g_strcmp0(fields[i].key, "MESSAGE") == 0 && fields[i].length < 0)
                message = static_cast<const char *>(fields[i].value);
        ADD_FAILURE() << "GLib logged: " << message;
        return G_LOG_WRITER_HANDLED;
    }
    return g_log_writer_default(level, fields, n_fields, nullptr);
}

} // namespace

void install_log_handler()
{
    g_setenv("GSETTINGS_BACKEND", "memory", FALSE);
    g_setenv("NO_AT_BRIDGE", "1", FALSE);
    g_log_set_writer_func(fail_on_warnings, nullptr, nullptr);
}

ExpectLogMessages::ExpectLogMessages()
{
    ++allowed_depth;
    let_through = 0;
}

ExpectLogMessages::~ExpectLogMessages()
{
    --allowed_depth;
}

int ExpectLogMessages::count() const
{
    return let_through;
}

TempDir::TempDir()
{
    char *made = g_dir_make_tmp("ov-test-XXXXXX", nullptr);
    if (made != nullptr)
        path_ = made;
    g_free(made);
}

TempDir::~TempDir()
{
    std::error_code ignored; // symlinks are removed, never followed
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::file(std::string_view name) const
{
    return path_ + "/" + std::string(name);
}

void write_file(const std::string &path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string read_file(const std::string &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

bool file_exists(const std::string &path)
{
    return g_file_test(path.c_str(), G_FILE_TEST_EXISTS);
}

std::string fixture(std::string_view name)
{
    return std::string(OV_TEST_FILES_DIR) + "/" + std::string(name);
}

int run_in_child(const std::function<bool()> &body)
{
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0)
        _exit(body() ? 0 : 1);
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid)
        return -1;
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return WEXITSTATUS(status);
}

int run_with_file_size_limit(long max_bytes, const std::function<bool()> &body)
{
    return run_in_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {rlim_t(max_bytes), rlim_t(max_bytes)};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 && body();
    });
}

HelperWait::HelperWait()
{
    helper_wait_depths.push_back(g_main_depth());
}

HelperWait::~HelperWait()
{
    helper_wait_depths.pop_back();
}

int HelperWait::innermost_depth()
{
    return helper_wait_depths.empty() ? -1 : helper_wait_depths.back();
}

void flush_events()
{
    HelperWait wait;
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

} // namespace ov::test

// Sanitizer settings compiled into the test programs, so that ctest, a
// debugger and a direct run all check alike.
extern "C" const char *__lsan_default_options()
{
    return "suppressions=" OV_SOURCE_DIR "/tests/lsan.supp:print_suppressions=0";
}

extern "C" const char *__ubsan_default_options()
{
    return "print_stacktrace=1:halt_on_error=1";
}
