#include "FileLists.h"

#include <QUrl>

namespace wendrel {

QStringList localFilesFromUriList(const QByteArray& text)
{
    QStringList files;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith('#'))
            continue;
        const QUrl url = QUrl::fromEncoded(trimmed);
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

QStringList localFilesFromGnomeCopiedFiles(const QByteArray& text)
{
    const qsizetype firstBreak = text.indexOf('\n');
    return firstBreak < 0 ? QStringList{} : localFilesFromUriList(text.mid(firstBreak + 1));
}

}  // namespace wendrel
