#include "ImagingOperations.h"

#include "ImageConversions.h"
#include "ImageTransforms.h"
#include "compress/CompressImageOperation.h"

namespace wendrel {

void registerImagingOperations(OperationCatalog& catalog)
{
    registerImageConversions(catalog);
    registerCompressImageOperation(catalog);
    registerImageTransforms(catalog);
}

}  // namespace wendrel
