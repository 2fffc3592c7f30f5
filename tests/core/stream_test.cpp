// Byte streams and the libzip wrapper below them.
#include "core/stream.h"

#include "core/error.h"
#include "core/raii.h"
#include "core/zip.h"
#include "support/test_support.h"
#include "zip_fixture.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using ov::test::damage;
using ov::test::FakeSource;
using ov::test::make_zip;
using InputStreamPtr = ov::Owned<OvInputStream, ov_input_stream_destroy>;
using OutputStreamPtr = ov::Owned<OvOutputStream, ov_output_stream_destroy>;

// "ok", or the error text of a failure (then cleared).
std::string result(gboolean ok)
{
    std::string text = ok ? "ok" : ov_error_get();
    ov_error_clear();
    return text;
}

// The system's text for an errno value, in the current locale.
std::string sys(int code)
{
    return g_strerror(code);
}

// 10000 bytes with every byte value, NUL included.
std::string pattern()
{
    std::string data(10000, '\0');
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>((i * 7 + i / 256) & 0xff);
    return data;
}

ov::ZipArchivePtr open_zip(const std::string &bytes)
{
    return ov::ZipArchivePtr(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
}

enum class Kind { memory, file, file_path, zip_file, zip_file_path, zip_source, unmanaged_zip_source };

// An input stream of one kind over data, with whatever it reads from;
// released in the right order at the end of scope.
struct Opened {
    Opened(Kind kind, const std::string &bytes)
        : data(bytes), zip_bytes(make_zip({{"entry", bytes}})), kind(kind)
    {
        ov::test::write_file(folder.file("data"), data);
        file.reset(fopen(folder.file("data").c_str(), "rb"));
        archive = open_zip(zip_bytes);
        zip_file.reset(zip_fopen(archive.get(), "entry", 0));
        source.reset(zip_source_buffer_create(data.data(), data.size(), 0, nullptr));
        if (kind == Kind::unmanaged_zip_source)
            zip_source_open(source.get());
        stream.reset(kind == Kind::memory ? ov_input_stream_new_for_memory(data.data(), data.size())
                     : kind == Kind::file ? ov_input_stream_new_for_file(file.get())
                     : kind == Kind::file_path
                         ? ov_input_stream_new_for_file_path(folder.file("data").c_str())
                     : kind == Kind::zip_file ? ov_input_stream_new_for_zip_file(zip_file.get())
                     : kind == Kind::zip_file_path
                         ? ov_input_stream_new_for_zip_file_path(archive.get(), "entry")
                         : ov_input_stream_new_for_zip_source(source.get(), kind == Kind::zip_source));
    }
    ~Opened()
    {
        stream.reset();
        if (kind == Kind::unmanaged_zip_source)
            zip_source_close(source.get());
    }
    std::string data, zip_bytes;
    Kind kind;
    ov::test::TempDir folder;
    ov::FilePtr file;
    ov::ZipArchivePtr archive;
    ov::ZipFilePtr zip_file;
    ov::ZipSourcePtr source;
    InputStreamPtr stream;
};

class Stream : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};
using Zip = Stream;

// Reads to the end in pieces of at most `piece` bytes (0: by get_some) and
// gives the piece sizes, the final 0 included, as "3 3 1 0".
std::string pieces(OvInputStream *stream, gsize piece, std::string *collected)
{
    std::string sizes;
    std::vector<guint8> buffer(piece);
    for (gsize count = 1; count > 0;) {
        const guint8 *data = buffer.data();
        if (!(piece > 0 ? ov_input_stream_read(stream, buffer.data(), piece, &count)
                        : ov_input_stream_get_some(stream, &data, &count)))
            return sizes + "failed: " + ov_error_get() + (piece > 0 && count != 0 ? " (count not 0)" : "");
        collected->append(reinterpret_cast<const char *>(data), count);
        sizes += (sizes.empty() ? "" : " ") + std::to_string(count);
    }
    return sizes;
}

