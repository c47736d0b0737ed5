#include "MediaOperations.h"

#include "audio/AudioOperations.h"
#include "gif/GifOperation.h"
#include "operations/OperationCatalog.h"
#include "video/VideoOperations.h"
#include "video/compress/VideoCompressOperation.h"

namespace wendrel {

void registerMediaOperations(OperationCatalog& catalog)
{
    registerVideoOperations(catalog);
    media::registerVideoCompressOperation(catalog);
    registerAudioOperations(catalog);
    registerGifOperation(catalog);
}

}  // namespace wendrel
