#include "MediaOperations.h"

#include "operations/OperationCatalog.h"

namespace wendrel {

void registerMediaOperations(OperationCatalog& catalog)
{
    Q_UNUSED(catalog);
}

}  // namespace wendrel
