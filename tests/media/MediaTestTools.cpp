#include "MediaTestTools.h"

#include "support/ExternalTool.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

using namespace Qt::StringLiterals;

namespace wendrel::test {

namespace {

// A program's standard output, or nothing (and a failed test) when it fails.
std::optional<QByteArray> outputOf(const QString& program, const QStringList& arguments)
{
    const ToolOutcome outcome = runExternalTool(program, arguments);
    if (!outcome.succeeded()) {
        ADD_FAILURE() << outcome.describe(program, arguments).toStdString();
        return std::nullopt;
    }
    return outcome.out;
}

QMap<QString, QString> lowerCasedTags(const QJsonObject& owner)
{
    QMap<QString, QString> tags;
    const QJsonObject object = owner.value(u"tags").toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
        tags.insert(it.key().toLower(), it.value().toString());
    return tags;
}

// ffprobe writes most numbers of the streams as strings.
double number(const QJsonValue& value, double fallback)
{
    bool ok = value.isDouble();
    const double parsed = ok ? value.toDouble() : value.toString().toDouble(&ok);
    return ok ? parsed : fallback;
}

// The display matrix gives the counter-clockwise angle, the older "rotate" tag the clockwise one.
int clockwiseRotation(const QJsonObject& stream)
{
    double clockwise = number(stream.value(u"tags").toObject().value(u"rotate"), 0);
    for (const QJsonValue& data : stream.value(u"side_data_list").toArray()) {
        if (data[u"side_data_type"].toString() == u"Display Matrix")
            clockwise = -number(data[u"rotation"], 0);
    }
    const int degrees = int(std::lround(clockwise)) % 360;
    return degrees < 0 ? degrees + 360 : degrees;
}

ProbedStream streamOf(const QJsonObject& stream)
{
    const int rawBits = int(number(stream.value(u"bits_per_raw_sample"), 0));
    return {.type = stream.value(u"codec_type").toString(),
            .codec = stream.value(u"codec_name").toString(),
            .codecTag = stream.value(u"codec_tag_string").toString(),
            .channels = stream.value(u"channels").toInt(),
            .sampleRate = int(number(stream.value(u"sample_rate"), 0)),
            .sampleFormat = stream.value(u"sample_fmt").toString(),
            .bitDepth = rawBits > 0 ? rawBits : int(number(stream.value(u"bits_per_sample"), 0)),
            .width = stream.value(u"width").toInt(),
            .height = stream.value(u"height").toInt(),
            .pixelFormat = stream.value(u"pix_fmt").toString(),
            .rotation = clockwiseRotation(stream),
            .frames = qint64(number(stream.value(u"nb_read_frames"), number(stream.value(u"nb_frames"), -1))),
            .duration = number(stream.value(u"duration"), -1),
            .attachedPicture = stream.value(u"disposition").toObject().value(u"attached_pic").toInt() == 1};
}

}  // namespace

QStringList lavfi(const QString& source) { return {u"-f"_s, u"lavfi"_s, u"-i"_s, source}; }

bool makeMedia(const QString& path, const QStringList& ffmpegArguments)
{
    return outputOf(u"ffmpeg"_s, QStringList{u"-v"_s, u"error"_s, u"-y"_s, u"-nostdin"_s} + ffmpegArguments + QStringList{path})
        .has_value();
}

bool makeTone(const QString& path, double seconds, double peak, int sampleRate, int channels,
              const QStringList& codecArguments)
{
    // A whole number of samples per quarter period puts a sample on every crest, where the
    // sine is exactly 1.
    const int quarterPeriod = std::max(1, int(std::lround(sampleRate / (4.0 * 440))));
    const QString wave = u"%1*sin(PI*n/%2)"_s.arg(peak, 0, 'g', 17).arg(2 * quarterPeriod);
    const QString source = u"aevalsrc=%1:s=%2:d=%3"_s.arg(QList<QString>(channels, wave).join(u'|'))
                               .arg(sampleRate)
                               .arg(seconds, 0, 'g', 17);
    return makeMedia(path, lavfi(source) + codecArguments);
}

int ProbedMedia::count(const QString& type) const
{
    return int(std::count_if(streams.begin(), streams.end(), [&](const ProbedStream& s) { return s.type == type; }));
}

ProbedStream ProbedMedia::first(const QString& type) const
{
    const auto found = std::find_if(streams.begin(), streams.end(), [&](const ProbedStream& s) { return s.type == type; });
    return found != streams.end() ? *found : ProbedStream{};
}

ProbedMedia probeMedia(const QString& path, bool countFrames)
{
    QStringList arguments{u"-v"_s, u"error"_s, u"-print_format"_s, u"json"_s, u"-show_format"_s, u"-show_streams"_s};
    if (countFrames)
        arguments.append(u"-count_frames"_s);
    const QJsonObject report = QJsonDocument::fromJson(outputOf(u"ffprobe"_s, arguments << path).value_or(QByteArray())).object();
    const QJsonObject format = report.value(u"format").toObject();
    ProbedMedia media{.duration = number(format.value(u"duration"), -1),
                      .bitRate = qint64(number(format.value(u"bit_rate"), 0)),
                      .tags = lowerCasedTags(format)};
    for (const QJsonValue& stream : report.value(u"streams").toArray())
        media.streams.append(streamOf(stream.toObject()));
    return media;
}

double samplePeak(const QString& path)
{
    const QByteArray samples =
        outputOf(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-nostdin"_s, u"-i"_s, path, u"-map"_s, u"0:a:0"_s, u"-f"_s, u"f32le"_s, u"-"_s})
            .value_or(QByteArray());
    float peak = 0;
    for (qsizetype offset = 0; offset + 4 <= samples.size(); offset += 4) {
        float sample = 0;
        std::memcpy(&sample, samples.constData() + offset, sizeof sample);
        peak = std::max(peak, std::fabs(sample));
    }
    return peak;
}

QStringList packetDigests(const QString& path, const QString& selector)
{
    const QByteArray output = outputOf(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path, u"-map"_s, u"0:%1:0"_s.arg(selector),
                                                     u"-c"_s, u"copy"_s, u"-f"_s, u"framemd5"_s, u"-"_s})
                                  .value_or(QByteArray());
    QStringList digests;
    for (const QString& line : QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith(u'#'))
            digests.append(line.section(u',', -1).trimmed());
    }
    return digests;
}

QList<qint64> pictureTimes(const QString& path)
{
    const QByteArray output = outputOf(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-select_streams"_s, u"v:0"_s, u"-show_entries"_s,
                                                      u"packet=pts_time"_s, u"-of"_s, u"csv=p=0"_s, path})
                                  .value_or(QByteArray());
    QList<qint64> times;
    for (const QString& line : QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts))
        times.append(std::llround(line.toDouble() * 1000));
    std::sort(times.begin(), times.end());
    return times;
}

std::array<int, 3> firstPixel(const QString& path, int width, int x, int y)
{
    const QByteArray picture = outputOf(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path, u"-frames:v"_s, u"1"_s, u"-f"_s,
                                                      u"rawvideo"_s, u"-pix_fmt"_s, u"rgb24"_s, u"-"_s})
                                   .value_or(QByteArray());
    const qsizetype at = (qsizetype(y) * width + x) * 3;
    if (picture.size() < at + 3) {
        ADD_FAILURE() << path.toStdString() << " has no pixel at " << x << "," << y;
        return {-1, -1, -1};
    }
    return {quint8(picture[at]), quint8(picture[at + 1]), quint8(picture[at + 2])};
}

}  // namespace wendrel::test
