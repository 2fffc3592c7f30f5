// Frame tests run in a child with its own home and configuration folder.
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

// Resets the home and configuration folders GLib keeps (exported for tests).
extern "C" void g_set_user_dirs(const gchar *first_dir_type, ...) G_GNUC_NULL_TERMINATED;

namespace ov::test
{

inline void make_folder(const std::string &path)
{
    g_mkdir_with_parents(path.c_str(), 0700);
}

// Points GLib's home and configuration folders, and the variables naming them, there.
inline void point_home_at(const std::string &home, const std::string &config)
{
    g_setenv("HOME", home.c_str(), TRUE);
    g_setenv("XDG_CONFIG_HOME", config.c_str(), TRUE);
    g_set_user_dirs("HOME", home.c_str(), "XDG_CONFIG_HOME", config.c_str(), nullptr);
}

// Runs body in a child with home dir/home (created) and configuration folder
// dir/config (not created); fails on a failed expectation or a leak there.
inline void run_with_home(const std::function<void(const TempDir &dir)> &body)
{
    TempDir dir;
    EXPECT_EQ(run_in_child([&] {
                  make_folder(dir.file("home"));
                  point_home_at(dir.file("home"), dir.file("config"));
                  body(dir);
                  bool ok = !::testing::Test::HasFailure();
#if defined(__SANITIZE_ADDRESS__)
                  ok = __lsan_do_recoverable_leak_check() == 0 && ok; // _exit skips the check at exit
#endif
                  std::fflush(nullptr);
                  return ok;
              }),
              0);
}

} // namespace ov::test
