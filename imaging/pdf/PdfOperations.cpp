#include "PdfOperations.h"

#include "PdfMerge.h"
#include "compress/CompressPdfOperation.h"
#include "overlay/PdfOverlayOperations.h"
#include "ProtectPdf.h"
#include "RotatePdf.h"
#include "SplitPdf.h"

namespace wendrel {

void registerPdfOperations(OperationCatalog& catalog)
{
    // Each feature registers its own entries; the ring's order list places them.
    registerPdfMerge(catalog);
    registerCompressPdfOperation(catalog);
    registerPdfOverlayOperations(catalog);
    registerSplitPdf(catalog);
    registerRotatePdf(catalog);
    registerProtectPdf(catalog);
}

}  // namespace wendrel
