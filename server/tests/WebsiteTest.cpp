#include <gtest/gtest.h>

#include <httplib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "ServerTestSupport.h"
#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsString.h"
#include "net/LobbyMessages.h"

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

// A game played by hand-built messages shows on the status page with its agreeing reports; the page is
// also screenshotted in headless chromium (kept in server-screenshots/ beside the build's bin/).
TEST(Website, StatusShowsRoomsAndResultsWithAgreement) {
  std::string const directory = FreshDirectory("status");
  Credentials const credentials = MintWithCommand(directory, "Frank <b>");
  ServerProcess server(directory);
  RawClient client(server.lobbyPort());
  auto const number = client.login(credentials);
  ASSERT_TRUE(number);
  Bytes const spec = CustomGlowHordeSpec("Mosh pit", 1, 1);
  Bytes create = {8};
  Str(create, "Solo <i>room</i>");
  Vec(create, spec);
  U16(create, 1);
  U16(create, 1);
  U8(create, 1);
  client.sendFrame(create);
  client.sendFrame({6, 1});
  std::uint64_t roomToken = 0;
  for (Bytes const& frame : client.drain(400ms)) {
    if (frame.at(0) != 4) continue;
    LobbyState state;
    LobbyMessages::DecodeLobbyState(frame.data() + 1, frame.size() - 1, state);
    unsigned short const room = state.players.at(*number)->roomIndex;
    if (room != 65535) roomToken = state.rooms.at(room)->roomToken;
  }
  Bytes start = {9};
  U64(start, roomToken);
  client.sendFrame(start);
  ASSERT_TRUE(client.waitFor(10));
  Bytes result;
  U32(result, 600);
  U64(result, 1);
  U64(result, 1);
  U64(result, 42);
  U64(result, 7);
  Bytes end = {11};
  Vec(end, result);
  client.sendFrame(end);
  ASSERT_TRUE(client.waitFor(4));
  std::this_thread::sleep_for(800ms);  // the website's snapshot is refreshed twice a second

  httplib::Client web("127.0.0.1", server.webPort());
  auto const page = web.Get("/status");
  ASSERT_TRUE(page);
  EXPECT_NE(page->body.find("reports agree"), std::string::npos);
  EXPECT_NE(page->body.find("end frame 600: [42]"), std::string::npos);
  EXPECT_NE(page->body.find("Solo &lt;i&gt;room&lt;/i&gt;"), std::string::npos);
  EXPECT_NE(page->body.find("Frank &lt;b&gt;"), std::string::npos);
  EXPECT_EQ(page->body.find("<i>room"), std::string::npos);

  std::filesystem::create_directories("../server-screenshots");
  std::string const html = std::filesystem::absolute("../server-screenshots/status_with_game.html").string();
  { std::ofstream(html) << page->body; }
  if (std::system("command -v chromium >/dev/null 2>&1") == 0) {
    std::string const png = std::filesystem::absolute("../server-screenshots/status_with_game.png").string();
    std::string const command = "timeout 60 chromium --headless --no-sandbox --disable-gpu --hide-scrollbars "
                                "--window-size=1100,700 --screenshot=" + png + " file://" + html + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(std::filesystem::exists(png));
  }
}

// "account add" prints the string and writes the file of one and the same account, which logs in.
TEST(Website, AccountCommandWritesFileAndStringOfOneAccount) {
  std::string const directory = FreshDirectory("account-command");
  std::string const file = directory + "-client/credentials.bin";
  std::string const command = ServerPath() + " account add Gina --data '" + directory + "' --credentials-file '" +
                              file + "' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  char line[128] = {};
  std::string const text = std::fgets(line, sizeof line, pipe) != nullptr ? line : "";
  EXPECT_EQ(pclose(pipe), 0);
  Credentials const printed = DecodeCredentialsString(text);
  EXPECT_EQ(LoadCredentials(file), printed);
  ServerProcess server(directory);
  RawClient client(server.lobbyPort());
  EXPECT_TRUE(client.login(printed));
  std::filesystem::remove_all(directory + "-client");
}
