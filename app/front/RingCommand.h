#pragma once

namespace wendrel {

// `wendrel ring KIND FILE...`: hands the request to the running agent, starting one when none
// is running. Needs Qt Core and Network only, so file-manager actions start quickly.
int runRingCommand(int argc, char** argv);

}  // namespace wendrel
