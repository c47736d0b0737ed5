#include "PdfOperations.h"

namespace wendrel {

void registerPdfOperations(OperationCatalog& catalog)
{
    // Each feature registers its own entries; the ring's order list places them.
    (void)catalog;
}

}  // namespace wendrel
