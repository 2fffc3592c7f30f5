#include "core/fs_utils.h"

#include "core/error.h"
#include "core/raii.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace
{

using ov::test::TempDir;
using ov::test::write_file;

std::string errno_error(const char *sentence, int code)
{
    return std::string(sentence) + "\n\nError " + std::to_string(code) + ": " + g_strerror(code);
}

bool make_folder(const std::string &path)
{
    return mkdir(path.c_str(), 0755) == 0;
}

class FsUtilsTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
    TempDir dir;
};

// Every failing call puts its sentence on top of the C library's text and
// remembers errno.
TEST_F(FsUtilsTest, FailuresGiveTheSentenceOnTopOfTheSystemTextAndTheErrno)
{
    write_file(dir.file("file"), "x");
    ASSERT_TRUE(make_folder(dir.file("full")));
    write_file(dir.file("full/inside"), "x");
    const std::string missing = dir.file("missing");

    struct Case {
        const char *what;
        std::function<bool()> call;
        const char *sentence;
        int code;
    };
    const std::vector<Case> cases = {
        {"open missing file", [&] { return ov_fs_utils_open_file(missing.c_str(), "rb") != nullptr; },
         "Cannot open file.", ENOENT},
        {"open folder as file for writing",
         [&] { return ov_fs_utils_open_file(dir.path().c_str(), "wb") != nullptr; }, "Cannot open file.",
         EISDIR},
        {"open missing folder", [&] { return ov_fs_utils_open_folder(missing.c_str()) != nullptr; },
         "Cannot open folder.", ENOENT},
        {"open file as folder", [&] { return ov_fs_utils_open_folder(dir.file("file").c_str()) != nullptr; },
         "Cannot open folder.", ENOTDIR},
        {"create existing folder", [&] { return ov_fs_utils_create_folder(dir.path().c_str()) != 0; },
         "Cannot create folder.", EEXIST},
        {"create folder in missing parent",
         [&] { return ov_fs_utils_create_folder((missing + "/sub").c_str()) != 0; }, "Cannot create folder.",
         ENOENT},
        {"unlink a folder", [&] { return ov_fs_utils_delete_file_if_exists(dir.file("full").c_str()) != 0; },
         "Cannot unlink file.", EISDIR},
        {"unlink below a file",
         [&] { return ov_fs_utils_delete_file_if_exists(dir.file("file/x").c_str()) != 0; },
         "Cannot unlink file.", ENOTDIR},
        {"delete full folder",
         [&] { return ov_fs_utils_delete_folder_if_exists(dir.file("full").c_str()) != 0; },
         "Cannot delete folder.", ENOTEMPTY},
        {"delete file as folder",
         [&] { return ov_fs_utils_delete_folder_if_exists(dir.file("file").c_str()) != 0; },
         "Cannot delete folder.", ENOTDIR},
        {"rename missing", [&] { return ov_fs_utils_rename(missing.c_str(), dir.file("to").c_str()) != 0; },
         "Cannot rename file/folder.", ENOENT},
        {"rename folder into itself",
         [&] { return ov_fs_utils_rename(dir.file("full").c_str(), dir.file("full/sub").c_str()) != 0; },
         "Cannot rename file/folder.", EINVAL},
        {"status below a file",
         [&] {
             OvFileInfo info;
             return ov_fs_utils_get_info(dir.file("file/x").c_str(), &info) != 0;
         },
         "Cannot get file status.", ENOTDIR},
        {"read link of a plain file",
         [&] {
             ov::GStr target = ov::gstr(ov_fs_utils_read_link(dir.file("file").c_str()));
             return target != nullptr;
         },
         "Could not read symlink contents.", EINVAL},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ov_error_set("stale");
        EXPECT_FALSE(c.call());
        EXPECT_EQ(ov_error_get(), errno_error(c.sentence, c.code));
        EXPECT_EQ(ov_fs_utils_get_last_errno(), c.code);
    }
    EXPECT_TRUE(ov::test::file_exists(dir.file("full/inside")));
    EXPECT_TRUE(ov::test::file_exists(dir.file("file")));
}

