#include "AllOperations.h"

#include "documents/DocumentOperations.h"

namespace wendrel {

void registerAllOperations(OperationCatalog& catalog)
{
    registerDocumentOperations(catalog);
}

}  // namespace wendrel
