#include "ConvertAudio.h"

#include "AudioEncodings.h"
#include "AudioResult.h"
#include "AudioTrack.h"
#include "operations/FileNames.h"

namespace wendrel::media {

ProducedFile convertAudio(const QString& path, const OperationContext& context, AudioContainer container,
                          const QString& extension)
{
    // Read afresh each run: a change in Settings applies to the next conversion.
    const FormatSettings settings = FormatSettings::load();
    AudioTrack track(path, context);
    return context.produce(path, outputName(path, std::nullopt, extension), [&](const QString& destination) {
        AudioResult result(destination, container, track, [&](const AudioShape& frames, SampleDepth depth) {
            return audioEncoding(container, settings, frames, depth);
        });
        track.decode([&](AVFrame& frame) { result.push(frame, track.shapeOf(frame)); },
                     [&](double fraction) { context.progress(fraction); });
        result.finish();
    });
}

}  // namespace wendrel::media
