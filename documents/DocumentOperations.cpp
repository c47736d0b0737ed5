#include "DocumentOperations.h"

#include "conversion/DocumentConversionOperations.h"
#include "sheets/SheetOperations.h"
#include "subtitles/SubtitleOperations.h"
#include "zip/ArchiveOperations.h"

namespace wendrel {

void registerDocumentOperations(OperationCatalog& catalog)
{
    registerDocumentConversionOperations(catalog);
    registerSheetOperations(catalog);
    registerSubtitleOperations(catalog);
    registerArchiveOperations(catalog);
}

}  // namespace wendrel