TEST_F(Stream, EveryKindReadsAndSkipsToTheEnd)
{
    const std::string data = pattern();
    for (int k = 0; k <= static_cast<int>(Kind::unmanaged_zip_source); ++k) {
        const auto kind = static_cast<Kind>(k);
        SCOPED_TRACE(k);
        Opened read(kind, data), get_some(kind, data), skipped(kind, data);
        std::string collected, by_get_some, rest;
        EXPECT_EQ(pieces(read.stream.get(), 3000, &collected), "3000 3000 3000 1000 0");
        EXPECT_EQ(pieces(read.stream.get(), 1, &collected), "0"); // past the end stays at the end
        EXPECT_EQ(collected, data);
        EXPECT_EQ(pieces(get_some.stream.get(), 0, &by_get_some),
                  kind == Kind::memory ? "10000 0" : "4096 4096 1808 0");
        EXPECT_EQ(by_get_some, data);

        // Zip kinds skip in pieces; 2500 needs several of them. A file may be
        // positioned beyond its end, where reading ends; the others refuse.
        EXPECT_EQ(result(ov_input_stream_skip(skipped.stream.get(), 2500)), "ok");
        char buffer[10];
        gsize count = 0;
        ASSERT_TRUE(ov_input_stream_read(skipped.stream.get(), buffer, sizeof buffer, &count));
        EXPECT_EQ(std::string(buffer, count), data.substr(2500, 10));
        const bool file = kind == Kind::file || kind == Kind::file_path;
        EXPECT_EQ(result(ov_input_stream_skip(skipped.stream.get(), 7491)),
                  file                   ? "ok"
                  : kind == Kind::memory ? "Memory buffer end reached prematurely."
                                         : "Premature end of data stream.");
        if (file || kind == Kind::memory) { // the memory position did not move
            EXPECT_EQ(pieces(skipped.stream.get(), 10000, &rest), file ? "0" : "7490 0");
            EXPECT_EQ(rest, file ? "" : data.substr(2510));
        }
    }
}

TEST_F(Stream, ReadFailuresOfEachKind)
{
    ov::test::TempDir folder;
    ov::FilePtr write_only(fopen(folder.file("written").c_str(), "wb"));
    const std::string entry = make_zip({{"entry", "x"}});
    const std::string corrupt =
        damage(make_zip({{"entry", "some stored content", true}}), "stored", "STORED");
    ov::ZipArchivePtr archive = open_zip(entry), corrupt_archive = open_zip(corrupt);
    FakeSource failing;
    failing.fail_read = true;
    ov::ZipSourcePtr failing_source(zip_source_function_create(FakeSource::callback, &failing, nullptr));
    ov::ZipSourcePtr unopened(zip_source_buffer_create("abc", 3, 0, nullptr));
    const struct {
        OvInputStream *stream;
        std::string message;
        bool no_handle; // then skips and reads by get_some fail the same way
    } cases[] = {
        {ov_input_stream_new_for_file_path(folder.file("missing").c_str()), "Opening input file failed.",
         true},
        {ov_input_stream_new_for_file(nullptr), "Opening input file failed.", true},
        {ov_input_stream_new_for_zip_file_path(archive.get(), "other"),
         "Opening compressed input file failed.", true},
        {ov_input_stream_new_for_zip_file(nullptr), "Opening compressed input file failed.", true},
        {ov_input_stream_new_for_zip_source(nullptr, TRUE), "Opening compressed source failed.", true},
        {ov_input_stream_new_for_file(write_only.get()), "File read error.", false},
        {ov_input_stream_new_for_zip_file_path(corrupt_archive.get(), "entry"),
         "Compressed file read error.\n\nError reading compressed file.\n\nCRC error", false},
        {ov_input_stream_new_for_zip_source(failing_source.get(), TRUE),
         "Compressed source read error.\n\nError reading source data.\n\nRead error: " + sys(EIO), false},
        // The caller was to open this source.
        {ov_input_stream_new_for_zip_source(unopened.get(), FALSE),
         "Compressed source read error.\n\nError reading source data.\n\nInvalid argument", false},
    };
    for (const auto &c : cases) {
        InputStreamPtr stream(c.stream);
        char *data = nullptr;
        gsize length = 7;
        EXPECT_EQ(result(ov_stream_copy_to_memory(stream.get(), &data, &length)), c.message);
        EXPECT_TRUE(data == nullptr && length == 0) << c.message;
        if (c.no_handle) {
            std::string collected;
            EXPECT_EQ(pieces(stream.get(), 8, &collected), std::string("failed: ") + c.message);
            EXPECT_EQ(pieces(stream.get(), 0, &collected), std::string("failed: ") + c.message);
            EXPECT_EQ(result(ov_input_stream_skip(stream.get(), 1)), c.message);
        }
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[1]);
    ov::FilePtr pipe_end(fdopen(ends[0], "rb"));
    InputStreamPtr stream(ov_input_stream_new_for_file(pipe_end.get()));
    EXPECT_EQ(result(ov_input_stream_skip(stream.get(), 1)), "Error 29: " + sys(ESPIPE));
}

