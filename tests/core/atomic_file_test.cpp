#include "core/atomic_file.h"

#include "core/error.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace {

using ov::test::TempDir;

// Names of the entries in a folder, sorted, separated by spaces.
std::string folder_listing(const std::string &path)
{
    GDir *dir = g_dir_open(path.c_str(), 0, nullptr);
    std::vector<std::string> names;
    for (const char *name = g_dir_read_name(dir); name != nullptr; name = g_dir_read_name(dir))
        names.emplace_back(name);
    g_dir_close(dir);
    std::sort(names.begin(), names.end());
    std::string text;
    for (const auto &name : names)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

mode_t file_mode(const std::string &path)
{
    struct stat info;
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    return info.st_mode & 07777;
}

bool write_all(OvAtomicFile *file, const std::string &bytes)
{
    FILE *stream = ov_atomic_file_get_stream(file);
    return fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

TEST(AtomicFile, CommitReplacesContentsAndKeepsMode)
{
    ov_error_clear();
    TempDir dir;
    const std::string path = dir.file("a.codeset");
    ov::test::write_file(path, "old contents");
    chmod(path.c_str(), 0640);

    OvAtomicFile *file = ov_atomic_file_open(path.c_str());
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(write_all(file, "new"));
    // The target stays as it was until the commit.
    EXPECT_EQ(ov::test::read_file(path), "old contents");
    ASSERT_TRUE(ov_atomic_file_commit(file));

    EXPECT_EQ(ov::test::read_file(path), "new");
    EXPECT_EQ(file_mode(path), 0640u);
    EXPECT_EQ(folder_listing(dir.path()), "a.codeset");
    EXPECT_STREQ(ov_error_get(), "");
}

TEST(AtomicFile, CreatesMissingFileWithUmaskMode)
{
    TempDir dir;
    const std::string path = dir.file("new.xml");
    mode_t old_mask = umask(022);
    OvAtomicFile *file = ov_atomic_file_open(path.c_str());
    umask(old_mask);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(write_all(file, ""));
    ASSERT_TRUE(ov_atomic_file_commit(file));
    EXPECT_EQ(ov::test::read_file(path), "");
    EXPECT_EQ(file_mode(path), 0644u);
}

TEST(AtomicFile, SymbolicLinkStaysALink)
{
    TempDir dir;
    const std::string target = dir.file("target.xml");
    const std::string link = dir.file("link.xml");
    ov::test::write_file(target, "old");
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);

    OvAtomicFile *file = ov_atomic_file_open(link.c_str());
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(write_all(file, "new"));
    ASSERT_TRUE(ov_atomic_file_commit(file));

    struct stat info;
    ASSERT_EQ(lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    EXPECT_EQ(ov::test::read_file(target), "new");
    EXPECT_EQ(folder_listing(dir.path()), "link.xml target.xml");
}

TEST(AtomicFile, DiscardKeepsOldFileAndLeavesNoTemporaryFile)
{
    TempDir dir;
    const std::string path = dir.file("a.xml");
    ov::test::write_file(path, "old");
    OvAtomicFile *file = ov_atomic_file_open(path.c_str());
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(write_all(file, "half"));
    ov_atomic_file_discard(file);
    ov_atomic_file_discard(nullptr);
    EXPECT_EQ(ov::test::read_file(path), "old");
    EXPECT_EQ(folder_listing(dir.path()), "a.xml");
}

TEST(AtomicFile, OpenInMissingFolderFails)
{
    ov_error_clear();
    TempDir dir;
    const std::string path = dir.file("missing/a.xml");
    EXPECT_EQ(ov_atomic_file_open(path.c_str()), nullptr);
    // The C library's own text follows the number.
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot open file.\n\nError 2: ")) << ov_error_get();
    ov_error_clear();
}

TEST(AtomicFile, RenameOntoFolderFailsAndRemovesTemporaryFile)
{
    ov_error_clear();
    TempDir dir;
    const std::string path = dir.file("sub");
    ASSERT_EQ(g_mkdir(path.c_str(), 0700), 0);
    ov::test::write_file(dir.file("sub/inside"), "x");
    OvAtomicFile *file = ov_atomic_file_open(path.c_str());
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(write_all(file, "new"));
    EXPECT_FALSE(ov_atomic_file_commit(file));
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot rename file/folder.\n\nError "));
    EXPECT_EQ(folder_listing(dir.path()), "sub");
    ov_error_clear();
}

// A full disk, played by a file size limit: the writes fail part-way.
TEST(AtomicFile, FailedWritesKeepOldFile)
{
    TempDir dir;
    const std::string path = dir.file("settings.xml");
    const std::string old_contents = "<settings>old</settings>\n";
    ov::test::write_file(path, old_contents);
    chmod(path.c_str(), 0604);

    for (bool big_write : {false, true}) {
        SCOPED_TRACE(big_write);
        int status = ov::test::run_in_child([&] {
            signal(SIGXFSZ, SIG_IGN);
            struct rlimit limit = {1000, 1000};
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
                return false;
            ov_error_clear();
            OvAtomicFile *file = ov_atomic_file_open(path.c_str());
            if (file == nullptr)
                return false;
            // Many small writes fail only at a buffer flush; one big write
            // fails at once.
            if (big_write) {
                write_all(file, std::string(5000, 'x'));
            } else {
                for (int i = 0; i < 1000; i++)
                    fprintf(ov_atomic_file_get_stream(file), "<line>%d</line>\n", i);
            }
            if (ov_atomic_file_commit(file))
                return false;
            return g_strcmp0(ov_error_get(), "File I/O error when writing to file.") == 0;
        });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(ov::test::read_file(path), old_contents);
        EXPECT_EQ(file_mode(path), 0604u);
        EXPECT_EQ(folder_listing(dir.path()), "settings.xml");
    }
}

} // namespace
