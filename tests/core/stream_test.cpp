#include "core/stream.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/zip.h"
#include "support/test_support.h"
#include "zip_fixture.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using ov::test::FakeSource;
using ov::test::make_zip;
using InputStreamPtr = ov::Owned<OvInputStream, ov_input_stream_destroy>;
using OutputStreamPtr = ov::Owned<OvOutputStream, ov_output_stream_destroy>;

// 10000 bytes with every byte value, NUL included.
std::string pattern()
{
    std::string data(10000, '\0');
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>((i * 7 + i / 256) & 0xff);
    return data;
}

enum class Kind { memory, file, file_path, zip_file, zip_file_path, zip_source, zip_source_unmanaged };

constexpr std::pair<Kind, const char *> all_kinds[] = {{Kind::memory, "memory"},
                                                       {Kind::file, "file"},
                                                       {Kind::file_path, "file path"},
                                                       {Kind::zip_file, "zip file"},
                                                       {Kind::zip_file_path, "zip path"},
                                                       {Kind::zip_source, "zip source"},
                                                       {Kind::zip_source_unmanaged, "unmanaged zip source"}};

// An input stream of one kind over the given bytes, with whatever it reads
// from; everything is released in the right order at the end of scope.
class Opened
{
  public:
    Opened(Kind kind, const std::string &data) : data_(data), kind_(kind)
    {
        const std::string path = folder_.file("data");
        switch (kind) {
        case Kind::memory:
            stream_.reset(ov_input_stream_new_for_memory(data_.data(), data_.size()));
            break;
        case Kind::file:
            ov::test::write_file(path, data_);
            file_.reset(fopen(path.c_str(), "rb"));
            stream_.reset(ov_input_stream_new_for_file(file_.get()));
            break;
        case Kind::file_path:
            ov::test::write_file(path, data_);
            stream_.reset(ov_input_stream_new_for_file_path(path.c_str()));
            break;
        case Kind::zip_file:
        case Kind::zip_file_path:
            zip_bytes_ = make_zip({{"entry", data_}});
            archive_.reset(ov_zip_open_archive_for_reading_from_buffer(zip_bytes_.data(), zip_bytes_.size()));
            if (kind == Kind::zip_file) {
                zip_file_.reset(zip_fopen(archive_.get(), "entry", 0));
                stream_.reset(ov_input_stream_new_for_zip_file(zip_file_.get()));
            } else {
                stream_.reset(ov_input_stream_new_for_zip_file_path(archive_.get(), "entry"));
            }
            break;
        case Kind::zip_source:
        case Kind::zip_source_unmanaged:
            source_.reset(zip_source_buffer_create(data_.data(), data_.size(), 0, nullptr));
            if (kind == Kind::zip_source_unmanaged)
                zip_source_open(source_.get());
            stream_.reset(ov_input_stream_new_for_zip_source(source_.get(), kind == Kind::zip_source));
            break;
        }
    }
    ~Opened()
    {
        stream_.reset();
        if (kind_ == Kind::zip_source_unmanaged)
            zip_source_close(source_.get());
    }
    OvInputStream *get() const { return stream_.get(); }

  private:
    std::string data_;
    std::string zip_bytes_;
    Kind kind_;
    ov::test::TempDir folder_;
    ov::FilePtr file_;
    ov::ZipArchivePtr archive_;
    ov::ZipFilePtr zip_file_;
    ov::ZipSourcePtr source_;
    InputStreamPtr stream_;
};

class StreamTest : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

using InputStream = StreamTest;
using OutputStream = StreamTest;
using StreamCopy = StreamTest;

// Reads to the end in pieces of at most `piece` bytes (0: by get_some) and
// gives the piece sizes, the final 0 included, as "3 3 1 0".
std::string pieces(OvInputStream *stream, gsize piece, std::string *collected)
{
    std::string sizes;
    std::vector<guint8> buffer(piece);
    for (;;) {
        const guint8 *data = buffer.data();
        gsize count = 0;
        const gboolean ok = piece > 0 ? ov_input_stream_read(stream, buffer.data(), piece, &count)
                                      : ov_input_stream_get_some(stream, &data, &count);
        if (!ok)
            return sizes + "failed: " + ov_error_get();
        collected->append(reinterpret_cast<const char *>(data), count);
        sizes += std::to_string(count);
        if (count == 0)
            return sizes;
        sizes += " ";
    }
}