TEST_F(Stream, ManagedSourceIsOpenedOnFirstReadAndClosedOnce)
{
    FakeSource fake;
    fake.data = "payload";
    fake.open_failures = 1;
    ov::ZipSourcePtr source(zip_source_function_create(FakeSource::callback, &fake, nullptr));
    InputStreamPtr stream(ov_input_stream_new_for_zip_source(source.get(), TRUE));
    std::string collected;
    EXPECT_EQ(pieces(stream.get(), 16, &collected), "failed: Opening compressed source failed.");
    EXPECT_EQ(pieces(stream.get(), 16, &collected), "7 0"); // the next read tries again
    EXPECT_EQ(collected, "payload");
    EXPECT_EQ(fake.closes, 0);
    stream.reset();
    // Never read, never opened: nothing to close. Unmanaged: the caller's.
    ov_input_stream_destroy(ov_input_stream_new_for_zip_source(source.get(), TRUE));
    ASSERT_EQ(zip_source_open(source.get()), 0);
    ov_input_stream_destroy(ov_input_stream_new_for_zip_source(source.get(), FALSE));
    EXPECT_EQ(std::to_string(fake.opens) + " " + std::to_string(fake.closes), "2 1");
    EXPECT_EQ(zip_source_close(source.get()), 0);
}

TEST_F(Stream, MemoryOutputHandsOverItsBytesAndEmpties)
{
    OutputStreamPtr stream(ov_output_stream_new_for_memory());
    gsize length = 9;
    const auto taken = [&](OvOutputStream *from) {
        ov::GStr data(ov_output_stream_get_memory_data(from, &length));
        return std::string(data.get(), length + 1);
    };
    EXPECT_EQ(taken(stream.get()), std::string(1, '\0'));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "ab\0c", 4));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), nullptr, 0));
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "de", 2));
    EXPECT_EQ(taken(stream.get()), std::string("ab\0cde\0", 7));
    EXPECT_EQ(taken(stream.get()), std::string(1, '\0')); // emptied, and usable again
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "x", 1));
    EXPECT_STREQ(ov::GStr(ov_output_stream_get_memory_data(stream.get(), nullptr)).get(), "x");
    EXPECT_TRUE(ov_output_stream_write(stream.get(), "left behind", 11)); // goes with the stream

    // A file stream has no memory data; destroying leaves a borrowed file open.
    ov::FilePtr file(tmpfile());
    OutputStreamPtr file_stream(ov_output_stream_new_for_file(file.get()));
    EXPECT_EQ(taken(file_stream.get()), std::string(1, '\0'));
    file_stream.reset();
    ov_input_stream_destroy(ov_input_stream_new_for_file(file.get()));
    EXPECT_GE(fputs("still open", file.get()), 0);
    ov_output_stream_destroy(nullptr);
    ov_input_stream_destroy(nullptr);
}

