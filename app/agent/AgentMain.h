#pragma once

namespace wendrel {

// `wendrel` without arguments: the tray agent, until the user quits it.
int runAgent(int& argc, char** argv);

}  // namespace wendrel
