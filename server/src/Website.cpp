#include "Website.h"

#include <httplib.h>

#include <cstdio>
#include <ctime>

#include "AccountMinting.h"
#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsString.h"
#include "net/GameRecordsWire.h"
#include "sim/Game.h"

namespace {

std::string Escape(std::string const& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string Base64(std::vector<unsigned char> const& bytes) {
  static char const alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned const value = (bytes[i] << 16) | ((i + 1 < bytes.size() ? bytes[i + 1] : 0) << 8) |
                           (i + 2 < bytes.size() ? bytes[i + 2] : 0);
    out += alphabet[(value >> 18) & 63];
    out += alphabet[(value >> 12) & 63];
    out += i + 1 < bytes.size() ? alphabet[(value >> 6) & 63] : '=';
    out += i + 2 < bytes.size() ? alphabet[value & 63] : '=';
  }
  return out;
}

std::string Page(std::string const& title, std::string const& body) {
  return "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + Escape(title) +
         " - Tandem Parlour</title><style>"
         "body{font-family:sans-serif;background:#1d1f27;color:#e8e8ee;max-width:60em;margin:2em auto;padding:0 1em}"
         "a{color:#8fb8ff}h1{color:#ffc966}h2{color:#ffa64d}table{border-collapse:collapse;margin:0.5em 0}"
         "td,th{border:1px solid #555;padding:0.25em 0.6em;text-align:left}"
         "code,.credentials{background:#2e313d;padding:0.2em 0.4em;font-family:monospace}"
         ".credentials{display:block;font-size:1.3em;padding:0.6em;word-break:break-all}"
         ".agree{color:#7fdc7f}.disagree{color:#ff6b6b}.none{color:#aaa}"
         "nav a{margin-right:1.2em}</style></head><body>"
         "<nav><a href=\"/gettingstarted\">Getting started</a><a href=\"/setup\">Set up an account</a>"
         "<a href=\"/download\">Download</a><a href=\"/status\">Server status</a></nav>"
         "<h1>" + Escape(title) + "</h1>" + body + "</body></html>\n";
}

std::string GameName(std::vector<unsigned char> const& specBytes) {
  GameSpec const spec = ParseGameSpec(specBytes);
  auto const game = static_cast<int>(spec.game);
  return game >= 0 && game < kGameCount ? GameDisplayName(spec.game) : "Unknown game";
}

std::string Agreement(GameResults const& results) {
  std::vector<unsigned char> const* first = nullptr;
  for (auto const& report : results.reportedResults) {
    if (report.empty()) {
      continue;
    }
    if (first != nullptr && report != *first) {
      return "<span class=\"disagree\">reports disagree</span>";
    }
    first = &report;
  }
  return first == nullptr ? "<span class=\"none\">no reports</span>" : "<span class=\"agree\">reports agree</span>";
}

std::string ResultText(GameResult const& result) {
  std::string text = "end frame " + std::to_string(result.endFrame) + ":";
  for (auto const& row : result.results) {
    text += " [";
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += (i == 0 ? "" : ", ") + std::to_string(row[i]);
    }
    text += "]";
  }
  return Escape(text);
}

std::string ResultText(std::vector<unsigned char> const& report) {
  if (report.empty()) {
    return "-";
  }
  GameResult result;
  unsigned char const* cursor = report.data();
  std::size_t remaining = report.size();
  if (!FromBytes(cursor, remaining, result)) {
    return "unreadable";
  }
  return ResultText(result);
}

std::string TimeText(unsigned long long timestampMs) {
  if (timestampMs == 0) {
    return "unknown";
  }
  std::time_t const seconds = static_cast<std::time_t>(timestampMs / 1000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts);
  return text;
}

std::string ClientVersionText(std::string const& version) {
  bool const plain = !version.empty() && version.size() <= 16 &&
                     version.find_first_not_of("0123456789.") == std::string::npos;
  return plain ? version : std::string();
}

}  // namespace

