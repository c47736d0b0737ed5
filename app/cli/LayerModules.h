#pragma once

#include <QList>
#include <QStringList>

namespace wendrel {

class OperationCatalog;

// Layers whose entries live in modules of their own. Their libraries (libvips, qpdf, poppler,
// cairo for images and PDFs; the FFmpeg libraries for audio and video) take longer to load
// than most commands take to run, so the command line loads only the ones a command needs.
enum class LayerModule { imaging, media };

// The entry a `run` names: its first word after the command, options and their values
// skipped. Empty for any other command. Every setting takes a value, so an option the
// command line doesn't know yet (another layer's setting) is taken to take one too.
QString entryIdOfRun(const QStringList& arguments);

// Which modules to load, in order, for a command, given a catalog that holds the entries linked
// into the command line (the documents layer):
// - a run that this catalog serves in full loads none;
// - a run of an audio or video entry ("media.", "video.", "audio.") loads the media module,
//   any other run the imaging module; the other one follows only if the run still isn't
//   served (addLayerOperationsFor);
// - `ops FILE...` loads the media module for sound and movies, imaging for everything else;
// - anything else (`ops --all`, help) loads them all.
QList<LayerModule> modulesToLoadFirst(const QStringList& arguments, const OperationCatalog& catalog);

// Adds one module's entries to `catalog`. Returns false, having said why on stderr, when the
// module can't be loaded.
bool addLayerOperations(LayerModule module, OperationCatalog& catalog);

// Adds to `catalog` the entries of every module the command needs, as modulesToLoadFirst says,
// then the remaining ones when the run still isn't served (an option only another layer knows).
void addLayerOperationsFor(const QStringList& arguments, OperationCatalog& catalog);

}  // namespace wendrel
