#include "BotShard.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <queue>

#include "accounts/SaltedHash.h"
#include "net/GameDataPacket.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyMessages.h"
#include "net/MessageFramer.h"
#include "net/MessageType.h"
#include "net/UDPDataStream.h"
#include "sim/GameSpec.h"

namespace lm = LobbyMessages;

namespace {

using Clock = std::chrono::steady_clock;
using Nanos = std::int64_t;

Nanos Now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
}

constexpr Nanos kFrameNs = 1'000'000'000 / 60;
constexpr Nanos kSessionRetryNs = 200'000'000;
constexpr Nanos kKeepAliveNs = 3'000'000'000;
constexpr int kPlayersPerGame = 4;
constexpr std::size_t kSendRing = 512;  // ticks of send times kept per game; far more than the window
constexpr std::size_t kMaxFaults = 8;

// A four-player cooperative challenge of Glow Horde: a room that takes exactly four players.
std::vector<unsigned char> FourPlayerSpec(int delayFrames) {
  GameSpec spec;
  spec.game = Game::GlowHorde;
  spec.settings = CoopChallengeIndex{3};
  spec.delayFrames = static_cast<std::uint8_t>(delayFrames);
  spec.minPlayers = kPlayersPerGame;
  spec.maxPlayers = kPlayersPerGame;
  std::vector<unsigned char> bytes;
  ToBytes(spec, bytes);
  return bytes;
}

// The order a bot gives on a frame: its seat, the tick and its game, so that the relay's step can be
// checked chunk by chunk.
std::array<unsigned char, 4> OrderOf(int seat, std::uint64_t tick, int game) {
  return {static_cast<unsigned char>(seat), static_cast<unsigned char>(tick & 0xff),
          static_cast<unsigned char>((tick >> 8) & 0xff), static_cast<unsigned char>(game & 0xff)};
}

bool SetNonBlocking(int fd) {
  int const flags = fcntl(fd, F_GETFL, 0);
  return flags >= 0 && fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0;
}

}  // namespace

struct BotShard::Impl {
  enum class Stage { Waiting, Connecting, AwaitVersion, AwaitChallenge, AwaitAuth, Lobby, InRoom, Started, Playing, Failed };

  struct Bot {
    Credentials credentials;
    int game = 0;
    int seat = 0;
    Stage stage = Stage::Waiting;
    int tcp = -1;
    int udp = -1;
    SocketPlatform::MessageFramer framer;
    std::vector<unsigned char> outgoing;  // TCP bytes not yet written
    bool wantWrite = false;
    unsigned short playerNumber = 0;
    std::uint64_t sessionToken = 0;
    bool haveToken = false;
    unsigned short portOffset = 0;
    bool confirmed = false;
    Nanos lastRequestNs = 0;
    Nanos lastKeepAliveNs = 0;
    UDPDataStream stream{1};
    std::uint64_t stepsReceived = 0;
    std::uint64_t stepsInWindow = 0;
  };

  struct SentTick {
    std::uint64_t tick = ~0ull;
    int count = 0;
    Nanos lastNs = 0;
  };

  struct Game {
    int number = 0;  // within the shard
    unsigned short room = 0;
    bool roomKnown = false;
    std::uint64_t roomToken = 0;
    bool startSent = false;
    bool playing = false;
    Nanos phaseNs = 0;
    // The seat of the bot at each place of the running game: the relay collates in the order in which
    // the players joined the room, which needn't be the order of the seats.
    std::array<int, kPlayersPerGame> seatAtPlace{-1, -1, -1, -1};
    std::vector<SentTick> sent = std::vector<SentTick>(kSendRing);
  };

  struct Due {
    Nanos at;
    int game;
    bool operator>(Due const& other) const { return at > other.at; }
  };

  LoadSettings settings;
  LoadControl& control;
  ShardReport report;
  std::vector<Bot> bots;
  std::vector<Game> games;
  std::vector<unsigned char> spec;
  int epoll = -1;
  int nextGameToForm = 0;
  int formingGames = 0;
  std::priority_queue<Due, std::vector<Due>, std::greater<>> frames;
  std::vector<unsigned char> scratch = std::vector<unsigned char>(Datagram::kMaxPayload);

