#include "UICmdFromText.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <unordered_map>

namespace {

using Arguments = std::vector<std::string>;

// Thrown inside this file only, and turned into the error text.
struct BadArgument {
  std::string message;
};

template <class Integer>
Integer ParseInteger(std::string const& text, char const* what) {
  long long value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < std::numeric_limits<Integer>::min() ||
      value > std::numeric_limits<Integer>::max()) {
    throw BadArgument{fmt::format("{} must be an integer from {} to {}, not \"{}\"", what,
                                  static_cast<long long>(std::numeric_limits<Integer>::min()),
                                  static_cast<long long>(std::numeric_limits<Integer>::max()), text)};
  }
  return static_cast<Integer>(value);
}

bool ParseBool(std::string const& text) {
  if (text == "true") {
    return true;
  }
  if (text == "false") {
    return false;
  }
  throw BadArgument{fmt::format("expected true or false, not \"{}\"", text)};
}

std::vector<unsigned char> ParseHex(std::string const& text, std::size_t size, char const* what) {
  if (size != 0 && text.size() != size * 2) {
    throw BadArgument{fmt::format("{} must be {} hexadecimal digits", what, size * 2)};
  }
  if (text.size() % 2 != 0) {
    throw BadArgument{fmt::format("{} must have an even number of hexadecimal digits", what)};
  }
  std::vector<unsigned char> bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    unsigned value = 0;
    auto const [end, error] = std::from_chars(text.data() + i, text.data() + i + 2, value, 16);
    if (error != std::errc() || end != text.data() + i + 2) {
      throw BadArgument{fmt::format("{} must be hexadecimal digits, not \"{}\"", what, text)};
    }
    bytes.push_back(static_cast<unsigned char>(value));
  }
  return bytes;
}

struct Builder {
  std::size_t argumentCount;
  char const* usage;  // the arguments, for error messages
  std::function<UICmd(Arguments const&)> build;
};

std::unordered_map<std::string, Builder> const& Builders() {
  static std::unordered_map<std::string, Builder> const builders{
      {"MoveToGameRoom", {1, "ROOM", [](Arguments const& a) -> UICmd {
                            return UICmd::MoveToGameRoom{ParseInteger<std::uint16_t>(a[0], "ROOM")};
                          }}},
      {"MoveToSlot", {1, "SLOT", [](Arguments const& a) -> UICmd {
                        return UICmd::MoveToSlot{ParseInteger<std::int16_t>(a[0], "SLOT")};
                      }}},
      {"SetReadyState", {1, "true|false", [](Arguments const& a) -> UICmd { return UICmd::SetReadyState{ParseBool(a[0])}; }}},
      {"StartGame", {0, "", [](Arguments const&) -> UICmd { return UICmd::StartGame{}; }}},
      {"CreateGame", {2, "\"DESCRIPTION\" SPEC_HEX", [](Arguments const& a) -> UICmd {
                        return UICmd::CreateGame{a[0], ParseHex(a[1], 0, "SPEC_HEX")};
                      }}},
      {"LeaveGameRoom", {0, "", [](Arguments const&) -> UICmd { return UICmd::LeaveGameRoom{}; }}},
      {"ChangeName", {1, "\"NAME\"", [](Arguments const& a) -> UICmd { return UICmd::ChangeName{a[0]}; }}},
      {"RequestRecording", {1, "GAME", [](Arguments const& a) -> UICmd {
                              return UICmd::RequestRecording{ParseInteger<std::uint16_t>(a[0], "GAME")};
                            }}},
      {"DisconnectFromServer", {0, "", [](Arguments const&) -> UICmd { return UICmd::DisconnectFromServer{}; }}},
      {"ClearCredentials", {0, "", [](Arguments const&) -> UICmd { return UICmd::ClearCredentials{}; }}},
      {"SetCredentials", {2, "PLAYER_ID_HEX SECRET_HEX", [](Arguments const& a) -> UICmd {
                            UICmd::SetCredentials set;
                            set.credentials.playerId = ParseHex(a[0], 8, "PLAYER_ID_HEX");
                            set.credentials.secret = ParseHex(a[1], 16, "SECRET_HEX");
                            return set;
                          }}},
      {"ConnectToServer", {0, "", [](Arguments const&) -> UICmd { return UICmd::ConnectToServer{}; }}},
      {"ReplaySelectedRecording", {1, "INDEX", [](Arguments const& a) -> UICmd {
                                     return UICmd::ReplaySelectedRecording{ParseInteger<std::uint32_t>(a[0], "INDEX")};
                                   }}},
      {"RefreshRecordings", {0, "", [](Arguments const&) -> UICmd { return UICmd::RefreshRecordings{}; }}},
      {"PlayTutorial", {1, "LEVEL", [](Arguments const& a) -> UICmd {
                          return UICmd::PlayTutorial{ParseInteger<std::uint16_t>(a[0], "LEVEL")};
                        }}},
      {"SkipTutorial", {1, "LEVEL", [](Arguments const& a) -> UICmd {
                          return UICmd::SkipTutorial{ParseInteger<std::uint16_t>(a[0], "LEVEL")};
                        }}},
      {"QuitToDesktop", {0, "", [](Arguments const&) -> UICmd { return UICmd::QuitToDesktop{}; }}},
      {"ReturnToLobbyAfterGameEnd", {0, "", [](Arguments const&) -> UICmd { return UICmd::ReturnToLobbyAfterGameEnd{}; }}},
      {"AbandonGame", {0, "", [](Arguments const&) -> UICmd { return UICmd::AbandonGame{}; }}},
      {"EndGameEarly", {0, "", [](Arguments const&) -> UICmd { return UICmd::EndGameEarly{}; }}},
      {"InjectGameOrder", {1, "\"ORDER\"", [](Arguments const& a) -> UICmd { return UICmd::InjectGameOrder{a[0]}; }}},
      {"MarkAllServerLogEntriesSeen",
       {0, "", [](Arguments const&) -> UICmd { return UICmd::MarkAllServerLogEntriesSeen{}; }}},
      {"ToggleFullScreen", {0, "", [](Arguments const&) -> UICmd { return UICmd::ToggleFullScreen{}; }}},
  };
  return builders;
}

}  // namespace

std::optional<UICmd> UICmdFromText(std::string const& name, std::vector<std::string> const& arguments,
                                   std::string& error) {
  auto const found = Builders().find(name);
  if (found == Builders().end()) {
    error = fmt::format("there is no command named \"{}\"", name);
    return std::nullopt;
  }
  Builder const& builder = found->second;
  if (arguments.size() != builder.argumentCount) {
    error = builder.argumentCount == 0 ? fmt::format("{} takes no arguments", name)
                                       : fmt::format("usage: cmd {} {}", name, builder.usage);
    return std::nullopt;
  }
  try {
    return builder.build(arguments);
  } catch (BadArgument const& bad) {
    error = fmt::format("{}: {}", name, bad.message);
    return std::nullopt;
  }
}

bool IsUICmdName(std::string const& name) { return Builders().contains(name); }
