#include "Modifiers.h"

#include <QCoreApplication>
#include <QStringList>

namespace wendrel {

QString symbolLabel(ModifierFlags flags)
{
    QString label;
    if (flags & Modifier::control)
        label += QChar(0x2303);
    if (flags & Modifier::option)
        label += QChar(0x2325);
    if (flags & Modifier::shift)
        label += QChar(0x21E7);
    if (flags & Modifier::command)
        label += QChar(0x2318);
    return label;
}

QString nameLabel(ModifierFlags flags)
{
    QStringList names;
    if (flags & Modifier::shift)
        names.append(QCoreApplication::translate("Modifiers", "Shift"));
    if (flags & Modifier::control)
        names.append(QCoreApplication::translate("Modifiers", "Ctrl"));
    if (flags & Modifier::option)
        names.append(QCoreApplication::translate("Modifiers", "Alt"));
    if (flags & Modifier::command)
        names.append(QCoreApplication::translate("Modifiers", "Super"));
    return names.join(QStringLiteral(" + "));
}

}  // namespace wendrel
