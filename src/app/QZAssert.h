#pragma once

#include <source_location>

// Reports a failed programming assumption on the standard error stream and aborts.
// Never the reaction to ordinary input: that gets a clear error instead.
void QZAssertHandler(char const* expression, bool condition,
                     std::source_location location = std::source_location::current());

#define QZ_ASSERT(expr) QZAssertHandler(#expr, static_cast<bool>(expr), std::source_location::current())
