#include "AllOperations.h"

#include "documents/DocumentOperations.h"
#include "imaging/ImagingOperations.h"
#include "media/MediaOperations.h"

namespace wendrel {

void registerAllOperations(OperationCatalog& catalog)
{
    registerImagingOperations(catalog);
    registerDocumentOperations(catalog);
    registerMediaOperations(catalog);
}

}  // namespace wendrel
