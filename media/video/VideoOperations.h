#pragma once

namespace wendrel {

class OperationCatalog;

// The movie conversions (MP4, MOV) and tools (mute, extract the soundtrack).
void registerVideoOperations(OperationCatalog& catalog);

}  // namespace wendrel
