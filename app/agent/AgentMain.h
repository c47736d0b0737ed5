#pragma once

namespace wendrel {

// `wendrel` without arguments: the tray agent, until the user quits it.
int runAgent(int& argc, char** argv);

// `wendrel ring KIND FILE...`: hands the request to the running agent, starting one when
// none is running.
int runRingCommand(int& argc, char** argv);

}  // namespace wendrel
