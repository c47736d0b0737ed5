#include "AgentMain.h"
#include "app/front/ApplicationIdentity.h"

// The tray agent's entry point, which the `wendrel` executable looks up when it loads this module.
extern "C" __attribute__((visibility("default"))) int wendrel_agent_main(int argc, char** argv)
{
    wendrel::setApplicationIdentity();
    return wendrel::runAgent(argc, argv);
}
