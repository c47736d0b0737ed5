#pragma once

#include "PdfCompressionLevels.h"

#include <qpdf/QPDF.hh>

#include <functional>

namespace wendrel {

class OperationContext;

struct RecompressionCount {
    int pictures = 0;  // drawn on the pages and readable
    int replaced = 0;  // stored anew, smaller
};

// Stores every picture the pages draw anew at `level` (see PdfPictureCodec.h), where that makes
// it smaller; the rest of the document is not touched. The document is read and changed on the
// calling thread only; the pictures are decoded and encoded on all cores, a batch at a time so
// that memory stays within the job's share. `progress` hears the fraction of pictures done.
RecompressionCount recompressPictures(QPDF& pdf, const PdfCompressionLevel& level, const OperationContext& context,
                                      const std::function<void(double)>& progress);

}  // namespace wendrel
