// Fuzz target: the TCP framing across arbitrary splits. The first byte seeds how the rest of the
// input is cut into arriving pieces; the frames handed out piece by piece (one or all per dispatch)
// must be exactly those handed out from the whole stream at once, and the same bytes must be left.
#include <random>

#include "FuzzChecks.h"
#include "net/MessageFramer.h"

namespace {

using Bytes = std::vector<unsigned char>;
using SocketPlatform::MessageFramer;

struct Outcome {
  std::vector<Bytes> messages;
  bool tooLong = false;
  std::size_t left = 0;
};

Outcome Drain(MessageFramer& framer, bool singleMessage, Outcome& outcome) {
  for (;;) {
    std::size_t const before = outcome.messages.size();
    auto const result = framer.dispatch(
        [&](unsigned char const* data, std::size_t size) { outcome.messages.emplace_back(data, data + size); },
        singleMessage);
    if (result == MessageFramer::DispatchResult::FrameTooLong) {
      outcome.tooLong = true;
      return outcome;
    }
    if (outcome.messages.size() == before || !singleMessage) {
      return outcome;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::minstd_rand random(data[0]);
  unsigned char const* stream = data + 1;
  std::size_t const length = size - 1;

  MessageFramer whole;
  whole.append(stream, length);
  Outcome expected;
  Drain(whole, false, expected);
  expected.left = whole.size();

  MessageFramer pieces;
  Outcome got;
  std::size_t at = 0;
  while (at < length && !got.tooLong) {
    std::size_t const piece = std::min<std::size_t>(length - at, random() % 9);
    pieces.append(stream + at, piece);
    at += piece;
    Drain(pieces, random() % 2 == 0, got);
  }
  FUZZ_REQUIRE(got.tooLong == expected.tooLong);
  FUZZ_REQUIRE(got.messages == expected.messages);
  if (got.tooLong) {
    return 0;
  }
  FUZZ_REQUIRE(pieces.size() == expected.left);
  FUZZ_REQUIRE(pieces.capacity() <= 2 * (length + MessageFramer::kInitialSize));
  return 0;
}
