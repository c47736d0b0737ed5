#include "AvHandles.h"

#include "MediaLog.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

#include <cstdio>
#include <mutex>
#include <new>

namespace wendrel::media {

FramePtr makeFrame()
{
    FramePtr frame(av_frame_alloc());
    if (!frame)
        throw std::bad_alloc();
    return frame;
}

PacketPtr makePacket()
{
    PacketPtr packet(av_packet_alloc());
    if (!packet)
        throw std::bad_alloc();
    return packet;
}

QString avErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

namespace {

void logFfmpegMessage(void* object, int level, const char* format, va_list arguments)
{
    if (level > AV_LOG_WARNING)
        return;
    char line[1024];
    int prefixed = 1;
    av_log_format_line2(object, level, format, arguments, line, sizeof line, &prefixed);
    const QByteArray text = QByteArray(line).trimmed();
    if (text.isEmpty())
        return;
    // Damaged files make decoders talk a lot; what matters reaches the user as the operation's
    // message, so these are for whoever reads the log with the media category switched on.
    if (level <= AV_LOG_ERROR)
        qCInfo(lcMedia, "%s", text.constData());
    else
        qCDebug(lcMedia, "%s", text.constData());
}

}  // namespace

void startMedia()
{
    static std::once_flag started;
    std::call_once(started, [] { av_log_set_callback(logFfmpegMessage); });
}

}  // namespace wendrel::media