Website::Website(IServerStorage& storage, Settings settings)
    : storage_(storage), settings_(std::move(settings)), server_(std::make_unique<httplib::Server>()) {
  server_->Get("/", [](httplib::Request const&, httplib::Response& response) { response.set_redirect("/gettingstarted"); });
  server_->Get("/gettingstarted", [this](httplib::Request const& request, httplib::Response& response) {
    std::string host = request.get_header_value("Host");
    auto const colon = host.rfind(':');
    host = colon == std::string::npos ? host : host.substr(0, colon);
    response.set_content(gettingStartedPage(host.empty() ? "SERVER" : host), "text/html; charset=utf-8");
  });
  server_->Get("/setup", [this](httplib::Request const&, httplib::Response& response) {
    response.set_content(setupPage(), "text/html; charset=utf-8");
  });
  server_->Post("/setup", [this](httplib::Request const& request, httplib::Response& response) {
    std::string error;
    std::string const page = mintPage(request.has_param("name") ? request.get_param_value("name") : "", error);
    if (page.empty()) {
      response.status = 400;
      response.set_content(Page("Set up an account", "<p>" + Escape(error) + "</p><p><a href=\"/setup\">Back</a></p>"),
                           "text/html; charset=utf-8");
      return;
    }
    response.set_content(page, "text/html; charset=utf-8");
  });
  server_->Get("/signup", [](httplib::Request const&, httplib::Response& response) { response.set_redirect("/setup"); });
  server_->Get("/download", [this](httplib::Request const& request, httplib::Response& response) {
    response.set_content(downloadPage(request.has_param("v") ? request.get_param_value("v") : ""),
                         "text/html; charset=utf-8");
  });
  server_->Get("/status", [this](httplib::Request const&, httplib::Response& response) {
    response.set_content(statusPage(), "text/html; charset=utf-8");
  });
  server_->set_payload_max_length(4096);
  server_->set_read_timeout(5, 0);
  server_->set_write_timeout(5, 0);
}

Website::~Website() {
  stop();
}

bool Website::start() {
  int const port = settings_.port == 0 ? server_->bind_to_any_port(settings_.bindAddress)
                                       : (server_->bind_to_port(settings_.bindAddress, settings_.port) ? settings_.port : -1);
  if (port <= 0) {
    return false;
  }
  port_ = static_cast<unsigned short>(port);
  std::printf("Website listening on %s port %u\n", settings_.bindAddress.c_str(), static_cast<unsigned>(port_));
  std::fflush(stdout);
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  return true;
}

void Website::stop() {
  if (thread_.joinable()) {
    server_->stop();
    thread_.join();
  }
}

void Website::updateSnapshot(LobbyServer::Snapshot snapshot) {
  std::lock_guard lock(mutex_);
  snapshot_ = std::move(snapshot);
}

std::string Website::gettingStartedPage(std::string const& host) const {
  std::string const port = std::to_string(settings_.lobbyPort);
  return Page("Getting started",
              "<p>Tandem Parlour is a collection of three real-time games for several players: Glow Horde, Aviators "
              "and Vipers. Every player's client computes the same game; this server only passes the players' "
              "orders around.</p>"
              "<h2>1. An account</h2><p>Open <a href=\"/setup\">Set up an account</a>. You get a credentials "
              "string and a file <code>credentials.bin</code>. Either paste the string on the client's "
              "credentials page, or put the file in the client's storage directory.</p>"
              "<h2>2. The client</h2><p>Start the client with this server's address and base port:</p>"
              "<p><code>tandem-client --ip " + Escape(host) + " --server-base-port " + port + "</code></p>"
              "<h2>3. Play</h2><p>Press \"Connect to server\". Create a room or join one, choose a slot, say that "
              "you are ready; the host starts the game. After the game the results appear in the lobby and the "
              "recording can be downloaded and replayed offline.</p>"
              "<p>See who is playing on the <a href=\"/status\">status page</a>.</p>");
}

