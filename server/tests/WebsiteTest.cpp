#include <gtest/gtest.h>

#include <httplib.h>

#include <regex>
#include <sstream>

#include "ServerTestSupport.h"
#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsString.h"

using namespace servertest;
using namespace std::chrono_literals;

namespace {

Bytes FromBase64(std::string const& text) {
  std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  Bytes out;
  unsigned bits = 0;
  int count = 0;
  for (char c : text) {
    auto const value = alphabet.find(c);
    if (value == std::string::npos) break;
    bits = (bits << 6) | static_cast<unsigned>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      out.push_back(static_cast<unsigned char>(bits >> count));
    }
  }
  return out;
}

}  // namespace

// An account minted on "/setup" logs in, and the file offered beside the string holds the same account.
TEST(Website, SetupMintsAnAccountThatLogsIn) {
  ServerProcess server(FreshDirectory("website"));
  httplib::Client web("127.0.0.1", server.webPort());
  auto const page = web.Post("/setup", "name=Web+Player", "application/x-www-form-urlencoded");
  ASSERT_TRUE(page);
  ASSERT_EQ(page->status, 200);
  std::smatch match;
  ASSERT_TRUE(std::regex_search(page->body, match, std::regex("id=\"credentials\">([A-Za-z0-9_-]{36})<")));
  Credentials const credentials = DecodeCredentialsString(match[1]);
  ASSERT_TRUE(std::regex_search(page->body, match, std::regex("base64,([A-Za-z0-9+/=]+)\"")));
  Bytes const file = FromBase64(match[1]);
  std::istringstream stream(std::string(file.begin(), file.end()));
  EXPECT_EQ(ReadCredentials(stream), credentials);

  RawClient client(server.lobbyPort());
  ASSERT_TRUE(client.login(credentials));
  bool named = false;
  for (Bytes const& frame : client.drain(300ms)) {
    named = named || (frame.at(0) == 13 && std::string(frame.begin(), frame.end()).find("Web Player") != std::string::npos);
  }
  EXPECT_TRUE(named);

  auto const refused = web.Post("/setup", "name=", "application/x-www-form-urlencoded");
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->status, 400);
  auto const signup = web.Get("/signup?v=0.1.3");
  ASSERT_TRUE(signup);
  EXPECT_EQ(signup->status, 302);
  EXPECT_EQ(signup->get_header_value("Location"), "/setup");
}
