#include "ServerTestSupport.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <thread>

#include "accounts/CredentialsString.h"
#include "accounts/SaltedHash.h"

namespace servertest {

namespace {

std::int64_t MsLeft(std::chrono::steady_clock::time_point deadline) {
  return std::max<std::int64_t>(
      0, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count());
}

sockaddr_in Loopback(unsigned short port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

void U8(Bytes& out, unsigned value) { out.push_back(static_cast<unsigned char>(value)); }
void U16(Bytes& out, unsigned value) {
  for (int i = 0; i < 2; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}
void U32(Bytes& out, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}
void U64(Bytes& out, std::uint64_t value) {
  for (int i = 0; i < 8; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}
void Str(Bytes& out, std::string const& text) {
  U64(out, text.size());
  out.insert(out.end(), text.begin(), text.end());
}
void Vec(Bytes& out, Bytes const& bytes) {
  U64(out, bytes.size());
  out.insert(out.end(), bytes.begin(), bytes.end());
}

Bytes CustomGlowHordeSpec(std::string const& map, unsigned minPlayers, unsigned maxPlayers, unsigned delay) {
  Bytes spec;
  U16(spec, 0);
  U8(spec, 2);
  U16(spec, 1);
  Str(spec, "map");
  Str(spec, map);
  std::pair<char const*, std::uint32_t> const integers[] = {
      {"block_orders", 3},         {"bridge_orders", 13},   {"dig_down_orders", 5},
      {"dig_sideways_orders", 2},  {"dig_upwards_orders", 2}, {"duration_seconds", 180},
      {"horizontal_bridge_orders", 13}, {"number_to_spawn", 50}, {"raise_ground_orders", 2},
      {"spawn_interval_deciseconds", 33}};
  U16(spec, 10);
  for (auto const& [key, value] : integers) {
    Str(spec, key);
    U32(spec, value);
  }
  U8(spec, delay);
  U16(spec, minPlayers);
  U16(spec, maxPlayers);
  return spec;
}

std::uint64_t ReadU64(Bytes const& bytes, std::size_t at) {
  std::uint64_t value = 0;
  for (int i = 7; i >= 0; --i) value = (value << 8) | bytes.at(at + static_cast<std::size_t>(i));
  return value;
}
std::uint16_t ReadU16(Bytes const& bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes.at(at) | (bytes.at(at + 1) << 8));
}

std::string FreshDirectory(std::string const& name) {
  auto const path = std::filesystem::temp_directory_path() /
                    ("tandem-server-test-" + std::to_string(getpid()) + "-" + name);
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(path);
  return path.string();
}

std::string ServerPath() {
  char const* chosen = std::getenv("TANDEM_SERVER");
  return chosen != nullptr && *chosen != 0 ? chosen : TANDEM_SERVER_PATH;
}

Credentials MintWithCommand(std::string const& dataDirectory, std::string const& name) {
  std::string const command = ServerPath() + " account add '" + name + "' --data '" +
                              dataDirectory + "' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    throw std::runtime_error("popen failed");
  }
  char line[256] = {};
  std::string text = std::fgets(line, sizeof line, pipe) != nullptr ? line : "";
  pclose(pipe);
  return DecodeCredentialsString(text);
}

// ------------------------------------------------------------------------------------------------ process

namespace {
std::string ReadWhole(std::string const& path) {
  std::string text;
  if (FILE* file = std::fopen(path.c_str(), "rb")) {
    char chunk[4096];
    std::size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) text.append(chunk, got);
    std::fclose(file);
  }
  return text;
}
}  // namespace

ServerProcess::ServerProcess(std::string dataDirectory, std::vector<std::string> extraArguments)
    : dataDirectory_(std::move(dataDirectory)) {
  // The server's output goes to a file beside its data directory, so that it never blocks on a pipe.
  std::string const logPath = dataDirectory_ + ".log";
  int const logFd = open(logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  std::vector<std::string> arguments = {ServerPath(), "--base-port", "0", "--web-port", "0",
                                        "--bind", "127.0.0.1", "--data", dataDirectory_};
  arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
  pid_ = fork();
  if (pid_ == 0) {
    dup2(logFd, STDOUT_FILENO);
    dup2(logFd, STDERR_FILENO);
    close(logFd);
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(logFd);
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  std::regex const lobby("Lobby listening on [0-9.]+ port ([0-9]+)");
  std::regex const web("Website listening on [0-9.]+ port ([0-9]+)");
  std::smatch match;
  while ((lobbyPort_ == 0 || webPort_ == 0) && MsLeft(deadline) > 0) {
    output_ = ReadWhole(logPath);
    if (std::regex_search(output_, match, lobby)) lobbyPort_ = static_cast<unsigned short>(std::stoi(match[1]));
    if (std::regex_search(output_, match, web)) webPort_ = static_cast<unsigned short>(std::stoi(match[1]));
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (lobbyPort_ == 0) {
    throw std::runtime_error("tandem-server did not start: " + output_);
  }
}

int ServerProcess::terminate() {
  if (pid_ <= 0) return -1;
  kill(pid_, SIGTERM);
  int status = 0;
  int result = -1;
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (MsLeft(deadline) > 0) {
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      pid_ = -1;
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, &status, 0);
    pid_ = -1;
  }
  output_ = ReadWhole(dataDirectory_ + ".log");
  return result;
}

ServerProcess::~ServerProcess() {
  terminate();
  if (std::getenv("TANDEM_SERVER_TEST_LOG") != nullptr) {
    std::fprintf(stderr, "---- server output ----\n%s---- end of server output ----\n", output_.c_str());
  }
  std::error_code ignored;
  if (removeDataOnExit) {
    std::filesystem::remove_all(dataDirectory_, ignored);
  }
  std::filesystem::remove(dataDirectory_ + ".log", ignored);
}

// ------------------------------------------------------------------------------------------------ TCP client

RawClient::RawClient(unsigned short port) {
  fd_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in const address = Loopback(port);
  if (connect(fd_, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
    throw std::runtime_error("connect failed");
  }
}

RawClient::~RawClient() {
  close(fd_);
}

void RawClient::sendRaw(Bytes const& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    ssize_t const n = ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) return;
    sent += static_cast<std::size_t>(n);
  }
}

void RawClient::sendFrame(Bytes const& payload) {
  Bytes frame = {static_cast<unsigned char>(payload.size() >> 24), static_cast<unsigned char>(payload.size() >> 16),
                 static_cast<unsigned char>(payload.size() >> 8), static_cast<unsigned char>(payload.size())};
  frame.insert(frame.end(), payload.begin(), payload.end());
  sendRaw(frame);
}

std::optional<Bytes> RawClient::readFrame(std::chrono::milliseconds limit) {
  auto const deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (buffer_.size() >= 4) {
      std::size_t const length = (std::size_t{buffer_[0]} << 24) | (std::size_t{buffer_[1]} << 16) |
                                 (std::size_t{buffer_[2]} << 8) | buffer_[3];
      if (buffer_.size() >= 4 + length) {
        Bytes payload(buffer_.begin() + 4, buffer_.begin() + 4 + static_cast<std::ptrdiff_t>(length));
        buffer_.erase(buffer_.begin(), buffer_.begin() + 4 + static_cast<std::ptrdiff_t>(length));
        return payload;
      }
    }
    if (closed_) return std::nullopt;
    pollfd p{fd_, POLLIN, 0};
    std::int64_t const left = MsLeft(deadline);
    if (left == 0 || poll(&p, 1, static_cast<int>(left)) <= 0) return std::nullopt;
    unsigned char chunk[65536];
    ssize_t const got = recv(fd_, chunk, sizeof chunk, 0);
    if (got <= 0) {
      closed_ = true;
      continue;
    }
    buffer_.insert(buffer_.end(), chunk, chunk + got);
  }
}

std::optional<Bytes> RawClient::waitFor(unsigned type, std::chrono::milliseconds limit) {
  auto const deadline = std::chrono::steady_clock::now() + limit;
  while (MsLeft(deadline) > 0) {
    auto frame = readFrame(std::chrono::milliseconds(MsLeft(deadline)));
    if (!frame) return std::nullopt;
    if (!frame->empty() && (*frame)[0] == type) return frame;
  }
  return std::nullopt;
}

bool RawClient::closedWithin(std::chrono::milliseconds limit) {
  auto const deadline = std::chrono::steady_clock::now() + limit;
  while (MsLeft(deadline) > 0) {
    if (!readFrame(std::chrono::milliseconds(MsLeft(deadline))) && closed_) return true;
  }
  return closed_;
}

std::vector<Bytes> RawClient::drain(std::chrono::milliseconds limit) {
  std::vector<Bytes> frames;
  auto const deadline = std::chrono::steady_clock::now() + limit;
  while (auto frame = readFrame(std::chrono::milliseconds(MsLeft(deadline)))) {
    frames.push_back(std::move(*frame));
  }
  return frames;
}

std::optional<unsigned short> RawClient::login(Credentials const& credentials) {
  sendFrame({0, 0xEB, 0x03, 0x00, 0x00});  // VERSION 1003
  auto const version = readFrame();
  auto const response = readFrame();
  if (!version || !response || response->size() < 10 || (*response)[0] != 1 || (*response)[1] == 0) {
    return std::nullopt;
  }
  std::uint64_t const length = ReadU64(*response, 2);
  Bytes const challenge(response->begin() + 10, response->begin() + 10 + static_cast<std::ptrdiff_t>(length));
  Bytes request = {2};
  Vec(request, credentials.playerId);
  U64(request, SaltedHash(challenge, credentials.secret));
  sendFrame(request);
  auto const auth = readFrame();
  if (!auth || auth->size() != 8 || (*auth)[0] != 3 || (*auth)[1] == 0) {
    return std::nullopt;
  }
  return ReadU16(*auth, 6);
}

// ------------------------------------------------------------------------------------------------ UDP

RawDatagram::RawDatagram() {
  fd_ = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in const address = Loopback(0);
  bind(fd_, reinterpret_cast<sockaddr const*>(&address), sizeof address);
}

RawDatagram::~RawDatagram() {
  close(fd_);
}

void RawDatagram::sendTo(unsigned short port, Bytes const& bytes) {
  sockaddr_in const address = Loopback(port);
  sendto(fd_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr const*>(&address), sizeof address);
}

std::optional<Bytes> RawDatagram::receive(std::chrono::milliseconds limit) {
  pollfd p{fd_, POLLIN, 0};
  if (poll(&p, 1, static_cast<int>(limit.count())) <= 0) return std::nullopt;
  unsigned char buffer[65536];
  ssize_t const got = recv(fd_, buffer, sizeof buffer, 0);
  if (got <= 0) return std::nullopt;
  return Bytes(buffer, buffer + got);
}

}  // namespace servertest
