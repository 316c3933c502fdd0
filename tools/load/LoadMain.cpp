// tandem-load: fills a tandem-server of its own with bot players in games of four, each bot giving an
// order every frame at 60 Hz, and measures the relay's added latency and the server's CPU time.
//
//   tandem-load [--server PATH] [--players 100,400,1000,2000] [--window 20] [--warmup 3] [--threads 1]
//
// Each step of --players runs against a fresh server process on the same data directory (the accounts
// are minted once, straight into the server's storage, before the first step). The exit status is 1
// when a bot was refused or lost, a step never reached a bot, a step held wrong orders, or the server
// died; latency figures never fail a run.

#include <sys/resource.h>
#include <unistd.h>

#include <argparse/argparse.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <thread>

#include "AccountMinting.h"
#include "BotShard.h"
#include "ServerUnderLoad.h"
#include "SqliteStorage.h"

namespace {

using Seconds = std::chrono::duration<double>;

std::vector<int> ParsePlayerSteps(std::string const& text) {
  std::vector<int> steps;
  std::stringstream in(text);
  std::string item;
  while (std::getline(in, item, ',')) {
    int const players = std::stoi(item);
    if (players < 4 || players % 4 != 0) {
      throw std::runtime_error("Player counts are multiples of four, at least 4: " + item);
    }
    steps.push_back(players);
  }
  if (steps.empty()) {
    throw std::runtime_error("Give at least one player count.");
  }
  return steps;
}

// Every bot holds two sockets and the server one a player and one a game: far above the usual soft
// limit of 1024 descriptors. The soft limit goes up to the hard one; the server inherits it.
void RaiseDescriptorLimit(int players) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
    return;
  }
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  getrlimit(RLIMIT_NOFILE, &limit);
  auto const needed = static_cast<rlim_t>(players) * 3 + 64;
  if (limit.rlim_cur < needed) {
    std::printf("Warning: %llu file descriptors allowed, about %llu needed (raise ulimit -n)\n",
                static_cast<unsigned long long>(limit.rlim_cur), static_cast<unsigned long long>(needed));
  }
}

double OwnCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::uint32_t Percentile(std::vector<std::uint32_t>& values, double fraction) {
  if (values.empty()) {
    return 0;
  }
  auto const at = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at), values.end());
  return values[at];
}

struct StepOptions {
  std::string server;
  std::string data;
  int players = 0;
  int threads = 1;
  double warmup = 3;
  double window = 20;
  double setupLimit = 120;
  double minStepFraction = 0.5;
  LoadSettings settings;
};

