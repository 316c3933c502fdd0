#pragma once

// A sink of bytes for the digest of simulated state. Values are fed field by field at their width.
class IHasher {
public:
  virtual ~IHasher() = default;
  virtual void update(void const* data, unsigned long size) = 0;
};
