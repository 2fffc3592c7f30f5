// Natural order and the remark code order are reflexive, antisymmetric and
// transitive on any three texts; the remark order ties only on equal bytes.
#include "core/natcmp.h"
#include "docs/remark.h"
#include "fuzz_support.h"

#include <cstring>

namespace
{

int sign(int value)
{
    return (value > 0) - (value < 0);
}

void check(int (*compare)(const char *, const char *), const char *a, const char *b, const char *c)
{
    OV_FUZZ_CHECK(compare(a, a) == 0);
    OV_FUZZ_CHECK(sign(compare(a, b)) == -sign(compare(b, a)));
    const char *texts[] = {a, b, c};
    for (const char *x : texts)
        for (const char *y : texts)
            for (const char *z : texts)
                if (compare(x, y) <= 0 && compare(y, z) <= 0)
                    OV_FUZZ_CHECK(compare(x, z) <= 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Three texts separated by NUL bytes.
    std::string parts[3];
    size_t part = 0;
    for (size_t i = 0; i < size && part < 3; ++i) {
        if (data[i] == '\0')
            ++part;
        else
            parts[part] += static_cast<char>(data[i]);
    }
    const char *a = parts[0].c_str(), *b = parts[1].c_str(), *c = parts[2].c_str();
    for (auto compare : {strnatcmp, strnatcasecmp, strnatzerocmp, strnatzerocasecmp, ov_remark_compare_codes})
        check(compare, a, b, c);
    OV_FUZZ_CHECK((ov_remark_compare_codes(a, b) == 0) == (std::strcmp(a, b) == 0));
    OV_FUZZ_CHECK(sign(strnatzerocase_key(a).compare(strnatzerocase_key(b))) ==
                  sign(strnatzerocasecmp(a, b)));
    return 0;
}
