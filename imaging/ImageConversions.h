#pragma once

namespace wendrel {

class OperationCatalog;

// The image targets of the convert ring — JPG, PNG, HEIC, WebP, AVIF, TIFF, BMP, GIF and
// JXL, each only when this build can write it — plus ICO and one PDF from all images.
void registerImageConversions(OperationCatalog& catalog);

}  // namespace wendrel
