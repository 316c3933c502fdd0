#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "DriverScript.h"
#include "app/IUICommandSource.h"

// Plays a driver script through the main loop's command seam: each frame it runs the script's steps
// until one of them takes the frame (frames, commands, an unfinished wait), then hands over the
// frame's commands. A failed expectation or a wait that runs out stops the script with a message.
class ScriptCommandSource final : public IUICommandSource {
public:
  explicit ScriptCommandSource(DriverScript script);

  void fillCommands(IAppState const& state, std::vector<UICmd>& commands) override;
  void observeState(IAppState const& state) override;

  // The script has ended: it passed (its end or quit was reached) or it failed.
  bool finished() const { return finished_; }
  bool failed() const { return !failure_.empty(); }
  std::string const& failure() const { return failure_; }
  // Whether all steps have been run (true also after quit).
  bool atEnd() const { return finished_ || next_ >= script_.steps.size(); }
  // The line of the step that runs next, or of the step that failed; 0 at the end.
  int currentLine() const;
  long long frames() const { return frames_; }
  // Frames of network games that had to wait for the other players' orders, and the longest run of
  // them in a row.
  long long stalledFrames() const { return stalledFrames_; }
  long long longestStall() const { return longestStall_; }
  // A local Aviators game that the script asked for in the last frame, taken once.
  std::optional<ScriptStep> takeLocalGameRequest() {
    std::optional<ScriptStep> request = std::move(localGameRequest_);
    localGameRequest_.reset();
    return request;
  }

private:
  void fail(ScriptStep const& step, std::string const& reason);

  DriverScript script_;
  std::size_t next_ = 0;
  long long stepFrames_ = 0;  // frames spent on the current step
  long long frames_ = 0;      // frames seen in all
  long long stalledFrames_ = 0;
  long long longestStall_ = 0;
  bool finished_ = false;
  std::string failure_;
  std::optional<ScriptStep> localGameRequest_;
};
