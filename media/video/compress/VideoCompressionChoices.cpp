#include "VideoCompressionChoices.h"

#include "operations/FileNames.h"

namespace wendrel::media {

int compressionCrf(QualityLevel level, VideoCompressionSettings::Codec codec)
{
    const bool hevc = codec == VideoCompressionSettings::Codec::hevc;
    switch (level) {
    case QualityLevel::high:
        return hevc ? 25 : 20;
    case QualityLevel::balanced:
        return hevc ? 28 : 23;
    case QualityLevel::small:
        return hevc ? 32 : 28;
    }
    return hevc ? 28 : 23;
}

VideoCodec movieCodec(VideoCompressionSettings::Codec codec)
{
    return codec == VideoCompressionSettings::Codec::hevc ? VideoCodec::hevc : VideoCodec::h264;
}

CompressedContainer compressedContainer(const QString& sourcePath)
{
    const QString extension = splitExtension(lastPathComponent(sourcePath)).extension;
    const QString lower = extension.toLower();
    if (lower == u"mov")
        return {MovieContainer::mov, extension};
    if (lower == u"mp4" || lower == u"m4v")
        return {MovieContainer::mp4, extension};
    return {MovieContainer::mp4, QStringLiteral("mp4")};
}

}  // namespace wendrel::media
