#pragma once

#include <string>

class SDL3App;

// The screen that ends a run after a fatal error: it shows the message and blocks until the user
// presses "Exit" or closes the window.
void FatalErrorUI(SDL3App& app, std::string const& message);

// One frame of the fatal error screen; returns true if "Exit" was pressed.
bool RenderFatalErrorScreen(std::string const& message);

// The message of a server that doesn't accept this client's version; the screen offers the downloads.
inline constexpr char kVersionNotAcceptedMessage[] = "Client version not accepted by server, please update your client";
