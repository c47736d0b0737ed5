#pragma once

namespace wendrel {

class OperationCatalog;

// Adds "GIF" to the convert ring: the start of a movie as an animated GIF.
void registerGifOperation(OperationCatalog& catalog);

}  // namespace wendrel
