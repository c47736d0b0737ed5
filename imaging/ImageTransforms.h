#pragma once

namespace wendrel {

class OperationCatalog;

// The one-step image tools of the tools ring: Auto Enhance, Resize 50%, Fit 1920 px, Rotate
// Right and Left, Flip, Crop Square, Add Background, Black & White and Remove Metadata.
void registerImageTransforms(OperationCatalog& catalog);

}  // namespace wendrel
