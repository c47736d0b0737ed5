#pragma once

#include <qpdf/QPDF.hh>

namespace wendrel {

class OperationCatalog;

// Turns every page of the document a quarter clockwise, whatever its rotation was, one it
// inherits from the page tree included. Each page gets its own /Rotate.
void turnPagesRight(QPDF& pdf);

// "pdf.rotate": every page turned right, written as "<name> Rotated.pdf".
void registerRotatePdf(OperationCatalog& catalog);

}  // namespace wendrel
