#include "MovieWriter.h"

#include "AudioReencoding.h"
#include "ContainerRules.h"
#include "MovieMetadata.h"
#include "PacketPump.h"
#include "StreamCopy.h"
#include "VideoEncodePipe.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaInput.h"
#include "media/ffmpeg/MediaLog.h"
#include "media/ffmpeg/StreamDecoder.h"
#include "operations/OperationContext.h"

#include <QFileInfo>

namespace wendrel::media {

namespace {

const int32_t* displayMatrixOf(const AVStream& stream)
{
    return reinterpret_cast<const int32_t*>(av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
}

// The sound goes across unchanged when the container takes it, unless the picture is being
// brought to a size target and the sound alone would take more than its share.
bool copiesAudio(const AVStream& audio, const MovieEncoding& encoding)
{
    if (!containerTakes(encoding.container, audio.codecpar->codec_id))
        return false;
    return encoding.videoBitsPerSecond <= 0 || audio.codecpar->bit_rate <= 0 ||
           audio.codecpar->bit_rate <= encoding.audioBitsPerSecond;
}

// Decoded pictures into the picture encoder.
class VideoReencoding {
public:
    VideoReencoding(MediaOutput& output, const AVStream& source, const VideoEncoding& encoding, int64_t fileStart)
        : m_decoder(source, unsupportedVideoFormat()), m_pipe(output, source, encoding, fileStart)
    {
    }

    qint64 framesDecoded() const { return m_decoder.framesDecoded(); }

    void decode(const AVPacket* packet)
    {
        m_decoder.decode(packet, [&](AVFrame& frame) { m_pipe.push(&frame); });
    }
    void finish()
    {
        decode(nullptr);
        m_pipe.push(nullptr);
    }

private:
    StreamDecoder m_decoder;
    VideoEncodePipe m_pipe;
};

}  // namespace

MovieResult writeMovie(const QString& source, const QString& destination, const MovieEncoding& encoding,
                       const OperationContext& context, const std::function<void(double)>& progress)
{
    MediaInput input(source, context);
    const AVStream* video = input.firstStream(AVMEDIA_TYPE_VIDEO);
    if (!video)
        throw noVideoInFile();
    const AVStream* audio = encoding.keepAudio ? input.firstStream(AVMEDIA_TYPE_AUDIO) : nullptr;
    const AVCodecParameters& picture = *video->codecpar;
    const PictureSize stored{picture.width, picture.height};
    const int turns = quarterTurns(displayMatrixOf(*video));
    const bool copyVideo = encoding.allowStreamCopy && containerTakes(encoding.container, picture.codec_id) &&
                           !exceedsHeight(stored, picture.sample_aspect_ratio, turns, encoding.maxHeight);
    const bool copyAudio = audio && copiesAudio(*audio, encoding);
    if (!copyVideo && (stored.width <= 0 || stored.height <= 0))
        throw unsupportedVideoFormat();
    const int64_t fileStart = input.format().start_time;
    qCInfo(lcMedia, "%s: picture %s (%s), sound %s", qPrintable(QFileInfo(source).fileName()),
           copyVideo ? "copied" : "re-encoded", avcodec_get_name(picture.codec_id),
           !audio ? "none" : copyAudio ? "copied" : "re-encoded");

    MediaOutput output(destination, muxerName(encoding.container));
    MovieResult result;
    std::map<int, PacketHandler> handlers;

    std::optional<StreamCopy> videoCopy;
    std::optional<VideoReencoding> videoEncoding;
    if (copyVideo) {
        videoCopy.emplace(output, *video, fileStart);
        handlers[video->index] = [&](AVPacket& packet) { videoCopy->write(packet); };
        result.width = stored.width;
        result.height = stored.height;
    } else {
        const PictureSize size = encodedSize(stored, picture.sample_aspect_ratio, turns, encoding.maxHeight);
        const VideoEncoding videoSettings{.codec = encoding.codec, .crf = encoding.crf,
                                          .bitsPerSecond = encoding.videoBitsPerSecond, .size = size};
        videoEncoding.emplace(output, *video, videoSettings, fileStart);
        handlers[video->index] = [&](AVPacket& packet) { videoEncoding->decode(&packet); };
        result.width = size.width;
        result.height = size.height;
    }

    std::optional<StreamCopy> audioCopy;
    std::optional<AudioReencoding> audioEncoding;
    if (audio && copyAudio) {
        audioCopy.emplace(output, *audio, fileStart);
        handlers[audio->index] = [&](AVPacket& packet) { audioCopy->write(packet); };
    } else if (audio) {
        audioEncoding.emplace(output, *audio, encoding.audioBitsPerSecond, fileStart);
        handlers[audio->index] = [&](AVPacket& packet) { audioEncoding->decode(&packet); };
    }

    writeMovieHeader(output, input.format(), encoding.container == MovieContainer::mov);
    pumpPackets(input, handlers, *video, context, progress);
    if (videoEncoding)
        videoEncoding->finish();
    if (audioEncoding)
        audioEncoding->finish();
    // A file that broke before its first picture has nothing worth keeping.
    const bool anyPicture = videoCopy ? videoCopy->packetsWritten() > 0 : videoEncoding->framesDecoded() > 0;
    if (!anyPicture)
        throw cantReadMedia();
    output.finish();
    progress(1.0);

    result.bytes = QFileInfo(destination).size();
    result.videoCopied = copyVideo;
    result.audioCopied = audio && copyAudio;
    return result;
}

}  // namespace wendrel::media
