#pragma once

// Disables the interface items made while it lives, if the condition holds; on its end it shows the
// tooltip, if one is given, when the last item is hovered.
class ScopedDisableIf {
public:
  explicit ScopedDisableIf(bool condition, char const* tooltip = nullptr);
  ~ScopedDisableIf();
  ScopedDisableIf(ScopedDisableIf const&) = delete;
  ScopedDisableIf& operator=(ScopedDisableIf const&) = delete;

private:
  bool disabled_;
  char const* tooltip_;
};
