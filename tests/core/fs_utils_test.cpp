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

using ov::test::write_file;

std::string str(char *text)
{
    ov::GStr owned(text);
    return text != nullptr ? text : "(null)";
}

class FsUtilsTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
    std::string file(const char *name) const { return dir.file(name); }
    ov::test::TempDir dir;
};

TEST_F(FsUtilsTest, FailuresPutTheirSentenceOnTheSystemTextAndKeepErrno)
{
    write_file(file("file"), "x");
    ASSERT_EQ(mkdir(file("full").c_str(), 0755), 0);
    write_file(file("full/inside"), "x");
    const std::string missing = file("missing");
    OvFileInfo info;
    const struct {
        std::function<bool()> call;
        const char *sentence;
        int code;
    } cases[] = {
        {[&] { return ov_fs_utils_open_file(missing.c_str(), "rb"); }, "Cannot open file.", ENOENT},
        {[&] { return ov_fs_utils_open_folder(file("file").c_str()); }, "Cannot open folder.", ENOTDIR},
        {[&] { return ov_fs_utils_create_folder(dir.path().c_str()); }, "Cannot create folder.", EEXIST},
        {[&] { return ov_fs_utils_delete_file_if_exists(file("full").c_str()); }, "Cannot unlink file.",
         EISDIR},
        {[&] { return ov_fs_utils_delete_folder_if_exists(file("full").c_str()); }, "Cannot delete folder.",
         ENOTEMPTY},
        {[&] { return ov_fs_utils_rename(missing.c_str(), file("to").c_str()); },
         "Cannot rename file/folder.", ENOENT},
        {[&] { return ov_fs_utils_get_info(file("file/x").c_str(), &info); }, "Cannot get file status.",
         ENOTDIR},
        {[&] { return str(ov_fs_utils_read_link(file("file").c_str())) != "(null)"; },
         "Could not read symlink contents.", EINVAL},
    };
    for (const auto &c : cases) {
        ov_error_set("stale");
        EXPECT_FALSE(c.call()) << c.sentence;
        EXPECT_EQ(ov_error_get(), std::string(c.sentence) + "\n\nError " + std::to_string(c.code) + ": " +
                                      g_strerror(c.code));
        EXPECT_EQ(ov_fs_utils_get_last_errno(), c.code);
    }
    EXPECT_TRUE(ov::test::file_exists(file("full/inside")));
}

TEST_F(FsUtilsTest, MissingEntriesCountAsDeletedAndGiveAnAllZeroRecord)
{
    ov_fs_utils_create_folder(dir.path().c_str()); // leaves EEXIST as the last errno
    ov_error_set("untouched");
    EXPECT_TRUE(ov_fs_utils_delete_file_if_exists(file("missing").c_str()));
    EXPECT_TRUE(ov_fs_utils_delete_folder_if_exists(file("missing").c_str()));
    ASSERT_EQ(symlink(file("missing").c_str(), file("dangling").c_str()), 0); // followed to nothing
    for (const char *name : {"missing", "dangling"}) {
        OvFileInfo info, zero{};
        std::memset(&info, 0x5a, sizeof info);
        EXPECT_TRUE(ov_fs_utils_get_info(file(name).c_str(), &info));
        EXPECT_EQ(std::memcmp(&info, &zero, sizeof info), 0) << name;
    }
    EXPECT_STREQ(ov_error_get(), "untouched");
    EXPECT_EQ(ov_fs_utils_get_last_errno(), EEXIST);
}

