#pragma once

#include <SDL3/SDL_dialog.h>

#include <cstdint>
#include <optional>

#include "accounts/Credentials.h"

// Choosing a credentials file with the system's file dialog. The dialog's completion may run on another
// thread than the main loop's, so the outcome is handed over through one process-wide record: an atomic
// state and, under a mutex, the credentials loaded from the chosen file.

// The states of a pick.
inline constexpr std::uint32_t kCredentialsPickIdle = 0;
inline constexpr std::uint32_t kCredentialsPickRunning = 1;
inline constexpr std::uint32_t kCredentialsPickLoaded = 2;
inline constexpr std::uint32_t kCredentialsPickCancelled = 3;
inline constexpr std::uint32_t kCredentialsPickFailed = 4;

// Opens the dialog (filters "Credentials files" for "bin", then "All files") unless a pick is running
// or its result hasn't been consumed; returns whether it opened one. Main thread only. Where the
// system has no working dialog, the pick ends as cancelled.
bool RequestCredentialsFile();

// The state of the pick; a finished one (loaded, cancelled, failed) is returned once and the state goes
// back to idle.
std::uint32_t ConsumeCredentialsPickResult();

// The credentials of the last loaded pick, once; empty if there are none.
std::optional<Credentials> ConsumePickedCredentials();

// The dialog's completion: no list or an empty one cancels the pick; otherwise the first file is
// loaded, which either loads the pick or fails it. Any thread.
void SDLCALL OnFileDialogComplete(void* userdata, char const* const* filelist, int filter);

// What RequestCredentialsFile calls to open the dialog; SDL_ShowOpenFileDialog unless replaced, which
// tests do to stand in for the system's dialog. nullptr restores SDL's.
using OpenFileDialogFunction = void(SDLCALL*)(SDL_DialogFileCallback callback, void* userdata, SDL_Window* window,
                                              SDL_DialogFileFilter const* filters, int nfilters,
                                              char const* defaultLocation, bool allowMany);
void SetOpenFileDialogFunction(OpenFileDialogFunction function);
