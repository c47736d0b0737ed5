#pragma once

namespace wendrel {

class OperationCatalog;

// "Compress" for PDFs on the tools ring: at a quality level or to a file size, keeping text
// selectable, or with every page saved as a picture.
void registerCompressPdfOperation(OperationCatalog& catalog);

}  // namespace wendrel
