#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// Inputs for the audio and video tests made by the ffmpeg program from its generated sources,
// and results judged by ffprobe and ffmpeg: independent of the code under test.
namespace wendrel::test {

// Runs `ffmpeg -v error -y -nostdin ARGUMENTS PATH`, e.g. {"-f", "lavfi", "-i",
// "sine=frequency=440:duration=2", "-c:a", "pcm_s16le"}; the container follows PATH's
// extension unless the arguments say "-f". Fails the calling test with ffmpeg's message
// when it fails.
bool makeMedia(const QString& path, const QStringList& ffmpegArguments);

// A tone of about 440 Hz whose sample peak is exactly `peak` (in float) on every channel: the
// sine is sampled at its crests. `codecArguments` pick the encoding ({"-c:a", "pcm_s24le"});
// a peak such as 0.5 or 0.25 stays exact in 16- and 24-bit integers too.
bool makeTone(const QString& path, double seconds, double peak, int sampleRate = 48000,
              int channels = 2, const QStringList& codecArguments = {});

struct ProbedStream {
    QString type;  // "audio", "video", "subtitle", "data", "attachment"
    QString codec;
    QString profile;
    int channels = 0;
    int sampleRate = 0;
    QString sampleFormat;
    int bitsPerRawSample = 0;
    int bitsPerSample = 0;
    int width = 0;
    int height = 0;
    QString pixelFormat;
    int rotation = 0;      // clockwise degrees a player turns the picture by: 0, 90, 180 or 270
    qint64 frames = -1;    // from the container, or counted when asked; -1 when unknown
    double duration = -1;  // seconds; -1 when unknown
    QMap<QString, QString> tags;  // keys lower-cased
    bool attachedPicture = false;  // a cover picture, not a video

    // Bits per sample as stored: FLAC and lossy codecs give the raw depth, PCM the sample size.
    int bitDepth() const { return bitsPerRawSample > 0 ? bitsPerRawSample : bitsPerSample; }
};

struct ProbedMedia {
    bool ok = false;
    QString formatName;  // "mov,mp4,m4a,3gp,3g2,mj2", "wav", "matroska,webm" …
    double duration = -1;
    qint64 bitRate = 0;
    QMap<QString, QString> tags;  // keys lower-cased
    QList<ProbedStream> streams;

    int count(const QString& type) const;
    // The first stream of a type; a default one (type empty) when there is none.
    ProbedStream first(const QString& type) const;
};

// What `ffprobe -show_format -show_streams` says; `countFrames` decodes every stream to count
// its frames. Fails the calling test when ffprobe fails.
ProbedMedia probeMedia(const QString& path, bool countFrames = false);

// The largest absolute sample value of the first audio stream, as ffmpeg decodes it to float;
// -1 (and a failed test) when it can't be read.
double samplePeak(const QString& path);

}  // namespace wendrel::test
