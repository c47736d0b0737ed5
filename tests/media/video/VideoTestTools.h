#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

// Movies made by the ffmpeg program from its generated sources, and results judged by ffprobe
// and ffmpeg: readers independent of the code under test.
namespace wendrel::test {

// Runs `ffmpeg -v error -y -nostdin ARGUMENTS PATH`; fails the calling test with ffmpeg's
// message when it fails.
bool makeClip(const QString& path, const QStringList& arguments);

// ffprobe's -show_format -show_streams as JSON; empty (and a failed test) when it can't read it.
QJsonObject probe(const QString& path);

// The first stream of `type` ("video", "audio") in a probe, or an empty object.
QJsonObject streamOf(const QJsonObject& probed, const QString& type);
int streamCount(const QJsonObject& probed, const QString& type);

// The display matrix's rotation in degrees as ffprobe reports it; 0 without one.
int rotationOf(const QJsonObject& stream);

// A digest of each packet of the first stream of `selector` ("v", "a"), in order, as ffmpeg
// reads them without decoding: equal lists mean the stream went across bit for bit.
QStringList packetDigests(const QString& path, const QString& selector);

// The presentation times of the first video stream's pictures, in milliseconds.
QList<qint64> pictureTimes(const QString& path);

}  // namespace wendrel::test
