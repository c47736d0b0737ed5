#include "media/MediaOperations.h"

// The media module's one entry point, which the command line looks up when it loads it.
extern "C" __attribute__((visibility("default"))) void wendrel_register_media_operations(
    wendrel::OperationCatalog& catalog)
{
    wendrel::registerMediaOperations(catalog);
}
