#include "OpGroup.h"

#include "OperationError.h"

#include <QCoreApplication>

namespace wendrel {

OperationOutcome OpGroup::run(const QStringList&, const OperationContext&) const
{
    throw OperationError(QCoreApplication::translate("OpGroup", "Choose an item from the group"));
}

QList<FileOperationPtr> OpGroup::children(const QStringList& paths) const
{
    return m_childrenProvider ? m_childrenProvider(paths) : QList<FileOperationPtr>{};
}

}  // namespace wendrel
