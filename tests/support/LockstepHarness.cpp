#include "support/LockstepHarness.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <deque>
#include <map>
#include <numeric>

#include "net/GameRecordsWire.h"
#include "sim/IOrderSource.h"
#include "sim/UpdateSimulation.h"
#include "support/AllocationFill.h"

namespace testing_support {

namespace {

using Orders = std::vector<Bytes>;

int Between(std::mt19937_64& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

// The fill byte of client c's allocations: different for every client, and never 0.
int FillOf(std::size_t client) { return static_cast<int>(0x11 * (client + 1) + 0x0F * (client % 2)); }

// The server and the network between the clients.
struct Relay {
  std::size_t players = 0;
  std::uint32_t delay = 0;
  int maxLatency = 0;
  std::mt19937_64 random;
  std::vector<Orders> sent;  // [client][tick]
  std::size_t nextTick = 0;
  struct InFlight {
    long long due;
    Orders orders;
  };
  std::vector<std::deque<InFlight>> inFlight;  // per client, in order of ticks
  std::vector<long long> lastDue;

  std::optional<RelayFault> fault;
  int faultSeen = 0;
  std::optional<std::size_t> heldTick;
  Bytes held;
  std::optional<std::uint32_t> faultFrame;

  // Joins every tick that all clients have sent and sends it on its way to each client.
  void gather(long long round) {
    while (std::all_of(sent.begin(), sent.end(), [&](Orders const& s) { return s.size() > nextTick; })) {
      Orders joined(players);
      for (std::size_t p = 0; p < players; ++p) {
        joined[p] = sent[p][nextTick];
      }
      for (std::size_t c = 0; c < players; ++c) {
        Orders copy = joined;
        if (fault.has_value() && c == static_cast<std::size_t>(fault->client)) {
          applyFault(copy);
        }
        // Now and then the network holds a client's updates back for longer than the delay hides.
        int const spike = Between(random, 1, 400) == 1 ? Between(random, 10, 60) : 0;
        long long const due = std::max(lastDue[c], round + Between(random, 0, maxLatency) + spike);
        lastDue[c] = due;
        inFlight[c].push_back({due, std::move(copy)});
      }
      ++nextTick;
    }
  }

  void applyFault(Orders& orders) {
    auto const p = static_cast<std::size_t>(fault->player);
    if (!heldTick.has_value() && !orders[p].empty() && faultSeen++ == fault->nthOrder) {
      heldTick = nextTick;
      held = orders[p];
      orders[p].clear();
      // Tick k is applied on the receiving client's step k + delay, at frame k + 2·delay.
      faultFrame = static_cast<std::uint32_t>(nextTick) + 2 * delay;
    } else if (heldTick.has_value() && nextTick == *heldTick + static_cast<std::size_t>(fault->lateFrames)) {
      orders[p] = held;
    }
  }
};

// One client's end of the relay, as the network order source behaves: delayFrames empty updates at
// first, then the joined updates as they arrive; a stall when none is there.
class RelayOrderSource final : public IOrderSource {
public:
  RelayOrderSource(Relay& relay, std::size_t client) : relay_(relay), client_(client) {
    for (std::uint32_t i = 0; i < relay.delay; ++i) {
      ready_.emplace_back(relay.players);
    }
  }

  void receive(long long round) {
    auto& queue = relay_.inFlight[client_];
    while (!queue.empty() && queue.front().due <= round) {
      ready_.push_back(std::move(queue.front().orders));
      queue.pop_front();
    }
  }

  bool fetchOrders(bool localGameEnded, Bytes ourNextOrder, Orders& orders, Bytes& ourOrder) override {
    if (ready_.empty()) {
      return false;
    }
    orders = std::move(ready_.front());
    ready_.pop_front();
    ourOrder = ourNextOrder;
    if (!localGameEnded) {
      relay_.sent[client_].push_back(std::move(ourNextOrder));
    }
    return true;
  }

private:
  Relay& relay_;
  std::size_t client_;
  std::deque<Orders> ready_;
};

struct Recorded {
  bool set = false;
  std::uint64_t digest = 0;
  std::uint32_t frame = 0;
};

struct Client {
  std::unique_ptr<IRunningGame> session;
  std::unique_ptr<RelayOrderSource> source;
  std::mt19937_64 random;
  int stalledFrames = 0;
  std::map<std::string, std::vector<Recorded>> digests;
  std::vector<std::string> partOrder;  // the parts in the order the adapter first gave them
  std::vector<std::string> dropped;
};

class Recorder final : public DigestSink {
public:
  Recorder(Client& client, std::uint32_t frame, bool every) : client_(client), frame_(frame), every_(every) {}
  bool wants(std::int64_t at) const override { return every_ || at % 16 == 0 || client_.session->gameEnded(); }
  void add(std::string const& part, std::int64_t at, std::uint64_t digest) override {
    if (at < 0) {
      return;
    }
    auto [entry, added] = client_.digests.try_emplace(part);
    if (added) {
      client_.partOrder.push_back(part);
    }
    std::vector<Recorded>& line = entry->second;
    if (line.size() <= static_cast<std::size_t>(at)) {
      line.resize(static_cast<std::size_t>(at) + 1);
    }
    line[static_cast<std::size_t>(at)] = {true, digest, frame_};
  }

private:
  Client& client_;
  std::uint32_t frame_;
  bool every_;
};

// What UpdateSimulation steps: the session, with the random player in place of the interface.
struct Stepper {
  Client& client;
  LockstepAdapter const& adapter;
  LockstepGame const& game;
  std::size_t index;
  int& ordersGiven;

  bool gameEnded() const { return client.session->gameEnded(); }
  bool gameEnded_LocalPlayer() const { return client.session->gameEnded_LocalPlayer(); }
  Bytes processUIInputsAndGetOurNextOrder() {
    if (Between(client.random, 1, game.meanFramesBetweenOrders) != 1) {
      return {};
    }
    Bytes order = adapter.randomOrder(*client.session, client.random);
    ordersGiven += order.empty() ? 0 : 1;
    return order;
  }
  void update(Orders const& orders, Bytes ourOrder) {
    if (!adapter.acceptsIncoming) {
      client.session->update(orders, std::move(ourOrder));
      return;
    }
    Orders filtered = orders;
    for (std::size_t p = 0; p < filtered.size(); ++p) {
      if (p != index && !filtered[p].empty() && !adapter.acceptsIncoming(*client.session, static_cast<int>(p), filtered[p])) {
        client.dropped.push_back(fmt::format("client {} at frame {}: player {}'s order can't be applied here", index,
                                             client.session->currentFrame(), p));
        filtered[p].clear();
      }
    }
    client.session->update(filtered, std::move(ourOrder));
  }
};

std::string DescribeResult(GameResult const& result) {
  std::vector<std::string> rows;
  for (auto const& row : result.results) {
    rows.push_back(fmt::format("({})", fmt::join(row, ", ")));
  }
  return fmt::format("end frame {}, rows {}, checksum {:016x}", result.endFrame, fmt::join(rows, " "),
                     result.endStateChecksum);
}

std::string DescribeSettings(GameSettings const& settings) {
  std::map<std::string, std::string> sorted;
  for (auto const& [key, value] : settings.strings) {
    sorted[key] = fmt::format("\"{}\"", value);
  }
  for (auto const& [key, value] : settings.ints) {
    sorted[key] = std::to_string(value);
  }
  std::vector<std::string> parts;
  for (auto const& [key, value] : sorted) {
    parts.push_back(key + "=" + value);
  }
  return fmt::format("{}", fmt::join(parts, " "));
}

LockstepReport Run(IGame const& game, LockstepAdapter const& adapter, LockstepGame const& settings,
                   std::shared_ptr<SDL3App> const& app, std::optional<RelayFault> fault, bool full,
                   std::vector<LockstepTraceEntry>* trace = nullptr) {
  std::size_t const count = settings.slots.size();
  auto const delay = static_cast<std::uint32_t>(settings.delayFrames);
  Relay relay;
  relay.players = count;
  relay.delay = delay;
  relay.maxLatency = settings.maxLatencyRounds;
  relay.random.seed(settings.seed * 0x2545F4914F6CDD1Dull + 99);
  relay.sent.resize(count);
  relay.inFlight.resize(count);
  relay.lastDue.assign(count, 0);
  relay.fault = fault;

  LockstepReport report;
  std::vector<Client> clients(count);
  for (std::size_t c = 0; c < count; ++c) {
    ScopedAllocationFill const fill(FillOf(c));
    clients[c].session = game.startSession(app, static_cast<int>(c), 16666, static_cast<unsigned char>(delay),
                                           settings.settings, settings.slots, false);
    clients[c].source = std::make_unique<RelayOrderSource>(relay, c);
    clients[c].random.seed(settings.seed * 1000003ull + c);
    Recorder recorder(clients[c], clients[c].session->currentFrame(), true);
    adapter.digests(*clients[c].session, recorder);
  }

  // Round by round: each client receives what is due and tries one step; then the relay gathers.
  long long round = 0;
  int idleRounds = 0;
  std::vector<std::string> findings;
  while (!std::all_of(clients.begin(), clients.end(), [](Client const& c) { return c.session->gameEnded(); })) {
    bool anyStepped = false;
    bool anyStalled = false;
    for (std::size_t c = 0; c < count; ++c) {
      Client& client = clients[c];
      client.source->receive(round);
      if (client.session->gameEnded()) {
        continue;
      }
      ScopedAllocationFill const fill(FillOf(c));
      Stepper stepper{client, adapter, settings, c, report.ordersGiven};
      if (UpdateSimulation(stepper, *client.source, client.stalledFrames)) {
        anyStepped = true;
        std::uint32_t const frame = client.session->currentFrame();
        Recorder recorder(client, frame, full);
        adapter.digests(*client.session, recorder);
      } else {
        anyStalled = true;
      }
    }
    report.stalls += anyStalled ? 1 : 0;
    relay.gather(round);
    ++round;
    idleRounds = anyStepped ? 0 : idleRounds + 1;
    if (idleRounds > settings.maxLatencyRounds + 80) {
      std::vector<std::string> frames;
      for (Client const& client : clients) {
        frames.push_back(std::to_string(client.session->currentFrame()));
      }
      findings.push_back(fmt::format("the clients stopped waiting for each other's orders at frames {}", fmt::join(frames, ", ")));
      break;
    }
  }
  report.faultFrame = relay.faultFrame;

  // Every client against client 0: the earliest recorded difference of any part names where they parted.
  Client const& reference = clients.front();
  report.endFrame = reference.session->currentFrame();
  std::vector<GameResult> results(count);
  std::vector<Bytes> resultBytes(count);
  for (std::size_t c = 0; c < count; ++c) {
    clients[c].session->getGameResult(results[c]);
    ToBytes(results[c], resultBytes[c]);
  }
  report.results = results.front().results;
  report.endStateChecksum = results.front().endStateChecksum;
  if (trace != nullptr) {
    for (std::string const& part : reference.partOrder) {
      std::vector<Recorded> const& line = reference.digests.at(part);
      for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i].set) {
          trace->push_back({part, static_cast<std::int64_t>(i), line[i].frame, line[i].digest});
        }
      }
    }
  }
  for (std::size_t c = 1; c < count; ++c) {
    for (std::string const& part : reference.partOrder) {
      std::vector<Recorded> const& line = reference.digests.at(part);
      auto const other = clients[c].digests.find(part);
      if (other == clients[c].digests.end()) {
        findings.push_back(fmt::format("client {} has no part \"{}\"", c, part));
        continue;
      }
      std::size_t const n = std::min(line.size(), other->second.size());
      for (std::size_t i = 0; i < n; ++i) {
        Recorded const& a = line[i];
        Recorded const& b = other->second[i];
        if (a.set && b.set && a.digest != b.digest) {
          std::uint32_t const frame = std::max(a.frame, b.frame);
          findings.push_back(fmt::format("\"{}\" first differed at its entry {}: frame {} on client 0, frame {} on client {}",
                                         part, i, a.frame, b.frame, c));
          if (!report.firstDivergentFrame.has_value() || frame < *report.firstDivergentFrame) {
            report.firstDivergentFrame = frame;
            report.firstDivergentPart = part;
          }
          break;
        }
      }
    }
    if (resultBytes[c] != resultBytes.front()) {
      findings.push_back(fmt::format("the results differ: client 0 {}; client {} {}", DescribeResult(results.front()),
                                     c, DescribeResult(results[c])));
    }
  }
  for (Client const& client : clients) {
    findings.insert(findings.end(), client.dropped.begin(), client.dropped.end());
  }
  report.agreed = findings.empty();
  report.text = fmt::format("Game seed {}: {}, slots {}, delay {}, latency up to {} rounds, an order every {} frames: "
                            "{} orders given, {} stalled rounds; client 0: {}",
                            settings.seed, DescribeSettings(settings.settings), fmt::join(settings.slots, ","),
                            settings.delayFrames, settings.maxLatencyRounds, settings.meanFramesBetweenOrders,
                            report.ordersGiven, report.stalls, DescribeResult(results.front()));
  if (report.faultFrame.has_value()) {
    report.text += fmt::format("; relay fault: an order due at frame {} reached client {} late", *report.faultFrame,
                               fault->client);
  }
  if (report.firstDivergentFrame.has_value()) {
    report.text += fmt::format("\n  first divergence: frame {}, part \"{}\"", *report.firstDivergentFrame,
                               report.firstDivergentPart);
  }
  for (std::string const& finding : findings) {
    report.text += "\n  " + finding;
  }
  return report;
}

}  // namespace