TEST_F(Stream, WriteFailures)
{
    ov::test::TempDir folder;
    ov::FilePtr full(fopen("/dev/full", "wb"));
    setvbuf(full.get(), nullptr, _IONBF, 0);
    const std::string data = pattern();
    for (auto [made, expected] :
         {std::pair{ov_output_stream_new_for_file_path(folder.file("no/such/folder").c_str()),
                    "Creating file failed."},
          {ov_output_stream_new_for_file(nullptr), "Creating file failed."},
          {ov_output_stream_new_for_file(full.get()), "File write error."}}) {
        OutputStreamPtr stream(made);
        EXPECT_EQ(result(ov_output_stream_write(stream.get(), "", 0)), "ok");
        EXPECT_EQ(result(ov_output_stream_write(stream.get(), "x", 1)), expected);
        InputStreamPtr input(ov_input_stream_new_for_memory(data.data(), data.size()));
        EXPECT_EQ(result(ov_stream_copy(input.get(), stream.get())), expected);
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

TEST_F(Stream, PathOutputAndCopiesReplaceFilesAndLeaveNoneHalfWritten)
{
    ov::test::TempDir folder;
    const std::string from = folder.file("from"), to = folder.file("to"), link = folder.file("link"),
                      data = pattern();
    ov::test::write_file(from, data);
    // A link is replaced, never written through.
    ASSERT_EQ(symlink(from.c_str(), link.c_str()), 0);
    ASSERT_EQ(result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), link.c_str())), "ok");
    EXPECT_FALSE(g_file_test(link.c_str(), G_FILE_TEST_IS_SYMLINK));
    EXPECT_EQ(ov::test::read_file(link), data);
    // Onto itself nothing happens; in particular it is not emptied first.
    EXPECT_EQ(result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), from.c_str())), "ok");
    EXPECT_EQ(ov::test::read_file(from), data);
    // A missing source, a folder that opens but cannot be read.
    ov::test::write_file(to, "old");
    EXPECT_EQ(result(ov_stream_copy_from_file_path_to_file_path(folder.file("missing").c_str(), to.c_str())),
              "Opening input file failed.");
    EXPECT_FALSE(ov::test::file_exists(to));
    EXPECT_EQ(result(ov_stream_copy_from_file_path_to_file_path(folder.path().c_str(), to.c_str())),
              "File read error.");
    EXPECT_FALSE(ov::test::file_exists(to));
    // Writes fail during the copy, or only when the last bytes are flushed.
    for (rlim_t limit : {5000, 9000}) {
        EXPECT_TRUE(with_file_size_limit(limit, [&] {
            return result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), to.c_str())) ==
                       "File write error." &&
                   !ov::test::file_exists(to);
        })) << limit;
    }
}

TEST_F(Stream, WholeFilesEntriesAndSourcesToMemory)
{
    ov::test::TempDir folder;
    const std::string data = pattern(), path = folder.file("data");
    ov::test::write_file(path, data);
    const std::string bytes = make_zip({{"entry", data}, {"empty", ""}}); // borrowed by the archive
    ov::ZipArchivePtr archive = open_zip(bytes);
    ov::ZipSourcePtr source(zip_source_buffer_create(data.data(), data.size(), 0, nullptr));
    // The copied bytes with the NUL behind them, or the error text; a
    // failure must set the data to null and the length to 0.
    char untouched = 0, *out = &untouched;
    gsize length = 77;
    const auto copied = [&](gboolean ok) {
        char *bytes = std::exchange(out, &untouched);
        const gsize count = std::exchange(length, 77);
        ov::GStr owned(bytes != &untouched ? bytes : nullptr);
        return ok ? std::string(bytes, count + 1) : result(ok) + (bytes || count ? " (left data)" : "");
    };
    const std::string with_nul = data + '\0';
    EXPECT_EQ(copied(ov_stream_copy_from_file_path_to_memory(path.c_str(), &out, &length)), with_nul);
    EXPECT_EQ(copied(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "entry", &out, &length)),
              with_nul);
    EXPECT_EQ(copied(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "empty", &out, &length)),
              std::string(1, '\0'));
    EXPECT_EQ(copied(ov_stream_copy_from_zip_source_to_memory(source.get(), TRUE, &out, &length)), with_nul);
    EXPECT_EQ(copied(ov_stream_copy_from_zip_file_path_to_memory(archive.get(), "missing", &out, &length)),
              "Opening compressed input file failed.");
    EXPECT_EQ(copied(ov_stream_copy_from_file_path_to_memory(folder.file("missing").c_str(), &out, &length)),
              "Opening input file failed.");
}

