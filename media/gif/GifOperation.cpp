#include "GifOperation.h"

#include "GifWriter.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/StreamEncoder.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"
#include "operations/settings/FormatSettings.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace wendrel {

namespace {

ProducedFile convertToGif(const QString& path, const OperationContext& context)
{
    // Read afresh each run: a change in the settings applies to the next GIF.
    const FormatSettings settings = FormatSettings::load();
    return context.produce(path, outputName(path, std::nullopt, QStringLiteral("gif")),
                           [&](const QString& destination) {
                               media::writeGif(path, destination, context, settings.gifFPS, settings.gifMaxWidth);
                           });
}

// The encoder and the palette filters are part of every FFmpeg build Wendrel runs on, but a
// trimmed one could leave them out.
bool canMakeGifs()
{
    return media::findEncoder(AV_CODEC_ID_GIF) && avfilter_get_by_name("palettegen") &&
           avfilter_get_by_name("paletteuse");
}

}  // namespace

void registerGifOperation(OperationCatalog& catalog)
{
    catalog.add(Op::make({
        .entry = {.id = "video.gif", .title = media::mediaText("GIF"), .symbol = QStringLiteral("photo.stack"),
                  .ring = RingKind::convert, .inputs = {ContentType::movie()},
                  .description = media::mediaText("Animated GIF of the first 30 seconds, 10 frames per second.")},
        .perFile = convertToGif,
        .available = canMakeGifs,
    }));
}

}  // namespace wendrel
