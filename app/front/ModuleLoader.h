#pragma once

namespace wendrel {

// The two halves of Wendrel that the small `wendrel` executable loads on demand, so that its
// quick commands don't pay for loading the image, PDF and widget libraries.
enum class Module {
    commandLine,  // every subcommand but "ring"
    agent,        // the tray agent and its rings
};

// Loads the module from the folder installed beside the executable and runs its entry point
// with the process's arguments; returns the exit status.
int runModule(Module module, int argc, char** argv);

}  // namespace wendrel