const std::string binary_data("\0\1\2\377 binary \0 with NULs", 22);

// The entry's bytes read in small pieces, or the error text.
std::string read_entry(zip_t *archive, const char *name)
{
    zip_file_t *file = ov_zip_open_file(archive, name);
    if (file == nullptr)
        return result(FALSE);
    std::string text;
    char piece[7];
    gsize count = 0;
    gboolean reading;
    while ((reading = ov_zip_read_from_file(file, piece, sizeof piece, &count)) && count > 0)
        text.append(piece, count);
    return ov_zip_close_file(file) && reading ? text : result(FALSE);
}

TEST_F(Zip, ReadsEntriesFromABufferAndAFile)
{
    const std::string bytes = make_zip(
        {{"a.txt", "alpha"}, {"folder/b.bin", binary_data}, {"empty", ""}, {"plain", "stored", true}});
    ov::test::TempDir folder;
    ov::test::write_file(folder.file("archive.zip"), bytes);
    ov::ZipArchivePtr from_buffer = open_zip(bytes);
    ov::ZipArchivePtr from_file(ov_zip_open_archive_for_reading(folder.file("archive.zip").c_str()));
    for (zip_t *archive : {from_buffer.get(), from_file.get()}) {
        ASSERT_NE(archive, nullptr) << ov_error_get();
        for (auto [name, expected] : {std::pair{"a.txt", std::string("alpha")},
                                      {"folder/b.bin", binary_data},
                                      {"empty", ""},
                                      {"plain", "stored"},
                                      {"A.TXT", "Could not open compressed file.\n\nNo such file"}})
            EXPECT_EQ(read_entry(archive, name), expected);
        zip_stat_t stat;
        ASSERT_TRUE(ov_zip_stat_file(archive, "folder/b.bin", &stat));
        EXPECT_EQ(stat.size, binary_data.size());
        EXPECT_EQ(result(ov_zip_stat_file(archive, "b.txt", &stat)),
                  "Could not stat compressed file.\n\nNo such file");
    }
    EXPECT_EQ(result(ov_zip_add_file_to_archive_from_buffer(from_buffer.get(), "new", FALSE, "x", 1)),
              "Could not add file from buffer.\n\nCould not add file from source.\n\nRead-only archive");
    EXPECT_TRUE(ov_zip_close_archive(from_file.release()));
    EXPECT_TRUE(ov_zip_close_archive(from_buffer.release()));
}

TEST_F(Zip, RefusesWhatIsNotAnArchive)
{
    const std::string good = make_zip({{"a.txt", "alpha alpha alpha"}, {"b.txt", "beta"}});
    ov::test::TempDir folder;
    const std::string path = folder.file("bad.zip");
    for (const std::string &bytes : {std::string("This is plain text, not an archive."), std::string("P"),
                                     good.substr(0, 30), good.substr(0, good.size() / 2),
                                     good.substr(0, good.size() - 5), good.substr(0, good.size() - 22)}) {
        EXPECT_EQ(open_zip(bytes), nullptr) << bytes.size();
        EXPECT_EQ(result(FALSE), "Could not open data from source.\n\nNot a zip archive");
        ov::test::write_file(path, bytes);
        EXPECT_EQ(result(ov_zip_open_archive_for_reading(path.c_str()) != nullptr),
                  "Could not open file.\n\nCould not open data from source.\n\nNot a zip archive");
    }
    EXPECT_EQ(result(ov_zip_open_archive_for_reading(folder.file("missing.zip").c_str()) != nullptr),
              "Could not open file.\n\nCannot open file.\n\nError 2: " + sys(ENOENT));
}

