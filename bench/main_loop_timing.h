// Timing helpers shared by the benchmarks that drive real widgets: clocks,
// running the main loop until something happened or all is quiet, percentiles.
#pragma once

#include <glib.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace ov::bench
{

inline double now_ms()
{
    return double(g_get_monotonic_time()) / 1000.0;
}

inline void run_until(const std::function<bool()> &condition)
{
    while (!condition())
        g_main_context_iteration(nullptr, TRUE);
}

// Until idle work is done: nothing pending for 50 ms.
inline void run_until_quiet()
{
    for (double quiet_since = now_ms(); now_ms() - quiet_since < 50;) {
        if (g_main_context_iteration(nullptr, FALSE))
            quiet_since = now_ms();
        else
            g_usleep(1000);
    }
}

inline double percentile(std::vector<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[std::size_t(p * double(values.size() - 1))];
}

} // namespace ov::bench
