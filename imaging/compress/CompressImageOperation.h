#pragma once

namespace wendrel {

class OperationCatalog;

// "Compress" on the tools ring: re-encodes photos as JPEG or HEIC to a file size, by a
// percentage or at a quality, with an optional limit on the longest side.
void registerCompressImageOperation(OperationCatalog& catalog);

}  // namespace wendrel
