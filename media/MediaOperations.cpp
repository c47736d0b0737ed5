#include "MediaOperations.h"

#include "audio/AudioOperations.h"
#include "operations/OperationCatalog.h"
#include "video/VideoOperations.h"

namespace wendrel {

void registerMediaOperations(OperationCatalog& catalog)
{
    registerVideoOperations(catalog);
    registerAudioOperations(catalog);
}

}  // namespace wendrel
