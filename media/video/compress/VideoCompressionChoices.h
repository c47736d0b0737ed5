#pragma once

#include "media/video/MovieWriter.h"
#include "operations/settings/VideoCompressionSettings.h"

#include <QString>

namespace wendrel::media {

// The constant-quality setting (CRF) of a quality level for the codec. The two encoders'
// scales differ: the HEVC encoder's CRF 28 looks about like the H.264 encoder's 23 at roughly
// half the size, so each level sits about five steps higher for HEVC. High (20 / 25) is hard
// to tell from the source, balanced (23 / 28) is each encoder's own default, and small
// (28 / 32) softens detail but stays clean in motion.
int compressionCrf(QualityLevel level, VideoCompressionSettings::Codec codec);

VideoCodec movieCodec(VideoCompressionSettings::Codec codec);

// Where a compressed video goes: MP4 and MOV sources stay in their container under their own
// extension (M4V too, an MP4 by another name); everything else becomes MP4.
struct CompressedContainer {
    MovieContainer container;
    QString extension;
};
CompressedContainer compressedContainer(const QString& sourcePath);

}  // namespace wendrel::media
