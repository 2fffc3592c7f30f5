#include "frame/workspace.h"

#include "core/error.h"
#include "core/raii.h"
#include "docs/codeset_io.h"
#include "frame/frame_test_support.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>

#include <algorithm>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <utime.h>
#include <vector>

namespace {

// The child process ran its body to the end without a failed expectation.
void expect_success(int status) { EXPECT_EQ(status, 0); }

using ov::test::file_exists;
using ov::test::read_file;
using ov::test::TempDir;
using ov::test::write_file;

bool is_folder(const std::string &path) { return g_file_test(path.c_str(), G_FILE_TEST_IS_DIR); }

// The shipped components of a fake installation folder.
void make_installation(const TempDir &dir)
{
    g_mkdir_with_parents(dir.file("install/codesets").c_str(), 0700);
    g_mkdir_with_parents(dir.file("install/layouts/subfolder").c_str(), 0700);
    g_mkdir_with_parents(dir.file("install/templates").c_str(), 0700);
    write_file(dir.file("install/codesets/a.codeset"), "shipped a");
    write_file(dir.file("install/layouts/standard.layout"), "shipped standard");
    write_file(dir.file("install/layouts/bundled_modern.layout"), "shipped modern");
    write_file(dir.file("install/templates/painting.template"), "shipped painting");
    write_file(dir.file("install/templates/paper.template"), "shipped paper");
    ov_workspace_set_install_folder_path(dir.file("install").c_str());
}

std::string md5_of(const std::string &text)
{
    return ov::gstr(g_compute_checksum_for_string(G_CHECKSUM_MD5, text.c_str(), text.size())).get();
}

TEST(Workspace, OpensTheDefaultFolderAndCreatesMissingSubfolders)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  const std::string workspace = dir.file("home/Orvane Workspace");
                  ov::GStr default_path = ov::gstr(ov_workspace_get_default_folder_path());
                  EXPECT_STREQ(default_path.get(), workspace.c_str());
                  g_mkdir(workspace.c_str(), 0700);
                  g_mkdir((workspace + "/templates").c_str(), 0700);
                  write_file(workspace + "/templates/mine.template", "mine");

                  EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
                  EXPECT_STREQ(ov_workspace_get_workspace_folder_path(), workspace.c_str());
                  EXPECT_STREQ(ov_workspace_get_codesets_folder_path(), (workspace + "/codesets").c_str());
                  EXPECT_STREQ(ov_workspace_get_font_files_folder_path(), (workspace + "/fonts").c_str());
                  EXPECT_STREQ(ov_workspace_get_layouts_folder_path(), (workspace + "/layouts").c_str());
                  EXPECT_STREQ(ov_workspace_get_object_files_folder_path(), (workspace + "/documents").c_str());
                  EXPECT_STREQ(ov_workspace_get_templates_folder_path(), (workspace + "/templates").c_str());
                  for (const char *name : {"codesets", "layouts", "documents", "templates"})
                      EXPECT_TRUE(is_folder(workspace + "/" + name)) << name;
                  EXPECT_FALSE(file_exists(workspace + "/fonts"));
                  EXPECT_EQ(read_file(workspace + "/templates/mine.template"), "mine");
                  // Opening never writes the pointer file.
                  EXPECT_FALSE(file_exists(dir.file("config/orvane/orvane.xml")));
                  ov_workspace_close();
                  EXPECT_EQ(ov_workspace_get_workspace_folder_path(), nullptr);
                  return true;
              }));
}

