#include "MediaOperations.h"

#include "operations/OperationCatalog.h"
#include "video/VideoOperations.h"

namespace wendrel {

void registerMediaOperations(OperationCatalog& catalog)
{
    registerVideoOperations(catalog);
}

}  // namespace wendrel
