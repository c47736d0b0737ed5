#include "front/ApplicationIdentity.h"
#include "front/ModuleLoader.h"
#include "front/RingCommand.h"

#include <cstdio>
#include <cstring>

// The executable stays small: the version and ring requests (what file managers and scripts
// call most) are answered with Qt Core alone; the command line and the tray agent live in
// modules loaded only when needed.
int main(int argc, char* argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("wendrel %s\n", WENDREL_VERSION);
        return 0;
    }
    wendrel::setApplicationIdentity();
    // No command: the tray agent. "ring": a request for it. Anything else: the command line.
    if (argc >= 2 && std::strcmp(argv[1], "ring") == 0)
        return wendrel::runRingCommand(argc, argv);
    return wendrel::runModule(argc == 1 ? wendrel::Module::agent : wendrel::Module::commandLine, argc, argv);
}