TEST_F(InputStream, EveryKindReadsToTheEndInPiecesAndByGetSome)
{
    const std::string data = pattern();
    for (auto [kind, name] : all_kinds) {
        SCOPED_TRACE(name);
        Opened read(kind, data);
        std::string collected;
        EXPECT_EQ(pieces(read.get(), 3000, &collected), "3000 3000 3000 1000 0");
        EXPECT_EQ(collected, data);
        // Reading past the end keeps giving 0.
        collected.clear();
        EXPECT_EQ(pieces(read.get(), 1, &collected), "0");

        Opened get_some(kind, data);
        collected.clear();
        EXPECT_EQ(pieces(get_some.get(), 0, &collected),
                  kind == Kind::memory ? "10000 0" : "4096 4096 1808 0");
        EXPECT_EQ(collected, data);
    }
}

TEST_F(InputStream, SkipsAndMeetsTheEnd)
{
    const std::string data = pattern();
    for (auto [kind, name] : all_kinds) {
        SCOPED_TRACE(name);
        Opened opened(kind, data);
        // Zip kinds skip in pieces; 2500 needs three of them.
        ASSERT_TRUE(ov_input_stream_skip(opened.get(), 2500)) << ov_error_get();
        char buffer[10];
        gsize read = 0;
        ASSERT_TRUE(ov_input_stream_read(opened.get(), buffer, sizeof buffer, &read));
        EXPECT_EQ(std::string(buffer, read), data.substr(2500, 10));

        const gboolean skipped = ov_input_stream_skip(opened.get(), data.size() - 2510 + 1);
        if (kind == Kind::memory) {
            EXPECT_FALSE(skipped);
            EXPECT_STREQ(ov_error_get(), "Memory buffer end reached prematurely.");
            // The position did not move.
            ASSERT_TRUE(ov_input_stream_read(opened.get(), buffer, sizeof buffer, &read));
            EXPECT_EQ(std::string(buffer, read), data.substr(2510, 10));
        } else if (kind == Kind::file || kind == Kind::file_path) {
            // A file may be positioned beyond its end; reading there ends.
            EXPECT_TRUE(skipped) << ov_error_get();
            ASSERT_TRUE(ov_input_stream_read(opened.get(), buffer, sizeof buffer, &read));
            EXPECT_EQ(read, 0u);
        } else {
            EXPECT_FALSE(skipped);
            EXPECT_STREQ(ov_error_get(), "Premature end of data stream.");
        }
        ov_error_clear();
    }
}

TEST_F(InputStream, StreamsWithoutAHandleReportOnEveryUse)
{
    ov::test::TempDir folder;
    const std::string bytes = make_zip({{"entry", "x"}});
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
    ASSERT_NE(archive, nullptr);
    const std::string missing = folder.file("missing");

    const std::pair<OvInputStream *, const char *> cases[] = {
        {ov_input_stream_new_for_file_path(missing.c_str()), "Opening input file failed."},
        {ov_input_stream_new_for_file(nullptr), "Opening input file failed."},
        {ov_input_stream_new_for_zip_file_path(archive.get(), "other"),
         "Opening compressed input file failed."},
        {ov_input_stream_new_for_zip_file(nullptr), "Opening compressed input file failed."},
        {ov_input_stream_new_for_zip_source(nullptr, TRUE), "Opening compressed source failed."},
    };
    for (auto [made, expected] : cases) {
        SCOPED_TRACE(expected);
        InputStreamPtr stream(made);
        char buffer[8];
        gsize read = 5;
        ov_error_clear();
        EXPECT_FALSE(ov_input_stream_read(stream.get(), buffer, sizeof buffer, &read));
        EXPECT_EQ(read, 0u);
        EXPECT_STREQ(ov_error_get(), expected);
        ov_error_clear();
        EXPECT_FALSE(ov_input_stream_skip(stream.get(), 1));
        EXPECT_STREQ(ov_error_get(), expected);
        std::string collected;
        EXPECT_EQ(pieces(stream.get(), 0, &collected), std::string("failed: ") + expected);
    }
}

