#include "OpGroup.h"

#include "OperationError.h"

#include <QCoreApplication>

namespace wendrel {

bool OpGroup::accepts(const ContentType& type) const
{
    return type.conformsToAny(m.inputs) && !type.conformsToAny(m.excludes);
}

OperationOutcome OpGroup::run(const QStringList&, const OperationContext&) const
{
    throw OperationError(QCoreApplication::translate("OpGroup", "Choose an item from the group"));
}

QList<FileOperationPtr> OpGroup::children(const QStringList& paths) const
{
    return m.childrenProvider ? m.childrenProvider(paths) : QList<FileOperationPtr>{};
}

}  // namespace wendrel
