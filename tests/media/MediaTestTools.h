#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <array>

// Inputs for the audio and video tests made by the ffmpeg program from its generated sources,
// and results judged by ffprobe and ffmpeg: independent of the code under test. Each fails the
// calling test with the program's message when the program fails.
namespace wendrel::test {

// `-f lavfi -i SOURCE`: one of the ffmpeg program's generated sources as an input.
QStringList lavfi(const QString& source);

// Runs `ffmpeg -v error -y -nostdin ARGUMENTS PATH`; the container follows PATH's extension
// unless the arguments say "-f".
bool makeMedia(const QString& path, const QStringList& ffmpegArguments);

// A tone of about 440 Hz whose sample peak is exactly `peak` (in float) on every channel: the
// sine is sampled at its crests. `codecArguments` pick the encoding ({"-c:a", "pcm_s24le"});
// a peak such as 0.5 or 0.25 stays exact in 16- and 24-bit integers too.
bool makeTone(const QString& path, double seconds, double peak, int sampleRate = 48000,
              int channels = 2, const QStringList& codecArguments = {});

struct ProbedStream {
    QString type;  // "audio", "video", "subtitle", "data", "attachment"
    QString codec;
    QString codecTag;  // the sample entry's code, "hvc1"
    int channels = 0;
    int sampleRate = 0;
    QString sampleFormat;
    int bitDepth = 0;  // as stored: the raw depth where the codec has one, PCM's sample size
    int width = 0;
    int height = 0;
    QString pixelFormat;
    int rotation = 0;      // clockwise degrees a player turns the picture by: 0, 90, 180 or 270
    qint64 frames = -1;    // from the container, or counted when asked; -1 when unknown
    double duration = -1;  // seconds; -1 when unknown
    bool attachedPicture = false;  // a cover picture, not a video
};

struct ProbedMedia {
    double duration = -1;
    qint64 bitRate = 0;
    QMap<QString, QString> tags;  // keys lower-cased
    QList<ProbedStream> streams;

    int count(const QString& type) const;
    // The first stream of a type; a default one (type empty) when there is none.
    ProbedStream first(const QString& type) const;
};

// What `ffprobe -show_format -show_streams` says; `countFrames` decodes every stream to count
// its frames.
ProbedMedia probeMedia(const QString& path, bool countFrames = false);

// The largest absolute sample value of the first audio stream, as ffmpeg decodes it to float.
double samplePeak(const QString& path);

// A digest of each packet of the first stream of `selector` ("v", "a"), in order, as ffmpeg
// reads them without decoding: equal lists mean the stream went across bit for bit.
QStringList packetDigests(const QString& path, const QString& selector);

// The presentation times of the first video stream's pictures, in milliseconds, sorted.
QList<qint64> pictureTimes(const QString& path);

// One pixel (RGB) of the first picture as ffmpeg decodes it, turned upright as players show
// it, in a picture `width` wide.
std::array<int, 3> firstPixel(const QString& path, int width, int x, int y);

}  // namespace wendrel::test
