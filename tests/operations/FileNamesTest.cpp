#include "operations/FileNames.h"

#include <QSet>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

QString name(const char* source, std::optional<QString> suffix, std::optional<QString> extension)
{
    return outputName(QString::fromUtf8(source), std::move(suffix), std::move(extension));
}

}  // namespace

TEST(OutputName, ReplacesExtensionAndKeepsTheBaseAsWritten)
{
    EXPECT_EQ(name("/photos/Holiday.JPG", std::nullopt, QStringLiteral("png")), u"Holiday.png");
    EXPECT_EQ(name("/photos/Holiday.JPG", QStringLiteral("Normalized"), std::nullopt),
              u"Holiday Normalized.JPG");
    EXPECT_EQ(name("/photos/Holiday.JPG", QStringLiteral("Resized"), QStringLiteral("jpg")),
              u"Holiday Resized.jpg");
}

TEST(OutputName, EmptySuffixAddsNoSpace)
{
    EXPECT_EQ(name("/a/talk.srt", QString(), QStringLiteral("vtt")), u"talk.vtt");
}

TEST(OutputName, SourceWithoutExtensionGivesNameWithoutDot)
{
    EXPECT_EQ(name("/a/README", QStringLiteral("Clean"), std::nullopt), u"README Clean");
    EXPECT_EQ(name("/a/README", std::nullopt, QString()), u"README");
}

TEST(OutputName, OnlyTheLastExtensionIsReplaced)
{
    EXPECT_EQ(name("/a/backup.tar.gz", std::nullopt, QStringLiteral("zip")), u"backup.tar.zip");
}

TEST(OutputName, FolderSourceUsesItsName)
{
    EXPECT_EQ(name("/home/me/Docs/", std::nullopt, QStringLiteral("zip")), u"Docs.zip");
}

TEST(OutputName, HiddenFileKeepsItsLeadingDot)
{
    EXPECT_EQ(name("/home/me/.profile", std::nullopt, QStringLiteral("txt")), u".profile.txt");
}

TEST(OutputName, KeepsNonAsciiNames)
{
    EXPECT_EQ(name("/a/Прогулка в парке.srt", std::nullopt, QStringLiteral("vtt")),
              u"Прогулка в парке.vtt");
}

class UniqueNameTest : public ::testing::Test {
protected:
    QString pick(const QString& wanted)
    {
        return uniqueName(wanted, [this](const QString& candidate) { return taken.contains(candidate); });
    }
    QSet<QString> taken;
};

TEST_F(UniqueNameTest, FreeNameIsKept)
{
    EXPECT_EQ(pick(QStringLiteral("talk.vtt")), u"talk.vtt");
}

TEST_F(UniqueNameTest, SecondRunAddsCounterBeforeExtension)
{
    taken = {QStringLiteral("talk.vtt")};
    EXPECT_EQ(pick(QStringLiteral("talk.vtt")), u"talk 2.vtt");
}

TEST_F(UniqueNameTest, CounterClimbsPastEveryTakenName)
{
    taken = {QStringLiteral("Holiday Resized.jpg"), QStringLiteral("Holiday Resized 2.jpg"),
             QStringLiteral("Holiday Resized 3.jpg")};
    EXPECT_EQ(pick(QStringLiteral("Holiday Resized.jpg")), u"Holiday Resized 4.jpg");
}

TEST_F(UniqueNameTest, NameWithoutExtensionGetsNoDot)
{
    taken = {QStringLiteral("Archive")};
    EXPECT_EQ(pick(QStringLiteral("Archive")), u"Archive 2");
}

TEST_F(UniqueNameTest, CounterGoesBeforeTheLastExtensionOnly)
{
    taken = {QStringLiteral("backup.tar.gz")};
    EXPECT_EQ(pick(QStringLiteral("backup.tar.gz")), u"backup.tar 2.gz");
}

TEST(LastPathComponent, IgnoresOneTrailingSeparator)
{
    EXPECT_EQ(lastPathComponent(QStringLiteral("/a/b/Docs/")), u"Docs");
    EXPECT_EQ(lastPathComponent(QStringLiteral("/a/b/file.txt")), u"file.txt");
    EXPECT_EQ(lastPathComponent(QStringLiteral("file.txt")), u"file.txt");
}
