#include "FontFamilies.h"

namespace wendrel::document {

bool isMonospaceFamily(const QString& family)
{
    static const QStringList named = {
        QStringLiteral("courier"),  QStringLiteral("courier new"),   QStringLiteral("consolas"),
        QStringLiteral("menlo"),    QStringLiteral("monaco"),        QStringLiteral("lucida console"),
        QStringLiteral("fixed"),    QStringLiteral("source code pro"), QStringLiteral("fira code"),
        QStringLiteral("inconsolata"), QStringLiteral("andale mono"), QStringLiteral("cascadia code"),
        QStringLiteral("typewriter"),
    };
    QString name = family.trimmed().toLower();
    if (name.size() >= 2 && (name.front() == u'\'' || name.front() == u'"') && name.back() == name.front())
        name = name.mid(1, name.size() - 2);
    return name.contains(QStringLiteral("mono")) || named.contains(name);
}

bool anyMonospaceFamily(const QStringList& families)
{
    return std::any_of(families.begin(), families.end(), isMonospaceFamily);
}

}  // namespace wendrel::document