TEST_F(InputStream, ReadFailuresOfEachKind)
{
    ov::test::TempDir folder;
    const std::string path = folder.file("written");
    ov::FilePtr write_only(fopen(path.c_str(), "wb"));
    ASSERT_NE(write_only, nullptr);

    const std::string corrupt =
        ov::test::damage(make_zip({{"entry", "some stored content", true}}), "stored", "STORED");
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(corrupt.data(), corrupt.size()));
    ASSERT_NE(archive, nullptr);

    FakeSource failing;
    failing.fail_read = true;
    ov::ZipSourcePtr failing_source(zip_source_function_create(FakeSource::callback, &failing, nullptr));
    ov::ZipSourcePtr unopened(zip_source_buffer_create("abc", 3, 0, nullptr));

    const std::pair<OvInputStream *, const char *> cases[] = {
        {ov_input_stream_new_for_file(write_only.get()), "File read error."},
        {ov_input_stream_new_for_zip_file_path(archive.get(), "entry"),
         "Compressed file read error.\n\nError reading compressed file.\n\nCRC error"},
        {ov_input_stream_new_for_zip_source(failing_source.get(), TRUE),
         "Compressed source read error.\n\nError reading source data.\n\nRead error: Input/output error"},
        // The caller was to open this source.
        {ov_input_stream_new_for_zip_source(unopened.get(), FALSE),
         "Compressed source read error.\n\nError reading source data.\n\nInvalid argument"},
    };
    for (auto [made, expected] : cases) {
        SCOPED_TRACE(expected);
        InputStreamPtr stream(made);
        char *data = nullptr;
        gsize length = 7;
        EXPECT_FALSE(ov_stream_copy_to_memory(stream.get(), &data, &length));
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(length, 0u);
        EXPECT_STREQ(ov_error_get(), expected);
    }

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[1]);
    ov::FilePtr pipe_end(fdopen(ends[0], "rb"));
    InputStreamPtr stream(ov_input_stream_new_for_file(pipe_end.get()));
    EXPECT_FALSE(ov_input_stream_skip(stream.get(), 1));
    EXPECT_STREQ(ov_error_get(), "Error 29: Illegal seek");
}

TEST_F(InputStream, ManagedSourceIsOpenedOnFirstReadAndClosedOnce)
{
    FakeSource fake;
    fake.data = "payload";
    fake.open_failures = 1;
    ov::ZipSourcePtr source(zip_source_function_create(FakeSource::callback, &fake, nullptr));
    {
        InputStreamPtr stream(ov_input_stream_new_for_zip_source(source.get(), TRUE));
        char buffer[16];
        gsize read = 3;
        EXPECT_FALSE(ov_input_stream_read(stream.get(), buffer, sizeof buffer, &read));
        EXPECT_STREQ(ov_error_get(), "Opening compressed source failed.");
        // The next read tries again.
        std::string collected;
        EXPECT_EQ(pieces(stream.get(), 16, &collected), "7 0");
        EXPECT_EQ(collected, "payload");
        EXPECT_EQ(fake.closes, 0);
    }
    EXPECT_EQ(fake.opens, 1);
    EXPECT_EQ(fake.closes, 1);

    // Never read, never opened: nothing to close.
    ov_input_stream_destroy(ov_input_stream_new_for_zip_source(source.get(), TRUE));
    // Unmanaged: opening and closing are the caller's.
    ASSERT_EQ(zip_source_open(source.get()), 0);
    InputStreamPtr stream(ov_input_stream_new_for_zip_source(source.get(), FALSE));
    ASSERT_TRUE(ov_input_stream_skip(stream.get(), 3));
    stream.reset();
    EXPECT_EQ(fake.opens, 2);
    EXPECT_EQ(fake.closes, 1);
    EXPECT_EQ(zip_source_close(source.get()), 0);
}

