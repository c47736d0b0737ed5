// libFuzzer target for the audio and video entries: any bytes, named as one of the formats a
// user drops, run through every media entry end to end. Each ends in a result or an
// OperationError; never a crash, a hang or a leak, whatever the demuxers and decoders hand our
// pipes (frames that change shape, timestamps that jump, streams that stop).
// Seeds: short real files, e.g. made with `ffmpeg -f lavfi -i sine=duration=0.2 seed.wav` and
// `ffmpeg -f lavfi -i testsrc2=size=32x24:duration=0.3 -f lavfi -i sine=duration=0.3 seed.mp4`.
// Run: build-fuzz/tests/fuzz/media_operations_fuzz -max_len=65536 -timeout=30 CORPUS_DIR
#include "media/MediaOperations.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using namespace wendrel;

namespace {

const OperationCatalog& mediaCatalog()
{
    static const OperationCatalog catalog = [] {
        OperationCatalog entries;
        registerMediaOperations(entries);
        return entries;
    }();
    return catalog;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Settings live in a private folder: the fuzzer never reads or writes the user's.
    static QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    static int argc = 1;
    static char name[] = "media_operations_fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    // The first byte picks the name the file goes by: the demuxer is chosen by content, but
    // the name decides which entries are offered and what a result is called.
    static const char* const extensions[] = {"wav", "mp3", "mp4", "mov", "mkv", "flac", "ogg", "aiff", "webm", "m4a"};
    const char* extension = extensions[data[0] % std::size(extensions)];
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("input.") + QLatin1String(extension));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(reinterpret_cast<const char*>(data + 1), qint64(size - 1)) < 0)
        std::abort();
    file.close();

    for (const char* id : {"audio.normalize", "media.wav", "media.m4a", "media.mp4", "video.mute", "video.extractAudio",
                           "video.gif"}) {
        const FileOperationPtr entry = mediaCatalog().find(QLatin1String(id));
        if (!entry)
            std::abort();
        const QString scratch = folder.filePath(QLatin1String(id));
        const OperationContext context(scratch);
        try {
            entry->run({path}, context);
        } catch (const OperationError&) {
        }
    }
    return 0;
}
