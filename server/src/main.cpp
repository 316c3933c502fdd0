// tandem-server: the game server. One process: the lobby on the base port, a datagram relay for each
// running game on base port + its port offset, and the website.
//
//   tandem-server [--base-port 6567] [--data DIR] [--bind 0.0.0.0] [--web-port N] [--no-website]
//   tandem-server account add NAME [--data DIR] [--credentials-file PATH]

#include <argparse/argparse.hpp>
#include <asio.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>

#include "AccountMinting.h"
#include "ServerNetwork.h"
#include "SqliteStorage.h"
#include "Website.h"
#include "app/ChangeToExecutableDirectory.h"
#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsString.h"

namespace {

std::unique_ptr<SqliteStorage> OpenStorage(std::string const& dataDirectory) {
  std::filesystem::create_directories(dataDirectory);
  return std::make_unique<SqliteStorage>((std::filesystem::path(dataDirectory) / "server.sqlite3").string());
}

int AccountCommand(int argc, char** argv) {
  argparse::ArgumentParser parser("tandem-server account add", "", argparse::default_arguments::help);
  parser.add_description("Mints an account and prints its credentials string.");
  parser.add_argument("name").help("the player's name, 1 to 32 characters");
  parser.add_argument("--data").default_value(std::string("server-data")).help("the server's data directory");
  parser.add_argument("--credentials-file")
      .default_value(std::string())
      .help("also write the account's credentials.bin to this path (for example the client's storage directory)");
  parser.parse_args(argc, argv);
  std::string const name = parser.get<std::string>("name");
  if (!IsAcceptableName(name)) {
    std::cerr << "Names are 1 to 32 characters long, without control characters.\n";
    return 2;
  }
  auto storage = OpenStorage(parser.get<std::string>("--data"));
  Credentials const credentials = MintAccount(*storage, name);
  std::string const file = parser.get<std::string>("--credentials-file");
  if (!file.empty()) {
    auto const parent = std::filesystem::path(file).parent_path();
    if (!parent.empty()) {
      std::filesystem::create_directories(parent);
    }
    SaveCredentials(credentials, file);
    std::cerr << "Wrote " << file << "\n";
  }
  std::cout << EncodeCredentialsString(credentials) << std::endl;
  return 0;
}

int ServeCommand(int argc, char** argv) {
  argparse::ArgumentParser parser("tandem-server", "1003");
  parser.add_description(
      "The game server: the lobby on the base port, a datagram relay on base port + offset for each running "
      "game, and the website on base port + 1. Mint accounts with: tandem-server account add NAME");
  parser.add_argument("--base-port").default_value(6567).scan<'i', int>().help("the lobby's TCP port (0: any free port)");
  parser.add_argument("--data").default_value(std::string("server-data")).help("the server's data directory");
  parser.add_argument("--bind").default_value(std::string("0.0.0.0")).help("the IPv4 address to listen on");
  parser.add_argument("--web-port").default_value(-1).scan<'i', int>().help(
      "the website's TCP port (default: base port + 1; 0: any free port)");
  parser.add_argument("--no-website").flag().help("serve no website");
  parser.add_argument("--login-timeout-ms").default_value(10000).scan<'i', int>().help(
      "close a connection that hasn't logged in after this long");
  parser.add_argument("--keep-alive-timeout-ms").default_value(15000).scan<'i', int>().help(
      "close a logged-in connection that has sent nothing for this long");
  parser.parse_args(argc, argv);

  int const basePort = parser.get<int>("--base-port");
  int webPort = parser.get<int>("--web-port");
  if (basePort < 0 || basePort > 65533 || webPort < -1 || webPort > 65535) {
    std::cerr << "Ports lie from 0 to 65535.\n";
    return 2;
  }
  // The data directory is taken from where the server was started; the maps of the games, which it
  // loads to settle disputed results, from data/ beside the program.
  std::error_code ignored;
  std::string dataDirectory = std::filesystem::absolute(parser.get<std::string>("--data"), ignored).string();
  if (dataDirectory.empty()) {
    dataDirectory = parser.get<std::string>("--data");
  }
  ChangeToExecutableDirectory();
  auto storage = OpenStorage(dataDirectory);
  std::string const bind = parser.get<std::string>("--bind");
  asio::io_context io;
  LobbyTimeouts timeouts;
  timeouts.loginMs = std::max(100, parser.get<int>("--login-timeout-ms"));
  timeouts.keepAliveMs = std::max(100, parser.get<int>("--keep-alive-timeout-ms"));
  ServerNetwork network(io, *storage, bind, static_cast<unsigned short>(basePort), timeouts);

  std::unique_ptr<Website> website;
  if (!parser.get<bool>("--no-website")) {
    Website::Settings settings;
    settings.bindAddress = bind;
    settings.port = static_cast<unsigned short>(webPort == -1 ? network.basePort() + 1 : webPort);
    settings.lobbyPort = network.basePort();
    website = std::make_unique<Website>(*storage, settings);
    if (!website->start()) {
      std::cerr << "Failed to open the website's port " << settings.port << "\n";
      return 1;
    }
    // The status page's copy of the lobby is refreshed twice a second.
    network.afterTick = [&website, next = std::chrono::steady_clock::time_point{}](LobbyServer const& lobby) mutable {
      auto const now = std::chrono::steady_clock::now();
      if (now >= next) {
        next = now + std::chrono::milliseconds(500);
        website->updateSnapshot(lobby.snapshot());
      }
    };
  }

  asio::signal_set signals(io, SIGINT, SIGTERM);
  signals.async_wait([&](asio::error_code const& error, int signal) {
    if (!error) {
      std::printf("Received signal %d, shutting down\n", signal);
      std::fflush(stdout);
      network.shutdown();
    }
  });
  std::printf("Server running\n");
  std::fflush(stdout);
  io.run();
  if (website) {
    website->stop();
  }
  std::printf("Server stopped\n");
  std::fflush(stdout);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc >= 3 && std::string(argv[1]) == "account" && std::string(argv[2]) == "add") {
      return AccountCommand(argc - 2, argv + 2);
    }
    return ServeCommand(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
}