TEST_F(OutputStream, MemoryCollectsBytesAndHandsThemOver)
{
    OutputStreamPtr stream(ov_output_stream_new_for_memory());
    gsize length = 9;
    ov::GStr empty(ov_output_stream_get_memory_data(stream.get(), &length));
    EXPECT_STREQ(empty.get(), "");
    EXPECT_EQ(length, 0u);

    EXPECT_TRUE(ov_output_stream_write(stream.get(), "ab\0c", 4));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), nullptr, 0));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "de", 2));
    ov::GStr data(ov_output_stream_get_memory_data(stream.get(), &length));
    ASSERT_EQ(length, 6u);
    EXPECT_EQ(std::string(data.get(), length + 1), std::string("ab\0cde\0", 7));

    // Handing over empties the stream; it can be used again.
    ov::GStr again(ov_output_stream_get_memory_data(stream.get(), &length));
    EXPECT_STREQ(again.get(), "");
    EXPECT_EQ(length, 0u);
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "x", 1));
    ov::GStr last(ov_output_stream_get_memory_data(stream.get(), nullptr));
    EXPECT_STREQ(last.get(), "x");
    // Bytes never claimed go with the stream.
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "left behind", 11));

    // A file stream has no memory data; destroying leaves a borrowed file open.
    ov::FilePtr file(tmpfile());
    OutputStreamPtr file_stream(ov_output_stream_new_for_file(file.get()));
    EXPECT_TRUE(ov_output_stream_write(file_stream.get(), "abc", 3));
    ov::GStr none(ov_output_stream_get_memory_data(file_stream.get(), &length));
    EXPECT_STREQ(none.get(), "");
    EXPECT_EQ(length, 0u);
    file_stream.reset();
    ov_input_stream_destroy(ov_input_stream_new_for_file(file.get()));
    EXPECT_GE(fputs("still open", file.get()), 0);
    ov_output_stream_destroy(nullptr);
    ov_input_stream_destroy(nullptr);
}

TEST_F(OutputStream, PathStreamReplacesTheFileInsteadOfWritingThroughIt)
{
    ov::test::TempDir folder;
    const std::string target = folder.file("target");
    const std::string link = folder.file("link");
    ov::test::write_file(target, "original, longer than the new text");
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    OutputStreamPtr stream(ov_output_stream_new_for_file_path(link.c_str()));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "new", 3));
    stream.reset();
    EXPECT_EQ(ov::test::read_file(link), "new");
    EXPECT_FALSE(g_file_test(link.c_str(), G_FILE_TEST_IS_SYMLINK));
    EXPECT_EQ(ov::test::read_file(target), "original, longer than the new text");
}

TEST_F(OutputStream, WriteFailures)
{
    ov::test::TempDir folder;
    const std::string no_folder = folder.file("no/such/folder");
    ov::FilePtr full(fopen("/dev/full", "wb"));
    ASSERT_NE(full, nullptr);
    setvbuf(full.get(), nullptr, _IONBF, 0);

    const std::pair<OvOutputStream *, const char *> cases[] = {
        {ov_output_stream_new_for_file_path(no_folder.c_str()), "Creating file failed."},
        {ov_output_stream_new_for_file(nullptr), "Creating file failed."},
        {ov_output_stream_new_for_file(full.get()), "File write error."},
    };
    const std::string data = pattern();
    for (auto [made, expected] : cases) {
        SCOPED_TRACE(expected);
        OutputStreamPtr stream(made);
        EXPECT_TRUE(ov_output_stream_write(stream.get(), "", 0));
        ov_error_clear();
        EXPECT_FALSE(ov_output_stream_write(stream.get(), "x", 1));
        EXPECT_STREQ(ov_error_get(), expected);
        ov_error_clear();
        InputStreamPtr input(ov_input_stream_new_for_memory(data.data(), data.size()));
        EXPECT_FALSE(ov_stream_copy(input.get(), stream.get()));
        EXPECT_STREQ(ov_error_get(), expected);
    }
}

// Runs body in a child process whose files may not grow beyond limit bytes,
// so that writes fail with EFBIG.
bool with_file_size_limit(rlim_t limit, const std::function<bool()> &body)
{
    return ov::test::run_in_child([&] {
               signal(SIGXFSZ, SIG_IGN);
               const rlimit small = {limit, limit};
               return setrlimit(RLIMIT_FSIZE, &small) == 0 && body();
           }) == 0;
}