TEST(Workspace, OpenFailsAndLeavesNoState)
{
    struct Case {
        const char *what;
        std::function<void(const std::string &workspace)> prepare;
    };
    const Case cases[] = {
        {"no folder", [](const std::string &) {}},
        {"a file instead of the folder", [](const std::string &w) { write_file(w, "x"); }},
        {"a file named layouts",
         [](const std::string &w) {
             g_mkdir(w.c_str(), 0700);
             write_file(w + "/layouts", "x");
         }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        TempDir dir;
        expect_success(ov::test::run_with_home(dir, [&] {
                      c.prepare(dir.file("home/Orvane Workspace"));
                      EXPECT_FALSE(ov_workspace_open());
                      EXPECT_STRNE(ov_error_get(), "");
                      EXPECT_EQ(ov_workspace_get_workspace_folder_path(), nullptr);
                      EXPECT_EQ(ov_workspace_get_codesets_folder_path(), nullptr);
                      return true;
                  }));
    }
}

TEST(Workspace, PointerFile)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  const std::string pointer = dir.file("config/orvane/orvane.xml");
                  char stale[] = "stale";
                  char *path = stale;
                  EXPECT_TRUE(ov_workspace_get_saved_folder_path(&path));
                  EXPECT_EQ(path, nullptr);

                  // The configuration folder itself is made when missing.
                  EXPECT_TRUE(ov_workspace_save_folder_path("/w/My Wörk//")) << ov_error_get();
                  EXPECT_EQ(read_file(pointer), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                "<orvane>\n  <workspace path=\"/w/My Wörk//\"/>\n</orvane>\n");
                  EXPECT_TRUE(ov_workspace_get_saved_folder_path(&path));
                  EXPECT_STREQ(path, "/w/My Wörk");
                  g_free(path);

                  EXPECT_TRUE(ov_workspace_save_folder_path(nullptr));
                  EXPECT_FALSE(file_exists(pointer));
                  EXPECT_TRUE(ov_workspace_save_folder_path(nullptr));

                  const char *broken[] = {
                      "<orvane",
                      "<orvane/>",
                      "<orvane><workspace/></orvane>",
                      "<orvane><workspace path=\"\"/></orvane>",
                      "<orvane><workspace path=\"/a\"/><workspace path=\"/b\"/></orvane>",
                  };
                  for (const char *contents : broken) {
                      write_file(pointer, contents);
                      ov_error_clear();
                      path = nullptr;
                      EXPECT_FALSE(ov_workspace_get_saved_folder_path(&path)) << contents;
                      EXPECT_EQ(path, nullptr);
                      EXPECT_STRNE(ov_error_get(), "");
                  }
                  return true;
              }));
}

TEST(Workspace, PointerFileFolderThatIsAFile)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  g_mkdir(dir.file("config").c_str(), 0700);
                  write_file(dir.file("config/orvane"), "x");
                  ov_error_clear();
                  EXPECT_FALSE(ov_workspace_save_folder_path("/w"));
                  EXPECT_TRUE(g_str_has_prefix(ov_error_get(),
                                               "Error creating/accessing directory for settings in user config dir."));
                  return true;
              }));
}

TEST(Workspace, OpensTheSavedFolder)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  const std::string workspace = dir.file("elsewhere");
                  g_mkdir(workspace.c_str(), 0700);
                  EXPECT_TRUE(ov_workspace_save_folder_path((workspace + "/").c_str()));
                  EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
                  EXPECT_STREQ(ov_workspace_get_workspace_folder_path(), workspace.c_str());
                  ov_workspace_close();

                  // A broken pointer file falls back to the default folder.
                  write_file(dir.file("config/orvane/orvane.xml"), "<broken");
                  g_mkdir(dir.file("home/Orvane Workspace").c_str(), 0700);
                  EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
                  EXPECT_STREQ(ov_workspace_get_workspace_folder_path(), dir.file("home/Orvane Workspace").c_str());
                  ov_workspace_close();
                  return true;
              }));
}

TEST(Workspace, CreateInstallsShippedComponentsAndSavesThePointer)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  make_installation(dir);
                  const std::string workspace = dir.file("home/W");
                  EXPECT_TRUE(ov_workspace_create((workspace + "//").c_str())) << ov_error_get();
                  EXPECT_EQ(read_file(workspace + "/codesets/a.codeset"), "shipped a");
                  EXPECT_EQ(read_file(workspace + "/layouts/standard.layout"), "shipped standard");
                  EXPECT_EQ(read_file(workspace + "/templates/paper.template"), "shipped paper");
                  // Folders of the installation are not copied.
                  EXPECT_FALSE(file_exists(workspace + "/layouts/subfolder"));
                  char *saved = nullptr;
                  EXPECT_TRUE(ov_workspace_get_saved_folder_path(&saved));
                  EXPECT_STREQ(saved, workspace.c_str());
                  g_free(saved);

                  ov_error_clear();
                  EXPECT_FALSE(ov_workspace_create(workspace.c_str()));
                  EXPECT_STRNE(ov_error_get(), "");

                  EXPECT_TRUE(ov_workspace_open());
                  EXPECT_STREQ(ov_workspace_get_workspace_folder_path(), workspace.c_str());
                  ov_workspace_close();
                  return true;
              }));
}

