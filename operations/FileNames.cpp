#include "FileNames.h"

namespace wendrel {

QString lastPathComponent(const QString& path)
{
    QStringView view(path);
    if (view.size() > 1 && view.endsWith(u'/'))
        view.chop(1);
    const qsizetype slash = view.lastIndexOf(u'/');
    return (slash < 0 ? view : view.mid(slash + 1)).toString();
}

NameParts splitExtension(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0 || dot == name.size() - 1)
        return {name, {}};
    return {name.left(dot), name.mid(dot + 1)};
}

QString outputName(const QString& source, const std::optional<QString>& suffix,
                   const std::optional<QString>& extension)
{
    const NameParts parts = splitExtension(lastPathComponent(source));
    QString name = parts.base;
    if (suffix && !suffix->isEmpty())
        name += u' ' + *suffix;
    const QString& chosenExtension = extension ? *extension : parts.extension;
    if (!chosenExtension.isEmpty())
        name += u'.' + chosenExtension;
    return name;
}

QString uniqueName(const QString& wanted, const std::function<bool(const QString&)>& isTaken)
{
    if (!isTaken(wanted))
        return wanted;
    const NameParts parts = splitExtension(wanted);
    for (qint64 counter = 2;; ++counter) {
        QString candidate = parts.base + u' ' + QString::number(counter);
        if (!parts.extension.isEmpty())
            candidate += u'.' + parts.extension;
        if (!isTaken(candidate))
            return candidate;
    }
}

}  // namespace wendrel
