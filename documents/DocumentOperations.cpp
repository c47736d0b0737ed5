#include "DocumentOperations.h"

#include "subtitles/SubtitleOperations.h"
#include "zip/ArchiveOperations.h"

namespace wendrel {

void registerDocumentOperations(OperationCatalog& catalog)
{
    registerSubtitleOperations(catalog);
    registerArchiveOperations(catalog);
}

}  // namespace wendrel
