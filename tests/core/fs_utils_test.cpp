// File system calls with their messages, path texts and atomic file writes.
#include "core/fs_utils.h"

#include "core/atomic_file.h"

#include "core/raii.h"
#include "core_test.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <set>

namespace
{

using namespace ov::test;

class FsUtilsTest : public CoreTest
{
  protected:
    std::string file(const char *name) const { return dir.file(name); }
    TempDir dir;
};

// Each failure puts its sentence on the system's text and keeps errno; a
// name that is not UTF-8 fails before any system call and leaves errno.
TEST_F(FsUtilsTest, FailuresSayWhyAndKeepTheLastErrno)
{
    write_file(file("file"), "x");
    const std::string missing = file("missing"), bad = file("bad\xff");
    const std::string unusable = "Could not use filename.\n\nGError ";
    OvFileInfo info;
    const struct {
        std::function<bool()> call;
        std::string sentence;
        int code; // 0: the errno of before
    } cases[] = {
        // clang-format off
        {[&] { return ov_fs_utils_open_file(missing.c_str(), "rb"); }, "Cannot open file.", ENOENT},
        {[&] { return ov_fs_utils_get_info(file("file/x").c_str(), &info); }, "Cannot get file status.", ENOTDIR},
        {[&] { return str(ov_fs_utils_read_link(file("file").c_str())) != "(null)"; }, "Could not read symlink contents.", EINVAL},
        {[&] { return ov_fs_utils_open_file(bad.c_str(), "wb") != nullptr; }, unusable, 0},
        // clang-format on
    };
    for (const auto &c : cases) {
        const int before = ov_fs_utils_get_last_errno();
        ov_error_set("stale");
        EXPECT_FALSE(c.call()) << c.sentence;
        const std::string system =
            c.code ? "Error " + std::to_string(c.code) + ": " + g_strerror(c.code) : "";
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), (c.sentence + (c.code ? "\n\n" : "") + system).c_str()))
            << ov_error_get();
        EXPECT_EQ(ov_fs_utils_get_last_errno(), c.code ? c.code : before) << c.sentence;
    }
    EXPECT_FALSE(file_exists(bad));
}

