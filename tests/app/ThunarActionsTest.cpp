#include "app/shell/ThunarActions.h"
#include "support/TestEnvironment.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

struct ThunarEntry {
    QString name;
    QString uniqueId;
    QString command;
};

// Thunar's actions as an independent reader sees them. Thunar's own declaration puts encoding
// before version, which strict readers refuse, so the reader starts after it.
QList<ThunarEntry> thunarEntries(const QByteArray& uca)
{
    QList<ThunarEntry> entries;
    QXmlStreamReader reader(uca.startsWith("<?xml") ? uca.mid(uca.indexOf("?>") + 2) : uca);
    while (reader.readNextStartElement()) {
        if (reader.name() == u"actions")
            continue;
        ThunarEntry entry;
        while (reader.readNextStartElement()) {
            const QString value = reader.readElementText();
            if (reader.name() == u"name")
                entry.name = value;
            else if (reader.name() == u"unique-id")
                entry.uniqueId = value;
            else if (reader.name() == u"command")
                entry.command = value;
        }
        entries.append(entry);
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return entries;
}

const QByteArray usersUca = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!-- my actions, edited by hand -->\n"
                            "<actions>\n"
                            "<action>\n"
                            "\t<icon>utilities-terminal</icon>\n"
                            "\t<name>Open Terminal &amp; Here</name>\n"
                            "\t<unique-id>1700000000000000-1</unique-id>\n"
                            "\t<command>exo-open --working-directory %f --launch TerminalEmulator</command>\n"
                            "\t<description>Mine, été</description>\n"
                            "\t<patterns>*</patterns>\n"
                            "\t<startup-notify/>\n"
                            "\t<directories/>\n"
                            "</action>\n"
                            "</actions>\n";

}  // namespace

// Merging keeps the user's actions and bytes, quotes the command for the shell with every
// percent doubled, replaces Wendrel's entries when done again, and removal gives back the
// same bytes.
TEST(ThunarActions, MergingKeepsTheUsersActionsAndRemovalGivesBackTheSameBytes)
{
    const std::optional<QByteArray> merged = thunarActionsWithWendrel(usersUca, QStringLiteral("/usr/bin/wendrel"));
    ASSERT_TRUE(merged);
    const QList<ThunarEntry> entries = thunarEntries(*merged);
    ASSERT_EQ(entries.size(), 4);
    const char* names[] = {"Open Terminal & Here", "Convert with Wendrel", "Wendrel Tools", "Wendrel Actions"};
    for (int index = 0; index < 4; ++index)
        EXPECT_EQ(entries[index].name, QString::fromUtf8(names[index]));
    EXPECT_EQ(entries[3].uniqueId, u"wendrel-integrate-actions");
    EXPECT_TRUE(merged->startsWith(usersUca.left(usersUca.indexOf("</actions>"))));
    EXPECT_EQ(thunarActionsWithoutWendrel(*merged), usersUca);
    EXPECT_EQ(thunarActionsWithoutWendrel(usersUca), usersUca);
    EXPECT_EQ(thunarActionsWithWendrel(*merged, QStringLiteral("/usr/bin/wendrel")), merged);

    const QString awkward = QStringLiteral("/opt/50% off\\ \"beta\"/it's $x/wendrel");
    const QList<ThunarEntry> moved = thunarEntries(*thunarActionsWithWendrel(*merged, awkward));
    ASSERT_EQ(moved.size(), 4);
    EXPECT_EQ(moved[0].name, u"Open Terminal & Here");
    EXPECT_EQ(moved[1].command, QStringLiteral(R"('/opt/50%% off\ "beta"/it'\''s $x/wendrel' ring convert %F)"));
    EXPECT_EQ(moved[3].command, QStringLiteral(R"('/opt/50%% off\ "beta"/it'\''s $x/wendrel' ring actions %F)"));

    // An empty, self-closed list takes them too.
    const std::optional<QByteArray> intoEmpty = thunarActionsWithWendrel("<actions/>\n", QStringLiteral("/usr/bin/wendrel"));
    ASSERT_TRUE(intoEmpty);
    EXPECT_EQ(thunarEntries(*intoEmpty).size(), 3);
    EXPECT_EQ(thunarEntries(*thunarActionsWithoutWendrel(*intoEmpty)).size(), 0);
}

