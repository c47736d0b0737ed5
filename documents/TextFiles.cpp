#include "TextFiles.h"

#include "operations/AtomicFile.h"
#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringDecoder>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("TextFiles", text); }

}  // namespace

QString readUtf8TextFile(const QString& path, qint64 maximumBytes)
{
    const QString name = lastPathComponent(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw OperationError(translate("Couldn't read “%1”: %2").arg(name, file.errorString()));
    if (file.size() > maximumBytes)
        throw OperationError(translate("“%1” is too large to read as text").arg(name));

    // Read at most one byte past the limit: files whose size the system can't tell (pipes,
    // special files) are held to it too.
    const QByteArray bytes = file.read(maximumBytes + 1);
    if (file.error() != QFileDevice::NoError)
        throw OperationError(translate("Couldn't read “%1”: %2").arg(name, file.errorString()));
    if (bytes.size() > maximumBytes)
        throw OperationError(translate("“%1” is too large to read as text").arg(name));

    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        throw OperationError(translate("“%1” isn't UTF-8 text").arg(name));
    return text;
}

void writeUtf8TextFile(const QString& path, const QString& text)
{
    writeFileAtomically(path, text.toUtf8(), translate("Couldn't write “%1”").arg(lastPathComponent(path)));
}

}  // namespace wendrel
