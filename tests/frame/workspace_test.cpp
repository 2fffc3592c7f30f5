#include "frame/workspace.h"

#include "core/error.h"
#include "core/raii.h"
#include "frame/frame_test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>

#include <set>
#include <string>
#include <tuple>
#include <utime.h>

namespace
{

using namespace ov::test;

// A fake installation folder; each shipped file holds "shipped <its name>".
void make_installation(const TempDir &dir)
{
    for (const char *folder : {"codesets", "layouts/subfolder", "templates"})
        make_folder(dir.file("install/") + folder);
    for (const char *name : {"codesets/a.codeset", "layouts/standard.layout", "layouts/bundled_modern.layout",
                             "templates/painting.template", "templates/paper.template"})
        write_file(dir.file("install/") + name, std::string("shipped ") + name);
    ov_workspace_set_install_folder_path(dir.file("install").c_str());
}

TEST(Workspace, PointerFileAndOpeningTheSavedOrTheDefaultFolder)
{
    run_with_home([&](const TempDir &dir) {
        const std::string pointer = dir.file("config/orvane/orvane.xml");
        char *path = const_cast<char *>("stale");
        EXPECT_TRUE(ov_workspace_get_saved_folder_path(&path));
        EXPECT_EQ(path, nullptr);
        EXPECT_TRUE(ov_workspace_save_folder_path("/w/My Wörk//")) << ov_error_get();
        EXPECT_EQ(read_file(pointer), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                      "<orvane>\n  <workspace path=\"/w/My Wörk//\"/>\n</orvane>\n");
        EXPECT_TRUE(ov_workspace_get_saved_folder_path(&path));
        EXPECT_STREQ(ov::GStr(path).get(), "/w/My Wörk");
        for (const char *broken : {"<orvane", "<orvane><workspace path=\"Orvane Workspace\"/></orvane>"}) {
            write_file(pointer, broken);
            EXPECT_FALSE(ov_workspace_get_saved_folder_path(&path)) << broken;
            EXPECT_EQ(path, nullptr);
            EXPECT_STRNE(ov_error_get(), "");
            ov_error_clear();
        }
        EXPECT_TRUE(ov_workspace_save_folder_path(nullptr) && ov_workspace_save_folder_path(nullptr));
        EXPECT_FALSE(file_exists(pointer));

        // A file where the workspace or one of its folders belongs is refused.
        const std::string workspace = dir.file("home/Orvane Workspace");
        make_folder(workspace);
        write_file(workspace + "/layouts", "x");
        EXPECT_FALSE(ov_workspace_open());
        EXPECT_STRNE(ov_error_get(), "");
        EXPECT_EQ(ov_workspace_get_codesets_folder_path(), nullptr); // nothing kept
        g_unlink((workspace + "/layouts").c_str());

        EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
        EXPECT_EQ(ov_workspace_get_object_files_folder_path(), workspace + "/documents");
        EXPECT_TRUE(g_file_test(ov_workspace_get_templates_folder_path(), G_FILE_TEST_IS_DIR));
        EXPECT_FALSE(g_file_test(ov_workspace_get_font_files_folder_path(), G_FILE_TEST_IS_DIR));
        EXPECT_FALSE(file_exists(pointer)); // opening never writes it
        ov_workspace_close();

        // The saved folder is opened; a broken pointer file falls back to the default.
        make_folder(dir.file("other"));
        EXPECT_TRUE(ov_workspace_save_folder_path(dir.file("other/").c_str()));
        for (const std::string &opened : {dir.file("other"), workspace}) {
            EXPECT_TRUE(ov_workspace_open()) << ov_error_get();
            EXPECT_EQ(ov_workspace_get_workspace_folder_path(), opened);
            ov_workspace_close();
            write_file(pointer, "<broken");
        }
    });
}

TEST(Workspace, CreateInstallsTheShippedFilesWithoutOverwritingAndSavesThePointer)
{
    run_with_home([&](const TempDir &dir) {
        make_installation(dir);
        const std::string folder = dir.file("home/W/");
        EXPECT_TRUE(ov_workspace_create((folder + "/").c_str())) << ov_error_get();
        EXPECT_EQ(read_file(folder + "layouts/standard.layout"), "shipped layouts/standard.layout");
        EXPECT_FALSE(file_exists(folder + "layouts/subfolder"));
        EXPECT_TRUE(ov_workspace_open());
        EXPECT_EQ(ov_workspace_get_workspace_folder_path() + std::string("/"), folder);
        ov_workspace_close();
        EXPECT_FALSE(ov_workspace_create(folder.c_str())); // exists already

        write_file(folder + "templates/paper.template", "the user's");
        g_unlink((folder + "templates/painting.template").c_str());
        EXPECT_TRUE(ov_workspace_install_components(folder.c_str(), "templates"));
        EXPECT_EQ(read_file(folder + "templates/paper.template"), "the user's");
        EXPECT_EQ(read_file(folder + "templates/painting.template"), "shipped templates/painting.template");
        ov_error_clear();
    });
}

TEST(Workspace, FailedCreateUndoesEveryStep)
{
    run_with_home([&](const TempDir &dir) {
        make_installation(dir);
        make_folder(dir.file("config"));
        write_file(dir.file("config/orvane"), "x"); // no folder for the pointer file
        EXPECT_FALSE(ov_workspace_create(dir.file("home/W").c_str()));
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Error creating/accessing directory for settings"));
        EXPECT_FALSE(file_exists(dir.file("home/W")));
    });
}

TEST(Workspace, LayoutUpgradesReplaceOnlyUnchangedEarlierEditions)
{
    run_with_home([&](const TempDir &dir) {
        make_installation(dir);
        const std::string layouts = dir.file("home/Orvane Workspace/layouts/");
        make_folder(layouts);
        EXPECT_TRUE(ov_workspace_open());
        auto md5 = [](const char *text) {
            return ov::gstr(g_compute_checksum_for_string(G_CHECKSUM_MD5, text, -1));
        };
        const ov::GStr standard = md5("old standard"), modern = md5("old modern");
        const OvLayoutEdition editions[] = {{"bundled_modern.layout", modern.get()}};
        const std::tuple<const char *, const char *, bool> copies[] = {
            {"bundled_modern.layout", "old modern", true}, {"standard.layout", "changed", false}};
        for (const auto &[name, text, replaced] : copies) {
            write_file(layouts + name, text);
            ov_workspace_upgrade_layouts(standard.get(), editions, 1);
            EXPECT_EQ(read_file(layouts + name), replaced ? std::string("shipped layouts/") + name : text);
        }
        ov_workspace_close();
    });
}

TEST(Workspace, RefreshReportsAddedChangedAndRemovedObjectFiles)
{
    run_with_home([&](const TempDir &dir) {
        const std::string documents = dir.file("home/Orvane Workspace/documents/");
        make_folder(documents + "D.orvane"); // a folder, a bad name, another type: ignored
        for (const char *name : {"A.orvane", "B`2fC.orvane", "bad`zz.orvane", "note.txt"})
            write_file(documents + name, "x");
        EXPECT_TRUE(ov_workspace_open());
        static std::set<std::string> events;
        auto record = [](OvWorkspaceObjectFile *file, gpointer kind) {
            events.insert(std::string(static_cast<const char *>(kind)) + " " + file->object_id);
        };
        ov_workspace_set_object_file_added_callback(record, const_cast<char *>("added"));
        ov_workspace_set_object_file_changed_callback(record, const_cast<char *>("changed"));
        ov_workspace_set_object_file_removed_callback(record, const_cast<char *>("removed"));
        using Events = std::set<std::string>;
        auto refresh = [] {
            events.clear();
            EXPECT_TRUE(ov_workspace_refresh());
            return events;
        };
        EXPECT_EQ(refresh(), (Events{"added A", "added B/C"}));
        EXPECT_EQ(refresh(), Events{});
        struct utimbuf times = {1000000000, 1000000000};
        utime((documents + "A.orvane").c_str(), &times);
        g_unlink((documents + "B`2fC.orvane").c_str());
        EXPECT_EQ(refresh(), (Events{"changed A", "removed B/C"}));
        ov_workspace_close();
    });
}

} // namespace
