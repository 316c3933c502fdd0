#pragma once

#include <argparse/argparse.hpp>

#include <string>

// The default game server of the client.
inline constexpr char kDefaultServerHost[] = "play.tandemparlour.net";
inline constexpr unsigned short kDefaultServerBasePort = 6567;

// The command line parser of the client: "client", version "1.0", with --ip, --server-base-port,
// --random-credentials-from and --start-windowed besides the library's --help and --version.
void AddClientOptions(argparse::ArgumentParser& parser);

// The values of one parsed command line, with the defaults of the options not given.
struct ClientOptions {
  std::string ip;
  unsigned short basePort = kDefaultServerBasePort;
  std::string randomCredentialsDirectory;
  bool startWindowed = false;
};

ClientOptions ReadClientOptions(argparse::ArgumentParser& parser);