  Impl(LoadSettings s, std::vector<Credentials> accounts, LoadControl& c)
      : settings(std::move(s)), control(c), bots(accounts.size()), games(accounts.size() / kPlayersPerGame) {
    for (std::size_t i = 0; i < accounts.size(); ++i) {
      bots[i].credentials = std::move(accounts[i]);
      bots[i].game = static_cast<int>(i) / kPlayersPerGame;
      bots[i].seat = static_cast<int>(i) % kPlayersPerGame;
    }
    for (std::size_t g = 0; g < games.size(); ++g) {
      games[g].number = static_cast<int>(g);
      // Spread over the frame by a stride coprime to the frame's 16 slots of about a millisecond.
      games[g].phaseNs = static_cast<Nanos>((g * 7) % 16) * kFrameNs / 16;
    }
    report.bots = static_cast<int>(bots.size());
    spec = FourPlayerSpec(settings.delayFrames);
    epoll = epoll_create1(0);
  }

  ~Impl() {
    for (Bot& bot : bots) {
      closeSockets(bot);
    }
    if (epoll >= 0) {
      ::close(epoll);
    }
  }

  static void closeSockets(Bot& bot) {
    if (bot.tcp >= 0) {
      ::close(bot.tcp);
      bot.tcp = -1;
    }
    if (bot.udp >= 0) {
      ::close(bot.udp);
      bot.udp = -1;
    }
  }

  void fault(Bot& bot, std::string const& what) {
    if (report.faults.size() < kMaxFaults) {
      report.faults.push_back("bot " + std::to_string(&bot - bots.data()) + ": " + what);
    }
    if (bot.stage != Stage::Failed) {
      bot.stage = Stage::Failed;
      control.botsFailed.fetch_add(1);
    }
    closeSockets(bot);
  }

  static std::uint64_t Key(std::size_t bot, bool udp) { return (static_cast<std::uint64_t>(bot) << 1) | (udp ? 1 : 0); }

  // ------------------------------------------------------------------------------------------- lobby

