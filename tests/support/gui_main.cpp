// Main of the suite of widgets and windows: GTK is initialised once.
#include "support/test_support.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    ov::test::install_log_handler();
    // Listing the tests needs no display; running them does.
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    if (!gtk_init_check(&argc, &argv)) {
        g_printerr("No display: run the GUI tests under xvfb-run -a.\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
