// Time from process start to the first window on the screen: the editor on
// a template (the bundled example unless one is given; a workspace is ready,
// so no assistant) against a GTK 3 program that opens one empty window. Each program is
// started several times; the time runs from just before the start until the
// X server maps the program's first top-level window, watched on the root
// window. Run under Xvfb:
//   xvfb-run -a build/bench/ov_bench_startup [RUNS [TEMPLATE]]
//
// A template of 1,000 rows: ov_bench_template_generate big.template 100.
#include <X11/Xlib.h>
#include <glib.h>
#include <glib/gstdio.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

constexpr double wait_limit_s = 20.0;

// Seconds until the program's first top-level window is mapped, or a
// negative value when none appeared.
double time_to_first_window(Display *display, const std::vector<std::string> &command, char **env)
{
    std::vector<const char *> argv;
    for (const std::string &part : command)
        argv.push_back(part.c_str());
    argv.push_back(nullptr);
    XSync(display, True); // drops what earlier runs left
    const gint64 start = g_get_monotonic_time();
    GPid pid = 0;
    if (!g_spawn_async(nullptr, const_cast<char **>(argv.data()), env, G_SPAWN_DO_NOT_REAP_CHILD, nullptr,
                       nullptr, &pid, nullptr))
        return -1;
    double elapsed = -1;
    while (elapsed < 0 && (g_get_monotonic_time() - start) / 1e6 < wait_limit_s) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MapNotify && !event.xmap.override_redirect) {
                elapsed = (g_get_monotonic_time() - start) / 1e6;
                break;
            }
        }
        if (elapsed < 0)
            g_usleep(200);
    }
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
    g_spawn_close_pid(pid);
    return elapsed;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::string folder_of_this_program()
{
    char *path = g_file_read_link("/proc/self/exe", nullptr);
    char *folder = g_path_get_dirname(path);
    std::string result = folder;
    g_free(folder);
    g_free(path);
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 9;
    Display *display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "No display: run under xvfb-run -a.\n");
        return 1;
    }
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);

    // A home with a workspace and its pointer file, so the editor opens its
    // document window straight away.
    char *home = g_dir_make_tmp("orvane-bench-XXXXXX", nullptr);
    const std::string workspace = std::string(home) + "/Workspace";
    const std::string config = std::string(home) + "/config";
    g_mkdir_with_parents((config + "/orvane").c_str(), 0700);
    g_mkdir_with_parents(workspace.c_str(), 0700);
    const std::string pointer = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orvane><workspace path=\"" +
                                workspace + "\"/></orvane>\n";
    g_file_set_contents((config + "/orvane/orvane.xml").c_str(), pointer.c_str(), -1, nullptr);
    char **env = g_get_environ();
    env = g_environ_setenv(env, "HOME", home, TRUE);
    env = g_environ_setenv(env, "XDG_CONFIG_HOME", config.c_str(), TRUE);
    env = g_environ_setenv(env, "NO_AT_BRIDGE", "1", TRUE);

    const std::string bench = folder_of_this_program();
    const std::string editor_folder = bench + "/../app";
    const std::vector<std::string> empty{bench + "/ov_bench_empty_window"};
    const std::string template_path = argc > 2 ? argv[2] : editor_folder + "/templates/painting.template";
    char *template_name = g_path_get_basename(template_path.c_str());
    const std::vector<std::string> editor{editor_folder + "/orvane-template-editor", template_path};
    std::vector<double> empty_times, editor_times;
    for (int i = 0; i < runs; ++i) {
        // Alternating keeps both alike against what the machine does meanwhile.
        empty_times.push_back(time_to_first_window(display, empty, env));
        editor_times.push_back(time_to_first_window(display, editor, env));
        if (empty_times.back() < 0 || editor_times.back() < 0) {
            std::fprintf(stderr, "A program showed no window within %.0f s.\n", wait_limit_s);
            return 1;
        }
    }
    const double empty_median = median(empty_times), editor_median = median(editor_times);
    std::printf("first window, median of %d runs:\n", runs);
    std::printf("  empty GTK 3 window      %7.1f ms\n", empty_median * 1000);
    std::printf("  editor                  %7.1f ms (%s)\n", editor_median * 1000, template_name);
    std::printf("  ratio editor / empty    %7.2f\n", editor_median / empty_median);

    g_free(template_name);
    g_strfreev(env);
    const std::string cleanup = std::string("rm -rf '") + home + "'";
    g_spawn_command_line_sync(cleanup.c_str(), nullptr, nullptr, nullptr, nullptr);
    g_free(home);
    XCloseDisplay(display);
    return 0;
}