std::string Website::setupPage() const {
  return Page("Set up an account",
              "<p>Choose the name that other players will see (you can change it later in the lobby).</p>"
              "<form method=\"post\" action=\"/setup\"><label>Name: <input name=\"name\" maxlength=\"32\" "
              "value=\"Player\"></label> <button type=\"submit\">Create my account</button></form>"
              "<p>The account is made at once; keep its credentials to yourself: they are your login.</p>");
}

std::string Website::mintPage(std::string const& name, std::string& error) {
  if (!IsAcceptableName(name)) {
    error = "Names are 1 to 32 characters long, without control characters.";
    return {};
  }
  {
    std::lock_guard lock(mutex_);
    auto const now = std::chrono::steady_clock::now();
    if (now - windowStart_ > std::chrono::minutes(1)) {
      windowStart_ = now;
      mintedInWindow_ = 0;
    }
    if (mintedInWindow_ >= settings_.accountsPerMinute) {
      error = "Too many accounts were made in the last minute; please try again shortly.";
      return {};
    }
    ++mintedInWindow_;
  }
  Credentials const credentials = MintAccount(storage_, name);
  std::string const text = EncodeCredentialsString(credentials);
  std::printf("Website minted an account for %s\n", name.c_str());
  std::fflush(stdout);
  return Page("Your account",
              "<p>Welcome, " + Escape(name) + ". This is your credentials string; paste it on the client's "
              "credentials page:</p><p class=\"credentials\" id=\"credentials\">" + text + "</p>"
              "<p>Or <a id=\"file\" download=\"credentials.bin\" href=\"data:application/octet-stream;base64," +
              Base64(CredentialsFileBytes(credentials)) + "\">download credentials.bin</a> and put it in the "
              "client's storage directory.</p><p>This page is shown once: the server keeps no copy for you to "
              "fetch again.</p>");
}

std::string Website::downloadPage(std::string const& version) const {
  std::string const yours = ClientVersionText(version);
  return Page("Download",
              std::string(yours.empty() ? ""
                          : "<p>Your client is version " + yours + ". " +
                                (yours == "0.1.3" ? "It is the version that this server speaks."
                                                  : "This server needs client version 0.1.3.") +
                                "</p>") +
                  "<p>This server speaks protocol 1003, the protocol of client version 0.1.3.</p>"
                  "<p>The client and this server are built from the project's sources: "
                  "<code>cmake --preset release &amp;&amp; cmake --build --preset release</code> gives "
                  "<code>tandem-client</code> and <code>tandem-server</code> in <code>build/release/bin</code>.</p>");
}

