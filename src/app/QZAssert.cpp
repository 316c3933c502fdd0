#include "app/QZAssert.h"

#include <cstdio>
#include <cstdlib>

void QZAssertHandler(char const* expression, bool condition, std::source_location location) {
  if (condition) {
    return;
  }
  std::fprintf(stderr, "\n========== ASSERTION FAILED ==========\n");
  std::fprintf(stderr, "Expression: %s\n", expression);
  std::fprintf(stderr, "File:       %s\n", location.file_name());
  std::fprintf(stderr, "Line:       %u\n", static_cast<unsigned>(location.line()));
  std::fprintf(stderr, "Function:   %s\n", location.function_name());
  std::fprintf(stderr, "=======================================\n\n");
  std::fflush(stderr);
  std::abort();
}
