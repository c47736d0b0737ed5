#include "AgentRequest.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

namespace wendrel {

QByteArray AgentRequest::toLine() const
{
    QJsonObject object{{QStringLiteral("command"),
                        command == Command::ring ? QStringLiteral("ring") : QStringLiteral("activate")}};
    if (command == Command::ring) {
        object.insert(QStringLiteral("ring"), rawValue(ring));
        object.insert(QStringLiteral("files"), QJsonArray::fromStringList(files));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<AgentRequest> AgentRequest::fromLine(const QByteArray& line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line.trimmed());
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const QString command = object.value(QStringLiteral("command")).toString();
    AgentRequest request;
    if (command == u"activate")
        return request;
    if (command != u"ring")
        return std::nullopt;
    const std::optional<RingKind> ring = ringKindFromRawValue(object.value(QStringLiteral("ring")).toString());
    const QJsonValue files = object.value(QStringLiteral("files"));
    if (!ring || !files.isArray())
        return std::nullopt;
    request.command = Command::ring;
    request.ring = *ring;
    for (const QJsonValue& file : files.toArray()) {
        if (!file.isString() || file.toString().isEmpty())
            return std::nullopt;
        request.files.append(file.toString());
    }
    if (request.files.isEmpty())
        return std::nullopt;
    return request;
}

QString agentSocketPath()
{
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QDir(folder).exists())
        return QDir::tempPath() + QStringLiteral("/wendrel-%1.socket").arg(::getuid());
    return folder + QStringLiteral("/wendrel.socket");
}

}  // namespace wendrel
