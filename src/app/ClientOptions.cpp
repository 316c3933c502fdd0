#include "app/ClientOptions.h"

void AddClientOptions(argparse::ArgumentParser& parser) {
  parser.add_argument("--ip").default_value(std::string(kDefaultServerHost)).help("Server IP address");
  parser.add_argument("--server-base-port")
      .default_value(kDefaultServerBasePort)
      .scan<'u', unsigned short>()
      .help("Starting server port number (with other ports relative to this)");
  parser.add_argument("--random-credentials-from")
      .default_value(std::string())
      .help("Choose credentials randomly from the specified directory");
  parser.add_argument("--start-windowed").flag().help("Start in windowed mode");
}
