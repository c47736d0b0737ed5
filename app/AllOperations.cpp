#include "AllOperations.h"

#include "documents/DocumentOperations.h"
#include "imaging/ImagingOperations.h"

namespace wendrel {

void registerAllOperations(OperationCatalog& catalog)
{
    registerImagingOperations(catalog);
    registerDocumentOperations(catalog);
}

}  // namespace wendrel