  void connectBot(std::size_t index) {
    Bot& bot = bots[index];
    bot.tcp = ::socket(AF_INET, SOCK_STREAM, 0);
    if (bot.tcp < 0 || !SetNonBlocking(bot.tcp)) {
      return fault(bot, std::string("no TCP socket: ") + std::strerror(errno));
    }
    int const one = 1;
    setsockopt(bot.tcp, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(settings.lobbyPort);
    inet_pton(AF_INET, settings.host.c_str(), &address.sin_addr);
    if (::connect(bot.tcp, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 && errno != EINPROGRESS) {
      return fault(bot, std::string("connect failed: ") + std::strerror(errno));
    }
    epoll_event event{};
    event.events = EPOLLIN | EPOLLOUT;
    event.data.u64 = Key(index, false);
    epoll_ctl(epoll, EPOLL_CTL_ADD, bot.tcp, &event);
    bot.wantWrite = true;
    bot.stage = Stage::Connecting;
  }

  void formNextGames() {
    while (formingGames < settings.formingGames && nextGameToForm < static_cast<int>(games.size())) {
      int const g = nextGameToForm++;
      ++formingGames;
      for (int seat = 0; seat < kPlayersPerGame; ++seat) {
        connectBot(static_cast<std::size_t>(g * kPlayersPerGame + seat));
      }
    }
  }

  void send(std::size_t index, std::vector<unsigned char> const& message) {
    Bot& bot = bots[index];
    if (bot.tcp < 0) {
      return;
    }
    auto const frame = SocketPlatform::MakeFrame(message);
    bot.outgoing.insert(bot.outgoing.end(), frame.begin(), frame.end());
    flush(index);
  }

  void flush(std::size_t index) {
    Bot& bot = bots[index];
    while (!bot.outgoing.empty() && bot.stage != Stage::Connecting) {
      ssize_t const written = ::send(bot.tcp, bot.outgoing.data(), bot.outgoing.size(), MSG_NOSIGNAL);
      if (written < 0) {
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
          break;
        }
        return fault(bot, std::string("lobby send failed: ") + std::strerror(errno));
      }
      bot.outgoing.erase(bot.outgoing.begin(), bot.outgoing.begin() + written);
    }
    bool const want = bot.stage == Stage::Connecting || !bot.outgoing.empty();
    if (want != bot.wantWrite && bot.tcp >= 0) {
      epoll_event event{};
      event.events = EPOLLIN | (want ? EPOLLOUT : 0u);
      event.data.u64 = Key(index, false);
      epoll_ctl(epoll, EPOLL_CTL_MOD, bot.tcp, &event);
      bot.wantWrite = want;
    }
  }

  void onTcpWritable(std::size_t index) {
    Bot& bot = bots[index];
    if (bot.stage == Stage::Connecting) {
      int error = 0;
      socklen_t length = sizeof error;
      getsockopt(bot.tcp, SOL_SOCKET, SO_ERROR, &error, &length);
      if (error != 0) {
        return fault(bot, std::string("lobby connection refused: ") + std::strerror(error));
      }
      bot.stage = Stage::AwaitVersion;
      send(index, lm::EncodeVersion(lm::kProtocolVersion));
      return;
    }
    flush(index);
  }

  void onTcpReadable(std::size_t index) {
    Bot& bot = bots[index];
    for (;;) {
      bot.framer.ensure_capacity(16384);
      ssize_t const got = ::recv(bot.tcp, bot.framer.write_area(), bot.framer.write_space(), 0);
      if (got > 0) {
        bot.framer.advance(static_cast<std::size_t>(got));
        continue;
      }
      if (got == 0) {
        return fault(bot, "the server closed the lobby connection");
      }
      if (errno == EAGAIN || errno == EWOULDBLOCK) {
        break;
      }
      return fault(bot, std::string("lobby receive failed: ") + std::strerror(errno));
    }
    auto const result = bot.framer.dispatch(
        [this, index](unsigned char const* data, std::size_t size) {
          if (bots[index].stage != Stage::Failed && size > 0) {
            onMessage(index, data, size);
          }
        },
        false);
    if (result != SocketPlatform::MessageFramer::DispatchResult::Ok) {
      fault(bot, "the server announced an overlong frame");
    }
  }

  void onMessage(std::size_t index, unsigned char const* data, std::size_t size) {
    Bot& bot = bots[index];
    Game& game = games[static_cast<std::size_t>(bot.game)];
    unsigned char const* body = data + 1;
    std::size_t const bodySize = size - 1;
    switch (static_cast<MessageType>(data[0])) {
      case MessageType::VERSION:
        if (bot.stage == Stage::AwaitVersion) {
          bot.stage = Stage::AwaitChallenge;
        }
        return;
      case MessageType::CONNECTION_RESPONSE: {
        lm::ConnectionResponse response;
        if (bot.stage != Stage::AwaitChallenge || !lm::DecodeConnectionResponse(body, bodySize, response) ||
            !response.accepted) {
          return fault(bot, "the server refused the connection");
        }
        bot.stage = Stage::AwaitAuth;
        send(index, lm::EncodeAuthRequest({bot.credentials.playerId,
                                           SaltedHash(response.challenge, bot.credentials.secret)}));
        return;
      }
      case MessageType::AUTH_RESPONSE: {
        lm::AuthResponse response;
        if (bot.stage != Stage::AwaitAuth || !lm::DecodeAuthResponse(body, bodySize, response) || !response.granted) {
          return fault(bot, "login refused: " + response.reason);
        }
        bot.playerNumber = response.playerNumber;
        bot.stage = Stage::Lobby;
        bot.lastKeepAliveNs = Now();
        if (bot.seat == 0) {
          send(index, lm::EncodeCreateGame({"load " + std::to_string(game.number), spec, kPlayersPerGame,
                                            kPlayersPerGame, false}));
        } else if (game.roomKnown) {
          joinRoom(index);
        }
        return;
      }
      case MessageType::LOBBY_STATE:
        // Only a host forming its room needs to read the lobby; everybody else skips the bytes.
        if (bot.seat == 0 && (bot.stage == Stage::Lobby || bot.stage == Stage::InRoom) && !game.startSent) {
          LobbyState state;
          if (lm::DecodeLobbyState(body, bodySize, state)) {
            hostSawLobby(index, state);
          }
        }
        return;
      case MessageType::GAME_START:
        if (lm::DecodeGameStart(body, bodySize, bot.sessionToken)) {
          bot.haveToken = true;
        }
        return;
      case MessageType::RUNNING_GAME_STATE: {
        RunningGameState running;
        if (!lm::DecodeRunningGameState(body, bodySize, running)) {
          return fault(bot, "unreadable RUNNING_GAME_STATE");
        }
        if (running.players.size() != kPlayersPerGame) {
          return fault(bot, "the running game doesn't have four players");
        }
        for (std::size_t place = 0; place < kPlayersPerGame; ++place) {
          for (int seat = 0; seat < kPlayersPerGame; ++seat) {
            if (bots[static_cast<std::size_t>(bot.game * kPlayersPerGame + seat)].playerNumber == running.players[place]) {
              game.seatAtPlace[place] = seat;
            }
          }
        }
        if (running.udpServerRunning && bot.haveToken && bot.udp < 0 && bot.stage == Stage::InRoom) {
          bot.portOffset = running.portOffset;
          openSession(index);
        }
        return;
      }
      case MessageType::SERVER_ERROR: {
        lm::ServerError error;
        if (!lm::DecodeServerError(body, bodySize, error) || error.fatal) {
          return fault(bot, "fatal server error: " + error.text);
        }
        ++report.refusals;
        if (report.faults.size() < kMaxFaults) {
          report.faults.push_back("refused: " + error.text);
        }
        return;
      }
      default:
        return;  // names and results: nothing a bot needs
    }
  }

  void joinRoom(std::size_t index) {
    Game const& game = games[static_cast<std::size_t>(bots[index].game)];
    bots[index].stage = Stage::InRoom;
    send(index, lm::EncodeMoveToGameRoom(game.room));
    send(index, lm::EncodeSetReadyState(true));
  }

  void hostSawLobby(std::size_t index, LobbyState const& state) {
    Bot& host = bots[index];
    Game& game = games[static_cast<std::size_t>(host.game)];
    if (!game.roomKnown) {
      for (std::size_t r = 0; r < state.rooms.size(); ++r) {
        auto const& room = state.rooms[r];
        if (room && !room->players.empty() && room->players.front() == host.playerNumber) {
          game.room = static_cast<unsigned short>(r);
          game.roomToken = room->roomToken;
          game.roomKnown = true;
          host.stage = Stage::InRoom;
          send(index, lm::EncodeSetReadyState(true));
          for (int seat = 1; seat < kPlayersPerGame; ++seat) {
            auto const member = index + static_cast<std::size_t>(seat);
            if (bots[member].stage == Stage::Lobby) {
              joinRoom(member);
            }
          }
          break;
        }
      }
      return;
    }
    if (game.room >= state.rooms.size() || !state.rooms[game.room]) {
      return;
    }
    GameRoom const& room = *state.rooms[game.room];
    if (room.players.size() == kPlayersPerGame &&
        std::all_of(room.ready.begin(), room.ready.end(), [](bool ready) { return ready; })) {
      game.startSent = true;
      send(index, lm::EncodeGameStart(game.roomToken));
    }
  }

  // ---------------------------------------------------------------------------------------- datagrams

  void openSession(std::size_t index) {
    Bot& bot = bots[index];
    bot.udp = ::socket(AF_INET, SOCK_DGRAM, 0);
    if (bot.udp < 0 || !SetNonBlocking(bot.udp)) {
      return fault(bot, std::string("no datagram socket: ") + std::strerror(errno));
    }
    int const buffer = 1 << 20;
    setsockopt(bot.udp, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(settings.lobbyPort + bot.portOffset));
    inet_pton(AF_INET, settings.host.c_str(), &address.sin_addr);
    // A bot's socket talks to its relay alone, so it is connected: plain send and recv.
    if (::connect(bot.udp, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      return fault(bot, std::string("datagram connect failed: ") + std::strerror(errno));
    }
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = Key(index, true);
    epoll_ctl(epoll, EPOLL_CTL_ADD, bot.udp, &event);
    bot.stage = Stage::Started;
    requestSession(bot);
  }

  void requestSession(Bot& bot) {
    auto const request = Datagram::EncodeSessionRequest(bot.sessionToken);
    ::send(bot.udp, request.data(), request.size(), 0);
    bot.lastRequestNs = Now();
  }

  void onDatagrams(std::size_t index) {
    Bot& bot = bots[index];
    Game& game = games[static_cast<std::size_t>(bot.game)];
    for (;;) {
      ssize_t const got = ::recv(bot.udp, scratch.data(), scratch.size(), 0);
      if (got < 0) {
        if (errno != EAGAIN && errno != EWOULDBLOCK) {
          fault(bot, std::string("datagram receive failed: ") + std::strerror(errno));
        }
        return;
      }
      Nanos const arrived = Now();
      auto const length = static_cast<std::size_t>(got);
      if (length == 0) {
        continue;
      }
      if (!bot.confirmed) {
        if (Datagram::IsSessionConfirmation(scratch.data(), length)) {
          bot.confirmed = true;
          sessionConfirmed(bot.game);
        }
        continue;
      }
      bot.stream.handle_packet(scratch.data(), length);
      while (bot.stream.has_frame_update()) {
        takeStep(bot, game, bot.stream.get_next_frame_update(), arrived);
      }
    }
  }

  void sessionConfirmed(int g) {
    Game& game = games[static_cast<std::size_t>(g)];
    for (int seat = 0; seat < kPlayersPerGame; ++seat) {
      if (!bots[static_cast<std::size_t>(g * kPlayersPerGame + seat)].confirmed) {
        return;
      }
    }
    for (int seat = 0; seat < kPlayersPerGame; ++seat) {
      bots[static_cast<std::size_t>(g * kPlayersPerGame + seat)].stage = Stage::Playing;
    }
    game.playing = true;
    --formingGames;
    control.gamesPlaying.fetch_add(1);
    // The first frame at this game's phase of the frame clock.
    Nanos const now = Now();
    Nanos const first = (now / kFrameNs + 1) * kFrameNs + game.phaseNs;
    frames.push({first, g});
    formNextGames();
  }

  void takeStep(Bot& bot, Game& game, std::vector<unsigned char> const& step, Nanos arrived) {
    std::uint64_t const tick = bot.stepsReceived++;
    // The step holds each seat's chunk in order: a length byte and the order of that tick.
    std::size_t at = 0;
    bool right = true;
    for (int place = 0; place < kPlayersPerGame && right; ++place) {
      auto const expected = OrderOf(game.seatAtPlace[static_cast<std::size_t>(place)], tick, game.number);
      right = at < step.size() && step[at] == expected.size() && at + 1 + expected.size() <= step.size() &&
              std::equal(expected.begin(), expected.end(), step.begin() + static_cast<std::ptrdiff_t>(at + 1));
      at += 1 + expected.size();
    }
    if (!right) {
      ++report.wrongSteps;
      if (report.faults.size() < kMaxFaults) {
        report.faults.push_back("bot " + std::to_string(&bot - bots.data()) + ": step " + std::to_string(tick) +
                                " doesn't hold the players' orders");
      }
    }
    if (control.phase.load(std::memory_order_relaxed) != LoadControl::Measuring) {
      return;
    }
    ++bot.stepsInWindow;
    ++report.stepsInWindow;
    SentTick const& sent = game.sent[tick % kSendRing];
    if (sent.tick == tick && sent.count == kPlayersPerGame) {
      Nanos const added = std::max<Nanos>(0, arrived - sent.lastNs);
      report.latenciesUs.push_back(static_cast<std::uint32_t>(std::min<Nanos>(added / 1000, 0xffffffffll)));
    }
  }

  // One frame of a game: each bot that has the step this frame consumes gives its order; a bot whose
  // step hasn't come back stalls, as a client does.
  void runFrame(Game& game) {
    for (int seat = 0; seat < kPlayersPerGame; ++seat) {
      Bot& bot = bots[static_cast<std::size_t>(game.number * kPlayersPerGame + seat)];
      if (bot.stage != Stage::Playing) {
        continue;
      }
      std::uint64_t const frame = bot.stream.next_tick;
      if (frame >= static_cast<std::uint64_t>(settings.delayFrames) &&
          bot.stepsReceived <= frame - static_cast<std::uint64_t>(settings.delayFrames)) {
        ++report.stalledFrames;
        continue;
      }
      auto const order = OrderOf(seat, frame, game.number);
      bot.stream.push_update(std::vector<unsigned char>(order.begin(), order.end()));
      bot.stream.discard_acknowledged();
      struct Socket {
        int fd;
        bool send_packet(unsigned char const* data, std::size_t length) {
          return ::send(fd, data, length, 0) == static_cast<ssize_t>(length);
        }
      } socket{bot.udp};
      bot.stream.send_updates(socket);
      ++report.ordersSent;
      if (control.phase.load(std::memory_order_relaxed) == LoadControl::Measuring) {
        ++report.ordersInWindow;
      }
      SentTick& sent = game.sent[frame % kSendRing];
      if (sent.tick != frame) {
        sent = SentTick{frame, 0, 0};
      }
      ++sent.count;
      sent.lastNs = Now();
    }
  }

  // ------------------------------------------------------------------------------------------- loop

  void housekeeping(Nanos now) {
    for (std::size_t i = 0; i < bots.size(); ++i) {
      Bot& bot = bots[i];
      if (bot.stage == Stage::Started && !bot.confirmed && now - bot.lastRequestNs >= kSessionRetryNs) {
        requestSession(bot);
      }
      if (bot.stage >= Stage::Lobby && bot.stage != Stage::Failed && now - bot.lastKeepAliveNs >= kKeepAliveNs) {
        bot.lastKeepAliveNs = now;
        send(i, lm::EncodeKeepAlive());
      }
    }
  }

  void run() {
    if (epoll < 0) {
      report.faults.push_back("no epoll set");
      return;
    }
    formNextGames();
    std::vector<epoll_event> events(256);
    Nanos nextHousekeeping = Now();
    while (control.phase.load() != LoadControl::Stopping) {
      Nanos now = Now();
      // Sleep until the next frame is due (5 ms at most), to the nanosecond: with games spread over the
      // frame the next one is mostly less than a millisecond away, which a timeout in milliseconds
      // could only turn into a busy loop.
      Nanos wait = 5'000'000;
      if (!frames.empty()) {
        wait = std::clamp<Nanos>(frames.top().at - now, 0, wait);
      }
      timespec const timeout{static_cast<time_t>(wait / 1'000'000'000), static_cast<long>(wait % 1'000'000'000)};
      int const count = epoll_pwait2(epoll, events.data(), static_cast<int>(events.size()), &timeout, nullptr);
      for (int e = 0; e < count; ++e) {
        auto const key = events[static_cast<std::size_t>(e)].data.u64;
        std::size_t const index = key >> 1;
        Bot& bot = bots[index];
        if (bot.stage == Stage::Failed) {
          continue;
        }
        if (key & 1) {
          onDatagrams(index);
          continue;
        }
        auto const flags = events[static_cast<std::size_t>(e)].events;
        if (flags & (EPOLLOUT | EPOLLERR | EPOLLHUP)) {
          onTcpWritable(index);
        }
        if (bot.stage != Stage::Failed && bot.stage != Stage::Connecting && (flags & (EPOLLIN | EPOLLHUP | EPOLLERR))) {
          onTcpReadable(index);
        }
      }
      now = Now();
      while (!frames.empty() && frames.top().at <= now) {
        Due due = frames.top();
        frames.pop();
        runFrame(games[static_cast<std::size_t>(due.game)]);
        due.at += kFrameNs;
        // A shard that fell behind by more than a few frames skips ahead instead of bursting.
        if (due.at < now - 4 * kFrameNs) {
          due.at += ((now - due.at) / kFrameNs) * kFrameNs;
        }
        frames.push(due);
      }
      if (now >= nextHousekeeping) {
        housekeeping(now);
        nextHousekeeping = now + 50'000'000;
      }
    }
    std::uint64_t fewest = ~0ull;
    for (Bot const& bot : bots) {
      fewest = std::min(fewest, bot.stepsInWindow);
      report.botsPlaying += bot.stage == Stage::Playing ? 1 : 0;
    }
    report.fewestStepsOfABot = bots.empty() ? 0 : fewest;
  }
};

BotShard::BotShard(LoadSettings settings, std::vector<Credentials> accounts, LoadControl& control)
    : impl_(std::make_unique<Impl>(std::move(settings), std::move(accounts), control)) {}

BotShard::~BotShard() = default;

void BotShard::run() {
  impl_->run();
}

ShardReport const& BotShard::report() const {
  return impl_->report;
}
