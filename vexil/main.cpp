#include "kestrel/autocli/CliDispatcher.h"

int main(int argc, char** argv) {
  Kestrel::AutoCli::CliDispatcher dispatcher;
  dispatcher.AddDefaultDirectories();
  dispatcher.HandleArgvInput(argc, argv);
}
