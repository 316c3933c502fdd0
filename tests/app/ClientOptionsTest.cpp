#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "app/ClientOptions.h"

namespace {

// The options of one command line, or the text of the parser's exception.
std::variant<ClientOptions, std::string> Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "tandem-client");
  argparse::ArgumentParser parser("client", "1.0", argparse::default_arguments::none);
  AddClientOptions(parser);
  try {
    parser.parse_args(arguments);
  } catch (std::exception const& error) {
    return std::string(error.what());
  }
  return ReadClientOptions(parser);
}

void ExpectOptions(std::vector<std::string> const& arguments, std::string const& ip, unsigned short port,
                   std::string const& directory, bool windowed) {
  auto const parsed = Parse(arguments);
  ASSERT_TRUE(std::holds_alternative<ClientOptions>(parsed)) << std::get<std::string>(parsed);
  ClientOptions const& options = std::get<ClientOptions>(parsed);
  EXPECT_EQ(options.ip, ip);
  EXPECT_EQ(options.basePort, port);
  EXPECT_EQ(options.randomCredentialsDirectory, directory);
  EXPECT_EQ(options.startWindowed, windowed);
}

}  // namespace

TEST(ClientOptions, DefaultsApplyOnlyToOptionsNotGiven) {
  ExpectOptions({}, kDefaultServerHost, 6567, "", false);
  ExpectOptions({"--ip", "10.0.0.2", "--server-base-port", "7000", "--random-credentials-from", "accounts",
                 "--start-windowed"},
                "10.0.0.2", 7000, "accounts", true);
  ExpectOptions({"--server-base-port", "65535", "--ip", "host.example"}, "host.example", 65535, "", false);
}

TEST(ClientOptions, AValuedOptionWithoutItsValueIsRefused) {
  struct Case {
    std::vector<std::string> arguments;
    std::string error;
  };
  Case const cases[] = {
      {{"--ip"}, "Too few arguments for '--ip'."},
      {{"--start-windowed", "--server-base-port"}, "Too few arguments for '--server-base-port'."},
      {{"--random-credentials-from"}, "Too few arguments for '--random-credentials-from'."},
      {{"--ip", "--start-windowed"}, "Too few arguments for '--ip'."},
  };
  for (Case const& c : cases) {
    auto const parsed = Parse(c.arguments);
    ASSERT_TRUE(std::holds_alternative<std::string>(parsed)) << c.error;
    EXPECT_EQ(std::get<std::string>(parsed), c.error);
  }
}
