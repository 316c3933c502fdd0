#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/UICmd.h"

// A driver script: one step a line. Blank lines and everything after a '#' outside quotes are
// ignored; a word is a run of non-blanks or a double-quoted string in which \" and \\ stand for
// themselves. The verbs are listed in VerbTable() and in tools/driver/README.md.
struct ScriptStep {
  enum class Kind {
    Frames,          // run a number of frames without commands
    Command,         // give a command; consecutive commands go out in the same frame
    WaitMode,        // wait until the mode is the one given
    ExpectMode,      // the mode must be the one given now
    WaitCondition,   // wait until the game's condition holds
    ExpectCondition, // the game's condition must hold now
    ExpectGameFrame, // the game's frame counter must be the one given now
    WaitGameFrame,   // wait until the game's frame counter reaches the one given
    WaitGameEnd,     // wait until the game has ended
    WaitResultRow,   // wait until the first value of a result row reaches a minimum
    ExpectResultRow, // the first value of a result row must lie in a range now
    ExpectTutorial,  // a tutorial level's status and attempts must be the ones given
    CreateRoom,      // create a room of a game's challenge or ranked match from the catalogue
    WaitRoom,        // wait until a room of the given number exists in the lobby
    WaitRoomPlayers, // wait until this client's room holds at least the given number of players
    WaitAllReady,    // wait until every player of this client's room is ready
    WaitGameResults, // wait until a played game is finished with at least the given number of reports
    ExpectAgreement, // a played game's reports must agree, or must disagree
    WaitRecording,   // wait until a played game's recording is on disk
    WaitDisconnected,// wait until a player of the network game shows as disconnected
    LogLobby,        // write the played games, both rankings and the high scores to the test log
    Quit,            // stop here: the script has passed
  };

  Kind kind = Kind::Frames;
  int line = 0;                     // in the script file, from 1
  std::string text;                 // the line as written, for messages
  long long number = 0;             // frames, mode, frame counter, tutorial level or result row
  long long second = 0;             // tutorial status, or the least first value of a result row
  long long third = 0;              // tutorial attempts, or the greatest first value of a result row
  long long limit = 0;              // the frames that a wait may take
  std::string condition;            // of the condition steps
  std::optional<UICmd> command;     // of a command step
};

struct DriverScript {
  std::vector<ScriptStep> steps;
};

// One verb of the script language: its name, its argument synopsis and what it means.
struct ScriptVerb {
  char const* name;
  char const* synopsis;
  char const* meaning;
};
std::vector<ScriptVerb> const& VerbTable();

// The frames that a wait may take when the script doesn't say.
inline constexpr long long kDefaultWaitLimit = 600;
// The same for the waits on the server, whose answers take a round trip and other clients' frames.
inline constexpr long long kDefaultLobbyWaitLimit = 20000;

// Splits one line into words; sets error if a quote isn't closed.
std::vector<std::string> SplitScriptLine(std::string const& line, std::string& error);

// Parses a whole script. On a bad line, returns nothing and sets error to "line N: reason".
std::optional<DriverScript> ParseDriverScript(std::string const& text, std::string& error);
