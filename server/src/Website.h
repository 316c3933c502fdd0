#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "LobbyServer.h"
#include "ServerStorage.h"

namespace httplib {
class Server;
}

// The game's website, served by the server itself: "/gettingstarted", "/setup" (mints an account and
// offers its credentials string and file), "/download" (with the client's version in "?v="), and
// "/status" with the rooms, running games and recent results. It runs on its own thread and sees the
// lobby only through snapshots that the lobby's thread hands over.
class Website {
public:
  struct Settings {
    std::string bindAddress = "0.0.0.0";
    unsigned short port = 0;  // 0: any free port
    unsigned short lobbyPort = 0;
    // At most this many accounts minted through the website in a minute, against scripted sign-ups.
    int accountsPerMinute = 30;
  };

  Website(IServerStorage& storage, Settings settings);
  ~Website();
  Website(Website const&) = delete;
  Website& operator=(Website const&) = delete;

  // Binds and starts serving; false if the port can't be bound.
  bool start();
  void stop();
  unsigned short port() const { return port_; }

  void updateSnapshot(LobbyServer::Snapshot snapshot);

  // The pages, also for tests without a socket.
  std::string gettingStartedPage(std::string const& host) const;
  std::string setupPage() const;
  // Mints an account named name; empty if minting was refused (rate limit, bad name).
  std::string mintPage(std::string const& name, std::string& error);
  std::string downloadPage(std::string const& version) const;
  std::string statusPage() const;

private:
  IServerStorage& storage_;
  Settings settings_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  unsigned short port_ = 0;
  mutable std::mutex mutex_;
  LobbyServer::Snapshot snapshot_;
  std::chrono::steady_clock::time_point windowStart_{};
  int mintedInWindow_ = 0;
};
