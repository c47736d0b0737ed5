#pragma once

#include "app/shell/AgentRequest.h"

namespace wendrel {

// Hands a request to the running agent over its local socket. False when no agent answers.
bool sendToAgent(const AgentRequest& request, int timeoutMilliseconds = 2000);

}  // namespace wendrel
