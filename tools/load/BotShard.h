#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "accounts/Credentials.h"

// What every shard of bots shares with the thread that runs the measurement.
struct LoadControl {
  enum Phase : int { Warming = 0, Measuring = 1, Stopping = 2 };
  std::atomic<int> phase{Warming};
  std::atomic<int> gamesPlaying{0};  // games whose four bots all have a confirmed datagram session
  std::atomic<int> botsFailed{0};
};

struct LoadSettings {
  std::string host = "127.0.0.1";
  unsigned short lobbyPort = 0;
  int delayFrames = 15;
  // Games that log in and form their room at the same time; the rest wait their turn, so that the
  // lobby never holds more than a few rooms being filled.
  int formingGames = 8;
};

// What a shard saw. Latencies are the added relay latency of each collated step that reached a bot
// while the phase was Measuring, in microseconds.
struct ShardReport {
  std::vector<std::uint32_t> latenciesUs;
  std::uint64_t stepsInWindow = 0;
  std::uint64_t fewestStepsOfABot = 0;  // in the window, over all bots of the shard
  std::uint64_t ordersSent = 0;
  std::uint64_t ordersInWindow = 0;
  std::uint64_t stalledFrames = 0;  // frames on which a bot couldn't step: its step hadn't come back
  std::uint64_t wrongSteps = 0;     // collated steps whose chunks weren't the players' orders
  std::uint64_t refusals = 0;       // non-fatal SERVER_ERROR messages
  int bots = 0;
  int botsPlaying = 0;
  std::vector<std::string> faults;  // the first few, for the report
};

// Bots of whole four-player games, driven by one thread with one epoll set: each bot has a TCP
// connection to the lobby and, once its game has started, a datagram socket to the game's relay.
//
// The bots of a game share one 60 Hz frame clock, so they give the order of frame f at the same
// moment. Games are spread over the 16.7 ms of a frame (game g at phase g/k of it), so that the
// shard's own work is spread evenly too.
//
// Added relay latency of a step: the time from the moment the last of the four orders of tick t left
// its bot to the moment the relay's collated step t reaches a bot. What lockstep adds by design is
// left out: the wait for the other players' orders of the same tick (they are given at the same
// instant here, and the clock starts only at the last of them) and the frame clock (steps are taken
// from the socket as they arrive, not on the next frame). What remains is the relay's receiving,
// collating and sending, the loopback hops and the bot's own wake-up.
class BotShard {
public:
  // accounts.size() is a multiple of four; bots 4g to 4g+3 play game g, bot 4g hosting its room.
  BotShard(LoadSettings settings, std::vector<Credentials> accounts, LoadControl& control);
  ~BotShard();
  BotShard(BotShard const&) = delete;
  BotShard& operator=(BotShard const&) = delete;

  // The loop, until the phase is Stopping.
  void run();
  // Complete once run has returned.
  ShardReport const& report() const;

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
