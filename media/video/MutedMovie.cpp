#include "MutedMovie.h"

#include "ContainerRules.h"
#include "MovieMetadata.h"
#include "PacketPump.h"
#include "StreamCopy.h"
#include "media/ffmpeg/MediaErrors.h"
#include "media/ffmpeg/MediaInput.h"
#include "media/ffmpeg/MediaLog.h"

#include <QFileInfo>

#include <cstring>
#include <list>

namespace wendrel::media {

namespace {

std::vector<const AVStream*> pictureStreams(const MediaInput& input)
{
    std::vector<const AVStream*> streams;
    const AVFormatContext& format = input.format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream* stream = format.streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC))
            streams.push_back(stream);
    }
    return streams;
}

bool takesAll(const AVOutputFormat& format, const std::vector<const AVStream*>& streams)
{
    for (const AVStream* stream : streams) {
        const AVCodecID codec = stream->codecpar->codec_id;
        // Our own MP4 and QuickTime lists hold what players read there, narrower than the muxer.
        if (std::strcmp(format.name, "mp4") == 0 || std::strcmp(format.name, "mov") == 0) {
            if (!containerTakes(std::strcmp(format.name, "mp4") == 0 ? MovieContainer::mp4 : MovieContainer::mov, codec))
                return false;
        } else if (avformat_query_codec(&format, codec, FF_COMPLIANCE_NORMAL) != 1) {
            return false;
        }
    }
    return true;
}

}  // namespace

MutedContainer mutedContainerFor(const QString& source, const MediaInput& input)
{
    const std::vector<const AVStream*> streams = pictureStreams(input);
    if (streams.empty())
        throw noVideoInFile();
    const QString extension = QFileInfo(source).suffix();
    const QByteArray probeName = QStringLiteral("name.%1").arg(extension.toLower()).toUtf8();
    const AVOutputFormat* own = extension.isEmpty() ? nullptr : av_guess_format(nullptr, probeName.constData(), nullptr);
    if (own && takesAll(*own, streams))
        return {own, extension};
    for (const char* fallback : {"mp4", "mov", "mkv"}) {
        const QByteArray name = QByteArray("name.") + fallback;
        const AVOutputFormat* format = av_guess_format(nullptr, name.constData(), nullptr);
        if (format && takesAll(*format, streams))
            return {format, QString::fromLatin1(fallback)};
    }
    throw unsupportedVideoFormat();
}

void writeMutedMovie(MediaInput& input, const QString& destination, const AVOutputFormat& format,
                     const OperationContext& context, const std::function<void(double)>& progress)
{
    const std::vector<const AVStream*> streams = pictureStreams(input);
    if (streams.empty())
        throw noVideoInFile();
    MediaOutput output(destination, format.name);
    std::list<StreamCopy> copies;  // stable addresses for the handlers
    std::map<int, PacketHandler> handlers;
    for (const AVStream* stream : streams) {
        StreamCopy& copy = copies.emplace_back(output, *stream, input.format().start_time);
        handlers[stream->index] = [&copy](AVPacket& packet) { copy.write(packet); };
    }
    writeMovieHeader(output, input.format(), std::strcmp(format.name, "mov") == 0);
    pumpPackets(input, handlers, *streams.front(), context, progress);
    if (copies.front().packetsWritten() == 0)
        throw cantReadMedia();
    output.finish();
    progress(1.0);
}

}  // namespace wendrel::media
