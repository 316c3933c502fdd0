#include "ScriptCommandSource.h"

#include <fmt/format.h>

#include "IAppState.h"
#include "TutorialProgress.h"

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
    }
  }
}
