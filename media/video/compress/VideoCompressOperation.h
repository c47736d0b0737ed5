#pragma once

namespace wendrel {
class OperationCatalog;
}

namespace wendrel::media {

// "Compress" for videos on the tools ring: by quality or to a file size, at a chosen largest
// height, as H.264 or HEVC.
void registerVideoCompressOperation(OperationCatalog& catalog);

}  // namespace wendrel::media
