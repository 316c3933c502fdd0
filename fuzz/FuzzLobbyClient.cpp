// Fuzz target: the client's handling of server messages. The input is a TCP stream of frames; each
// message goes first to the login exchange and, once that is done or has failed, to a lobby client.
// Bad messages may only end in std::runtime_error, never in a crash or a read out of bounds.
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <unistd.h>

#include "FuzzChecks.h"
#include "net/ConnectToLobbyServer.h"
#include "net/LobbyClient.h"
#include "net/MessageFramer.h"

namespace {

class NullTransport : public ILobbyTransport {
public:
  bool complete_connection() override { return true; }
  bool send_message(void const*, std::size_t length) override { return length != 0; }
  void process_incoming_messages(std::function<void(unsigned char const*, std::size_t)>, bool) override {}
  void disconnect() override {}
  bool is_connected() const override { return true; }
  ConnectionState get_connection_state() const override { return ConnectionState::Connected; }
};

// The recordings that the lobby client saves go to a directory of this process, removed at exit.
struct Storage {
  std::string path =
      (std::filesystem::temp_directory_path() / ("tandem-fuzz-lobby-" + std::to_string(getpid()))).string();
  ~Storage() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
  }
};

std::string const& StoragePath() {
  static Storage const storage;
  return storage.path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::FILE* const quiet = std::freopen("/dev/null", "w", stdout);
  (void)quiet;
  auto transport = std::make_shared<NullTransport>();
  ConnectToLobbyServer login(transport, Credentials{{1, 2, 3, 4, 5, 6, 7, 8}, std::vector<unsigned char>(16, 1)});
  LobbyClient lobby(transport, static_cast<unsigned short>(size % 4), 0, StoragePath());
  bool loginOver = false;
  std::vector<unsigned short> finished;

  SocketPlatform::MessageFramer framer;
  framer.append(data, size);
  framer.dispatch(
      [&](unsigned char const* message, std::size_t length) {
        if (!loginOver) {
          try {
            login.handleMessage(message, length);
            loginOver = login.state() == ConnectToLobbyServer::State::Authenticated;
          } catch (std::runtime_error const&) {
            loginOver = true;
          }
          return;
        }
        try {
          lobby.handleMessage(message, length, finished);
        } catch (std::runtime_error const&) {
        }
        // What the interface reads must hold up whatever the server sent.
        lobby.isUDPServerRunning();
        lobby.allOtherPlayersDisconnected();
        lobby.getPlayedGames();
        if (GameRoom const* room = lobby.localRoom()) {
          FUZZ_REQUIRE(room->description.size() <= size);
        }
      },
      false);
  FUZZ_REQUIRE(lobby.serverLog().size() <= LobbyClient::kServerLogSize);
  return 0;
}
