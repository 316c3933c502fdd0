// Fuzz target: every lobby message reader. The first byte picks the message, the rest is its body.
// A message that reads whole must write back to bytes that read to the same message.
#include <string>

#include "FuzzChecks.h"
#include "net/LobbyMessages.h"

namespace {

using Bytes = std::vector<unsigned char>;
using namespace LobbyMessages;

// Reads the body of an encoded message (without its type byte) with the same reader.
template <class Read>
bool Reread(Bytes const& message, Read&& read) {
  return read(message.data() + 1, message.size() - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  unsigned char const* body = data + 1;
  std::size_t const length = size - 1;
  switch (data[0] % 19) {
    case 0: {
      std::uint32_t version = 0;
      if (DecodeVersion(body, length, version)) {
        std::uint32_t again = 0;
        FUZZ_REQUIRE(Reread(EncodeVersion(version), [&](auto const* b, std::size_t s) { return DecodeVersion(b, s, again); }));
        FUZZ_REQUIRE(again == version);
      }
      break;
    }
    case 1: {
      ConnectionResponse message;
      if (DecodeConnectionResponse(body, length, message)) {
        ConnectionResponse again;
        FUZZ_REQUIRE(Reread(EncodeConnectionResponse(message),
                            [&](auto const* b, std::size_t s) { return DecodeConnectionResponse(b, s, again); }));
        FUZZ_REQUIRE(again.accepted == message.accepted && again.challenge == message.challenge);
      }
      break;
    }
    case 2: {
      AuthRequest message;
      if (DecodeAuthRequest(body, length, message)) {
        AuthRequest again;
        FUZZ_REQUIRE(Reread(EncodeAuthRequest(message), [&](auto const* b, std::size_t s) { return DecodeAuthRequest(b, s, again); }));
        FUZZ_REQUIRE(again.playerId == message.playerId && again.saltedHash == message.saltedHash);
      }
      break;
    }
    case 3: {
      AuthResponse message;
      if (DecodeAuthResponse(body, length, message)) {
        AuthResponse again;
        FUZZ_REQUIRE(Reread(EncodeAuthResponse(message), [&](auto const* b, std::size_t s) { return DecodeAuthResponse(b, s, again); }));
        FUZZ_REQUIRE(again.granted == message.granted && again.reason == message.reason);
      }
      break;
    }
    case 4: {
      LobbyState state;
      if (DecodeLobbyState(body, length, state)) {
        LobbyState again;
        FUZZ_REQUIRE(Reread(EncodeLobbyState(state), [&](auto const* b, std::size_t s) { return DecodeLobbyState(b, s, again); }));
        FUZZ_REQUIRE(again == state);
      }
      break;
    }
    case 5: {
      unsigned short room = 0;
      DecodeMoveToGameRoom(body, length, room);
      bool ready = false;
      DecodeSetReadyState(body, length, ready);
      short slot = 0;
      DecodeMoveToSlot(body, length, slot);
      std::uint64_t token = 0;
      DecodeGameStart(body, length, token);
      unsigned short game = 0;
      DecodeRequestRecording(body, length, game);
      break;
    }
    case 8: {
      CreateGame message;
      if (DecodeCreateGame(body, length, message)) {
        CreateGame again;
        FUZZ_REQUIRE(Reread(EncodeCreateGame(message), [&](auto const* b, std::size_t s) { return DecodeCreateGame(b, s, again); }));
        FUZZ_REQUIRE(again == message);
      }
      break;
    }
    case 10: {
      RunningGameState state;
      DecodeRunningGameState(body, length, state);
      break;
    }
    case 11: {
      Bytes result;
      DecodeGameEnd(body, length, result);
      break;
    }
    case 12: {
      std::uint32_t first = 0;
      std::vector<GameResults> games(2);
      DecodeGameResults(body, length, first, games);
      break;
    }
    case 13: {
      std::vector<PlayerNameInfo> const names = DecodePlayerNames(body, length);
      FUZZ_REQUIRE(names.size() <= length);
      break;
    }
    case 14: {
      std::string name;
      DecodeChangeName(body, length, name);
      break;
    }
    case 15: {
      ServerError message;
      DecodeServerError(body, length, message);
      break;
    }
    case 18: {
      RecordingData message;
      if (DecodeRecordingData(body, length, message)) {
        FUZZ_REQUIRE(message.bytes.size() + 10 <= length);
      }
      break;
    }
    default:
      break;
  }
  return 0;
}