LockstepGame RandomLockstepGame(IGame const& game, std::uint64_t seed) {
  std::mt19937_64 random(seed * 0x9E3779B97F4A7C15ull + 777);
  LockstepGame out;
  out.seed = seed;
  for (SchemaEntry const& entry : game.schema) {
    if (entry.kind == SchemaEntry::Integer) {
      // A schema may hold its bounds the wrong way round (the room page shows them as they stand).
      out.settings.ints[entry.key] =
          Between(random, std::min(entry.minimum, entry.maximum), std::max(entry.minimum, entry.maximum));
    } else {
      // Only maps for two or more: a lockstep comparison needs at least two clients.
      std::vector<std::string> choices;
      for (std::string const& choice : entry.choices) {
        if (entry.key != "map" || game.maxPlayersForMap(choice) >= 2) {
          choices.push_back(choice);
        }
      }
      if (!choices.empty()) {
        out.settings.strings[entry.key] =
            choices[static_cast<std::size_t>(Between(random, 0, static_cast<int>(choices.size()) - 1))];
      }
    }
  }
  std::uint16_t const maxPlayers = game.maxPlayersForMap(out.settings.strings.at("map"));
  std::vector<unsigned short> slots(maxPlayers);
  std::iota(slots.begin(), slots.end(), static_cast<unsigned short>(0));
  std::shuffle(slots.begin(), slots.end(), random);
  slots.resize(static_cast<std::size_t>(Between(random, 2, maxPlayers)));
  out.slots = slots;
  out.delayFrames = Between(random, 10, 35);
  out.maxLatencyRounds = Between(random, 0, 4);
  out.meanFramesBetweenOrders = Between(random, 2, 40);
  return out;
}

LockstepReport CheckLockstepGame(IGame const& game, LockstepAdapter const& adapter, LockstepGame const& settings,
                                 std::shared_ptr<SDL3App> const& app, std::optional<RelayFault> fault) {
  LockstepReport report = Run(game, adapter, settings, app, fault, false);
  return report.agreed ? report : Run(game, adapter, settings, app, fault, true);
}

LockstepReport TraceLockstepGame(IGame const& game, LockstepAdapter const& adapter, LockstepGame const& settings,
                                 std::shared_ptr<SDL3App> const& app, std::vector<LockstepTraceEntry>& trace) {
  return Run(game, adapter, settings, app, std::nullopt, true, &trace);
}

}  // namespace testing_support