// One step: a fresh server, the bots, the window. Returns whether it ran without a fault.
bool RunStep(StepOptions const& options, std::vector<Credentials> const& accounts, int step) {
  std::string const log = (std::filesystem::path(options.data) / ("server-" + std::to_string(step) + ".log")).string();
  ServerUnderLoad server(options.server, options.data, log);
  if (!server.ok()) {
    std::cout << "FAULT: " << server.error() << std::endl;
    return false;
  }
  LoadSettings settings = options.settings;
  settings.lobbyPort = server.port();
  int const games = options.players / 4;
  int const threads = std::max(1, std::min(options.threads, games));

  LoadControl control;
  std::vector<std::unique_ptr<BotShard>> shards;
  for (int t = 0; t < threads; ++t) {
    std::vector<Credentials> mine;
    for (int g = t; g < games; g += threads) {
      for (int seat = 0; seat < 4; ++seat) {
        mine.push_back(accounts[static_cast<std::size_t>(g * 4 + seat)]);
      }
    }
    shards.push_back(std::make_unique<BotShard>(settings, std::move(mine), control));
  }
  auto const setupStart = std::chrono::steady_clock::now();
  std::vector<std::thread> workers;
  for (auto& shard : shards) {
    workers.emplace_back([&shard] { shard->run(); });
  }

  std::vector<std::string> faults;
  while (control.gamesPlaying.load() < games && control.botsFailed.load() == 0 && server.alive() &&
         Seconds(std::chrono::steady_clock::now() - setupStart).count() < options.setupLimit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  double const setupSeconds = Seconds(std::chrono::steady_clock::now() - setupStart).count();
  if (control.gamesPlaying.load() < games) {
    faults.push_back("only " + std::to_string(control.gamesPlaying.load()) + " of " + std::to_string(games) +
                     " games started within " + std::to_string(static_cast<int>(setupSeconds)) + " s");
  }

  std::this_thread::sleep_for(Seconds(options.warmup));
  auto const serverBefore = ProcessCpuTicks(server.pid());
  auto const machineBefore = ReadMachineTicks();
  double const ownBefore = OwnCpuSeconds();
  auto const windowStart = std::chrono::steady_clock::now();
  control.phase.store(LoadControl::Measuring);
  std::this_thread::sleep_for(Seconds(options.window));
  control.phase.store(LoadControl::Stopping);
  double const windowSeconds = Seconds(std::chrono::steady_clock::now() - windowStart).count();
  auto const serverAfter = ProcessCpuTicks(server.pid());
  auto const machineAfter = ReadMachineTicks();
  double const ownSeconds = OwnCpuSeconds() - ownBefore;
  for (auto& worker : workers) {
    worker.join();
  }
  bool const serverAlive = server.alive();
  int const serverExit = server.stop();
  if (!serverAlive) {
    faults.push_back("the server died during the run; see " + log);
  } else if (serverExit != 0) {
    faults.push_back("the server exited with status " + std::to_string(serverExit) + " when stopped; see " + log);
  }

  ShardReport total;
  total.fewestStepsOfABot = ~0ull;
  std::vector<std::string> notes;
  for (auto const& shard : shards) {
    ShardReport const& r = shard->report();
    total.latenciesUs.insert(total.latenciesUs.end(), r.latenciesUs.begin(), r.latenciesUs.end());
    total.stepsInWindow += r.stepsInWindow;
    total.fewestStepsOfABot = std::min(total.fewestStepsOfABot, r.fewestStepsOfABot);
    total.ordersSent += r.ordersSent;
    total.ordersInWindow += r.ordersInWindow;
    total.stalledFrames += r.stalledFrames;
    total.wrongSteps += r.wrongSteps;
    total.refusals += r.refusals;
    total.bots += r.bots;
    total.botsPlaying += r.botsPlaying;
    notes.insert(notes.end(), r.faults.begin(), r.faults.end());
  }
  // A bot that plays gets a step a frame; one with fewer than the given share of those in the window
  // (and always one with none) has lost its game.
  auto const expectedSteps = static_cast<std::uint64_t>(windowSeconds * 60.0);
  auto const leastSteps =
      std::max<std::uint64_t>(1, static_cast<std::uint64_t>(options.minStepFraction * static_cast<double>(expectedSteps)));
  if (total.botsPlaying < total.bots) {
    faults.push_back(std::to_string(total.bots - total.botsPlaying) + " of " + std::to_string(total.bots) +
                     " bots were not playing at the end");
  }
  if (total.fewestStepsOfABot < leastSteps) {
    faults.push_back("a bot received only " + std::to_string(total.fewestStepsOfABot) + " steps in the window (" +
                     std::to_string(expectedSteps) + " frames)");
  }
  if (total.wrongSteps > 0) {
    faults.push_back(std::to_string(total.wrongSteps) + " steps didn't hold the players' orders");
  }
  if (total.refusals > 0) {
    faults.push_back(std::to_string(total.refusals) + " requests were refused by the server");
  }

  long const ticksPerSecond = sysconf(_SC_CLK_TCK);
  double serverSeconds = -1;
  if (serverBefore && serverAfter) {
    serverSeconds = static_cast<double>(*serverAfter - *serverBefore) / static_cast<double>(ticksPerSecond);
  }
  double machineBusyCores = -1;
  double const cores = static_cast<double>(std::thread::hardware_concurrency());
  if (machineBefore && machineAfter && machineAfter->total > machineBefore->total) {
    double const busy = static_cast<double>(machineAfter->busy - machineBefore->busy);
    double const all = static_cast<double>(machineAfter->total - machineBefore->total);
    machineBusyCores = busy / all * cores;
  }
  std::uint32_t const p50 = Percentile(total.latenciesUs, 0.50);
  std::uint32_t const p99 = Percentile(total.latenciesUs, 0.99);
  std::uint32_t const max =
      total.latenciesUs.empty() ? 0 : *std::max_element(total.latenciesUs.begin(), total.latenciesUs.end());
  double const serverCores = serverSeconds / windowSeconds;
  double const ownCores = ownSeconds / windowSeconds;

  std::printf("players %d (%d games, %d bot threads): setup %.1f s, window %.1f s\n", options.players, games, threads,
              setupSeconds, windowSeconds);
  std::printf("  added relay latency: p50 %u us, p99 %u us, max %u us over %zu steps%s\n", p50, p99, max,
              total.latenciesUs.size(), p99 < 1000 ? " (p99 under 1 ms)" : " (p99 NOT under 1 ms)");
  std::printf("  server CPU: %.3f of a core, %.1f us per player per second, %.2f us per order relayed\n",
              serverCores, serverSeconds >= 0 ? serverSeconds / windowSeconds / options.players * 1e6 : -1.0,
              total.ordersInWindow > 0 ? serverSeconds * 1e6 / static_cast<double>(total.ordersInWindow) : -1.0);
  std::printf("  machine: %.2f of %.0f cores busy (server %.2f, load generator %.2f, others %.2f)\n", machineBusyCores,
              cores, serverCores, ownCores, machineBusyCores - serverCores - ownCores);
  std::printf("  orders sent %llu, stalled frames %llu, fewest steps of a bot %llu of %llu frames\n",
              static_cast<unsigned long long>(total.ordersSent), static_cast<unsigned long long>(total.stalledFrames),
              static_cast<unsigned long long>(total.fewestStepsOfABot), static_cast<unsigned long long>(expectedSteps));
  for (auto const& note : notes) {
    std::printf("  note: %s\n", note.c_str());
  }
  for (auto const& fault : faults) {
    std::printf("  FAULT: %s\n", fault.c_str());
  }
  std::fflush(stdout);
  return faults.empty();
}

}  // namespace