TEST(Workspace, FailedCreateLeavesNothingBehind)
{
    struct Case {
        const char *what;
        std::function<void(const TempDir &)> break_it;
    };
    const Case cases[] = {
        {"templates cannot be copied",
         [](const TempDir &dir) {
             g_unlink(dir.file("install/templates/painting.template").c_str());
             g_unlink(dir.file("install/templates/paper.template").c_str());
             g_rmdir(dir.file("install/templates").c_str());
             write_file(dir.file("install/templates"), "not a folder");
         }},
        {"the pointer file cannot be written", [](const TempDir &dir) {
             g_mkdir(dir.file("config").c_str(), 0700);
             write_file(dir.file("config/orvane"), "x");
         }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        TempDir dir;
        expect_success(ov::test::run_with_home(dir, [&] {
                      make_installation(dir);
                      c.break_it(dir);
                      ov_error_clear();
                      EXPECT_FALSE(ov_workspace_create(dir.file("home/W").c_str()));
                      EXPECT_STRNE(ov_error_get(), "");
                      EXPECT_FALSE(file_exists(dir.file("home/W")));
                      EXPECT_FALSE(file_exists(dir.file("config/orvane/orvane.xml")));
                      return true;
                  }));
    }
}

TEST(Workspace, InstallNeverOverwrites)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  make_installation(dir);
                  const std::string workspace = dir.file("W");
                  g_mkdir_with_parents((workspace + "/templates").c_str(), 0700);
                  write_file(workspace + "/templates/paper.template", "changed by the user");
                  EXPECT_TRUE(ov_workspace_install_components(workspace.c_str(), "templates"));
                  EXPECT_EQ(read_file(workspace + "/templates/paper.template"), "changed by the user");
                  EXPECT_EQ(read_file(workspace + "/templates/painting.template"), "shipped painting");
                  // Nothing shipped of a kind is success.
                  EXPECT_TRUE(ov_workspace_install_components(workspace.c_str(), "fonts"));
                  EXPECT_FALSE(file_exists(workspace + "/fonts"));
                  return true;
              }));
}

TEST(Workspace, LayoutUpgradesFollowTheChecksums)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  make_installation(dir);
                  const std::string layouts = dir.file("home/Orvane Workspace/layouts");
                  g_mkdir_with_parents(layouts.c_str(), 0700);
                  // The suite's own sums are of files we do not have; an
                  // unchanged open keeps every layout.
                  write_file(layouts + "/standard.layout", "the user's standard");
                  write_file(layouts + "/bundled_modern.layout", "the user's modern");
                  EXPECT_TRUE(ov_workspace_open());
                  EXPECT_EQ(read_file(layouts + "/standard.layout"), "the user's standard");
                  EXPECT_EQ(read_file(layouts + "/bundled_modern.layout"), "the user's modern");

                  const std::string old_standard = "old standard";
                  const std::string old_modern = "old modern";
                  const std::string old_simple = "old simple";
                  const std::string md5_standard = md5_of(old_standard);
                  const std::string md5_modern = md5_of(old_modern);
                  const std::string md5_simple = md5_of(old_simple);
                  const OvLayoutEdition editions[] = {
                      {"bundled_modern.layout", md5_modern.c_str()},
                      {"bundled_simple.layout", md5_simple.c_str()},
                      {"bundled_grey_blocks.layout", md5_modern.c_str()},
                  };
                  write_file(layouts + "/standard.layout", old_standard);
                  write_file(layouts + "/bundled_modern.layout", old_modern);
                  // Not shipped any more: an unchanged old copy stays.
                  write_file(layouts + "/bundled_simple.layout", old_simple);
                  g_unlink(dir.file("install/layouts/bundled_grey_blocks.layout").c_str());
                  ov_workspace_upgrade_layouts(md5_standard.c_str(), editions, 3);
                  EXPECT_EQ(read_file(layouts + "/standard.layout"), "shipped standard");
                  EXPECT_EQ(read_file(layouts + "/bundled_modern.layout"), "shipped modern");
                  EXPECT_EQ(read_file(layouts + "/bundled_simple.layout"), old_simple);
                  EXPECT_FALSE(file_exists(layouts + "/bundled_grey_blocks.layout"));

                  // A changed copy is left alone.
                  write_file(layouts + "/standard.layout", "changed");
                  write_file(layouts + "/bundled_modern.layout", "changed");
                  ov_workspace_upgrade_layouts(md5_standard.c_str(), editions, 3);
                  EXPECT_EQ(read_file(layouts + "/standard.layout"), "changed");
                  EXPECT_EQ(read_file(layouts + "/bundled_modern.layout"), "changed");
                  ov_workspace_close();
                  return true;
              }));
}

