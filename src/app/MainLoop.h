#pragma once

#include <memory>
#include <string>

class SDL3App;
class IUICommandSource;

// Runs frames until the player quits, then destroys the main loop's context. Every failure of the run
// leaves as an exception.
void MainLoop(std::shared_ptr<SDL3App> app, std::string ip, unsigned short basePort, std::string storageDirectory,
              std::string randomCredentialsDirectory, IUICommandSource* commandSource, bool noFramePacing);
