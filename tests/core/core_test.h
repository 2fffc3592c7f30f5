// Small helpers the core tests share.
#pragma once

#include "core/error.h"
#include "support/test_support.h"

#include <glib.h>
#include <gtest/gtest.h>

// The standard headers every core test uses.
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ov::test
{

// A returned GLib string as text, "(null)" for none; frees it.
inline std::string str(char *text)
{
    std::string copy = text != nullptr ? text : "(null)";
    g_free(text);
    return copy;
}

// "ok", or the error text of a failure (then cleared).
inline std::string result(gboolean ok)
{
    std::string text = ok ? "ok" : ov_error_get();
    ov_error_clear();
    return text;
}

using CoreTest = ErrorCleared;

} // namespace ov::test