TEST_F(FsUtilsTest, MissingEntriesCountAsDeletedAndGiveAnAllZeroRecord)
{
    const std::string missing = dir.file("missing");
    ov_fs_utils_create_folder(dir.path().c_str()); // leaves EEXIST as the last errno
    ov_error_set("untouched");

    EXPECT_TRUE(ov_fs_utils_delete_file_if_exists(missing.c_str()));
    EXPECT_TRUE(ov_fs_utils_delete_folder_if_exists(missing.c_str()));

    OvFileInfo info;
    std::memset(&info, 0x5a, sizeof info);
    EXPECT_TRUE(ov_fs_utils_get_info(missing.c_str(), &info));
    const OvFileInfo zero{};
    EXPECT_EQ(std::memcmp(&info, &zero, sizeof info), 0);

    // A dangling link is followed to nothing.
    ASSERT_EQ(symlink(missing.c_str(), dir.file("dangling").c_str()), 0);
    std::memset(&info, 0x5a, sizeof info);
    EXPECT_TRUE(ov_fs_utils_get_info(dir.file("dangling").c_str(), &info));
    EXPECT_EQ(std::memcmp(&info, &zero, sizeof info), 0);

    EXPECT_STREQ(ov_error_get(), "untouched");
    EXPECT_EQ(ov_fs_utils_get_last_errno(), EEXIST);
}

