#include "MediaTestTools.h"

#include "support/ExternalTool.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace wendrel::test {

namespace {

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
    if (value.isDouble())
        return value.toDouble();
    bool ok = false;
    const double parsed = value.toString().toDouble(&ok);
    return ok ? parsed : fallback;
}

// The display matrix gives the counter-clockwise angle, the older "rotate" tag the clockwise one.
int clockwiseRotation(const QJsonObject& stream)
{
    double clockwise = number(stream.value(u"tags").toObject().value(u"rotate"), 0);
    for (const QJsonValue& data : stream.value(u"side_data_list").toArray()) {
        const QJsonObject side = data.toObject();
        if (side.value(u"side_data_type").toString() == u"Display Matrix")
            clockwise = -number(side.value(u"rotation"), 0);
    }
    const int degrees = int(std::lround(clockwise)) % 360;
    return degrees < 0 ? degrees + 360 : degrees;
}

ProbedStream streamOf(const QJsonObject& stream)
{
    ProbedStream probed;
    probed.type = stream.value(u"codec_type").toString();
    probed.codec = stream.value(u"codec_name").toString();
    probed.profile = stream.value(u"profile").toString();
    probed.channels = stream.value(u"channels").toInt();
    probed.sampleRate = int(number(stream.value(u"sample_rate"), 0));
    probed.sampleFormat = stream.value(u"sample_fmt").toString();
    probed.bitsPerRawSample = int(number(stream.value(u"bits_per_raw_sample"), 0));
    probed.bitsPerSample = int(number(stream.value(u"bits_per_sample"), 0));
    probed.width = stream.value(u"width").toInt();
    probed.height = stream.value(u"height").toInt();
    probed.pixelFormat = stream.value(u"pix_fmt").toString();
    probed.rotation = clockwiseRotation(stream);
    probed.frames = qint64(number(stream.value(u"nb_read_frames"), number(stream.value(u"nb_frames"), -1)));
    probed.duration = number(stream.value(u"duration"), -1);
    probed.tags = lowerCasedTags(stream);
    probed.attachedPicture = stream.value(u"disposition").toObject().value(u"attached_pic").toInt() == 1;
    return probed;
}

}  // namespace

bool makeMedia(const QString& path, const QStringList& ffmpegArguments)
{
    const QStringList arguments =
        QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"), QStringLiteral("-nostdin")} +
        ffmpegArguments + QStringList{path};
    const ToolOutcome outcome = runExternalTool(QStringLiteral("ffmpeg"), arguments);
    if (!outcome.succeeded())
        ADD_FAILURE() << "making a test input failed: "
                      << outcome.describe(QStringLiteral("ffmpeg"), arguments).toStdString();
    return outcome.succeeded();
}

bool makeTone(const QString& path, double seconds, double peak, int sampleRate, int channels,
              const QStringList& codecArguments)
{
    // A whole number of samples per quarter period puts a sample on every crest, where the
    // sine is exactly 1.
    const int quarterPeriod = std::max(1, int(std::lround(sampleRate / (4.0 * 440))));
    const QString wave = QStringLiteral("%1*sin(PI*n/%2)").arg(peak, 0, 'g', 17).arg(2 * quarterPeriod);
    QStringList perChannel;
    for (int channel = 0; channel < channels; ++channel)
        perChannel.append(wave);
    const QString source =
        QStringLiteral("aevalsrc=%1:s=%2:d=%3").arg(perChannel.join(u'|')).arg(sampleRate).arg(seconds, 0, 'g', 17);
    return makeMedia(path, QStringList{QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), source} +
                               codecArguments);
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
    QStringList arguments{QStringLiteral("-v"),           QStringLiteral("error"),       QStringLiteral("-print_format"),
                          QStringLiteral("json"),         QStringLiteral("-show_format"), QStringLiteral("-show_streams")};
    if (countFrames)
        arguments.append(QStringLiteral("-count_frames"));
    arguments.append(path);
    const ToolOutcome outcome = runExternalTool(QStringLiteral("ffprobe"), arguments);
    ProbedMedia media;
    if (!outcome.succeeded()) {
        ADD_FAILURE() << outcome.describe(QStringLiteral("ffprobe"), arguments).toStdString();
        return media;
    }
    const QJsonObject report = QJsonDocument::fromJson(outcome.out).object();
    const QJsonObject format = report.value(u"format").toObject();
    media.ok = !format.isEmpty();
    media.formatName = format.value(u"format_name").toString();
    media.duration = number(format.value(u"duration"), -1);
    media.bitRate = qint64(number(format.value(u"bit_rate"), 0));
    media.tags = lowerCasedTags(format);
    for (const QJsonValue& stream : report.value(u"streams").toArray())
        media.streams.append(streamOf(stream.toObject()));
    return media;
}

double samplePeak(const QString& path)
{
    const QStringList arguments{QStringLiteral("-v"),  QStringLiteral("error"), QStringLiteral("-nostdin"),
                                QStringLiteral("-i"),  path,                    QStringLiteral("-map"),
                                QStringLiteral("0:a:0"), QStringLiteral("-f"),  QStringLiteral("f32le"),
                                QStringLiteral("-")};
    const ToolOutcome outcome = runExternalTool(QStringLiteral("ffmpeg"), arguments);
    if (!outcome.succeeded()) {
        ADD_FAILURE() << outcome.describe(QStringLiteral("ffmpeg"), arguments).toStdString();
        return -1;
    }
    float peak = 0;
    for (qsizetype offset = 0; offset + 4 <= outcome.out.size(); offset += 4) {
        float sample = 0;
        std::memcpy(&sample, outcome.out.constData() + offset, sizeof sample);
        peak = std::max(peak, std::fabs(sample));
    }
    return peak;
}

}  // namespace wendrel::test
