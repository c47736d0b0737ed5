#include "VideoTestTools.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include <gtest/gtest.h>

#include <cmath>

namespace wendrel::test {

namespace {

std::optional<QByteArray> run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        ADD_FAILURE() << program.toStdString() << " " << arguments.join(u' ').toStdString() << ": "
                      << process.readAllStandardError().toStdString();
        return std::nullopt;
    }
    return process.readAllStandardOutput();
}

}  // namespace

bool makeClip(const QString& path, const QStringList& arguments)
{
    return run(QStringLiteral("ffmpeg"),
               QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"), QStringLiteral("-nostdin")} +
                   arguments + QStringList{path})
        .has_value();
}

QJsonObject probe(const QString& path)
{
    const auto output = run(QStringLiteral("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"),
                                                        QStringLiteral("-show_format"), QStringLiteral("-show_streams"),
                                                        QStringLiteral("-of"), QStringLiteral("json"), path});
    return output ? QJsonDocument::fromJson(*output).object() : QJsonObject{};
}

QJsonObject streamOf(const QJsonObject& probed, const QString& type)
{
    for (const QJsonValue& stream : probed[QStringLiteral("streams")].toArray()) {
        if (stream[QStringLiteral("codec_type")].toString() == type)
            return stream.toObject();
    }
    return {};
}

int streamCount(const QJsonObject& probed, const QString& type)
{
    int count = 0;
    for (const QJsonValue& stream : probed[QStringLiteral("streams")].toArray())
        count += stream[QStringLiteral("codec_type")].toString() == type ? 1 : 0;
    return count;
}

int rotationOf(const QJsonObject& stream)
{
    for (const QJsonValue& data : stream[QStringLiteral("side_data_list")].toArray()) {
        if (data[QStringLiteral("side_data_type")].toString() == u"Display Matrix")
            return data[QStringLiteral("rotation")].toInt();
    }
    return 0;
}

QStringList packetDigests(const QString& path, const QString& selector)
{
    const auto output = run(QStringLiteral("ffmpeg"),
                            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-nostdin"), QStringLiteral("-i"),
                             path, QStringLiteral("-map"), QStringLiteral("0:%1:0").arg(selector), QStringLiteral("-c"),
                             QStringLiteral("copy"), QStringLiteral("-f"), QStringLiteral("framemd5"), QStringLiteral("-")});
    QStringList digests;
    for (const QString& line : QString::fromUtf8(output.value_or(QByteArray())).split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith(u'#'))
            digests.append(line.section(u',', -1).trimmed());
    }
    return digests;
}

QList<qint64> pictureTimes(const QString& path)
{
    const auto output = run(QStringLiteral("ffprobe"),
                            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                             QStringLiteral("v:0"), QStringLiteral("-show_entries"), QStringLiteral("packet=pts_time"),
                             QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
    QList<qint64> times;
    for (const QString& line : QString::fromUtf8(output.value_or(QByteArray())).split(u'\n', Qt::SkipEmptyParts))
        times.append(std::llround(line.toDouble() * 1000));
    std::sort(times.begin(), times.end());
    return times;
}

}  // namespace wendrel::test
