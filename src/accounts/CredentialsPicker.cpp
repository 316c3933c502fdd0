#include "accounts/CredentialsPicker.h"

#include <SDL3/SDL_error.h>
#include <SDL3/SDL_log.h>

#include <atomic>
#include <exception>
#include <mutex>

#include "accounts/CredentialsFile.h"

namespace {

// The dialog may read the filters until it completes, so they live as long as the program.
constexpr SDL_DialogFileFilter kFilters[] = {{"Credentials files", "bin"}, {"All files", "*"}};

struct PickRecord {
  std::atomic<std::uint32_t> state{kCredentialsPickIdle};
  std::mutex mutex;
  std::optional<Credentials> credentials;  // under mutex
  std::atomic<OpenFileDialogFunction> openDialog{&SDL_ShowOpenFileDialog};
};

PickRecord& Record() {
  static PickRecord record;
  return record;
}

}  // namespace

bool RequestCredentialsFile() {
  PickRecord& record = Record();
  std::uint32_t expected = kCredentialsPickIdle;
  if (!record.state.compare_exchange_strong(expected, kCredentialsPickRunning)) {
    return false;
  }
  // The completion may run before this call returns; the state is already "running" for it to change.
  record.openDialog.load()(&OnFileDialogComplete, nullptr, nullptr, kFilters, SDL_arraysize(kFilters), nullptr, false);
  return true;
}

std::uint32_t ConsumeCredentialsPickResult() {
  PickRecord& record = Record();
  std::uint32_t state = record.state.load();
  while (state != kCredentialsPickIdle && state != kCredentialsPickRunning) {
    if (record.state.compare_exchange_weak(state, kCredentialsPickIdle)) {
      return state;
    }
  }
  return state;
}

std::optional<Credentials> ConsumePickedCredentials() {
  PickRecord& record = Record();
  std::lock_guard const lock(record.mutex);
  std::optional<Credentials> credentials = std::move(record.credentials);
  record.credentials.reset();
  return credentials;
}

void SDLCALL OnFileDialogComplete(void*, char const* const* filelist, int) {
  PickRecord& record = Record();
  if (filelist == nullptr || filelist[0] == nullptr) {
    if (filelist == nullptr) {
      // No dialog could be shown (no portal, no helper program): for the player this is a pick that
      // chose nothing.
      SDL_Log("File dialog unavailable: %s", SDL_GetError());
    }
    SDL_Log("Credentials selection cancelled");
    record.state.store(kCredentialsPickCancelled);
    return;
  }
  char const* const path = filelist[0];
  try {
    Credentials credentials = LoadCredentials(path);
    {
      std::lock_guard const lock(record.mutex);
      record.credentials = std::move(credentials);
    }
    SDL_Log("Loaded credentials from %s", path);
    record.state.store(kCredentialsPickLoaded);
  } catch (std::exception const& error) {
    SDL_LogError(SDL_LOG_CATEGORY_APPLICATION, "Failed to load credentials from %s: %s", path, error.what());
    record.state.store(kCredentialsPickFailed);
  } catch (...) {
    // Nothing may leave a callback that SDL calls from C.
    SDL_LogError(SDL_LOG_CATEGORY_APPLICATION, "Failed to load credentials from %s: %s", path, "unknown error");
    record.state.store(kCredentialsPickFailed);
  }
}

void SetOpenFileDialogFunction(OpenFileDialogFunction function) {
  Record().openDialog.store(function != nullptr ? function : &SDL_ShowOpenFileDialog);
}
