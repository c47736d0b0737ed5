#include "VideoCompressOperation.h"

#include "VideoCompressionChoices.h"
#include "VideoCompressionSettingsView.h"
#include "VideoSizeSearch.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaInput.h"
#include "media/ffmpeg/MediaLog.h"
#include "media/ffmpeg/StreamEncoder.h"
#include "media/video/MovieWriter.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"
#include "operations/prompt/SettingsPrompt.h"

extern "C" {
#include <libavutil/display.h>
}

#include <QDir>
#include <QFile>

#include <cmath>

namespace wendrel::media {

namespace {

using Settings = VideoCompressionSettings;

// What the size search needs to know of the source before the first encode.
SizeGoal sizeGoalOf(const QString& path, const Settings& settings, const OperationContext& context)
{
    MediaInput input(path, context);
    const AVStream* video = input.firstStream(AVMEDIA_TYPE_VIDEO);
    if (!video)
        throw noVideoInFile();
    const AVCodecParameters& picture = *video->codecpar;
    double width = picture.width;
    double height = picture.height;
    // Pixels drawn wider or narrower than square, within what real formats use (anamorphic
    // DVDs); anything beyond is a damaged header and is ignored.
    const double pixelAspect = picture.sample_aspect_ratio.den > 0 ? av_q2d(picture.sample_aspect_ratio) : 0;
    if (pixelAspect >= 0.25 && pixelAspect <= 4)
        width *= pixelAspect;
    // A phone's portrait clip is stored on its side and turned by the player.
    if (const uint8_t* matrix = av_stream_get_side_data(video, AV_PKT_DATA_DISPLAYMATRIX, nullptr)) {
        const double degrees = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
        if (std::isfinite(degrees) && std::lround(std::abs(degrees)) % 180 == 90)
            std::swap(width, height);
    }
    const double duration = input.durationSeconds(*video);
    // A rate for a size needs the length and the picture's size; a file that doesn't say is
    // damaged.
    if (duration <= 0 || width < 1 || height < 1)
        throw cantReadMedia();
    // The source picture's own rate, from its stream or else from the file's size: no attempt
    // spends more.
    const AVStream* audio = input.firstStream(AVMEDIA_TYPE_AUDIO);
    int64_t sourceRate = picture.bit_rate;
    if (sourceRate <= 0 && input.format().pb) {
        const int64_t fileBytes = avio_size(input.format().pb);
        sourceRate = fileBytes > 0 ? int64_t(double(fileBytes) * 8 / duration) - (audio ? audio->codecpar->bit_rate : 0) : 0;
    }
    const AVRational rate = video->avg_frame_rate.num > 0 ? video->avg_frame_rate : video->r_frame_rate;
    return {
        // A stored size beyond any disk is taken as a petabyte.
        .targetBytes = qint64(std::llround(std::clamp(settings.targetMB, 0.0, 1e9) * 1'000'000)),
        .durationSeconds = duration,
        .displayWidth = int(std::lround(width)),
        .displayHeight = int(std::lround(height)),
        .framesPerSecond = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0,
        .hasAudio = audio != nullptr,
        .hevc = settings.codec == Settings::Codec::hevc,
        .maxHeight = std::max(settings.maxHeight, 0),
        .sourceVideoBitsPerSecond = std::max<int64_t>(sourceRate, 0),
    };
}

// The bytes of a result's picture, from the index MP4 and MOV keep of every frame: the search
// then knows how much of the file the soundtrack and the container took. 0 when there is no
// index to read.
qint64 pictureBytes(const QString& path, const OperationContext& context)
{
    MediaInput input(path, context);
    AVStream* video = input.firstStream(AVMEDIA_TYPE_VIDEO);
    if (!video)
        return 0;
    qint64 bytes = 0;
    const int entries = avformat_index_get_entries_count(video);
    for (int i = 0; i < entries; ++i)
        bytes += avformat_index_get_entry(video, i)->size;
    return bytes;
}

// How far the job has come when an attempt starts: the first takes 60 % of the bar, each
// later one half of what is left, so the bar never runs back and never fills before the end.
double attemptStart(std::size_t attempt)
{
    return attempt == 0 ? 0.0 : 1.0 - 0.4 * std::pow(0.5, double(attempt - 1));
}

// Encodes at the search's rates, each attempt into a scratch file of its own, and leaves only
// the chosen one. Returns its path.
QString compressToTarget(const QString& path, const Settings& settings, MovieEncoding encoding,
                         const QString& extension, const OperationContext& context)
{
    const SizeGoal goal = sizeGoalOf(path, settings, context);
    std::vector<AttemptOutcome> outcomes;
    std::vector<QString> files;
    const auto removeAttempts = [&](std::optional<std::size_t> keep) {
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (i != keep)
                QFile::remove(files[i]);
        }
    };
    try {
        SizeStep step = nextSizeStep(goal, outcomes);
        for (; step.kind == SizeStep::Kind::encode; step = nextSizeStep(goal, outcomes)) {
            const std::size_t attempt = files.size();
            files.push_back(QDir(context.workDirectory()).filePath(QStringLiteral("attempt-%1.%2").arg(attempt).arg(extension)));
            encoding.maxHeight = step.next.maxHeight;
            encoding.videoBitsPerSecond = step.next.videoBitsPerSecond;
            encoding.audioBitsPerSecond = step.next.audioBitsPerSecond;
            const double start = attemptStart(attempt);
            const double span = attemptStart(attempt + 1) - start;
            const MovieResult result = writeMovie(path, files.back(), encoding, context, [&](double fraction) {
                context.progress(start + span * std::clamp(fraction, 0.0, 1.0));
            });
            qCInfo(lcMedia, "video attempt %ld: %ldx%ld @ %ld → %ld bytes", long(attempt + 1), long(result.width),
                   long(result.height), long(step.next.videoBitsPerSecond), long(result.bytes));
            outcomes.push_back({step.next, result.bytes, pictureBytes(files.back(), context)});
        }
        if (step.kind == SizeStep::Kind::impossible)
            throw OperationError(mediaText("Can't make this video that small"));
        removeAttempts(step.chosen);
        return files[step.chosen];
    } catch (...) {
        removeAttempts(std::nullopt);
        throw;
    }
}

ProducedFile compressVideo(const QString& path, const OperationContext& context)
{
    startMedia();
    // What the user confirmed for this job; the stored settings when nobody was asked.
    const Settings settings = settingsForJob<Settings>(context);
    const CompressedContainer output = compressedContainer(path);
    const QString name = outputName(path, mediaText("Compressed"), output.extension);
    MovieEncoding encoding{
        .container = output.container,
        .codec = movieCodec(settings.codec),
        .crf = compressionCrf(settings.quality, settings.codec),
        .maxHeight = std::max(settings.maxHeight, 0),
        // Compressing always re-encodes the picture, even one already in the chosen codec.
        .allowStreamCopy = false,
    };
    if (settings.mode == Settings::Mode::quality) {
        return context.produce(path, name, [&](const QString& destination) {
            const MovieResult result = writeMovie(path, destination, encoding, context,
                                                  [&](double fraction) { context.progress(fraction); });
            qCInfo(lcMedia, "video at crf %d: %dx%d, %lld bytes", encoding.crf, result.width, result.height,
                   static_cast<long long>(result.bytes));
        });
    }
    const QString chosen = compressToTarget(path, settings, encoding, output.extension, context);
    return context.produce(path, name, [&](const QString& destination) {
        if (!QFile::rename(chosen, destination))
            throw cantSaveMedia();
    });
}

}  // namespace

void registerVideoCompressOperation(OperationCatalog& catalog)
{
    catalog.add(Op::make({
        .entry = {.id = "video.compress", .title = mediaText("Compress"),
                  .symbol = QStringLiteral("arrow.down.right.and.arrow.up.left"), .ring = RingKind::tools,
                  .inputs = {ContentType::movie()},
                  .description = mediaText("Asks for quality or a target size, resolution, H.264 or HEVC. "
                                           "Keeps the date and place of shooting.")},
        .perFile = compressVideo,
        .prompt = settingsPrompt<Settings>(videoCompressionSettingsView),
        // The H.264 encoder is the one every choice can fall back on.
        .available = [] { return findEncoder("libx264") != nullptr; },
    }));
}

}  // namespace wendrel::media
