// Start-up and shutdown of the process-wide resources: the built-in archive,
// the icons and the view font, and the clean-up of stale temporary files
// against real processes.
#include "support/test_support.h"

#include "core/error.h"
#include "frame/resources.h"
#include "frame/startup.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace
{

int text_drawing_clean_ups = 0;

bool has_top_sentence(const char *sentence)
{
    const std::string text = ov_error_get() != nullptr ? ov_error_get() : "";
    return text.rfind(sentence, 0) == 0;
}

TEST(StartupTest, PreparesIconsAndFontAndReleasesThemAgain)
{
    EXPECT_EQ(ov::test::run_in_child([] {
                  bool ok = ov_startup_prepare() && ov_startup_is_successful();
                  // A second call changes nothing.
                  OvImage *off = ov_get_checkbox_icon_image(FALSE);
                  ok = ok && ov_startup_prepare() && off == ov_get_checkbox_icon_image(FALSE);
                  struct Expected {
                      OvImage *image;
                      int width, height;
                  };
                  for (const Expected &e : {Expected{ov_get_checkbox_icon_image(FALSE), 13, 13},
                                            Expected{ov_get_checkbox_icon_image(TRUE), 13, 13},
                                            Expected{ov_get_text_tab_menu_icon_image(), 11, 9}})
                      ok = ok && e.image != nullptr && ov_image_get_width(e.image) == e.width &&
                           ov_image_get_height(e.image) == e.height;
                  ok = ok && ov_get_checkbox_icon_image(TRUE) != ov_get_checkbox_icon_image(FALSE);
                  cairo_font_face_t *face = ov_get_view_font_face();
                  ok = ok && face != nullptr && cairo_font_face_get_type(face) == CAIRO_FONT_TYPE_FT;

                  // Text drawn with the face before shutdown leaves cairo
                  // holding it; shutdown must still not crash or leak.
                  cairo_surface_t *surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 40, 20);
                  cairo_t *cr = cairo_create(surface);
                  cairo_set_font_face(cr, face);
                  cairo_set_font_size(cr, 12);
                  cairo_move_to(cr, 0, 15);
                  cairo_show_text(cr, "Abc");
                  cairo_destroy(cr);
                  cairo_surface_destroy(surface);

                  const OvApplicationConfiguration configuration{"org.example.Test", nullptr, nullptr,
                                                                 [] { ++text_drawing_clean_ups; }};
                  ov_startup_release(&configuration);
                  ok = ok && text_drawing_clean_ups == 1 && !ov_startup_is_successful() &&
                       ov_get_checkbox_icon_image(TRUE) == nullptr && ov_get_view_font_face() == nullptr;
                  // Releasing twice, and starting again after a release, work.
                  ov_startup_release(nullptr);
                  ok = ok && ov_startup_prepare() && ov_get_text_tab_menu_icon_image() != nullptr;
                  ov_startup_release(nullptr);
                  return ok;
              }),
              0);
}

TEST(StartupTest, ResourceFailuresNameTheResource)
{
    ov_resources_clean_up();
    EXPECT_EQ(ov_resources_read_entry("checkbox_on.png"), nullptr);
    ASSERT_TRUE(ov_resources_open());
    ASSERT_TRUE(ov_resources_open());
    struct Case {
        const char *entry;
        bool as_image;
        const char *sentence;
    };
    for (const Case &c : {Case{"missing.png", true, "Could not load image resource."},
                          Case{"checkbox_on.png", false, "Could not open XML resource."},
                          Case{"missing.xml", false, "Could not open XML resource."}}) {
        SCOPED_TRACE(c.entry);
        ov_error_clear();
        if (c.as_image) {
            EXPECT_EQ(ov_resources_load_image(c.entry, OV_FILE_TYPE_PNG), nullptr);
        } else {
            EXPECT_EQ(ov_resources_load_xml_doc(c.entry), nullptr);
        }
        EXPECT_TRUE(has_top_sentence(c.sentence)) << ov_error_get();
    }
    // A PNG entry read as another kind of image is refused by the reader.
    ov_error_clear();
    EXPECT_EQ(ov_resources_load_image("checkbox_on.png", OV_FILE_TYPE_JPEG), nullptr);
    EXPECT_TRUE(has_top_sentence("Could not load image resource."));
    ov_resources_clean_up();
    ov_resources_clean_up();
    ov_error_clear();
}

// Stale temporary files are those whose writer is gone or whose process
// identifier now runs a program of another size.
TEST(StartupTest, CleansUpOnlyStaleTemporaryFiles)
{
    ov::test::TempDir dir;
    struct stat self;
    ASSERT_EQ(stat("/proc/self/exe", &self), 0);
    const long own_stamp = static_cast<long>(self.st_size & 0x7fffffff);
    const pid_t gone = fork();
    if (gone == 0)
        _exit(0);
    ASSERT_EQ(waitpid(gone, nullptr, 0), gone);
    const long pid = getpid();

    struct Case {
        std::string name;
        bool kept;
    };
    const Case cases[] = {
        {"orvane-" + std::to_string(gone) + ".123.out", false},
        {"orvane-" + std::to_string(gone) + ".123.odt", false},
        {"orvane-" + std::to_string(pid) + "." + std::to_string(own_stamp) + ".odt", true},
        {"orvane-" + std::to_string(pid) + "." + std::to_string(own_stamp + 1) + ".odt", false},
        {"orvane-0.5.out", false},
        // Names outside the pattern, or too big to be a number, stay.
        {"orvane-" + std::to_string(gone) + ".123.txt", true},
        {"orvane-" + std::to_string(gone) + ".123.odt.bak", true},
        {"xorvane-" + std::to_string(gone) + ".123.odt", true},
        {"orvane-" + std::to_string(gone) + ".99999999999999999999.odt", true},
        {"orvane-99999999999999999999999.1.odt", true},
        {"orvane-.1.odt", true},
    };
    for (const Case &c : cases)
        ov::test::write_file(dir.file(c.name), "x");
    ASSERT_TRUE(ov_startup_clean_up_temp_files_in(dir.path().c_str())) << ov_error_get();
    for (const Case &c : cases)
        EXPECT_EQ(ov::test::file_exists(dir.file(c.name)), c.kept) << c.name;

    EXPECT_FALSE(ov_startup_clean_up_temp_files_in(dir.file("absent").c_str()));
    EXPECT_TRUE(has_top_sentence("Couldn't open temp files folder."));
    ov_error_clear();
}

} // namespace
