// Start-up and shutdown of the process-wide resources: the built-in archive,
// the icons and the view font, and the clean-up of stale temporary files
// against real processes.
#include "support/test_support.h"

#include "core/error.h"
#include "core/raii.h"
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
                  bool ok = ov_startup_prepare() && ov_startup_prepare() && ov_startup_is_successful();
                  OvImage *tab = ov_get_text_tab_menu_icon_image();
                  ok = ok && tab != nullptr && ov_image_get_width(tab) == 11 &&
                       ov_image_get_height(tab) == 9 &&
                       ov_get_checkbox_icon_image(TRUE) != ov_get_checkbox_icon_image(FALSE);

                  // Text drawn with the face leaves cairo holding it past
                  // shutdown, which must still free it without a crash.
                  cairo_font_face_t *face = ov_get_view_font_face();
                  ok = ok && face != nullptr && cairo_font_face_get_type(face) == CAIRO_FONT_TYPE_FT;
                  ov::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 40, 20));
                  ov::CairoPtr cr(cairo_create(surface.get()));
                  cairo_set_font_face(cr.get(), face);
                  cairo_move_to(cr.get(), 0, 15);
                  cairo_show_text(cr.get(), "Abc");
                  cr.reset();

                  const OvApplicationConfiguration configuration{"org.example.Test", nullptr, nullptr,
                                                                 [] { ++text_drawing_clean_ups; }};
                  ov_startup_release(&configuration);
                  ok = ok && text_drawing_clean_ups == 1 && !ov_startup_is_successful() &&
                       ov_get_checkbox_icon_image(TRUE) == nullptr && ov_get_view_font_face() == nullptr;
                  ov_startup_release(nullptr); // twice is harmless
                  return ok;
              }),
              0);
}

TEST(StartupTest, ResourceFailuresNameTheResource)
{
    ASSERT_TRUE(ov_resources_open());
    ov_error_clear();
    EXPECT_EQ(ov_resources_load_image("missing.png", OV_FILE_TYPE_PNG), nullptr);
    EXPECT_TRUE(has_top_sentence("Could not load image resource.")) << ov_error_get();
    // A PNG entry read as XML or as another kind of image is refused by the reader.
    ov_error_clear();
    EXPECT_EQ(ov_resources_load_xml_doc("checkbox_on.png"), nullptr);
    EXPECT_TRUE(has_top_sentence("Could not open XML resource.")) << ov_error_get();
    ov_error_clear();
    EXPECT_EQ(ov_resources_load_image("checkbox_on.png", OV_FILE_TYPE_JPEG), nullptr);
    EXPECT_TRUE(has_top_sentence("Could not load image resource."));
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
        {"orvane-" + std::to_string(pid) + "." + std::to_string(own_stamp) + ".odt", true},
        {"orvane-" + std::to_string(pid) + "." + std::to_string(own_stamp + 1) + ".odt", false},
        {"orvane-0.5.out", false},
        // Names outside the pattern, or too big to be a number, stay.
        {"orvane-" + std::to_string(gone) + ".123.odt.bak", true},
        {"orvane-99999999999999999999999.1.odt", true},
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