std::string Website::statusPage() const {
  LobbyServer::Snapshot snapshot;
  {
    std::lock_guard lock(mutex_);
    snapshot = snapshot_;
  }
  auto nameOf = [&](std::vector<unsigned char> const& id) {
    auto const found = snapshot.names.find(LobbyServer::idKey(id));
    return Escape(found == snapshot.names.end() ? std::string("?") : found->second);
  };
  auto playerName = [&](unsigned short number) {
    if (number < snapshot.lobby.players.size() && snapshot.lobby.players[number]) {
      return nameOf(snapshot.lobby.players[number]->playerId);
    }
    return std::string("(gone)");
  };
  std::size_t online = 0;
  for (auto const& player : snapshot.lobby.players) {
    online += player ? 1 : 0;
  }
  std::string body = "<p>" + std::to_string(online) + " players in the lobby, " +
                     std::to_string(snapshot.connections) + " connections.</p>";
  std::string rooms;
  std::string running;
  for (std::size_t r = 0; r < snapshot.lobby.rooms.size(); ++r) {
    if (!snapshot.lobby.rooms[r]) {
      continue;
    }
    GameRoom const& room = *snapshot.lobby.rooms[r];
    std::string players;
    for (std::size_t i = 0; i < room.players.size(); ++i) {
      players += (i == 0 ? "" : ", ") + playerName(room.players[i]) + " (slot " + std::to_string(room.assignedSlots[i]) +
                 (room.ready[i] ? ", ready" : "") + ")";
    }
    rooms += "<tr><td>" + std::to_string(r) + "</td><td>" + Escape(room.description) + "</td><td>" +
             GameName(room.specBytes) + "</td><td>" + std::to_string(room.players.size()) + " of " +
             std::to_string(room.maxPlayers) + "</td><td>" + players + "</td><td>" +
             (room.runningGame ? "playing" : "waiting") + "</td></tr>";
    if (room.runningGame) {
      std::string players2;
      for (std::size_t i = 0; i < room.runningGame->players.size(); ++i) {
        players2 += (i == 0 ? "" : ", ") + playerName(room.runningGame->players[i]) +
                    (room.runningGame->disconnected[i] ? " (dropped)" : "");
      }
      running += "<tr><td>" + std::to_string(r) + "</td><td>" + GameName(room.specBytes) + "</td><td>" + players2 +
                 "</td><td>" + std::to_string(room.runningGame->portOffset) + "</td></tr>";
    }
  }
  body += "<h2>Rooms</h2>" +
          (rooms.empty() ? std::string("<p>No rooms.</p>")
                         : "<table><tr><th>Room</th><th>Description</th><th>Game</th><th>Places</th><th>Players</th>"
                           "<th>State</th></tr>" + rooms + "</table>");
  body += "<h2>Running games</h2>" +
          (running.empty() ? std::string("<p>No game is running.</p>")
                           : "<table><tr><th>Room</th><th>Game</th><th>Players</th><th>Port offset</th></tr>" + running +
                                 "</table>");
  std::string results;
  for (std::size_t k = snapshot.recentGames.size(); k-- > 0;) {
    GameResults const& game = snapshot.recentGames[k];
    std::string players;
    for (std::size_t i = 0; i < game.playerIds.size(); ++i) {
      std::string const name = i < game.playerNames.size() ? Escape(game.playerNames[i]) : nameOf(game.playerIds[i]);
      players += "<div>" + name + ": " +
                 (i < game.reportedResults.size() ? ResultText(game.reportedResults[i]) : std::string("-")) + "</div>";
    }
    results += "<tr><td>" + std::to_string(snapshot.firstGame + k) + "</td><td>" + TimeText(game.timestampMs) +
               "</td><td>" + GameName(game.specBytes) + "</td><td>" + (game.finished ? "finished" : "running") +
               "</td><td>" + players + "</td><td>" + Agreement(game) + "</td></tr>";
  }
  body += "<h2>Recent results</h2>" +
          (results.empty() ? std::string("<p>No games played yet.</p>")
                           : "<table><tr><th>Game</th><th>Started</th><th>Game</th><th>State</th><th>Players and "
                             "reported results</th><th>Agreement</th></tr>" + results + "</table>");
  std::string disputes;
  for (std::size_t k = snapshot.disputes.size(); k-- > 0;) {
    SettledDispute const& dispute = snapshot.disputes[k];
    std::string matching;
    for (std::size_t i = 0; i < dispute.matches.size(); ++i) {
      if (dispute.matches[i]) {
        matching += (matching.empty() ? "" : ", ") + Escape(i < dispute.players.size() ? dispute.players[i] : "?");
      }
    }
    std::string truth = dispute.error.empty() ? "-" : "not re-simulated: " + Escape(dispute.error);
    if (dispute.truth) {
      truth = ResultText(*dispute.truth);
    }
    disputes += "<tr><td>" + std::to_string(dispute.game) + "</td><td>" + truth + "</td><td>" +
                (matching.empty() ? std::string("none") : matching) + "</td><td>" + std::to_string(dispute.frames) +
                "</td></tr>";
  }
  body += "<h2>Settled disputes</h2>" +
          (disputes.empty() ? std::string("<p>No disputed results.</p>")
                            : "<table><tr><th>Game</th><th>Re-simulated result</th><th>Reports that match it</th>"
                              "<th>Frames simulated</th></tr>" + disputes + "</table>");
  body += "<h2>Rankings</h2><p>This server does not keep rankings yet; each client keeps its own tables from "
          "the results above.</p>";
  return Page("Server status", body);
}
