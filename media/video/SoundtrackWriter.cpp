#include "SoundtrackWriter.h"

#include "AudioReencoding.h"
#include "MovieMetadata.h"
#include "PacketPump.h"
#include "StreamCopy.h"
#include "media/ffmpeg/MediaErrors.h"

namespace wendrel::media {

void writeSoundtrack(const QString& source, const QString& destination, int bitsPerSecond,
                     const OperationContext& context, const std::function<void(double)>& progress)
{
    MediaInput input(source, context);
    const AVStream* audio = input.firstStream(AVMEDIA_TYPE_AUDIO);
    if (!audio)
        throw noAudioInFile();
    MediaOutput output(destination, "ipod");  // the M4A flavour of MP4
    std::map<int, PacketHandler> handlers;
    const int64_t fileStart = input.format().start_time;

    std::optional<StreamCopy> copy;
    std::optional<AudioReencoding> reencoding;
    if (audio->codecpar->codec_id == AV_CODEC_ID_AAC) {
        copy.emplace(output, *audio, fileStart);
        handlers[audio->index] = [&](AVPacket& packet) { copy->write(packet); };
    } else {
        reencoding.emplace(output, *audio, bitsPerSecond, fileStart);
        handlers[audio->index] = [&](AVPacket& packet) { reencoding->decode(&packet); };
    }
    writeMovieHeader(output, input.format(), false);
    pumpPackets(input, handlers, *audio, context, progress);
    if (reencoding)
        reencoding->finish();
    if (copy ? copy->packetsWritten() == 0 : reencoding->framesDecoded() == 0)
        throw cantReadMedia();
    output.finish();
    progress(1.0);
}

}  // namespace wendrel::media
