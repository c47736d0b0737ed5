#include "ImagingOperations.h"

#include "ImageConversions.h"
#include "ImageTransforms.h"
#include "compress/CompressImageOperation.h"
#include "pdf/PdfOperations.h"

namespace wendrel {

void registerImagingOperations(OperationCatalog& catalog)
{
    registerImageConversions(catalog);
    registerCompressImageOperation(catalog);
    registerImageTransforms(catalog);
    registerPdfOperations(catalog);
}

}  // namespace wendrel
