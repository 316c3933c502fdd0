#include <argparse/argparse.hpp>

#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "app/ChangeToExecutableDirectory.h"
#include "app/ClientOptions.h"
#include "app/MainLoop.h"
#include "app/SDL3App.h"
#include "ui/FatalErrorUI.h"
#include "ui/InterfaceStyle.h"
#include "ui/Website.h"

int main(int argc, char* argv[]) {
  ChangeToExecutableDirectory();

  argparse::ArgumentParser parser("client", "1.0");
  AddClientOptions(parser);
  try {
    parser.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::cerr << error.what() << '\n' << parser.usage() << std::endl;
    return 1;
  }
  ClientOptions const options = ReadClientOptions(parser);
  SetWebsiteAddress(options.ip, options.basePort);

  std::shared_ptr<SDL3App> app;
  try {
    app = std::make_shared<SDL3App>(1280, 720, false);
  } catch (std::exception const& error) {
    std::cerr << error.what() << std::endl;
    return 1;
  }
  SetInterfaceStyle();
  if (!options.startWindowed) {
    app->toggleFullScreen();
  }

  try {
    MainLoop(app, options.ip, options.basePort, ".", options.randomCredentialsDirectory, nullptr, false);
  } catch (std::exception const& error) {
    std::cerr << "Fatal error: " << error.what() << std::endl;
    FatalErrorUI(*app, error.what());
    return 1;
  }
  return 0;
}
