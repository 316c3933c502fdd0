#include <gtest/gtest.h>

#include <SDL3/SDL_hints.h>
#include <SDL3/SDL_timer.h>

#include <string>
#include <thread>
#include <vector>

#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsPicker.h"
#include "support/TempDirectory.h"

namespace {

// Stands in for the system's dialog: remembers what it was asked and completes only when told to.
struct FakeDialog {
  static inline int opened = 0;
  static inline std::vector<std::pair<std::string, std::string>> filters;
  static inline bool plainCall = false;

  static void SDLCALL Open(SDL_DialogFileCallback callback, void* userdata, SDL_Window* window,
                           SDL_DialogFileFilter const* list, int count, char const* location, bool allowMany) {
    ++opened;
    filters.clear();
    for (int i = 0; i < count; ++i) filters.emplace_back(list[i].name, list[i].pattern);
    plainCall = callback == &OnFileDialogComplete && userdata == nullptr && window == nullptr && location == nullptr &&
                !allowMany;
  }
};

void Complete(std::vector<std::string> const& paths) {
  std::vector<char const*> list;
  for (std::string const& path : paths) list.push_back(path.c_str());
  list.push_back(nullptr);
  OnFileDialogComplete(nullptr, list.data(), 0);
}

class CredentialsPickerTest : public ::testing::Test {
protected:
  void SetUp() override {
    SetOpenFileDialogFunction(&FakeDialog::Open);
    FakeDialog::opened = 0;
    // A pick left over by another test would make this one's first request fail.
    ASSERT_NE(ConsumeCredentialsPickResult(), kCredentialsPickRunning);
    ConsumePickedCredentials();
  }
  void TearDown() override { SetOpenFileDialogFunction(nullptr); }

  TempDirectory directory;
  Credentials const saved{std::vector<unsigned char>(8, 1), std::vector<unsigned char>(16, 2)};
};

}  // namespace

TEST_F(CredentialsPickerTest, OnePickAtATimeAndEachResultIsSeenOnce) {
  SaveCredentials(saved, directory.file("mine.bin"));
  ASSERT_TRUE(RequestCredentialsFile());
  EXPECT_EQ(FakeDialog::filters,
            (std::vector<std::pair<std::string, std::string>>{{"Credentials files", "bin"}, {"All files", "*"}}));
  EXPECT_TRUE(FakeDialog::plainCall);
  EXPECT_FALSE(RequestCredentialsFile());  // the dialog is open
  EXPECT_EQ(FakeDialog::opened, 1);
  EXPECT_EQ(ConsumeCredentialsPickResult(), kCredentialsPickRunning);
  EXPECT_EQ(ConsumeCredentialsPickResult(), kCredentialsPickRunning);
  EXPECT_FALSE(ConsumePickedCredentials().has_value());

  Complete({directory.file("mine.bin"), directory.file("ignored.bin")});
  EXPECT_FALSE(RequestCredentialsFile());  // the result hasn't been seen yet
  EXPECT_EQ(ConsumeCredentialsPickResult(), kCredentialsPickLoaded);
  EXPECT_EQ(ConsumeCredentialsPickResult(), kCredentialsPickIdle);
  EXPECT_EQ(ConsumePickedCredentials(), saved);
  EXPECT_FALSE(ConsumePickedCredentials().has_value());
}

TEST_F(CredentialsPickerTest, CancelledAndFailedPicksLeaveNoCredentials) {
  directory.write("broken.bin", "four");
  struct Case {
    std::vector<std::string> paths;
    bool noList;
    std::uint32_t expected;
  };
  Case const cases[] = {
      {{}, false, kCredentialsPickCancelled},
      {{}, true, kCredentialsPickCancelled},  // no dialog could be shown
      {{directory.file("broken.bin")}, false, kCredentialsPickFailed},
      {{directory.file("absent.bin")}, false, kCredentialsPickFailed},
  };
  for (Case const& c : cases) {
    ASSERT_TRUE(RequestCredentialsFile());
    if (c.noList) {
      OnFileDialogComplete(nullptr, nullptr, -1);
    } else {
      Complete(c.paths);
    }
    EXPECT_EQ(ConsumeCredentialsPickResult(), c.expected);
    EXPECT_EQ(ConsumeCredentialsPickResult(), kCredentialsPickIdle);
    EXPECT_FALSE(ConsumePickedCredentials().has_value());
  }
}

TEST_F(CredentialsPickerTest, ACompletionOnAnotherThreadHandsTheCredentialsOver) {
  SaveCredentials(saved, directory.file("mine.bin"));
  ASSERT_TRUE(RequestCredentialsFile());
  std::thread completion([&] { Complete({directory.file("mine.bin")}); });
  std::uint32_t state = kCredentialsPickRunning;
  while (state == kCredentialsPickRunning) {
    state = ConsumeCredentialsPickResult();
  }
  // The state changes only after the credentials are stored, so they are there at once.
  std::optional<Credentials> const picked = ConsumePickedCredentials();
  completion.join();
  EXPECT_EQ(state, kCredentialsPickLoaded);
  EXPECT_EQ(picked, saved);
}

TEST_F(CredentialsPickerTest, WithNoDialogAvailableThePickEndsAsCancelled) {
  // SDL's own dialog, with a dialog driver that doesn't exist, as on a system with neither a portal
  // nor a helper program.
  SetOpenFileDialogFunction(nullptr);
  SDL_SetHint(SDL_HINT_FILE_DIALOG_DRIVER, "no-such-dialog-driver");
  ASSERT_TRUE(RequestCredentialsFile());
  std::uint32_t state = kCredentialsPickRunning;
  for (int i = 0; i < 500 && state == kCredentialsPickRunning; ++i) {
    state = ConsumeCredentialsPickResult();
    SDL_Delay(10);
  }
  SDL_ResetHint(SDL_HINT_FILE_DIALOG_DRIVER);
  EXPECT_EQ(state, kCredentialsPickCancelled);
  EXPECT_FALSE(ConsumePickedCredentials().has_value());
}
