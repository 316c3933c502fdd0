#include "ScriptCommandSource.h"

#include <fmt/format.h>

#include <optional>
#include <string>

#include "sim/GameResult.h"
#include "app/IAppState.h"
#include "glow_horde/TutorialProgress.h"

namespace {

// The first value of a row of the running game's current result, if there is a game with that row.
std::optional<long long> ResultRowValue(IAppState const& state, long long row) {
  if (!state.isInGame()) {
    return std::nullopt;
  }
  GameResult result;
  state.getCurrentGameResult(result);
  if (row < 0 || static_cast<std::size_t>(row) >= result.results.size() || result.results[static_cast<std::size_t>(row)].empty()) {
    return std::nullopt;
  }
  return result.results[static_cast<std::size_t>(row)].front();
}

// What a failed game step saw: the frame, whether the game has ended, and the result row.
std::string DescribeGame(IAppState const& state, long long row) {
  if (!state.isInGame()) {
    return "there is no game";
  }
  std::optional<long long> const value = ResultRowValue(state, row);
  return fmt::format("at game frame {}{}, {}", state.gameFrame(), state.isGameEnded() ? " (ended)" : "",
                     value.has_value() ? fmt::format("row {} starts with {}", row, *value)
                                       : fmt::format("the result has no row {}", row));
}

}  // namespace

ScriptCommandSource::ScriptCommandSource(DriverScript script) : script_(std::move(script)) {}

int ScriptCommandSource::currentLine() const {
  return next_ < script_.steps.size() ? script_.steps[next_].line : 0;
}

void ScriptCommandSource::observeState(IAppState const&) { ++frames_; }

void ScriptCommandSource::fail(ScriptStep const& step, std::string const& reason) {
  failure_ = fmt::format("line {} ({}): {}", step.line, step.text, reason);
  finished_ = true;
}

void ScriptCommandSource::fillCommands(IAppState const& state, std::vector<UICmd>& commands) {
  using Kind = ScriptStep::Kind;
  while (!finished_) {
    if (next_ >= script_.steps.size()) {
      finished_ = true;
      return;
    }
    ScriptStep const& step = script_.steps[next_];
    switch (step.kind) {
    case Kind::Frames:
      if (++stepFrames_ >= step.number) {
        stepFrames_ = 0;
        ++next_;
      }
      return;

    case Kind::Command:
      commands.push_back(*step.command);
      ++next_;
      if (next_ >= script_.steps.size() || script_.steps[next_].kind != Kind::Command) {
        return;
      }
      break;

    case Kind::WaitMode:
    case Kind::WaitCondition: {
      bool const reached = step.kind == Kind::WaitMode ? state.mode() == step.number
                                                       : state.evaluateGameCondition(step.condition);
      if (reached) {
        stepFrames_ = 0;
        ++next_;
        break;
      }
      if (stepFrames_ >= step.limit) {
        fail(step, step.kind == Kind::WaitMode
                       ? fmt::format("still in mode {} after {} frames", state.mode(), step.limit)
                       : fmt::format("the condition didn't hold within {} frames", step.limit));
        return;
      }
      ++stepFrames_;
      return;
    }

    case Kind::ExpectMode:
      if (state.mode() != step.number) {
        fail(step, fmt::format("the mode is {}", state.mode()));
        return;
      }
      ++next_;
      break;

    case Kind::ExpectCondition:
      if (!state.evaluateGameCondition(step.condition)) {
        fail(step, state.isInGame() ? "the condition doesn't hold" : "there is no game");
        return;
      }
      ++next_;
      break;

    case Kind::ExpectGameFrame:
      if (state.gameFrame() != static_cast<unsigned long long>(step.number)) {
        fail(step, fmt::format("the game's frame is {}", state.gameFrame()));
        return;
      }
      ++next_;
      break;

    case Kind::WaitGameFrame:
    case Kind::WaitGameEnd:
    case Kind::WaitResultRow: {
      bool reached = false;
      if (step.kind == Kind::WaitGameFrame) {
        reached = state.gameFrame() >= static_cast<unsigned long long>(step.number);
      } else if (step.kind == Kind::WaitGameEnd) {
        reached = state.isGameEnded();
      } else {
        std::optional<long long> const value = ResultRowValue(state, step.number);
        reached = value.has_value() && *value >= step.second;
      }
      if (reached) {
        stepFrames_ = 0;
        ++next_;
        break;
      }
      if (stepFrames_ >= step.limit) {
        fail(step, fmt::format("not reached within {} frames: {}", step.limit, DescribeGame(state, step.number)));
        return;
      }
      ++stepFrames_;
      return;
    }

    case Kind::ExpectResultRow: {
      std::optional<long long> const value = ResultRowValue(state, step.number);
      if (!value.has_value() || *value < step.second || *value > step.third) {
        fail(step, DescribeGame(state, step.number));
        return;
      }
      ++next_;
      break;
    }

    case Kind::ExpectTutorial: {
      TutorialProgress const* progress = state.offlineData().tutorialProgress;
      int const level = static_cast<int>(step.number);
      int const status = progress != nullptr ? progress->statusOf(level) : 0;
      int const attempts = progress != nullptr ? progress->attemptsOf(level) : 0;
      if (status != step.second || attempts != step.third) {
        fail(step, fmt::format("level {} has status {} and {} attempts", level, status, attempts));
        return;
      }
      ++next_;
      break;
    }

    case Kind::Quit:
      ++next_;
      finished_ = true;
      return;

    case Kind::LocalAviators:
      localGameRequest_ = step;
      ++next_;
      return;
    }
  }
}
