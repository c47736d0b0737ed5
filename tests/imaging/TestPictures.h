#pragma once

#include <QString>

#include <vips/vips8>

#include <functional>

namespace wendrel::test {

// A photo-like picture: smooth colour gradients with fine texture, the kind of content lossy
// encoders and enhancement behave on as they do on photos. Deterministic.
vips::VImage photoLike(int width, int height);

// Left half red, right half blue: which way a picture was turned is visible in its corners.
vips::VImage twoColours(int width, int height);

// An RGBA picture: an opaque green disc on a fully transparent square.
vips::VImage transparentDisc(int side);

// Saves with libvips; `options` as in vips file names ("[Q=90,strip=false]").
void save(const vips::VImage& image, const QString& path);

// The pixel at (x, y) as doubles, one per band.
std::vector<double> pixel(const vips::VImage& image, int x, int y);

// The picture as decoded by libvips from a file, untouched (no turning, no conversion).
vips::VImage decoded(const QString& path);

// Runs a command-line tool and returns its standard output; empty when it failed.
QString toolOutput(const QString& program, const QStringList& arguments);

// Runs a command-line tool; true when it succeeded.
bool runTool(const QString& program, const QStringList& arguments);

// Whether a tool is installed.
bool haveTool(const QString& program);

}  // namespace wendrel::test
