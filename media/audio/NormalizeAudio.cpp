#include "NormalizeAudio.h"

#include "AudioEncodings.h"
#include "AudioResult.h"
#include "AudioTrack.h"
#include "SampleMath.h"
#include "SteadyFrames.h"
#include "media/ffmpeg/MediaErrors.h"
#include "operations/FileNames.h"
#include "operations/Logging.h"

#include <algorithm>
#include <optional>

namespace wendrel::media {

namespace {

// The share of the progress bar the analysis takes. It only decodes, and for PCM barely that;
// the render decodes the same again and then converts, encodes and writes: about three times
// the analysis for a WAV, ten times for an MP3 that becomes AAC.
constexpr double analysisShare = 0.15;

float measurePeak(AudioTrack& track, const OperationContext& context)
{
    float peak = 0;
    track.decode([&](AVFrame& frame) { peak = std::max(peak, framePeak(frame)); },
                 [&](double fraction) { context.progress(fraction * analysisShare); });
    return peak;
}

// Decodes the track again as float at the render rate (the first frames' rate capped; frames
// that change shape later are brought to it), applies `gain` and hands the frames to `result`.
void render(AudioTrack& track, float gain, AudioResult& result, const OperationContext& context)
{
    std::optional<SteadyFrames> toFloat;
    const FilterChain::FrameSink amplify = [&](AVFrame& floats) {
        // The chain may hand over the decoder's own buffer; the gain needs one of its own.
        if (av_frame_make_writable(&floats) < 0)
            throw std::bad_alloc();
        for (int channel = 0; channel < floats.ch_layout.nb_channels; ++channel)
            applyGain(reinterpret_cast<float*>(floats.extended_data[channel]), std::size_t(floats.nb_samples), gain);
        result.push(floats, toFloat->outputShape());
    };
    track.decode(
        [&](AVFrame& frame) {
            const AudioShape decoded = track.shapeOf(frame);
            if (!toFloat) {
                toFloat.emplace("aresample=" + std::to_string(normalizedRenderRate(decoded.sampleRate)) +
                                ",aformat=sample_fmts=fltp");
            }
            toFloat->push(&frame, decoded, amplify);
        },
        [&](double fraction) { context.progress(analysisShare + fraction * (1 - analysisShare)); });
    // The analysis found sound, so the same track decodes again; a file that changed in
    // between gives nothing to finish.
    if (!toFloat)
        throw cantReadMedia();
    toFloat->push(nullptr, {}, amplify);
}

}  // namespace

ProducedFile normalizeAudio(const QString& path, const OperationContext& context)
{
    const FormatSettings settings = FormatSettings::load();
    const QString extension = normalizedExtension(path);
    const AudioContainer container = containerForExtension(extension).value_or(AudioContainer::m4a);

    AudioTrack track(path, context);
    const float peak = measurePeak(track, context);
    const std::optional<float> gain = normalizationGain(peak);
    if (!gain)
        throw OperationError(mediaText("The audio is silent"));
    qCInfo(lcJobs, "normalize: peak %.7f, gain %.7f", double(peak), double(*gain));

    return context.produce(path, outputName(path, mediaText("Normalized"), extension), [&](const QString& destination) {
        AudioResult result(destination, container, track, [&](const AudioShape& frames, SampleDepth depth) {
            return audioEncoding(container, settings, frames, depth);
        });
        render(track, *gain, result, context);
        result.finish();
    });
}

}  // namespace wendrel::media
