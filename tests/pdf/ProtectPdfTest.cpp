#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "support/TestEnvironment.h"

using namespace wendrel;
using namespace wendrel::test;

namespace {

using ProtectPdfTest = PdfEntryTest;

// The result opens with the password and only with it, whether the source was encrypted
// (openable without a password) or not.
TEST_F(ProtectPdfTest, ResultOpensOnlyWithThePasswordUnderAes256)
{
    const QString password = QStringLiteral("tr0ub4dor & 3 ünïcode");
    for (const auto& [name, sourcePassword] : {std::pair<QString, std::optional<QString>>{QStringLiteral("Plain"), std::nullopt},
                                               {QStringLiteral("Encrypted"), QString()}}) {
        TestPdf document = pagesOfText(3);
        document.userPassword = sourcePassword;
        const QString source = writeTestPdf(path(name + QStringLiteral(".pdf")), document);
        ASSERT_TRUE(qpdfCheckPasses(source)) << "the source opens without a password";

        const JobReport report = run("pdf.password", source, {{QStringLiteral("password"), password}});
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        const QString result = report.results.value(0);
        EXPECT_EQ(result, path(name + QStringLiteral(" Protected.pdf")));
        EXPECT_FALSE(qpdfCheckPasses(result)) << name.toStdString();
        EXPECT_FALSE(qpdfCheckPasses(result, QStringLiteral("wrong"))) << name.toStdString();
        EXPECT_TRUE(qpdfCheckPasses(result, password)) << name.toStdString();
        EXPECT_EQ(pdfToText(result).trimmed(), QString()) << name.toStdString();
        EXPECT_EQ(pdfToText(result, password).simplified(), QStringLiteral("Page 1 Page 2 Page 3")) << name.toStdString();
        const QString encryption = toolOutput(QStringLiteral("qpdf"), {QStringLiteral("--show-encryption"), QStringLiteral("--password=") + password, result});
        EXPECT_TRUE(encryption.contains(u"R = 6") && encryption.contains(u"stream encryption method: AESv3")) << encryption.toStdString();
    }

    // Started without asking, the job has no password to lock with, and writes nothing.
    const JobReport unasked = run("pdf.password", path("Plain.pdf"));
    EXPECT_FALSE(unasked.succeeded);
    EXPECT_EQ(unasked.failures.value(0).message, QStringLiteral("A password is needed"));
    EXPECT_EQ(folderEntries(folder.path()).size(), 4);
}

}  // namespace
