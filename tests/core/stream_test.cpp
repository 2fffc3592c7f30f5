// Byte streams and the libzip wrapper below them.
#include "core/stream.h"

#include "core/raii.h"
#include "core/zip.h"
#include "core_test.h"
#include "zip_fixture.h"

#include <unistd.h>

#include <string_view>

namespace
{

using namespace ov::test;
using InputStreamPtr = ov::Owned<OvInputStream, ov_input_stream_destroy>;
using Stream = CoreTest;
using Zip = CoreTest;

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

// What the input streams of every kind read the same bytes from; the stream
// goes first.
struct Backing {
    explicit Backing(const std::string &bytes) : data(bytes), zip_bytes(make_zip({{"entry", bytes}}))
    {
        write_file(path, data);
    }
    std::string data, zip_bytes;
    TempDir folder;
    std::string path = folder.file("data");
    ov::ZipArchivePtr archive = open_zip(zip_bytes);
    InputStreamPtr stream;
};

constexpr const char *kZipEnd = "Premature end of data stream.";
const struct {
    const char *name;
    OvInputStream *(*make)(Backing &);
    const char *past_the_end; // skipping beyond the last byte; a file may be positioned there
} kKinds[] = {
    {"memory", [](Backing &b) { return ov_input_stream_new_for_memory(b.data.data(), b.data.size()); },
     "Memory buffer end reached prematurely."},
    {"file path", [](Backing &b) { return ov_input_stream_new_for_file_path(b.path.c_str()); }, "ok"},
    {"zip file path",
     [](Backing &b) { return ov_input_stream_new_for_zip_file_path(b.archive.get(), "entry"); }, kZipEnd},
};

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

TEST_F(Stream, EveryKindReadsAndSkipsToTheEndAndCopiesToMemory)
{
    const std::string data = pattern();
    for (const auto &kind : kKinds) {
        SCOPED_TRACE(kind.name);
        Backing whole(data), skipped(data);
        std::string got, rest;
        whole.stream.reset(kind.make(whole));
        EXPECT_EQ(pieces(whole.stream.get(), 0, &got),
                  std::string_view(kind.name) == "memory" ? "10000 0" : "4096 4096 1808 0");
        EXPECT_TRUE(got == data);
        // Zip kinds skip in pieces; 2500 needs several of them.
        skipped.stream.reset(kind.make(skipped));
        EXPECT_EQ(result(ov_input_stream_skip(skipped.stream.get(), 2500)), "ok");
        EXPECT_EQ(pieces(skipped.stream.get(), 3000, &rest), "3000 3000 1500 0");
        EXPECT_EQ(pieces(skipped.stream.get(), 1, &rest), "0"); // the end stays the end
        EXPECT_TRUE(rest == data.substr(2500));
        EXPECT_EQ(result(ov_input_stream_skip(skipped.stream.get(), 1)), kind.past_the_end);
    }
}

TEST_F(Stream, ReadFailuresOfEachKind)
{
    TempDir folder;
    ov::FilePtr write_only(fopen(folder.file("written").c_str(), "wb"));
    const std::string corrupt =
        damage(make_zip({{"entry", "some stored content", true}}), "stored", "STORED");
    ov::ZipArchivePtr archive = open_zip(corrupt); // reads the bytes where they are
    const std::pair<OvInputStream *, std::string> cases[] = {
        {ov_input_stream_new_for_file_path(folder.file("missing").c_str()), "Opening input file failed."},
        {ov_input_stream_new_for_zip_file_path(archive.get(), "other"),
         "Opening compressed input file failed."},
        {ov_input_stream_new_for_file(write_only.get()), "File read error."},
        {ov_input_stream_new_for_zip_file_path(archive.get(), "entry"),
         "Compressed file read error.\n\nError reading compressed file.\n\nCRC error"},
    };
    for (const auto &[made, message] : cases) {
        InputStreamPtr stream(made);
        char *data = nullptr;
        gsize length = 7;
        EXPECT_EQ(result(ov_stream_copy_to_memory(stream.get(), &data, &length)), message);
        EXPECT_TRUE(data == nullptr && length == 0) << message;
        if (message.starts_with("Opening")) { // fails skips the same way
            EXPECT_EQ(result(ov_input_stream_skip(stream.get(), 1)), message);
        }
    }
}

TEST_F(Stream, PathCopiesReplaceFilesAndLeaveNoneHalfWritten)
{
    TempDir folder;
    const std::string from = folder.file("from"), to = folder.file("to"), link = folder.file("link"),
                      data = pattern();
    write_file(from, data);
    // A link is replaced, never written through.
    ASSERT_EQ(symlink(from.c_str(), link.c_str()), 0);
    ASSERT_EQ(result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), link.c_str())), "ok");
    EXPECT_FALSE(g_file_test(link.c_str(), G_FILE_TEST_IS_SYMLINK));
    EXPECT_EQ(read_file(link), data);
    // Onto itself nothing happens; in particular it is not emptied first.
    EXPECT_EQ(result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), from.c_str())), "ok");
    EXPECT_EQ(read_file(from), data);
    // A folder is refused when it is opened.
    write_file(to, "old");
    EXPECT_EQ(result(ov_stream_copy_from_file_path_to_file_path(folder.path().c_str(), to.c_str())),
              "Opening input file failed.");
    EXPECT_FALSE(file_exists(to));
    // Writes fail during the copy, or only when the last bytes are flushed.
    const auto copy_fails = [&] {
        const std::string outcome =
            result(ov_stream_copy_from_file_path_to_file_path(from.c_str(), to.c_str()));
        return outcome == "File write error." && !file_exists(to);
    };
    for (long limit : {5000, 9000})
        EXPECT_EQ(run_with_file_size_limit(limit, copy_fails), 0) << limit;
}

