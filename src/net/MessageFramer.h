#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// The framing of the lobby's TCP stream: every message travels as a 4-byte big-endian payload length
// followed by the payload. It is the only big-endian number on the wire.
namespace SocketPlatform {

inline constexpr std::size_t kFrameHeaderSize = 4;

// The longest payload a peer may announce. The largest message in practice is a recording download;
// anything longer is a broken or hostile peer, and the connection is dropped rather than letting it
// make us allocate without bound.
inline constexpr std::uint32_t kMaxFrameLength = 32u * 1024u * 1024u;

void WriteFrameHeader(std::uint32_t length, unsigned char* header);
std::uint32_t ReadFrameHeader(unsigned char const* header);

// The header and the payload, ready for the stream.
std::vector<unsigned char> MakeFrame(void const* payload, std::size_t length);
std::vector<unsigned char> MakeFrame(std::vector<unsigned char> const& payload);

using MessageHandler = std::function<void(unsigned char const*, std::size_t)>;

// The receive buffer of one TCP stream. Bytes are appended at the write position as they arrive;
// dispatch hands each complete frame to a handler and moves the unconsumed tail to the front.
// The buffer starts at 65,536 zeroed bytes and only grows, by doubling.
class MessageFramer {
public:
  static constexpr std::size_t kInitialSize = 65536;

  enum class DispatchResult { Ok, FrameTooLong };

  MessageFramer();

  // Doubles the buffer, zero-filling the new half, until n more bytes fit after the write position.
  void ensure_capacity(std::size_t n);

  unsigned char* write_area() { return buffer_.data() + write_; }
  std::size_t write_space() const { return buffer_.size() - write_; }
  void advance(std::size_t n) { write_ += n; }

  // ensure_capacity, copy and advance in one.
  void append(unsigned char const* data, std::size_t size);

  // Calls handler(payload, N) for each complete frame at the front of the buffer, or for at most one
  // when singleMessage is set; a partial frame stays for later. A header announcing more than
  // kMaxFrameLength stops the walk with FrameTooLong: the stream can't be trusted past it. An
  // exception from the handler passes through, and the frame that raised it counts as consumed.
  DispatchResult dispatch(MessageHandler const& handler, bool singleMessage);

  // Drops whatever is buffered; the buffer keeps its size.
  void reset() { write_ = 0; }
  void release();  // frees the buffer (moved-from and destroyed clients)

  std::size_t size() const { return write_; }
  std::size_t capacity() const { return buffer_.size(); }

private:
  void compact(std::size_t consumed);

  std::vector<unsigned char> buffer_;
  std::size_t write_ = 0;
};

}  // namespace SocketPlatform
