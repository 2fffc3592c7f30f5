// Entry point of the template editor. The editing window arrives with the
// application frame; until then the program only reports what it is.
#include <cstdio>

int main(int argc, char **argv)
{
    (void)argc;
    (void)argv;
    std::puts("Orvane Template Editor 3.3.0: the editing window is not built yet.");
    return 0;
}