TEST_F(Zip, WritesAnArchiveThatReadsBack)
{
    ov::ZipSourcePtr target(ov_zip_create_buffer_source(nullptr, 0, FALSE));
    zip_source_keep(target.get()); // the archive takes one reference
    zip_t *archive = ov_zip_open_archive_from_source(target.get(), ZIP_TRUNCATE);
    ASSERT_NE(archive, nullptr) << ov_error_get();
    const auto add = [&](const char *name, gboolean overwrite,
                         std::string_view bytes) { // borrowed until closed
        return result(
            ov_zip_add_file_to_archive_from_buffer(archive, name, overwrite, bytes.data(), bytes.size()));
    };
    EXPECT_EQ(add("Käse.txt", FALSE, "first"), "ok");
    EXPECT_EQ(add("Käse.txt", FALSE, "second"),
              "Could not add file from buffer.\n\nCould not add file from source.\n\nFile already exists");
    EXPECT_EQ(add("Käse.txt", TRUE, "second"), "ok");
    EXPECT_EQ(add("data.bin", FALSE, binary_data), "ok");
    ASSERT_EQ(result(ov_zip_close_archive(archive)), "ok");
    zip_source_keep(target.get());
    ov::ZipArchivePtr reread(ov_zip_open_archive_for_reading_from_source(target.get()));
    ASSERT_NE(reread, nullptr) << ov_error_get();
    EXPECT_EQ(zip_get_num_entries(reread.get(), 0), 2);
    EXPECT_EQ(read_entry(reread.get(), "Käse.txt") + read_entry(reread.get(), "data.bin"),
              "second" + binary_data);

    // Closing releases the archive even when writing fails.
    ov::test::TempDir folder;
    const std::string gone = folder.file("gone");
    ASSERT_EQ(g_mkdir(gone.c_str(), 0700), 0);
    archive = zip_open((gone + "/new.zip").c_str(), ZIP_CREATE, nullptr);
    ASSERT_EQ(add("a", FALSE, "x"), "ok");
    ASSERT_EQ(g_rmdir(gone.c_str()), 0);
    EXPECT_EQ(result(ov_zip_close_archive(archive)), "Failure to create temporary file: " + sys(ENOENT));
    ov_error_set("untouched");
    EXPECT_TRUE(ov_zip_close_archive(nullptr) && ov_zip_close_file(nullptr));
    ov_zip_free_source(nullptr);
    EXPECT_STREQ(ov_error_get(), "untouched");
}

TEST_F(Zip, FunctionSourceFailures)
{
    FakeSource fake;
    fake.open_failures = 1;
    fake.fail_stat = true;
    zip_source_t *source = ov_zip_create_function_source(FakeSource::callback, &fake);
    EXPECT_EQ(result(ov_zip_open_source(source)),
              "Could not open source.\n\nCan't open file: " + sys(ENOENT));
    EXPECT_EQ(result(ov_zip_open_source(source)), "ok");
    zip_stat_t stat;
    EXPECT_EQ(result(ov_zip_stat_source(source, &stat)), "Could not stat source.\n\nInternal error");
    EXPECT_EQ(result(ov_zip_close_source(source)), "ok");
    EXPECT_EQ(result(ov_zip_close_source(source)), "Could not close source.\n\nInvalid argument");
    ov_zip_free_source(source);
}

} // namespace
