#include "OperationContext.h"

#include "OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QUuid>

#include <algorithm>
#include <cmath>

namespace wendrel {

OperationCancelled::OperationCancelled()
    : OperationError(QCoreApplication::translate("JobRunner", "Cancelled"))
{
}

OperationContext::OperationContext(QString workDirectory, ProgressFunction progress,
                                   std::shared_ptr<const std::atomic_bool> cancelled, QJsonObject answers)
    : m_workDirectory(std::move(workDirectory)),
      m_progress(std::move(progress)),
      m_cancelled(std::move(cancelled)),
      m_answers(std::move(answers))
{
}

void OperationContext::progress(double fraction) const
{
    if (m_progress && !std::isnan(fraction))
        m_progress(std::clamp(fraction, 0.0, 1.0));
}

bool OperationContext::isCancelled() const { return m_cancelled && m_cancelled->load(); }

void OperationContext::throwIfCancelled() const
{
    if (isCancelled())
        throw OperationCancelled();
}

QString OperationContext::outputUrl(const QString& name) const
{
    const QString folder = m_workDirectory + u'/'
                           + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    if (!QDir().mkpath(folder)) {
        throw OperationError(
            QCoreApplication::translate("OperationContext", "Couldn't create a scratch folder"));
    }
    return folder + u'/' + name;
}

ProducedFile OperationContext::produce(const QString& source, const QString& name,
                                       const std::function<void(const QString&)>& write) const
{
    const QString path = outputUrl(name);
    write(path);
    return {path, name, source};
}

}  // namespace wendrel
