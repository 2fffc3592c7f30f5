// Helpers shared by the test suites.
#pragma once

#include "core/error.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

namespace ov::test
{

// Installs the GLib log writer that turns warnings and criticals into test
// failures, and keeps GSettings and the accessibility bus out of the tests.
// Called once by each suite's main.
void install_log_handler();

// Lets the next GLib warnings or criticals pass without failing the test,
// for tests of g_return_if_fail guards. Counts what it let through.
class ExpectLogMessages
{
  public:
    ExpectLogMessages();
    ~ExpectLogMessages();
    int count() const;
};

// A fresh folder under /tmp, removed with its contents at the end of scope.
class TempDir
{
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    const std::string &path() const { return path_; }
    std::string file(std::string_view name) const;

  private:
    std::string path_;
};

void write_file(const std::string &path, std::string_view bytes);
std::string read_file(const std::string &path);
bool file_exists(const std::string &path);
// Path of a fixture in tests/files.
std::string fixture(std::string_view name);

// Runs body in a forked child and returns its exit status (the code, or
// 128 + signal when it was killed). The child exits with 0 when body returns
// true. Use for tests that change process-wide state for good.
int run_in_child(const std::function<bool()> &body);
// The same, with files limited to max_bytes and SIGXFSZ ignored: a full disk
// as seen by a writer.
int run_with_file_size_limit(long max_bytes, const std::function<bool()> &body);

// Starts and ends every test with an empty error buffer.
struct ErrorCleared : ::testing::Test {
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

// Runs pending main-loop events until none are left.
void flush_events();

// Marks a helper's own event processing for its lifetime: the main-loop
// depth it runs at, innermost last. The GUI driver starts no script step
// from such a wait inside a step's action (see Script).
class HelperWait
{
  public:
    HelperWait();
    ~HelperWait();
    HelperWait(const HelperWait &) = delete;
    HelperWait &operator=(const HelperWait &) = delete;
    // The depth of the innermost wait, or -1.
    static int innermost_depth();
};

} // namespace ov::test