TEST_F(OutputStream, FailedWritesLeaveNoFileBehind)
{
    ov::test::TempDir folder;
    const std::string path = folder.file("out");
    const std::string data = pattern();
    EXPECT_TRUE(with_file_size_limit(1000, [&] {
        // A write that fails at once.
        OvOutputStream *stream = ov_output_stream_new_for_file_path(path.c_str());
        const bool failed = !ov_output_stream_write(stream, data.data(), data.size()) &&
                            g_strcmp0(ov_error_get(), "File write error.") == 0 &&
                            ov::test::file_exists(path);
        ov_output_stream_destroy(stream);
        const bool removed = !ov::test::file_exists(path);

        // A write that fails only when the buffered bytes reach the file.
        stream = ov_output_stream_new_for_file_path(path.c_str());
        const bool buffered = ov_output_stream_write(stream, data.data(), 1500);
        ov_output_stream_destroy(stream);
        const bool removed_after_flush = !ov::test::file_exists(path);

        // Within the limit the file stays.
        stream = ov_output_stream_new_for_file_path(path.c_str());
        const bool written = ov_output_stream_write(stream, data.data(), 1000);
        ov_output_stream_destroy(stream);
        return failed && removed && buffered && removed_after_flush && written &&
               ov::test::read_file(path) == data.substr(0, 1000);
    }));
}

TEST_F(StreamCopy, FilePathToFilePath)
{
    ov::test::TempDir folder;
    const std::string from = folder.file("from");
    const std::string to = folder.file("to");
    const std::string data = pattern();
    ov::test::write_file(from, data);
    ov::test::write_file(to, data + data);
    ASSERT_TRUE(ov_stream_copy_from_file_path_to_file_path(from.c_str(), to.c_str())) << ov_error_get();
    EXPECT_EQ(ov::test::read_file(to), data);

    // Onto itself nothing happens; in particular it is not emptied first.
    EXPECT_TRUE(ov_stream_copy_from_file_path_to_file_path(from.c_str(), from.c_str()));
    EXPECT_EQ(ov::test::read_file(from), data);
    EXPECT_STREQ(ov_error_get(), "");

    // Every failure leaves no target, whether it existed before or not.
    EXPECT_FALSE(ov_stream_copy_from_file_path_to_file_path(folder.file("missing").c_str(), to.c_str()));
    EXPECT_STREQ(ov_error_get(), "Opening input file failed.");
    EXPECT_FALSE(ov::test::file_exists(to));
    // A folder opens but cannot be read.
    EXPECT_FALSE(ov_stream_copy_from_file_path_to_file_path(folder.path().c_str(), to.c_str()));
    EXPECT_STREQ(ov_error_get(), "File read error.");
    EXPECT_FALSE(ov::test::file_exists(to));
    // Writes fail during the copy, or only when the last bytes are flushed.
    for (rlim_t limit : {5000, 9000}) {
        EXPECT_TRUE(with_file_size_limit(limit, [&] {
            return !ov_stream_copy_from_file_path_to_file_path(from.c_str(), to.c_str()) &&
                   g_strcmp0(ov_error_get(), "File write error.") == 0 && !ov::test::file_exists(to);
        })) << limit;
    }
}

TEST_F(StreamCopy, WholeFilesEntriesAndSourcesToMemory)
{
    ov::test::TempDir folder;
    const std::string data = pattern();
    const std::string path = folder.file("data");
    ov::test::write_file(path, data);
    const std::string bytes = make_zip({{"entry", data}, {"empty", ""}});
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
    ASSERT_NE(archive, nullptr);
    ov::ZipSourcePtr source(zip_source_buffer_create(data.data(), data.size(), 0, nullptr));

    char *out = nullptr;
    gsize length = 0;
    const auto expect_copied = [&](gboolean ok, const std::string &expected) {
        ov::GStr owned(out);
        ASSERT_TRUE(ok) << ov_error_get();
        EXPECT_EQ(std::string(out, length), expected);
        EXPECT_EQ(out[length], '\0');
    };
    expect_copied(ov_stream_copy_from_file_path_to_memory(path.c_str(), &out, &length), data);
    expect_copied(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "entry", &out, &length), data);
    expect_copied(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "empty", &out, &length), "");
    expect_copied(ov_stream_copy_from_zip_source_to_memory(source.get(), TRUE, &out, &length), data);

    EXPECT_FALSE(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "missing", &out, &length));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_STREQ(ov_error_get(), "Opening compressed input file failed.");
    EXPECT_FALSE(ov_stream_copy_from_file_path_to_memory(folder.file("missing").c_str(), &out, &length));
    EXPECT_STREQ(ov_error_get(), "Opening input file failed.");
}

} // namespace