int main(int argc, char** argv) {
  argparse::ArgumentParser parser("tandem-load", "1003");
  parser.add_description(
      "Fills a tandem-server of its own with bots in four-player games that give an order every frame at 60 Hz, "
      "and reports the relay's added latency and the server's CPU time per player.");
  auto const beside = std::filesystem::path(argv[0]).parent_path() / "tandem-server";
  parser.add_argument("--server").default_value(beside.string()).help("the tandem-server program");
  parser.add_argument("--players").default_value(std::string("400")).help("player counts, one step each: 100,400,1000");
  parser.add_argument("--window").default_value(20.0).scan<'g', double>().help("seconds measured per step");
  parser.add_argument("--warmup").default_value(3.0).scan<'g', double>().help("seconds of play before the window");
  parser.add_argument("--setup-limit").default_value(180.0).scan<'g', double>().help(
      "seconds allowed for all games of a step to start");
  parser.add_argument("--min-step-fraction").default_value(0.5).scan<'g', double>().help(
      "the share of the window's frames that every bot must get steps for (at least one step in any case)");
  parser.add_argument("--threads").default_value(1).scan<'i', int>().help("threads of bots");
  parser.add_argument("--forming-games").default_value(8).scan<'i', int>().help("games forming their rooms at once");
  parser.add_argument("--delay-frames").default_value(15).scan<'i', int>().help("the rooms' order delay, 10 to 35");
  parser.add_argument("--data").default_value(std::string()).help(
      "the server's data directory (default: a fresh one under the temporary directory, removed afterwards)");
  try {
    parser.parse_args(argc, argv);
    StepOptions options;
    options.server = parser.get<std::string>("--server");
    options.window = std::max(1.0, parser.get<double>("--window"));
    options.warmup = std::max(0.0, parser.get<double>("--warmup"));
    options.setupLimit = std::max(1.0, parser.get<double>("--setup-limit"));
    options.threads = std::max(1, parser.get<int>("--threads"));
    options.minStepFraction = std::clamp(parser.get<double>("--min-step-fraction"), 0.0, 1.0);
    options.settings.formingGames = std::max(1, parser.get<int>("--forming-games"));
    options.settings.delayFrames = std::clamp(parser.get<int>("--delay-frames"), 10, 35);
    std::vector<int> const steps = ParsePlayerSteps(parser.get<std::string>("--players"));

    bool const temporary = parser.get<std::string>("--data").empty();
    options.data = temporary ? (std::filesystem::temp_directory_path() / ("tandem-load-" + std::to_string(getpid()))).string()
                             : parser.get<std::string>("--data");
    std::filesystem::create_directories(options.data);

    int const most = *std::max_element(steps.begin(), steps.end());
    RaiseDescriptorLimit(most);
    std::vector<Credentials> accounts;
    {
      auto const mintStart = std::chrono::steady_clock::now();
      SqliteStorage storage((std::filesystem::path(options.data) / "server.sqlite3").string());
      for (int i = 0; i < most; ++i) {
        accounts.push_back(MintAccount(storage, "bot " + std::to_string(i)));
      }
      std::printf("Minted %d accounts in %.1f s\n", most, Seconds(std::chrono::steady_clock::now() - mintStart).count());
      std::fflush(stdout);
    }

    bool ok = true;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      options.players = steps[i];
      ok = RunStep(options, accounts, static_cast<int>(i)) && ok;
    }
    if (temporary) {
      std::error_code ignored;
      std::filesystem::remove_all(options.data, ignored);
    }
    std::printf("%s\n", ok ? "Load run passed" : "Load run FAILED");
    return ok ? 0 : 1;
  } catch (std::exception const& error) {
    std::cerr << error.what() << "\n";
    return 2;
  }
}
