#include "PdfOperations.h"

#include "PdfMerge.h"
#include "PdfToPictures.h"
#include "ProtectPdf.h"
#include "RotatePdf.h"
#include "SplitPdf.h"
#include "compress/CompressPdfOperation.h"
#include "overlay/PdfOverlayOperations.h"

namespace wendrel {

void registerPdfOperations(OperationCatalog& catalog)
{
    // Each feature registers its own entries; the ring's order list places them.
    registerPdfMerge(catalog);
    registerCompressPdfOperation(catalog);
    registerPdfOverlayOperations(catalog);
    registerPdfToPictures(catalog);
    registerSplitPdf(catalog);
    registerRotatePdf(catalog);
    registerProtectPdf(catalog);
}

}  // namespace wendrel
