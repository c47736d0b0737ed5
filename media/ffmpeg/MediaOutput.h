#pragma once

#include "AvHandles.h"

#include <QString>

#include <utility>
#include <vector>

namespace wendrel::media {

// A media file being written, packet by packet, in scratch space. Until `finish` succeeds the
// file is incomplete; the job removes its scratch folder, so a failed or cancelled write never
// reaches the user.
class MediaOutput {
public:
    // Opens `path` for writing in the container `formatName` ("mp4", "mov", "ipod" for M4A,
    // "wav", "aiff", "flac", "gif"). Throws "Couldn't save the result" when it can't.
    MediaOutput(const QString& path, const char* formatName);
    ~MediaOutput();

    MediaOutput(const MediaOutput&) = delete;
    MediaOutput& operator=(const MediaOutput&) = delete;

    AVFormatContext& format() const { return *m_format; }

    // Whether encoders for this container must keep their headers apart (MP4, MOV, M4A).
    bool wantsGlobalHeader() const;

    // A stream carrying what `encoder` makes.
    AVStream& addStream(const AVCodecContext& encoder);
    // A stream carrying `source`'s packets unchanged (stream copy).
    AVStream& addCopiedStream(const AVStream& source);

    // The muxer's own options, name and value ({"movflags", "+faststart"}).
    using MuxerOptions = std::vector<std::pair<const char*, const char*>>;

    // Writes the container header with the metadata set on `format()` and its streams so far.
    void writeHeader(const MuxerOptions& options = {});

    // Writes `packet`, whose timestamps are in `timeBase`, to `stream`. Takes the packet's
    // data (the packet is blank afterwards).
    void write(AVPacket& packet, AVRational timeBase, const AVStream& stream);

    // Writes the trailer and closes the file. Throws "Couldn't save the result" with the
    // system's reason (a full disk) when that fails.
    void finish();

private:
    AVFormatContext* m_format = nullptr;
    bool m_headerWritten = false;
    bool m_finished = false;
};

}  // namespace wendrel::media
