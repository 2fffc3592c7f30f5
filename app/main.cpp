// Entry point of the template editor. The editing window arrives with the
// application frame; until then the program only reports what it is.
#include "app/app_version.h"

#include <cstdio>

int main(int argc, char **argv)
{
    (void)argc;
    (void)argv;
    std::printf("%s %s: the editing window is not built yet.\n", ov_app_name, ov_app_version);
    return 0;
}
