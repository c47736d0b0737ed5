#include "Op.h"

namespace wendrel {

bool Op::accepts(const ContentType& type) const
{
    if (!type.conformsToAny(m.inputs) || type.conformsToAny(m.excludes))
        return false;
    return !m.excludesExactly.contains(type);
}

OperationOutcome Op::run(const QStringList& paths, const OperationContext& context) const
{
    return m.body(paths, context);
}

}  // namespace wendrel
