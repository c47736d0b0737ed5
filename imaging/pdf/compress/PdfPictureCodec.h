#pragma once

#include "PdfCompressionLevels.h"

#include <QByteArray>
#include <QSize>
#include <QSizeF>

#include <qpdf/QPDFObjectHandle.hh>

#include <optional>

namespace wendrel {

// One picture taken out of a document, holding everything its new encoding needs, so that it
// can be encoded on any thread while the document itself stays on one.
struct PictureToEncode {
    enum class Source {
        jpeg,     // `data` is the stream's own JPEG, RGB or grey, decoded with shrink-on-load
        samples,  // `data` is the decoded 8-bit samples, row by row
    };
    Source source = Source::samples;
    QByteArray data;
    QSize pixels;            // as the image dictionary gives them
    int components = 3;      // 1, 3 or 4, what the colour space takes
    QSizeF placed;           // the largest placement, in points
    qint64 storedBytes = 0;  // what the stream weighs now: the new one must weigh less
};

struct EncodedPicture {
    QByteArray jpeg;
    QSize pixels;
};

// Whether a picture can be stored anew, and what its new encoding needs: 8 bits a sample in a
// grey, RGB or CMYK colour space (device, calibrated or ICC-based), stored as JPEG or with
// lossless filters. Everything else stays as it is: 1-bit pictures and stencil masks, indexed
// and other special colour spaces, fax, JBIG2 and JPEG 2000 streams, pictures masked by a
// colour range (a lossy picture would leak through it), and streams that don't decode to the
// size their dictionary gives. Main thread only: it reads the document.
std::optional<PictureToEncode> pictureToEncode(QPDFObjectHandle image, QSizeF placed);

// The picture at `level`: downsampled for its placement (see PlacementGeometry.h), then JPEG at
// the level's quality with as many components as before, so the colour space, /Decode and any
// soft mask still apply to it unchanged. Nothing when the pixels can't be decoded, or when the
// result isn't smaller than what is stored now. Any thread.
std::optional<EncodedPicture> encodePicture(const PictureToEncode& picture, const PdfCompressionLevel& level);

// Puts the new encoding into the image stream: JPEG data, its pixel size, no decode parameters.
// Everything else in its dictionary stays. Main thread only.
void replacePicture(QPDFObjectHandle image, const EncodedPicture& encoded);

}  // namespace wendrel
