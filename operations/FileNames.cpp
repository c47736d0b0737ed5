#include "FileNames.h"

#include <QCoreApplication>

namespace wendrel {

namespace {

// Room that outputName leaves for the counter uniqueName may add: " 99999".
constexpr qsizetype counterRoom = 6;

const QString ellipsis = QStringLiteral("…");

qsizetype utf8Length(QStringView text) { return text.toUtf8().size(); }

// The longest start of `text` that fits `limit` bytes of UTF-8, never splitting a character.
QString leadingFit(QStringView text, qsizetype limit)
{
    qsizetype bytes = 0;
    qsizetype end = 0;
    while (end < text.size()) {
        const bool pair = text[end].isHighSurrogate() && end + 1 < text.size() && text[end + 1].isLowSurrogate();
        const qsizetype width = pair ? 2 : 1;
        const qsizetype charBytes = utf8Length(text.mid(end, width));
        if (bytes + charBytes > limit)
            break;
        bytes += charBytes;
        end += width;
    }
    return text.left(end).toString();
}

QString withoutTrailingSpaces(QString text)
{
    while (text.endsWith(u' '))
        text.chop(1);
    return text;
}

bool isUsableName(const QString& name)
{
    return !name.isEmpty() && name != u"." && name != u"..";
}

}  // namespace

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

QString fitName(const QString& base, const QString& tail, qsizetype limit)
{
    if (utf8Length(base) + utf8Length(tail) <= limit)
        return base + tail;
    // A base shortened before keeps what follows its ellipsis (a suffix word) and gives way
    // in front of it again.
    const qsizetype cut = base.lastIndexOf(ellipsis);
    const QString head = cut > 0 ? base.left(cut) : base;
    const QString kept = cut > 0 ? base.mid(cut) : ellipsis;
    const qsizetype room = limit - utf8Length(tail) - utf8Length(kept);
    if (room < 1)
        return leadingFit(QString(base + tail), limit);
    // A shortened base that ends in a space would show as a gap before the ellipsis.
    return withoutTrailingSpaces(leadingFit(head, room)) + kept + tail;
}

QString outputName(const QString& source, const std::optional<QString>& suffix,
                   const std::optional<QString>& extension)
{
    const NameParts parts = splitExtension(lastPathComponent(source));
    QString tail;
    if (suffix && !suffix->isEmpty())
        tail += u' ' + *suffix;
    const QString& chosenExtension = extension ? *extension : parts.extension;
    if (!chosenExtension.isEmpty())
        tail += u'.' + chosenExtension;

    QString base = parts.base;
    if (!isUsableName(base + tail))
        base = QCoreApplication::translate("FileNames", "Untitled");
    return fitName(base, tail, longestFileName - counterRoom);
}

QString uniqueName(const QString& wanted, const std::function<bool(const QString&)>& isTaken)
{
    if (!isTaken(wanted))
        return wanted;
    const NameParts parts = splitExtension(wanted);
    const QString extension = parts.extension.isEmpty() ? QString() : u'.' + parts.extension;
    for (qint64 counter = 2;; ++counter) {
        const QString candidate = fitName(parts.base, u' ' + QString::number(counter) + extension);
        if (!isTaken(candidate))
            return candidate;
    }
}

}  // namespace wendrel
