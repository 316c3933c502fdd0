#include "app/ChangeToExecutableDirectory.h"

#include <libgen.h>
#include <unistd.h>

#include <vector>

#if defined(__APPLE__)
#include <mach-o/dyld.h>
#endif

void ChangeToExecutableDirectory() {
  std::vector<char> path;
#if defined(__APPLE__)
  uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  path.assign(size + 1, '\0');
  if (_NSGetExecutablePath(path.data(), &size) != 0) {
    return;
  }
#else
  path.assign(4096, '\0');
  ssize_t const length = readlink("/proc/self/exe", path.data(), path.size() - 1);
  if (length <= 0) {
    return;
  }
  path[static_cast<std::size_t>(length)] = '\0';
#endif
  if (chdir(dirname(path.data())) != 0) {
    return;  // the working directory stays as it was
  }
}
