#pragma once

namespace wendrel {

class OperationCatalog;

// Adds the image and PDF entries. They live in a module of their own: their libraries (libvips,
// qpdf, poppler, cairo and what those pull in) take longer to load than most commands take to
// run, so the command line loads them only for commands that need them. Returns false, having
// said why on stderr, when the module can't be loaded.
bool addImagingOperations(OperationCatalog& catalog);

}  // namespace wendrel