TEST_F(FsUtilsTest, InfoDescribesFilesFoldersAndFollowsLinks)
{
    write_file(dir.file("file"), "12345");
    ASSERT_TRUE(make_folder(dir.file("folder")));
    ASSERT_EQ(symlink("file", dir.file("link").c_str()), 0);
    struct stat status;
    ASSERT_EQ(stat(dir.file("file").c_str(), &status), 0);

    OvFileInfo info;
    for (const char *name : {"file", "link"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(ov_fs_utils_get_info(dir.file(name).c_str(), &info));
        EXPECT_TRUE(info.exists);
        EXPECT_FALSE(info.is_folder);
        EXPECT_TRUE(info.is_regular_file);
        EXPECT_EQ(info.size, 5u);
        EXPECT_EQ(info.modification_time, status.st_mtime);
    }
    ASSERT_TRUE(ov_fs_utils_get_info(dir.file("folder").c_str(), &info));
    EXPECT_TRUE(info.exists);
    EXPECT_TRUE(info.is_folder);
    EXPECT_FALSE(info.is_regular_file);

    ASSERT_TRUE(ov_fs_utils_get_info("/dev/null", &info));
    EXPECT_TRUE(info.exists);
    EXPECT_FALSE(info.is_folder);
    EXPECT_FALSE(info.is_regular_file);
}

TEST_F(FsUtilsTest, OpensClosesAndRenamesFiles)
{
    const std::string path = dir.file("n\xc3\xa4me.txt");
    FILE *stream = ov_fs_utils_open_file(path.c_str(), "wb");
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(fputs("data", stream), 1);
    EXPECT_TRUE(ov_fs_utils_close_file(stream));
    EXPECT_TRUE(ov_fs_utils_close_file(nullptr));
    EXPECT_TRUE(ov_fs_utils_close_folder(nullptr));

    const std::string renamed = dir.file("other name.txt");
    EXPECT_TRUE(ov_fs_utils_rename(path.c_str(), renamed.c_str()));
    EXPECT_EQ(ov::test::read_file(renamed), "data");
    EXPECT_FALSE(ov::test::file_exists(path));

    ASSERT_TRUE(make_folder(dir.file("folder")));
    EXPECT_TRUE(ov_fs_utils_delete_file_if_exists(renamed.c_str()));
    EXPECT_TRUE(ov_fs_utils_delete_folder_if_exists(dir.file("folder").c_str()));
    EXPECT_FALSE(ov::test::file_exists(renamed));
    EXPECT_FALSE(ov::test::file_exists(dir.file("folder")));
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(FsUtilsTest, CreatesFoldersForTheOwnerOnly)
{
    const mode_t old_mask = umask(0);
    const std::string path = dir.file("private");
    EXPECT_TRUE(ov_fs_utils_create_folder(path.c_str()));
    umask(old_mask);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0700u);
}

TEST_F(FsUtilsTest, CreatesMissingAncestorsAndKeepsExistingOnes)
{
    ASSERT_TRUE(make_folder(dir.file("a")));
    write_file(dir.file("a/keep"), "x");

    EXPECT_TRUE(ov_fs_utils_create_folder_recursively(dir.file("a//b/c/d//").c_str()));
    OvFileInfo info;
    ASSERT_TRUE(ov_fs_utils_get_info(dir.file("a/b/c/d").c_str(), &info));
    EXPECT_TRUE(info.is_folder);
    EXPECT_EQ(ov::test::read_file(dir.file("a/keep")), "x");

    // The folder itself must be new.
    EXPECT_FALSE(ov_fs_utils_create_folder_recursively(dir.file("a/b").c_str()));
    EXPECT_EQ(ov_error_get(), errno_error("Cannot create folder.", EEXIST));
    EXPECT_EQ(ov_fs_utils_get_last_errno(), EEXIST);

    // An ancestor that is a file cannot hold folders.
    write_file(dir.file("file"), "x");
    EXPECT_FALSE(ov_fs_utils_create_folder_recursively(dir.file("file/x/y").c_str()));
    EXPECT_EQ(ov_error_get(), errno_error("Cannot create folder.", ENOTDIR));
}

TEST_F(FsUtilsTest, RecursionStopsAtTheEmptyParentOfRelativeAndRootPaths)
{
    const std::string root = dir.path();
    EXPECT_EQ(ov::test::run_in_child([&] {
                  if (chdir(root.c_str()) != 0)
                      return false;
                  return ov_fs_utils_create_folder_recursively("rel/sub/leaf") &&
                         ov_fs_utils_create_folder_recursively("top");
              }),
              0);
    EXPECT_TRUE(g_file_test(dir.file("rel/sub/leaf").c_str(), G_FILE_TEST_IS_DIR));
    EXPECT_TRUE(g_file_test(dir.file("top").c_str(), G_FILE_TEST_IS_DIR));

    EXPECT_FALSE(ov_fs_utils_create_folder_recursively("/"));
    EXPECT_EQ(ov_fs_utils_get_last_errno(), EEXIST);
}

TEST_F(FsUtilsTest, ListsEveryEntryInUtf8)
{
    const std::set<std::string> names = {"plain", "with space",
                                         "\xc3\xbc"
                                         "ber",
                                         ".hidden"};
    for (const std::string &name : names)
        write_file(dir.file(name), "");
    ASSERT_TRUE(make_folder(dir.file("folder")));

    DIR *folder = ov_fs_utils_open_folder(dir.path().c_str());
    ASSERT_NE(folder, nullptr);
    std::set<std::string> seen;
    char *name = nullptr;
    while (ov_fs_utils_next_folder_entry(folder, &name) && name != nullptr) {
        seen.insert(name);
        g_free(name);
    }
    EXPECT_EQ(name, nullptr);
    // The end stays the end.
    EXPECT_TRUE(ov_fs_utils_next_folder_entry(folder, &name));
    EXPECT_EQ(name, nullptr);
    EXPECT_TRUE(ov_fs_utils_close_folder(folder));

    std::set<std::string> expected = names;
    expected.insert({".", "..", "folder"});
    EXPECT_EQ(seen, expected);
}

TEST_F(FsUtilsTest, AnEntryNameThatIsNotUtf8FailsThatEntryOnly)
{
    write_file(dir.file("bad\xff"), "");
    write_file(dir.file("good"), "");
    DIR *folder = ov_fs_utils_open_folder(dir.path().c_str());
    ASSERT_NE(folder, nullptr);
    int failures = 0;
    std::set<std::string> seen;
    for (;;) {
        char *name = reinterpret_cast<char *>(1);
        if (!ov_fs_utils_next_folder_entry(folder, &name)) {
            ++failures;
            EXPECT_EQ(name, nullptr);
            EXPECT_TRUE(
                g_str_has_prefix(ov_error_get(), "Could not convert filename to unicode.\n\nGError "));
            continue;
        }
        if (name == nullptr)
            break;
        seen.insert(name);
        g_free(name);
    }
    EXPECT_TRUE(ov_fs_utils_close_folder(folder));
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(seen, (std::set<std::string>{".", "..", "good"}));
}

TEST_F(FsUtilsTest, PathsThatAreNotUtf8CannotBeUsed)
{
    const std::string bad = dir.file("bad\xff");
    const int errno_before = ov_fs_utils_get_last_errno();
    OvFileInfo info;
    const std::vector<std::function<bool()>> calls = {
        [&] { return ov_fs_utils_open_file(bad.c_str(), "wb") != nullptr; },
        [&] { return ov_fs_utils_create_folder_recursively(bad.c_str()) != 0; },
        [&] { return ov_fs_utils_delete_file_if_exists(bad.c_str()) != 0; },
        [&] { return ov_fs_utils_rename(dir.path().c_str(), bad.c_str()) != 0; },
        [&] { return ov_fs_utils_get_info(bad.c_str(), &info) != 0; },
        [&] { return ov::gstr(ov_fs_utils_read_link(bad.c_str())) != nullptr; },
        [&] { return ov::gstr(ov_fs_utils_convert_utf8_to_glibfsenc(bad.c_str())) != nullptr; },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(i);
        ov_error_clear();
        EXPECT_FALSE(calls[i]());
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not use filename.\n\nGError ")) << ov_error_get();
    }
    EXPECT_EQ(ov_fs_utils_get_last_errno(), errno_before);
    EXPECT_EQ(g_file_test(bad.c_str(), G_FILE_TEST_EXISTS), FALSE);

    ov_error_clear();
    EXPECT_EQ(ov_fs_utils_convert_glibfsenc_to_utf8("bad\xff"), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not convert filename to unicode.\n\nGError "));

    ov::GStr round_trip = ov::gstr(ov_fs_utils_convert_osfsenc_to_utf8("\xc3\xa4/b c"));
    EXPECT_STREQ(round_trip.get(), "\xc3\xa4/b c");
}

TEST_F(FsUtilsTest, ReadsLinkTargetsOfAnyLength)
{
    const std::vector<std::string> targets = {"t\xc3\xa4rget", std::string(1000, 'x') + "/end",
                                              "../relative/path", std::string(256, 'y')};
    for (size_t i = 0; i < targets.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string link = dir.file("link" + std::to_string(i));
        ASSERT_EQ(symlink(targets[i].c_str(), link.c_str()), 0);
        ov::GStr target = ov::gstr(ov_fs_utils_read_link(link.c_str()));
        ASSERT_NE(target, nullptr);
        EXPECT_EQ(target.get(), targets[i]);
    }

    const std::string link = dir.file("bad link");
    ASSERT_EQ(symlink("bad\xff", link.c_str()), 0);
    EXPECT_EQ(ov_fs_utils_read_link(link.c_str()), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not convert symlink contents to unicode.\n\n"
                                                 "Could not convert filename to unicode.\n\nGError "))
        << ov_error_get();
}

struct PathCase {
    const char *path;
    const char *expected;
};

std::string apply_in_place(const char *path, const std::function<void(char *)> &change)
{
    ov::GStr copy(g_strdup(path));
    change(copy.get());
    return copy.get();
}

TEST(FsUtilsPathTest, StripsEndingDelimiters)
{
    const PathCase cases[] = {{"", ""},         {"/", ""},     {"///", ""},     {"a", "a"},
                              {"a/b//", "a/b"}, {"/a/", "/a"}, {"a//b", "a//b"}};
    for (const PathCase &c : cases) {
        SCOPED_TRACE(c.path);
        size_t length = 0;
        EXPECT_EQ(
            apply_in_place(c.path, [&](char *p) { length = ov_fs_utils_strip_ending_path_delimiters(p); }),
            c.expected);
        EXPECT_EQ(length, std::strlen(c.expected));
    }
}

TEST(FsUtilsPathTest, StripsTheEntryNameWithItsDelimiters)
{
    const PathCase cases[] = {{"/w/a", "/w"}, {"/w//a", "/w"}, {"w/a/", "w/a"}, {"a", ""},
                              {"/a", ""},     {"//a", ""},     {"", ""},        {"a/b/c", "a/b"}};
    for (const PathCase &c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(apply_in_place(c.path, ov_fs_utils_strip_entry_name_from_path), c.expected);
    }
}

TEST(FsUtilsPathTest, FindsTheEntryNameInsideThePath)
{
    const PathCase cases[] = {{"/w/a.x", "a.x"}, {"a", "a"}, {"/w/", ""}, {"", ""}, {"//a", "a"}};
    for (const PathCase &c : cases) {
        SCOPED_TRACE(c.path);
        const char *name = ov_fs_utils_find_entry_name_in_path(c.path);
        EXPECT_STREQ(name, c.expected);
        EXPECT_EQ(name, c.path + std::strlen(c.path) - std::strlen(c.expected));
    }
    char writable[] = "/w/name";
    char *name = ov_fs_utils_find_entry_name_in_path(writable);
    EXPECT_EQ(name, writable + 3);
}

TEST(FsUtilsPathTest, TellsWhetherThePathEndsWithTheFileName)
{
    struct Case {
        const char *path;
        const char *name;
        bool expected;
    };
    const Case cases[] = {
        {"/w/xa.template", "a.template", false},
        {"/w/a.template", "a.template", true},
        {"a.template", "a.template", true},
        {"/w/a.templatex", "a.template", false},
        {"a", "ab", false},
        {"w/a", "w/a", true},
        {"/a", "a", true},
        {"", "a", false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.path) + " | " + c.name);
        EXPECT_EQ(ov_fs_utils_is_file_name_in_path(c.path, c.name) != FALSE, c.expected);
    }
}

