#include "app/MainLoop.h"

#include "app/MainLoopContext.h"

void MainLoop(std::shared_ptr<SDL3App> app, std::string ip, unsigned short basePort, std::string storageDirectory,
              std::string randomCredentialsDirectory, IUICommandSource* commandSource, bool noFramePacing) {
  std::unique_ptr<MainLoopContext> context =
      MainLoopContext::Create(std::move(app), std::move(ip), basePort, std::move(storageDirectory),
                              std::move(randomCredentialsDirectory), commandSource, noFramePacing);
  while (!context->quit) {
    context->runOneFrame(false);
  }
  context.reset();
}
