#pragma once

#include <QSizeF>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjGen.hh>

#include <map>
#include <set>

namespace wendrel {

// Where the pages draw their pictures: for each image object, the largest size it is drawn
// at, in points, side by side (see PlacementGeometry.h). Drawings are followed through the
// content streams' q/Q/cm and into form XObjects with their /Matrix, as deep as they nest.
// A picture drawn only elsewhere (in an annotation's appearance, a pattern, a glyph) is not
// listed; neither is a picture drawn where the content can't be read: it is in `unreadable`
// then, as its largest placement can't be known.
struct ImagePlacements {
    std::map<QPDFObjGen, QSizeF> largest;
    std::set<QPDFObjGen> unreadable;
};

ImagePlacements findImagePlacements(QPDF& pdf);

}  // namespace wendrel
