#include "ArchiveOperations.h"

#include "ZipReader.h"
#include "ZipWriter.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("ArchiveOperations", text); }

// Reports progress and stops at the next piece once the user cancels.
auto progressReporter(const OperationContext& context)
{
    return [&context](qint64 done, qint64 total) {
        context.throwIfCancelled();
        context.progress(total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0.0);
    };
}

// "Report.pdf.zip" for one file, "Docs.zip" for one folder, "Archive.zip" for several items.
QString archiveName(const QStringList& paths)
{
    if (paths.size() != 1)
        return translate("Archive") + QStringLiteral(".zip");
    const QString ownExtension = splitExtension(lastPathComponent(paths.first())).extension;
    return outputName(paths.first(), std::nullopt,
                      ownExtension.isEmpty() ? QStringLiteral("zip") : ownExtension + QStringLiteral(".zip"));
}

OperationOutcome packArchive(const QStringList& paths, const OperationContext& context)
{
    if (paths.isEmpty())
        return OperationOutcome::files({});
    const QString name = archiveName(paths);
    return OperationOutcome::files({context.produce(paths.first(), name, [&](const QString& destination) {
        QFile archive(destination);
        if (!archive.open(QIODevice::WriteOnly))
            throw OperationError(translate("Couldn't write “%1”: %2").arg(name, archive.errorString()));
        ZipWriter writer(archive);
        for (const QString& path : paths) {
            context.throwIfCancelled();
            writer.addItem(path, lastPathComponent(path));
        }
        writer.finish(progressReporter(context));
    })});
}

QString linksLeftOutNote(int count)
{
    if (count == 0)
        return {};
    return count == 1 ? translate("1 link left out") : translate("%1 links left out").arg(count);
}

// One folder per archive, named after it: "Photos.zip" unpacks into "Photos".
ProducedFile unpackArchive(const QString& path, const OperationContext& context)
{
    ZipReader::Extraction extraction;
    ProducedFile produced = context.produce(path, outputName(path, std::nullopt, QString()), [&](const QString& folder) {
        if (!QDir().mkpath(folder)) {
            throw OperationError(
                QCoreApplication::translate("OperationContext", "Couldn't create a scratch folder"));
        }
        QFile archive(path);
        if (!archive.open(QIODevice::ReadOnly)) {
            throw OperationError(translate("Couldn't read “%1”: %2").arg(lastPathComponent(path), archive.errorString()));
        }
        const ZipReader reader(archive);
        extraction = reader.extractAll(folder, progressReporter(context));
    });
    produced.note = linksLeftOutNote(extraction.linksLeftOut);
    return produced;
}

}  // namespace

void registerArchiveOperations(OperationCatalog& catalog)
{
    catalog.add(Op::make({
        .entry = {.id = "archive.zip", .title = translate("ZIP"), .symbol = QStringLiteral("doc.zipper"),
                  .ring = RingKind::convert, .inputs = {ContentType::item()},
                  .description = translate("Packs the dropped files and folders into one ZIP.")},
        .combined = packArchive,
    }));
    catalog.add(Op::make({
        .entry = {.id = "archive.unzip", .title = translate("Unzip"), .symbol = QStringLiteral("archivebox"),
                  .ring = RingKind::convert, .inputs = {ContentType::zipArchive()},
                  .description = translate("Unpacks a ZIP into a folder next to it.")},
        .perFile = unpackArchive,
    }));
}

}  // namespace wendrel
