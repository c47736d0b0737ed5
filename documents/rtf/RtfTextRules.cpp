#include "RtfTextRules.h"

#include <QStringList>

namespace wendrel::rtf {

namespace {

// The next word of a field instruction: a quoted string without its quotes, or up to a space.
QStringView nextArgument(QStringView& rest)
{
    rest = rest.trimmed();
    if (rest.startsWith(u'"')) {
        const qsizetype close = rest.indexOf(u'"', 1);
        const QStringView argument = close < 0 ? rest.sliced(1) : rest.sliced(1, close - 1);
        rest = close < 0 ? QStringView() : rest.sliced(close + 1);
        return argument;
    }
    qsizetype end = 0;
    while (end < rest.size() && !rest[end].isSpace())
        ++end;
    const QStringView argument = rest.first(end);
    rest = rest.sliced(end);
    return argument;
}

bool isRoman(QStringView text)
{
    for (QChar c : text) {
        if (!QStringView(u"ivxlcIVXLC").contains(c))
            return false;
    }
    return !text.isEmpty();
}

}  // namespace

QString hyperlinkTarget(QStringView instruction)
{
    QStringView rest = instruction.trimmed();
    if (!rest.startsWith(QStringLiteral("HYPERLINK"), Qt::CaseInsensitive))
        return {};
    rest = rest.sliced(9);
    QString target;
    while (!rest.trimmed().isEmpty()) {
        const QStringView argument = nextArgument(rest);
        if (argument.startsWith(u'\\')) {
            // Switches: \l names a place in the document; others (\o tip, \t frame) take one
            // argument we don't need, \m and \n none.
            const QStringView name = argument.sliced(1);
            if (name == u"l")
                target += u'#' + nextArgument(rest).toString();
            else if (name == u"o" || name == u"t")
                nextArgument(rest);
        } else if (target.isEmpty() && !argument.isEmpty()) {
            target = argument.toString();
        }
    }
    return target;
}

bool isMonospaceFontName(QStringView name)
{
    static const QStringList monospace = {
        QStringLiteral("Courier"),       QStringLiteral("Courier New"),   QStringLiteral("Consolas"),
        QStringLiteral("Menlo"),         QStringLiteral("Monaco"),        QStringLiteral("Lucida Console"),
        QStringLiteral("Liberation Mono"), QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace"),
    };
    const QStringView trimmed = name.trimmed();
    for (const QString& font : monospace) {
        if (trimmed.compare(font, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

int headingLevelOfStyleName(QStringView name)
{
    const QStringView trimmed = name.trimmed();
    if (trimmed.size() != 9 || !trimmed.startsWith(QStringLiteral("heading "), Qt::CaseInsensitive))
        return 0;
    const char16_t digit = trimmed[8].unicode();
    return digit >= u'1' && digit <= u'6' ? digit - u'0' : 0;
}

std::optional<TypedListMarker> typedListMarker(QStringView text)
{
    const qsizetype tab = text.indexOf(u'\t');
    if (tab <= 0 || tab > 6)
        return std::nullopt;
    const QStringView marker = text.first(tab).trimmed();
    if (marker.size() == 1 && QStringView(u"•·◦▪‣∙o*-–").contains(marker[0]))
        return TypedListMarker{.ordered = false, .length = tab + 1};
    if (marker.size() >= 2 && (marker.endsWith(u'.') || marker.endsWith(u')'))) {
        const QStringView number = marker.chopped(1);
        bool digits = true;
        for (QChar c : number)
            digits = digits && c.isDigit();
        const bool letter = number.size() == 1 && number[0].isLetter();
        if (digits || letter || isRoman(number))
            return TypedListMarker{.ordered = true, .length = tab + 1};
    }
    return std::nullopt;
}

}  // namespace wendrel::rtf