const std::string binary_data("\0\1\2\377 binary \0 with NULs", 22);

// The entry's bytes read in small pieces, or the error text.
std::string read_entry(zip_t *archive, const char *name)
{
    zip_file_t *file = ov_zip_open_file(archive, name);
    std::string text;
    char piece[7];
    gsize count = 1;
    gboolean reading = file != nullptr;
    while (reading && count > 0 && (reading = ov_zip_read_from_file(file, piece, sizeof piece, &count)))
        text.append(piece, count);
    return file != nullptr && ov_zip_close_file(file) && reading ? text : result(FALSE);
}

TEST_F(Zip, ReadsEntriesFromABufferAndAFileAndRefusesWhatIsNotAnArchive)
{
    const std::vector<ZipEntry> entries = {
        {"a.txt", "alpha"}, {"folder/b.bin", binary_data}, {"empty", ""}, {"plain", "stored", true}};
    const std::string bytes = make_zip(entries);
    TempDir folder;
    const std::string path = folder.file("archive.zip");
    write_file(path, bytes);
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading(path.c_str()));
    ASSERT_NE(archive, nullptr) << ov_error_get();
    for (const ZipEntry &entry : entries)
        EXPECT_EQ(read_entry(archive.get(), entry.name.c_str()), entry.data);
    EXPECT_EQ(read_entry(archive.get(), "A.TXT"), "Could not open compressed file.\n\nNo such file");

    const std::string truncated = bytes.substr(0, bytes.size() - 5);
    EXPECT_EQ(open_zip(truncated), nullptr);
    EXPECT_EQ(result(FALSE), "Could not open data from source.\n\nNot a zip archive");
}

TEST_F(Zip, WritesAnArchiveThatReadsBack)
{
    ov::ZipSourcePtr target(ov_zip_create_buffer_source(nullptr, 0, FALSE));
    zip_source_keep(target.get()); // the archive takes one reference
    zip_t *archive = ov_zip_open_archive_from_source(target.get(), ZIP_TRUNCATE);
    ASSERT_NE(archive, nullptr) << ov_error_get();
    const auto add = [&](const char *name, gboolean overwrite, std::string_view bytes) { // borrowed
        return result(
            ov_zip_add_file_to_archive_from_buffer(archive, name, overwrite, bytes.data(), bytes.size()));
    };
    EXPECT_EQ(add("Käse.txt", FALSE, "first"), "ok");
    EXPECT_EQ(add("Käse.txt", FALSE, "second"),
              "Could not add file from buffer.\n\nCould not add file from source.\n\nFile already exists");
    EXPECT_EQ(add("Käse.txt", TRUE, "second") + add("data.bin", FALSE, binary_data), "okok");
    ASSERT_EQ(result(ov_zip_close_archive(archive)), "ok");
    zip_source_keep(target.get());
    ov::ZipArchivePtr reread(ov_zip_open_archive_for_reading_from_source(target.get()));
    ASSERT_NE(reread, nullptr) << ov_error_get();
    EXPECT_EQ(read_entry(reread.get(), "Käse.txt") + read_entry(reread.get(), "data.bin"),
              "second" + binary_data);
}

} // namespace
