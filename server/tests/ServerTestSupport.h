#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "accounts/Credentials.h"

// The real tandem-server as a child process on 127.0.0.1, with a data directory of its own, and a
// raw client that speaks bytes built by hand. Everything waits with a time limit.
namespace servertest {

using Bytes = std::vector<unsigned char>;

// Little-endian pieces of hand-built messages.
void U8(Bytes& out, unsigned value);
void U16(Bytes& out, unsigned value);
void U32(Bytes& out, std::uint32_t value);
void U64(Bytes& out, std::uint64_t value);
void Str(Bytes& out, std::string const& text);
void Vec(Bytes& out, Bytes const& bytes);
// A custom Glow Horde GameSpec by hand: game 0, variant 2 with the map and the game's ten integers
// (their defaults, keys in byte order), then delay, min and max.
Bytes CustomGlowHordeSpec(std::string const& map, unsigned minPlayers, unsigned maxPlayers, unsigned delay = 15);
std::uint64_t ReadU64(Bytes const& bytes, std::size_t at);
std::uint16_t ReadU16(Bytes const& bytes, std::size_t at);

// The server under test: $TANDEM_SERVER if set (for instance a sanitizer build), else the one built
// beside these tests.
std::string ServerPath();
std::string FreshDirectory(std::string const& name);
// Runs "tandem-server account add NAME --data DIR" and decodes the string it prints.
Credentials MintWithCommand(std::string const& dataDirectory, std::string const& name);

class ServerProcess {
public:
  // Starts the server on a data directory (any free ports); the directory goes with the object.
  explicit ServerProcess(std::string dataDirectory, std::vector<std::string> extraArguments = {});
  ~ServerProcess();
  unsigned short lobbyPort() const { return lobbyPort_; }
  unsigned short webPort() const { return webPort_; }
  // SIGTERM, then the exit status (-1 if it had to be killed).
  int terminate();
  std::string const& output() const { return output_; }
  // The data directory is removed with the object unless a later server is to reopen it.
  bool removeDataOnExit = true;

private:
  std::string dataDirectory_;
  pid_t pid_ = -1;
  std::string output_;
  unsigned short lobbyPort_ = 0;
  unsigned short webPort_ = 0;
};

class RawClient {
public:
  explicit RawClient(unsigned short port);
  ~RawClient();
  RawClient(RawClient const&) = delete;
  RawClient& operator=(RawClient const&) = delete;

  void sendFrame(Bytes const& payload);
  void sendRaw(Bytes const& bytes);
  // The next frame's payload, or nothing if none came in time or the connection closed.
  std::optional<Bytes> readFrame(std::chrono::milliseconds limit = std::chrono::milliseconds(3000));
  // Reads frames until one of this type; skips others.
  std::optional<Bytes> waitFor(unsigned type, std::chrono::milliseconds limit = std::chrono::milliseconds(3000));
  // True if the server closes the connection within the limit (frames before that are skipped).
  bool closedWithin(std::chrono::milliseconds limit);
  // The whole login; returns the player number, or nothing if refused.
  std::optional<unsigned short> login(Credentials const& credentials);
  // Reads whatever arrives within the limit.
  std::vector<Bytes> drain(std::chrono::milliseconds limit = std::chrono::milliseconds(300));

private:
  int fd_ = -1;
  Bytes buffer_;
  bool closed_ = false;
};

class RawDatagram {
public:
  RawDatagram();
  ~RawDatagram();
  void sendTo(unsigned short port, Bytes const& bytes);
  std::optional<Bytes> receive(std::chrono::milliseconds limit = std::chrono::milliseconds(2000));

private:
  int fd_ = -1;
};

}  // namespace servertest
