#include "core/zip.h"

#include "core/error.h"
#include "core/raii.h"
#include "support/test_support.h"
#include "zip_fixture.h"

#include <gtest/gtest.h>

#include <glib/gstdio.h>

#include <string>
#include <string_view>
#include <vector>

namespace
{

using ov::test::FakeSource;
using ov::test::make_zip;
using ov::test::ZipEntry;

class Zip : public ::testing::Test
{
  protected:
    void SetUp() override { ov_error_clear(); }
    void TearDown() override { ov_error_clear(); }
};

const std::string binary_data("\0\1\2\377 binary \0 with NULs", 22);

std::string read_entry(zip_t *archive, const char *name, gboolean *ok)
{
    std::string text;
    *ok = FALSE;
    zip_file_t *file = ov_zip_open_file(archive, name);
    if (file == nullptr)
        return text;
    char piece[7]; // small, so that several reads are needed
    gsize read = 0;
    gboolean reading = TRUE;
    while ((reading = ov_zip_read_from_file(file, piece, sizeof piece, &read)) && read > 0)
        text.append(piece, read);
    *ok = ov_zip_close_file(file) && reading;
    return text;
}

TEST_F(Zip, ReadsEntriesFromABufferAndAFile)
{
    const std::string bytes = make_zip(
        {{"a.txt", "alpha"}, {"folder/b.bin", binary_data}, {"empty", ""}, {"plain", "stored", true}});
    ASSERT_FALSE(bytes.empty());
    ov::test::TempDir folder;
    const std::string path = folder.file("archive.zip");
    ov::test::write_file(path, bytes);

    ov::ZipArchivePtr from_buffer(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
    ov::ZipArchivePtr from_file(ov_zip_open_archive_for_reading(path.c_str()));
    for (zip_t *archive : {from_buffer.get(), from_file.get()}) {
        ASSERT_NE(archive, nullptr) << ov_error_get();
        gboolean ok = FALSE;
        EXPECT_EQ(read_entry(archive, "a.txt", &ok), "alpha");
        EXPECT_TRUE(ok);
        EXPECT_EQ(read_entry(archive, "folder/b.bin", &ok), binary_data);
        EXPECT_TRUE(ok);
        EXPECT_EQ(read_entry(archive, "empty", &ok), "");
        EXPECT_TRUE(ok);
        EXPECT_EQ(read_entry(archive, "plain", &ok), "stored");
        EXPECT_TRUE(ok);

        zip_stat_t stat;
        ASSERT_TRUE(ov_zip_stat_file(archive, "folder/b.bin", &stat));
        EXPECT_EQ(stat.size, binary_data.size());
    }
    // The read-only archive refuses changes.
    EXPECT_FALSE(ov_zip_add_file_to_archive_from_buffer(from_buffer.get(), "new", FALSE, "x", 1));
    EXPECT_STREQ(ov_error_get(), "Could not add file from buffer.\n\n"
                                 "Could not add file from source.\n\n"
                                 "Read-only archive");
    EXPECT_TRUE(ov_zip_close_archive(from_file.release()));
    EXPECT_TRUE(ov_zip_close_archive(from_buffer.release()));
}

TEST_F(Zip, RefusesWhatIsNotAnArchive)
{
    const std::string good = make_zip({{"a.txt", "alpha alpha alpha"}, {"b.txt", "beta"}});
    ASSERT_GT(good.size(), 40u);
    const struct {
        const char *what;
        std::string bytes;
    } cases[] = {
        {"text", "This is plain text, not an archive."},
        {"one byte", "P"},
        {"local header only", good.substr(0, 30)},
        {"cut in half", good.substr(0, good.size() / 2)},
        {"end record cut", good.substr(0, good.size() - 5)},
        {"end record missing", good.substr(0, good.size() - 22)},
    };
    ov::test::TempDir folder;
    for (const auto &entry : cases) {
        SCOPED_TRACE(entry.what);
        ov_error_clear();
        EXPECT_EQ(ov_zip_open_archive_for_reading_from_buffer(entry.bytes.data(), entry.bytes.size()),
                  nullptr);
        EXPECT_STREQ(ov_error_get(), "Could not open data from source.\n\nNot a zip archive");

        const std::string path = folder.file("bad.zip");
        ov::test::write_file(path, entry.bytes);
        EXPECT_EQ(ov_zip_open_archive_for_reading(path.c_str()), nullptr);
        EXPECT_STREQ(ov_error_get(),
                     "Could not open file.\n\nCould not open data from source.\n\nNot a zip archive");
    }
    EXPECT_EQ(ov_zip_open_archive_for_reading(folder.file("missing.zip").c_str()), nullptr);
    EXPECT_STREQ(ov_error_get(),
                 "Could not open file.\n\nCannot open file.\n\nError 2: No such file or directory");
}

TEST_F(Zip, MissingEntries)
{
    const std::string bytes = make_zip({{"a.txt", "alpha"}});
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
    ASSERT_NE(archive, nullptr);

    EXPECT_EQ(ov_zip_open_file(archive.get(), "A.TXT"), nullptr);
    EXPECT_STREQ(ov_error_get(), "Could not open compressed file.\n\nNo such file");
    zip_stat_t stat;
    EXPECT_FALSE(ov_zip_stat_file(archive.get(), "b.txt", &stat));
    EXPECT_STREQ(ov_error_get(), "Could not stat compressed file.\n\nNo such file");
}

TEST_F(Zip, CorruptedEntryFailsWithCrcError)
{
    const std::string bytes =
        ov::test::damage(make_zip({{"a.txt", "the original content", true}}), "original", "ORIGINAL");
    ov::ZipArchivePtr archive(ov_zip_open_archive_for_reading_from_buffer(bytes.data(), bytes.size()));
    ASSERT_NE(archive, nullptr);
    zip_file_t *file = ov_zip_open_file(archive.get(), "a.txt");
    ASSERT_NE(file, nullptr);
    // The check comes when the end of the data is reached.
    char buffer[100];
    gsize read = 0;
    ASSERT_TRUE(ov_zip_read_from_file(file, buffer, sizeof buffer, &read));
    EXPECT_EQ(std::string_view(buffer, read), "the ORIGINAL content");
    EXPECT_FALSE(ov_zip_read_from_file(file, buffer, sizeof buffer, &read));
    EXPECT_EQ(read, 0u);
    EXPECT_STREQ(ov_error_get(), "Error reading compressed file.\n\nCRC error");
    // Closing reports the entry's error once more, and still frees it.
    ov_error_clear();
    EXPECT_FALSE(ov_zip_close_file(file));
    EXPECT_STREQ(ov_error_get(), "CRC error");
}

TEST_F(Zip, WritesAnArchiveThatReadsBack)
{
    ov::ZipSourcePtr target(ov_zip_create_buffer_source(nullptr, 0, FALSE));
    ASSERT_NE(target, nullptr);
    zip_source_keep(target.get()); // the archive takes one reference
    zip_t *archive = ov_zip_open_archive_from_source(target.get(), ZIP_TRUNCATE);
    ASSERT_NE(archive, nullptr) << ov_error_get();

    EXPECT_TRUE(ov_zip_add_file_to_archive_from_buffer(archive, "Käse.txt", FALSE, "first", 5));
    EXPECT_FALSE(ov_zip_add_file_to_archive_from_buffer(archive, "Käse.txt", FALSE, "second", 6));
    EXPECT_STREQ(ov_error_get(), "Could not add file from buffer.\n\n"
                                 "Could not add file from source.\n\n"
                                 "File already exists");
    EXPECT_TRUE(ov_zip_add_file_to_archive_from_buffer(archive, "Käse.txt", TRUE, "second", 6));
    EXPECT_TRUE(ov_zip_add_file_to_archive_from_buffer(archive, "data.bin", FALSE, binary_data.data(),
                                                       binary_data.size()));
    ASSERT_TRUE(ov_zip_close_archive(archive)) << ov_error_get();

    zip_source_keep(target.get());
    ov::ZipArchivePtr reread(ov_zip_open_archive_for_reading_from_source(target.get()));
    ASSERT_NE(reread, nullptr) << ov_error_get();
    EXPECT_EQ(zip_get_num_entries(reread.get(), 0), 2);
    gboolean ok = FALSE;
    EXPECT_EQ(read_entry(reread.get(), "Käse.txt", &ok), "second");
    EXPECT_EQ(read_entry(reread.get(), "data.bin", &ok), binary_data);
    EXPECT_TRUE(ok);
}

TEST_F(Zip, ClosingReleasesTheArchiveEvenWhenWritingFails)
{
    ov::test::TempDir folder;
    const std::string gone = folder.file("gone");
    ASSERT_EQ(g_mkdir(gone.c_str(), 0700), 0);
    zip_t *archive = zip_open((gone + "/new.zip").c_str(), ZIP_CREATE, nullptr);
    ASSERT_NE(archive, nullptr);
    ASSERT_TRUE(ov_zip_add_file_to_archive_from_buffer(archive, "a", FALSE, "x", 1));
    ASSERT_EQ(g_rmdir(gone.c_str()), 0);
    EXPECT_FALSE(ov_zip_close_archive(archive));
    EXPECT_STREQ(ov_error_get(), "Failure to create temporary file: No such file or directory");
}

TEST_F(Zip, NullHandlesCloseSuccessfully)
{
    ov_error_set("untouched");
    EXPECT_TRUE(ov_zip_close_archive(nullptr));
    EXPECT_TRUE(ov_zip_close_file(nullptr));
    ov_zip_free_source(nullptr);
    EXPECT_STREQ(ov_error_get(), "untouched");
}

TEST_F(Zip, FunctionSourceFailures)
{
    FakeSource fake;
    fake.data = "source data";
    zip_source_t *source = ov_zip_create_function_source(FakeSource::callback, &fake);
    ASSERT_NE(source, nullptr);

    fake.open_failures = 1;
    EXPECT_FALSE(ov_zip_open_source(source));
    EXPECT_STREQ(ov_error_get(), "Could not open source.\n\nCan't open file: No such file or directory");
    ASSERT_TRUE(ov_zip_open_source(source));

    char buffer[32];
    gsize read = 0;
    ASSERT_TRUE(ov_zip_read_from_source(source, buffer, 6, &read));
    EXPECT_EQ(std::string_view(buffer, read), "source");
    fake.fail_read = true;
    read = 5;
    EXPECT_FALSE(ov_zip_read_from_source(source, buffer, sizeof buffer, &read));
    EXPECT_EQ(read, 0u);
    EXPECT_STREQ(ov_error_get(), "Error reading source data.\n\nRead error: Input/output error");

    zip_stat_t stat;
    EXPECT_TRUE(ov_zip_stat_source(source, &stat));
    EXPECT_EQ(stat.size, fake.data.size());
    fake.fail_stat = true;
    EXPECT_FALSE(ov_zip_stat_source(source, &stat));
    EXPECT_STREQ(ov_error_get(), "Could not stat source.\n\nInternal error");

    EXPECT_TRUE(ov_zip_close_source(source));
    EXPECT_EQ(fake.closes, 1);
    EXPECT_FALSE(ov_zip_close_source(source));
    EXPECT_STREQ(ov_error_get(), "Could not close source.\n\nInvalid argument");
    ov_zip_free_source(source);
}

} // namespace
