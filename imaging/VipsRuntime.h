#pragma once

namespace wendrel {

// Starts libvips once per process, from any thread. Every imaging entry point calls it first.
// The operation cache is switched off: it would keep decoded images of earlier files alive,
// so memory would grow with the number of files in a batch.
void startVips();

}  // namespace wendrel
