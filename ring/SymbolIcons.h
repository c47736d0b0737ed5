#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

namespace wendrel {

// The bundled line icon standing in for a symbol name that an entry declares ("photo",
// "rotate.right"). Unknown names get a plain dot, so every segment shows something.
QString iconResourceFor(const QString& symbolName);

// The icon drawn in `colour` at `size` logical pixels, crisp at the device pixel ratio. Drawn
// once per look and kept; the interface thread only.
QPixmap symbolPixmap(const QString& symbolName, const QColor& colour, int size, qreal devicePixelRatio);

}  // namespace wendrel
