#include "JobHarness.h"

#include "TestEnvironment.h"

#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

namespace wendrel::test {

JobReport runJob(JobRunner& runner, FileOperationPtr operation, const QStringList& paths,
                 const std::optional<QString>& destinationFolder)
{
    return runJob(runner, {std::move(operation), paths, destinationFolder});
}

JobReport runJob(JobRunner& runner, JobRequest request)
{
    JobReport report;
    bool ended = false;
    QEventLoop loop;
    const QMetaObject::Connection connection = QObject::connect(
        &runner, &JobRunner::jobEnded, &loop, [&](const JobRequest&, const JobReport& finished) {
            report = finished;
            ended = true;
            loop.quit();
        });
    QTimer::singleShot(120'000, &loop, &QEventLoop::quit);  // a hung job fails, not blocks
    if (!runner.run(std::move(request))) {
        ADD_FAILURE() << "the runner refused the job";
        return report;
    }
    loop.exec();
    QObject::disconnect(connection);
    if (!ended)
        ADD_FAILURE() << "the job did not end within two minutes";
    return report;
}

namespace {

EntryDescription testEntry(const QString& id)
{
    return {.id = EntryId::atRunTime(id), .title = id, .ring = RingKind::tools, .inputs = {ContentType::item()}};
}

}  // namespace

FileOperationPtr perFileEntry(const QString& id, Op::PerFileBody body)
{
    return Op::make({.entry = testEntry(id), .perFile = std::move(body)});
}

FileOperationPtr combinedEntry(const QString& id, Op::CombinedBody body)
{
    return Op::make({.entry = testEntry(id), .combined = std::move(body)});
}

ProducedFile produce(const OperationContext& context, const QString& source, const QString& name,
                     const QByteArray& bytes)
{
    const QString path = context.outputUrl(name);
    writeFile(path, bytes);
    return {path, name, source};
}

}  // namespace wendrel::test
