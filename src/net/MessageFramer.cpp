#include "net/MessageFramer.h"

#include <cstring>

namespace SocketPlatform {

void WriteFrameHeader(std::uint32_t length, unsigned char* header) {
  header[0] = static_cast<unsigned char>(length >> 24);
  header[1] = static_cast<unsigned char>(length >> 16);
  header[2] = static_cast<unsigned char>(length >> 8);
  header[3] = static_cast<unsigned char>(length);
}

std::uint32_t ReadFrameHeader(unsigned char const* header) {
  return (std::uint32_t{header[0]} << 24) | (std::uint32_t{header[1]} << 16) | (std::uint32_t{header[2]} << 8) |
         std::uint32_t{header[3]};
}

std::vector<unsigned char> MakeFrame(void const* payload, std::size_t length) {
  std::vector<unsigned char> frame(kFrameHeaderSize + length);
  WriteFrameHeader(static_cast<std::uint32_t>(length), frame.data());
  if (length != 0) {
    std::memcpy(frame.data() + kFrameHeaderSize, payload, length);
  }
  return frame;
}

std::vector<unsigned char> MakeFrame(std::vector<unsigned char> const& payload) {
  return MakeFrame(payload.data(), payload.size());
}

MessageFramer::MessageFramer() : buffer_(kInitialSize, 0) {}

void MessageFramer::ensure_capacity(std::size_t n) {
  if (buffer_.empty()) {
    buffer_.assign(kInitialSize, 0);
  }
  std::size_t size = buffer_.size();
  while (write_ + n > size) {
    size *= 2;
  }
  buffer_.resize(size, 0);
}

void MessageFramer::append(unsigned char const* data, std::size_t size) {
  ensure_capacity(size);
  if (size != 0) {
    std::memcpy(write_area(), data, size);
  }
  advance(size);
}

MessageFramer::DispatchResult MessageFramer::dispatch(MessageHandler const& handler, bool singleMessage) {
  std::size_t consumed = 0;
  DispatchResult result = DispatchResult::Ok;
  try {
    while (write_ - consumed >= kFrameHeaderSize) {
      std::uint32_t const length = ReadFrameHeader(buffer_.data() + consumed);
      if (length > kMaxFrameLength) {
        result = DispatchResult::FrameTooLong;
        break;
      }
      if (write_ - consumed - kFrameHeaderSize < length) {
        break;
      }
      unsigned char const* payload = buffer_.data() + consumed + kFrameHeaderSize;
      consumed += kFrameHeaderSize + length;
      handler(payload, length);
      if (write_ < consumed) {
        return result;  // the handler dropped the connection, and the buffer with it
      }
      if (singleMessage) {
        break;
      }
    }
  } catch (...) {
    compact(consumed);
    throw;
  }
  compact(consumed);
  return result;
}

void MessageFramer::release() {
  std::vector<unsigned char>().swap(buffer_);
  write_ = 0;
}

void MessageFramer::compact(std::size_t consumed) {
  if (consumed == 0 || consumed > write_) {
    return;
  }
  std::size_t const tail = write_ - consumed;
  if (tail != 0) {
    std::memmove(buffer_.data(), buffer_.data() + consumed, tail);
  }
  write_ = tail;
}

}  // namespace SocketPlatform
