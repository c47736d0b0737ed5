#include "triggers/x11/X11Connection.h"
#include "triggers/x11/X11SelectionFetch.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

constexpr int deadlineMilliseconds = 30000;

// The selection fetch of this process on the test's own X server, with the clipboard holding
// text of ours that must survive the fetch.
class X11SelectionFetchTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        connection = X11Connection::open();
        ASSERT_TRUE(connection) << "no X server";
        fetch = std::make_unique<X11SelectionFetch>(*connection);
        QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
    }

    void TearDown() override
    {
        if (fileManager.state() != QProcess::NotRunning) {
            fileManager.kill();
            fileManager.waitForFinished();
        }
    }

    // A stand-in file manager in a process of its own, with the focus, showing `files`.
    void startFileManager(const QStringList& files)
    {
        fileManager.start(QStringLiteral(WENDREL_FILE_MANAGER_STANDIN), files);
        QByteArray said;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                said += fileManager.readAllStandardOutput();
                return said.contains("focused");
            },
            deadlineMilliseconds))
            << "the stand-in file manager did not get the focus";
    }

    SelectionResult fetchSelection()
    {
        std::optional<SelectionResult> result;
        int answers = 0;
        fetch->fetch([&](const SelectionResult& answer) {
            result = answer;
            ++answers;
        });
        const bool answered = QTest::qWaitFor([&] { return result.has_value(); }, deadlineMilliseconds);
        EXPECT_TRUE(answered) << "the fetch never answered";
        EXPECT_EQ(answers, answered ? 1 : 0);
        return result.value_or(QStringLiteral("no answer"));
    }

    std::unique_ptr<X11Connection> connection;
    std::unique_ptr<X11SelectionFetch> fetch;
    QProcess fileManager;
};

}  // namespace

TEST_F(X11SelectionFetchTest, ReadsTheFilesTheFileManagerCopiesAndGivesTheClipboardBack)
{
    const QString folder = QDir::tempPath();
    const QStringList files{folder + QStringLiteral("/a.png"), folder + QStringLiteral("/b c.jpg")};
    startFileManager(files);
    for (int round = 0; round < 2; ++round) {  // a second fetch works the same way
        const SelectionResult result = fetchSelection();
        ASSERT_TRUE(std::holds_alternative<QStringList>(result)) << qPrintable(std::get<QString>(result));
        EXPECT_EQ(std::get<QStringList>(result), files);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("kept"));
    }
}

TEST_F(X11SelectionFetchTest, AWindowThatCopiesNothingIsReportedAndTheClipboardKept)
{
    const SelectionResult result = fetchSelection();
    ASSERT_TRUE(std::holds_alternative<QString>(result));
    EXPECT_EQ(std::get<QString>(result), QStringLiteral("the file manager did not copy its selection"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("kept"));
}
