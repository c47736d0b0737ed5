#pragma once

#include <QString>

namespace wendrel {

class OperationCatalog;

// The name of one page's picture in the folder of a document's pages: "Page 001.jpg". Three
// digits keep pages in order when sorted by name; a document of a thousand pages or more
// simply gets more.
QString pagePictureName(int pageNumber, const QString& extension);

// "pdf.jpg" and "pdf.png" on the convert ring: every page of a PDF as a picture.
void registerPdfToPictures(OperationCatalog& catalog);

}  // namespace wendrel