TEST(FsUtilsPathTest, EndsFolderPathsWithASingleDelimiter)
{
    const PathCase cases[] = {{"", ""},     {"/", "/"},     {"///", "/"},       {"a", "a/"},
                              {"a/", "a/"}, {"a///", "a/"}, {"/w//x", "/w//x/"}};
    for (const PathCase &c : cases) {
        SCOPED_TRACE(c.path);
        ov::GStr result = ov::gstr(ov_fs_utils_end_folder_path_with_a_single_delimiter(c.path));
        EXPECT_STREQ(result.get(), c.expected);
    }
}

TEST(FsUtilsPathTest, CreatesPathsInFoldersSkippingEmptyNames)
{
    struct Case {
        const char *folder;
        std::vector<const char *> names;
        const char *expected;
    };
    const std::vector<Case> cases = {
        {"/w/", {"a", "", "b"}, "/w/a/b"}, {"", {"a", "b"}, "a/b"}, {"", {"", "a"}, "a"},
        {"w///", {"", "x"}, "w/x"},        {"w", {}, "w"},          {"", {"", ""}, ""},
        {"/", {"a", "b"}, "/a/b"},         {"/", {}, "/"},          {"w", {"sub/", "f"}, "w/sub//f"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.folder);
        ov::GStr path = ov::gstr(
            ov_fs_utils_create_path_in_folder_(c.folder, c.names.data(), static_cast<int>(c.names.size())));
        EXPECT_STREQ(path.get(), c.expected);
    }
    ov::GStr path = ov::gstr(ov_fs_utils_create_path_in_folder("/w/", "a", "", "b.x", nullptr));
    EXPECT_STREQ(path.get(), "/w/a/b.x");
}

} // namespace