struct Events {
    std::vector<std::string> list;
    static void record(const char *kind, OvWorkspaceObjectFile *object_file, gpointer data)
    {
        static_cast<Events *>(data)->list.push_back(std::string(kind) + " " + object_file->object_id);
    }
    std::string take()
    {
        std::string text;
        for (const auto &event : list)
            text += (text.empty() ? "" : ", ") + event;
        list.clear();
        return text;
    }
};

TEST(Workspace, RefreshReportsAddedChangedAndRemovedObjectFiles)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  const std::string documents = dir.file("home/Orvane Workspace/documents");
                  g_mkdir_with_parents(documents.c_str(), 0700);
                  write_file(documents + "/A.orvane", "a");
                  write_file(documents + "/B`2fC.orvane", "b");
                  write_file(documents + "/bad`zz.orvane", "ignored: not a FAT-safe name");
                  write_file(documents + "/note.txt", "ignored");
                  write_file(documents + "/.orvane", "ignored: no name");
                  g_mkdir((documents + "/D.orvane").c_str(), 0700);
                  EXPECT_TRUE(ov_workspace_open());

                  Events events;
                  ov_workspace_set_object_file_added_callback(
                      [](OvWorkspaceObjectFile *f, gpointer d) { Events::record("added", f, d); }, &events);
                  ov_workspace_set_object_file_changed_callback(
                      [](OvWorkspaceObjectFile *f, gpointer d) { Events::record("changed", f, d); }, &events);
                  ov_workspace_set_object_file_removed_callback(
                      [](OvWorkspaceObjectFile *f, gpointer d) { Events::record("removed", f, d); }, &events);

                  EXPECT_TRUE(ov_workspace_refresh());
                  std::vector<std::string> added = events.list;
                  std::sort(added.begin(), added.end());
                  EXPECT_EQ(added, (std::vector<std::string>{"added A", "added B/C"}));
                  events.list.clear();

                  EXPECT_TRUE(ov_workspace_refresh());
                  EXPECT_EQ(events.take(), "");

                  struct utimbuf times = {1000000000, 1000000000};
                  utime((documents + "/A.orvane").c_str(), &times);
                  g_unlink((documents + "/B`2fC.orvane").c_str());
                  EXPECT_TRUE(ov_workspace_refresh());
                  EXPECT_EQ(events.take(), "changed A, removed B/C");

                  EXPECT_TRUE(ov_workspace_get_object_file_status("A"));
                  EXPECT_FALSE(ov_workspace_get_object_file_status("B/C"));
                  EXPECT_FALSE(ov_workspace_get_object_file_status("D"));
                  ov::GStr path = ov::gstr(ov_workspace_create_object_file_path("B/C"));
                  EXPECT_EQ(std::string(path.get()), documents + "/B`2fC.orvane");
                  EXPECT_TRUE(ov_workspace_has_object_file_path((documents + "/A.orvane").c_str()));
                  EXPECT_FALSE(ov_workspace_has_object_file_path(dir.file("home/A.orvane").c_str()));
                  ov_workspace_close();
                  return true;
              }));
}

TEST(Workspace, ReadsCodesetsByName)
{
    TempDir dir;
    expect_success(ov::test::run_with_home(dir, [&] {
                  ov_error_clear();
                  EXPECT_EQ(ov_codeset_io_read_from_file_in_workspace("a.codeset"), nullptr);
                  EXPECT_STREQ(ov_error_get(), "No workspace is open.");

                  g_mkdir_with_parents(dir.file("home/Orvane Workspace/codesets").c_str(), 0700);
                  write_file(dir.file("home/Orvane Workspace/codesets/a.codeset"),
                             "<codeset><name lang=\"sv\">A</name><remark><code>1</code>"
                             "<description lang=\"sv\">x</description></remark></codeset>");
                  EXPECT_TRUE(ov_workspace_open());
                  OvCodeset *codeset = ov_codeset_io_read_from_file_in_workspace("a.codeset");
                  EXPECT_NE(codeset, nullptr) << ov_error_get();
                  ov_codeset_destroy(codeset);
                  ov_workspace_close();
                  return true;
              }));
}

} // namespace
