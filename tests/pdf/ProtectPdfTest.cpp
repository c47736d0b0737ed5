#include "imaging/ImagingOperations.h"

#include "TestPdfs.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

QString encryptionShown(const QString& path, const QString& password)
{
    QProcess process;
    process.start(QStringLiteral("qpdf"), {QStringLiteral("--show-encryption"), QStringLiteral("--password=") + password, path});
    process.waitForFinished(60'000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

}  // namespace

// The result opens with the password and only with it, whether the source was encrypted
// (openable without a password) or not.
TEST(ProtectPdfTest, ResultOpensOnlyWithThePasswordUnderAes256)
{
    QTemporaryDir folder;
    OperationCatalog catalog;
    registerImagingOperations(catalog);
    JobRunner runner;
    const QString password = QStringLiteral("tr0ub4dor & 3 ünïcode");

    const struct {
        const char* name;
        std::optional<QString> sourcePassword;
    } cases[] = {{"Plain", std::nullopt}, {"Encrypted", QString()}};
    for (const auto& testCase : cases) {
        const QString name = QString::fromLatin1(testCase.name);
        TestPdf spec = pagesOfText(3);
        spec.userPassword = testCase.sourcePassword;
        const QString source = writeTestPdf(folder.filePath(name + QStringLiteral(".pdf")), spec);
        ASSERT_TRUE(qpdfCheckPasses(source)) << "the source opens without a password";

        const JobReport report = runJob(runner, {.operation = catalog.find(QStringLiteral("pdf.password")),
                                                 .paths = {source},
                                                 .answers = {{QStringLiteral("password"), password}}});
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(result, folder.filePath(name + QStringLiteral(" Protected.pdf")));

        EXPECT_FALSE(qpdfCheckPasses(result)) << name.toStdString();
        EXPECT_FALSE(qpdfCheckPasses(result, QStringLiteral("wrong"))) << name.toStdString();
        EXPECT_TRUE(qpdfCheckPasses(result, password)) << name.toStdString();
        EXPECT_EQ(pdfToText(result).trimmed(), QString()) << name.toStdString();
        EXPECT_EQ(pdfToText(result, password).simplified(), QStringLiteral("Page 1 Page 2 Page 3")) << name.toStdString();
        const QString encryption = encryptionShown(result, password);
        EXPECT_TRUE(encryption.contains(QStringLiteral("R = 6"))) << encryption.toStdString();
        EXPECT_TRUE(encryption.contains(QStringLiteral("stream encryption method: AESv3"))) << encryption.toStdString();
    }

    // Started without asking, the job has no password to lock with, and writes nothing.
    const JobReport unasked = runJob(runner, catalog.find(QStringLiteral("pdf.password")), {folder.filePath(QStringLiteral("Plain.pdf"))});
    EXPECT_FALSE(unasked.succeeded);
    EXPECT_EQ(unasked.failures.value(0).message, QStringLiteral("A password is needed"));
    EXPECT_EQ(folderEntries(folder.path()).size(), 4);
    EXPECT_TRUE(leftoverScratchFolders().isEmpty());
}