TEST(ThunarActions, RemovalFindsWendrelsEntriesAfterThunarRewroteTheFile)
{
    // Thunar saves every action again in its own layout when the user edits one.
    const QByteArray rewritten = "<?xml encoding=\"UTF-8\" version=\"1.0\"?>\n<actions>\n"
                                 "<action>\n\t<icon>wendrel</icon>\n\t<name>Wendrel Tools</name>\n"
                                 "\t<unique-id>wendrel-integrate-tools</unique-id>\n"
                                 "\t<command>'/usr/bin/wendrel' ring tools %F</command>\n"
                                 "\t<description></description>\n\t<patterns>*</patterns>\n\t<directories/>\n</action>\n"
                                 "<action>\n\t<icon></icon>\n\t<name>Mine</name>\n\t<unique-id>1-2</unique-id>\n"
                                 "\t<command>echo %F</command>\n\t<description></description>\n\t<patterns>*</patterns>\n"
                                 "\t<other-files/>\n</action>\n</actions>\n";
    const std::optional<QByteArray> stripped = thunarActionsWithoutWendrel(rewritten);
    ASSERT_TRUE(stripped);
    const QList<ThunarEntry> entries = thunarEntries(*stripped);
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].name, u"Mine");
    EXPECT_FALSE(isUnchangedThunarFileOfWendrel(rewritten, {}));
}

TEST(ThunarActions, WhatIsNotACustomActionsFileIsRefused)
{
    for (const QByteArray& bad : {QByteArray("not xml at all"), QByteArray("<?xml version=\"1.0\"?>\n<menu/>\n"),
                                  QByteArray("<actions>\n<action>\n"), QByteArray("<actions>\xe9t\xe9</actions>\n")}) {
        EXPECT_EQ(thunarActionsWithWendrel(bad, QStringLiteral("/usr/bin/wendrel")), std::nullopt) << bad.constData();
        EXPECT_EQ(thunarActionsWithoutWendrel(bad), std::nullopt) << bad.constData();
    }
}

TEST(ThunarActions, ANewFileCarriesThunarsDefaultsAndIsRecognisedUntilTheUserAddsToIt)
{
    const QByteArray systemDefault = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<!DOCTYPE actions [\n  <!ELEMENT actions (action)+>\n]>\n\n<actions>\n\n"
                                     "  <action>\n    <icon>utilities-terminal</icon>\n    <patterns>*</patterns>\n"
                                     "    <name>Open Terminal Here</name>\n    <command>exo-open %F</command>\n"
                                     "    <startup-notify/>\n    <directories/>\n  </action>\n\n</actions>\n";
    const QByteArray installed =
        *thunarActionsWithWendrel(newThunarActionsFile(systemDefault, {}), QStringLiteral("/usr/bin/wendrel"));
    const QList<ThunarEntry> entries = thunarEntries(installed);
    ASSERT_EQ(entries.size(), 4);
    EXPECT_EQ(entries[0].name, u"Open Terminal Here");
    EXPECT_TRUE(isUnchangedThunarFileOfWendrel(installed, systemDefault));
    EXPECT_EQ(thunarActionsWithoutWendrel(installed), systemDefault);

    QByteArray added = installed;
    added.insert(added.lastIndexOf("</actions>"), "<action><name>Mine</name><command>echo</command></action>\n");
    EXPECT_FALSE(isUnchangedThunarFileOfWendrel(added, systemDefault));
    EXPECT_FALSE(isUnchangedThunarFileOfWendrel(*thunarActionsWithWendrel(usersUca, QStringLiteral("/w")), {}));

    // The note keeps the folders made for the file, in a comment that stays well-formed.
    const QStringList folders{QStringLiteral("/home/me/.config/my -- Thunar"), QStringLiteral("/home/me/odd\nname")};
    const QByteArray withoutDefaults =
        *thunarActionsWithWendrel(newThunarActionsFile({}, folders), QStringLiteral("/usr/bin/wendrel"));
    EXPECT_EQ(thunarEntries(withoutDefaults).size(), 3);
    EXPECT_EQ(foldersCreatedFor(withoutDefaults), folders);
    EXPECT_TRUE(isUnchangedThunarFileOfWendrel(withoutDefaults, {}));
}