TEST_F(FsUtilsTest, FilesAndFoldersAreCreatedDescribedRenamedAndDeleted)
{
    const std::string path = file("n\xc3\xa4me.txt"), renamed = file("other name.txt");
    FILE *stream = ov_fs_utils_open_file(path.c_str(), "wb");
    ASSERT_NE(stream, nullptr);
    fputs("12345", stream);
    EXPECT_TRUE(ov_fs_utils_close_file(stream));
    EXPECT_TRUE(ov_fs_utils_close_file(nullptr));
    EXPECT_TRUE(ov_fs_utils_close_folder(nullptr));
    EXPECT_TRUE(ov_fs_utils_rename(path.c_str(), renamed.c_str()));
    EXPECT_FALSE(ov::test::file_exists(path));
    ASSERT_EQ(symlink(renamed.c_str(), file("link").c_str()), 0);
    const mode_t old_mask = umask(0);
    EXPECT_TRUE(ov_fs_utils_create_folder(file("private").c_str()));
    umask(old_mask);

    struct stat status;
    ASSERT_EQ(stat(renamed.c_str(), &status), 0);
    const auto described = [](const char *path) {
        OvFileInfo info{};
        const gboolean ok = ov_fs_utils_get_info(path, &info);
        return std::to_string(ok) + std::to_string(info.exists) + std::to_string(info.is_folder) +
               std::to_string(info.is_regular_file) + " " + std::to_string(info.size) + " " +
               std::to_string(info.modification_time);
    };
    const std::string file_info = "1101 5 " + std::to_string(status.st_mtime);
    EXPECT_EQ(described(renamed.c_str()), file_info);
    EXPECT_EQ(described(file("link").c_str()), file_info);
    EXPECT_TRUE(g_str_has_prefix(described(file("private").c_str()).c_str(), "1110 "));
    EXPECT_TRUE(g_str_has_prefix(described("/dev/null").c_str(), "1100 "));
    ASSERT_EQ(stat(file("private").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u); // for the owner only

    EXPECT_TRUE(ov_fs_utils_delete_file_if_exists(renamed.c_str()));
    EXPECT_TRUE(ov_fs_utils_delete_folder_if_exists(file("private").c_str()));
    EXPECT_FALSE(ov::test::file_exists(renamed) || ov::test::file_exists(file("private")));
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(FsUtilsTest, RecursiveCreationMakesOnlyMissingAncestors)
{
    ASSERT_EQ(mkdir(file("a").c_str(), 0755), 0);
    write_file(file("a/keep"), "x");
    EXPECT_TRUE(ov_fs_utils_create_folder_recursively(file("a//b/c/d//").c_str()));
    EXPECT_TRUE(g_file_test(file("a/b/c/d").c_str(), G_FILE_TEST_IS_DIR));
    EXPECT_EQ(ov::test::read_file(file("a/keep")), "x");
    // The folder itself must be new, and a file holds no folders.
    for (auto [path, code] : {std::pair{file("a/b"), EEXIST}, {file("a/keep/x/y"), ENOTDIR}, {"/", EEXIST}}) {
        EXPECT_FALSE(ov_fs_utils_create_folder_recursively(path.c_str()));
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot create folder.\n\nError ")) << ov_error_get();
        EXPECT_EQ(ov_fs_utils_get_last_errno(), code) << path;
    }
    // Relative paths stop at their empty parent.
    const std::string root = dir.path();
    EXPECT_EQ(ov::test::run_in_child([&] {
                  return chdir(root.c_str()) == 0 && ov_fs_utils_create_folder_recursively("rel/sub/leaf") &&
                         ov_fs_utils_create_folder_recursively("top");
              }),
              0);
    EXPECT_TRUE(g_file_test(file("rel/sub/leaf").c_str(), G_FILE_TEST_IS_DIR));
    EXPECT_TRUE(g_file_test(file("top").c_str(), G_FILE_TEST_IS_DIR));
}

TEST_F(FsUtilsTest, ListingGivesUtf8NamesAndFailsOnlyTheEntryThatIsNot)
{
    for (const char *name : {"plain", "with space",
                             "\xc3\xbc"
                             "ber",
                             ".hidden", "bad\xff"})
        write_file(file(name), "");
    DIR *folder = ov_fs_utils_open_folder(dir.path().c_str());
    ASSERT_NE(folder, nullptr);
    std::set<std::string> seen;
    std::vector<std::string> failures;
    for (;;) {
        char *name = reinterpret_cast<char *>(1);
        if (!ov_fs_utils_next_folder_entry(folder, &name)) {
            failures.push_back(name == nullptr ? ov_error_get() : "(name set)");
            continue;
        }
        if (name == nullptr)
            break;
        seen.insert(str(name));
    }
    char *name = reinterpret_cast<char *>(1);
    EXPECT_TRUE(ov_fs_utils_next_folder_entry(folder, &name)); // the end stays the end
    EXPECT_EQ(name, nullptr);
    EXPECT_TRUE(ov_fs_utils_close_folder(folder));
    EXPECT_EQ(seen, (std::set<std::string>{".", "..", ".hidden", "plain", "with space",
                                           "\xc3\xbc"
                                           "ber"}));
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_TRUE(g_str_has_prefix(failures[0].c_str(), "Could not convert filename to unicode.\n\nGError "));
}

TEST_F(FsUtilsTest, PathsThatAreNotUtf8CannotBeUsed)
{
    const std::string bad = file("bad\xff");
    const int errno_before = ov_fs_utils_get_last_errno();
    OvFileInfo info;
    const std::vector<std::function<bool()>> calls = {
        [&] { return ov_fs_utils_open_file(bad.c_str(), "wb") != nullptr; },
        [&] { return ov_fs_utils_create_folder_recursively(bad.c_str()) != 0; },
        [&] { return ov_fs_utils_delete_file_if_exists(bad.c_str()) != 0; },
        [&] { return ov_fs_utils_rename(dir.path().c_str(), bad.c_str()) != 0; },
        [&] { return ov_fs_utils_get_info(bad.c_str(), &info) != 0; },
        [&] { return str(ov_fs_utils_read_link(bad.c_str())) != "(null)"; },
        [&] { return str(ov_fs_utils_convert_utf8_to_glibfsenc(bad.c_str())) != "(null)"; },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
        ov_error_clear();
        EXPECT_FALSE(calls[i]()) << i;
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not use filename.\n\nGError ")) << ov_error_get();
    }
    EXPECT_EQ(ov_fs_utils_get_last_errno(), errno_before);
    EXPECT_FALSE(g_file_test(bad.c_str(), G_FILE_TEST_EXISTS));
    EXPECT_EQ(ov_fs_utils_convert_glibfsenc_to_utf8("bad\xff"), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not convert filename to unicode.\n\nGError "));
    EXPECT_EQ(str(ov_fs_utils_convert_osfsenc_to_utf8("\xc3\xa4/b c")), "\xc3\xa4/b c");
}

TEST_F(FsUtilsTest, ReadsLinkTargetsOfAnyLength)
{
    for (const std::string &target : {std::string("t\xc3\xa4rget"), std::string(1000, 'x') + "/end",
                                      std::string(256, 'y'), std::string("bad\xff")}) {
        ASSERT_EQ(symlink(target.c_str(), file("link").c_str()), 0);
        EXPECT_EQ(str(ov_fs_utils_read_link(file("link").c_str())), target != "bad\xff" ? target : "(null)");
        unlink(file("link").c_str());
    }
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not convert symlink contents to unicode.\n\n"
                                                 "Could not convert filename to unicode.\n\nGError "))
        << ov_error_get();
}

// Applies an in-place change to a copy of path.
std::string changed(const char *path, const std::function<void(char *)> &change)
{
    ov::GStr copy(g_strdup(path));
    change(copy.get());
    return copy.get();
}

TEST(FsUtilsPathTest, PathTexts)
{
    for (auto [path, stripped, parent, folder] : {std::tuple{"", "", "", ""},
                                                  {"/", "", "", "/"},
                                                  {"///", "", "", "/"},
                                                  {"a", "a", "", "a/"},
                                                  {"a/b//", "a/b", "a/b", "a/b/"},
                                                  {"/w//a", "/w//a", "/w", "/w//a/"},
                                                  {"//a", "//a", "", "//a/"}}) {
        SCOPED_TRACE(path);
        size_t length = 0;
        EXPECT_EQ(changed(path, [&](char *p) { length = ov_fs_utils_strip_ending_path_delimiters(p); }),
                  stripped);
        EXPECT_EQ(length, std::strlen(stripped));
        EXPECT_EQ(changed(path, ov_fs_utils_strip_entry_name_from_path), parent);
        EXPECT_EQ(str(ov_fs_utils_end_folder_path_with_a_single_delimiter(path)), folder);
    }
    for (auto [path, name] : {std::pair{"/w/a.x", "a.x"}, {"a", "a"}, {"/w/", ""}, {"", ""}, {"//a", "a"}})
        EXPECT_EQ(ov_fs_utils_find_entry_name_in_path(path), path + std::strlen(path) - std::strlen(name))
            << path;
    char writable[] = "/w/name";
    EXPECT_EQ(ov_fs_utils_find_entry_name_in_path(writable), writable + 3);

    for (auto [path, name, expected] : {std::tuple{"/w/xa.template", "a.template", false},
                                        {"/w/a.template", "a.template", true},
                                        {"a.template", "a.template", true},
                                        {"/w/a.templatex", "a.template", false},
                                        {"a", "ab", false},
                                        {"w/a", "w/a", true},
                                        {"", "a", false}})
        EXPECT_EQ(ov_fs_utils_is_file_name_in_path(path, name) != FALSE, expected) << path << " | " << name;

    for (auto [folder, names, expected] :
         {std::tuple{"/w/", std::vector<const char *>{"a", "", "b"}, "/w/a/b"},
          {"", {"", "a"}, "a"},
          {"w///", {"", "x"}, "w/x"},
          {"w", {}, "w"},
          {"", {"", ""}, ""},
          {"/", {"a", "b"}, "/a/b"},
          {"/", {}, "/"},
          {"w", {"sub/", "f"}, "w/sub//f"}})
        EXPECT_EQ(
            str(ov_fs_utils_create_path_in_folder_(folder, names.data(), static_cast<int>(names.size()))),
            expected)
            << folder;
    EXPECT_EQ(str(ov_fs_utils_create_path_in_folder("/w/", "a", "", "b.x", nullptr)), "/w/a/b.x");
}

} // namespace