// Opening for reading never waits on a FIFO or device: what is not a
// regular file is refused with the reason, a directory with the system's.
TEST_F(FsUtilsTest, ReadingRefusesWhatIsNotARegularFileWithoutBlocking)
{
    ASSERT_EQ(mkfifo(file("fifo").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string socket_path = file("socket");
    ASSERT_LT(socket_path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, socket_path.c_str());
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    const std::string not_regular = "Cannot open file.\n\nNot a regular file.";
    const std::string is_directory = std::string("Cannot open file.\n\nError 21: ") + g_strerror(EISDIR);
    const std::string no_device = std::string("Cannot open file.\n\nError 6: ") + g_strerror(ENXIO);
    for (auto [path, mode, expected] : {std::tuple{file("fifo"), "rb", not_regular},
                                        {std::string("/dev/zero"), "rb", not_regular},
                                        {dir.path(), "rb", is_directory},
                                        {socket_path, "rb", no_device}}) {
        EXPECT_EQ(ov_fs_utils_open_file(path.c_str(), mode), nullptr) << path;
        EXPECT_EQ(ov_error_get(), expected) << path;
    }
    close(listener);
    write_file(file("plain"), "abc");
    ov::FilePtr plain(ov_fs_utils_open_file(file("plain").c_str(), "rb"));
    ASSERT_TRUE(plain);
    char buffer[4] = {};
    EXPECT_EQ(fread(buffer, 1, 3, plain.get()), 3u);
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(FsUtilsTest, FilesAndFoldersAreCreatedDescribedRenamedAndDeleted)
{
    const std::string path = file("n\xc3\xa4me.txt"), renamed = file("other name.txt");
    FILE *stream = ov_fs_utils_open_file(path.c_str(), "wb");
    ASSERT_NE(stream, nullptr);
    fputs("12345", stream);
    EXPECT_TRUE(ov_fs_utils_close_file(stream));
    EXPECT_TRUE(ov_fs_utils_rename(path.c_str(), renamed.c_str()));
    ASSERT_EQ(symlink(file("missing").c_str(), file("dangling").c_str()), 0);
    const mode_t old_mask = umask(0);
    EXPECT_TRUE(ov_fs_utils_create_folder(file("private").c_str()));
    umask(old_mask);
    struct stat status;
    ASSERT_EQ(stat(file("private").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u); // for the owner only
    OvFileInfo info;
    ASSERT_TRUE(ov_fs_utils_get_info(renamed.c_str(), &info));
    EXPECT_TRUE(info.exists && info.is_regular_file && !info.is_folder && info.size == 5);
    // What is missing, even behind a link, is an all-zero record.
    std::memset(&info, 0x5a, sizeof info);
    EXPECT_TRUE(ov_fs_utils_get_info(file("dangling").c_str(), &info));
    EXPECT_TRUE(!info.exists && !info.is_folder && !info.is_regular_file && info.size == 0);
    // Missing entries count as deleted.
    EXPECT_TRUE(ov_fs_utils_delete_file_if_exists(file("missing").c_str()));
    EXPECT_TRUE(ov_fs_utils_delete_folder_if_exists(file("private").c_str()));
    EXPECT_FALSE(file_exists(file("private")));
    EXPECT_STREQ(ov_error_get(), "");
}

TEST_F(FsUtilsTest, RecursiveCreationMakesOnlyMissingAncestors)
{
    ASSERT_EQ(mkdir(file("a").c_str(), 0755), 0);
    write_file(file("a/keep"), "x");
    EXPECT_TRUE(ov_fs_utils_create_folder_recursively(file("a//b/c/d//").c_str()));
    EXPECT_TRUE(g_file_test(file("a/b/c/d").c_str(), G_FILE_TEST_IS_DIR));
    // The folder itself must be new, and a file holds no folders.
    for (auto [path, code] : {std::pair{file("a/b"), EEXIST}, {file("a/keep/x/y"), ENOTDIR}}) {
        EXPECT_FALSE(ov_fs_utils_create_folder_recursively(path.c_str()));
        EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Cannot create folder.\n\nError ")) << ov_error_get();
        EXPECT_EQ(ov_fs_utils_get_last_errno(), code) << path;
    }
}

TEST_F(FsUtilsTest, ListingAndLinksGiveUtf8OrFailOnlyTheEntryThatIsNot)
{
    for (const char *name : {"\xc3\xbc", "bad\xff"})
        write_file(file(name), "");
    DIR *folder = ov_fs_utils_open_folder(dir.path().c_str());
    ASSERT_NE(folder, nullptr);
    std::set<std::string> seen;
    std::vector<std::string> failures;
    for (char *name = nullptr;;) {
        if (!ov_fs_utils_next_folder_entry(folder, &name))
            failures.push_back(name == nullptr ? ov_error_get() : "(name set)");
        else if (name == nullptr)
            break;
        else
            seen.insert(str(name));
    }
    char *name = reinterpret_cast<char *>(1);
    EXPECT_TRUE(ov_fs_utils_next_folder_entry(folder, &name)); // the end stays the end
    EXPECT_EQ(name, nullptr);
    EXPECT_TRUE(ov_fs_utils_close_folder(folder));
    EXPECT_EQ(seen, (std::set<std::string>{".", "..", "\xc3\xbc"}));
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_TRUE(g_str_has_prefix(failures[0].c_str(), "Could not convert filename to unicode.\n\nGError "));

    ASSERT_EQ(symlink("bad\xff", file("link").c_str()), 0);
    EXPECT_EQ(ov_fs_utils_read_link(file("link").c_str()), nullptr);
    EXPECT_TRUE(g_str_has_prefix(ov_error_get(), "Could not convert symlink contents to unicode.\n\n"));
}

TEST(FsUtilsPathTest, PathTexts)
{
    for (auto [path, stripped, parent, folder, name] : {std::tuple{"a/b//", "a/b", "a/b", "a/b/", ""},
                                                        {"/w//a.x", "/w//a.x", "/w", "/w//a.x/", "a.x"},
                                                        {"//a", "//a", "", "//a/", "a"}}) {
        SCOPED_TRACE(path);
        ov::GStr copy(g_strdup(path));
        EXPECT_EQ(ov_fs_utils_strip_ending_path_delimiters(copy.get()), std::strlen(stripped));
        EXPECT_STREQ(copy.get(), stripped);
        copy.reset(g_strdup(path));
        ov_fs_utils_strip_entry_name_from_path(copy.get());
        EXPECT_STREQ(copy.get(), parent);
        EXPECT_EQ(str(ov_fs_utils_end_folder_path_with_a_single_delimiter(path)), folder);
        EXPECT_EQ(ov_fs_utils_find_entry_name_in_path(path), path + std::strlen(path) - std::strlen(name));
    }
    EXPECT_EQ(str(ov_fs_utils_create_path_in_folder("/w/", "a", "", "sub/", "b.x", nullptr)),
              "/w/a/sub//b.x");
    EXPECT_EQ(str(ov_fs_utils_create_path_in_folder("", "", "a", nullptr)), "a");
}

using AtomicFile = CoreTest;

// The folder's entries as "name mode;", so that a temporary file left
// behind or a changed mode shows.
std::string listing(const std::string &folder)
{
    std::string text;
    GDir *dir = g_dir_open(folder.c_str(), 0, nullptr);
    for (const char *name = g_dir_read_name(dir); name != nullptr; name = g_dir_read_name(dir)) {
        struct stat info;
        stat((folder + "/" + name).c_str(), &info);
        text += std::string(name) + " " + str(g_strdup_printf("%o", info.st_mode & 07777)) + ";";
    }
    g_dir_close(dir);
    return text;
}

TEST_F(AtomicFile, CommitReplacesTheContentsAndKeepsTheModeAFailedWriterKeepsTheOldFile)
{
    TempDir dir;
    const std::string path = dir.file("a.codeset");
    write_file(path, "old contents");
    chmod(path.c_str(), 0640);
    std::string seen_during_write;
    ASSERT_EQ(result(ov_atomic_file_write(path.c_str(),
                                          [&](FILE *stream) {
                                              seen_during_write = read_file(path);
                                              return fputs("new", stream) >= 0;
                                          })),
              "ok");
    EXPECT_EQ(seen_during_write, "old contents"); // until the commit
    EXPECT_EQ(read_file(path), "new");
    EXPECT_EQ(listing(dir.path()), "a.codeset 640;");

    EXPECT_EQ(result(ov_atomic_file_write(path.c_str(),
                                          [](FILE *stream) {
                                              fputs("half", stream);
                                              ov_error_set("Writer failed.");
                                              return false;
                                          })),
              "Writer failed.");
    EXPECT_EQ(read_file(path), "new");
    EXPECT_EQ(listing(dir.path()), "a.codeset 640;");

    const std::string missing = dir.file("no/such/folder.xml");
    bool called = false;
    EXPECT_FALSE(ov_atomic_file_write(
        missing.c_str(), [&](FILE *) { return called = true; }, "Cannot create file."));
    EXPECT_TRUE(std::string(ov_error_get()).starts_with("Cannot create file.\n\n")) << ov_error_get();
    EXPECT_FALSE(called);
}

} // namespace
