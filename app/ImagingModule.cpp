#include "imaging/ImagingOperations.h"

// The imaging module's one entry point, which the command line looks up when it loads it.
extern "C" __attribute__((visibility("default"))) void wendrel_register_imaging_operations(
    wendrel::OperationCatalog& catalog)
{
    wendrel::registerImagingOperations(catalog);
}
