// Helpers of the frame tests: a child process with its own home and user
// configuration folder, so that no test touches the real ones.
#pragma once

#include "support/test_support.h"

#include <glib.h>
#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include <cstdio>
#include <functional>
#include <string>

// GLib keeps the home and configuration folders it found first; this resets
// them (exported by GLib for its own test isolation).
extern "C" void g_set_user_dirs(const gchar *first_dir_type, ...) G_GNUC_NULL_TERMINATED;

namespace ov::test {

// Runs body in a child process whose home folder is dir/home (created) and
// whose configuration folder is dir/config (not created). The exit status is
// 0 when body returned true, no expectation failed in the child and, in a
// sanitizer build, nothing leaked.
inline int run_with_home(const TempDir &dir, const std::function<bool()> &body)
{
    return run_in_child([&] {
        const std::string home = dir.file("home");
        const std::string config = dir.file("config");
        g_mkdir_with_parents(home.c_str(), 0700);
        g_setenv("HOME", home.c_str(), TRUE);
        g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
        g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
        bool ok = body() && !::testing::Test::HasFailure();
#if defined(__SANITIZE_ADDRESS__)
        // The child ends with _exit, which skips the leak check at exit.
        if (__lsan_do_recoverable_leak_check() != 0)
            ok = false;
#endif
        std::fflush(nullptr);
        return ok;
    });
}

} // namespace ov::test
