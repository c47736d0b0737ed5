#include "DocumentOperations.h"

#include "subtitles/SubtitleOperations.h"

namespace wendrel {

void registerDocumentOperations(OperationCatalog& catalog)
{
    registerSubtitleOperations(catalog);
}

}  // namespace wendrel
