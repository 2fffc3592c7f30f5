// Main of the suite that needs no display.
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char **argv)
{
    // Follow the environment's locale, so that a run under a decimal-comma
    // locale shows any number formatting that depends on it.
    std::setlocale(LC_ALL, "");
    ::testing::InitGoogleTest(&argc, argv);
    ov::test::install_log_handler();
    return RUN_ALL_TESTS();
}
