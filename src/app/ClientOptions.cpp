#include "app/ClientOptions.h"

// The valued options carry no default value in the parser: the library takes the default for an option
// given last with no value, where it should refuse it. Without one it raises "Too few arguments", and
// ReadClientOptions supplies the defaults of the options that weren't given.
void AddClientOptions(argparse::ArgumentParser& parser) {
  parser.add_argument("--ip").help("Server IP address");
  parser.add_argument("--server-base-port")
      .scan<'u', unsigned short>()
      .help("Starting server port number (with other ports relative to this)");
  parser.add_argument("--random-credentials-from").help("Choose credentials randomly from the specified directory");
  parser.add_argument("--start-windowed").flag().help("Start in windowed mode");
}

ClientOptions ReadClientOptions(argparse::ArgumentParser& parser) {
  ClientOptions options;
  options.ip = parser.present<std::string>("--ip").value_or(kDefaultServerHost);
  options.basePort = parser.present<unsigned short>("--server-base-port").value_or(kDefaultServerBasePort);
  options.randomCredentialsDirectory = parser.present<std::string>("--random-credentials-from").value_or("");
  options.startWindowed = parser.get<bool>("--start-windowed");
  return options;
}
