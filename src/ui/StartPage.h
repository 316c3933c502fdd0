#pragma once

#include <optional>

namespace ui {

// Ends the page's window when it goes out of scope.
class ScopedEnd {
public:
  ScopedEnd() = default;
  ScopedEnd(ScopedEnd&& other) noexcept : active_(other.active_) { other.active_ = false; }
  ScopedEnd& operator=(ScopedEnd&&) = delete;
  ScopedEnd(ScopedEnd const&) = delete;
  ScopedEnd& operator=(ScopedEnd const&) = delete;
  ~ScopedEnd();

private:
  bool active_ = true;
};

// Opens a page: a window over the whole viewport with its title, large and centred, then spacing and a
// separator. Set while the window is open; otherwise the window is already ended and the page draws
// nothing more.
std::optional<ScopedEnd> StartPage(char const* title);

// The pages' separator: a line of 1 pixel across the middle half of the available width, in the
// style's separator colour, followed by a space of twice the item spacing.
void SeparatorLine();

}  // namespace ui
