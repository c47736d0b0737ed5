#include "app/shell/FileManagerActions.h"
#include "support/TestEnvironment.h"

#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

// Spaces, both quotes, a dollar, a backslash and a percent: everything some format must escape.
const QString awkwardExecutable = QStringLiteral("/opt/50% off\\ \"beta\"/it's $x/wendrel");

QString text(const QByteArray& bytes) { return QString::fromUtf8(bytes); }

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

TEST(FileManagerActions, DesktopEntriesQuoteThePathAsTheirExecKeyRequires)
{
    // Exec quoting (\" \$ \\, %%) first, then the string escape that doubles every backslash.
    const QString exec = QStringLiteral(R"(Exec="/opt/50%% off\\\\ \\"beta\\"/it's \\$x/wendrel" ring convert %F)");
    EXPECT_TRUE(text(nemoAction(RingKind::convert, awkwardExecutable)).contains(exec + u'\n'))
        << text(nemoAction(RingKind::convert, awkwardExecutable)).toStdString();
    EXPECT_TRUE(text(dolphinServiceMenu(awkwardExecutable)).contains(exec + u'\n'));
    EXPECT_TRUE(text(dolphinServiceMenu(awkwardExecutable))
                    .contains(QStringLiteral(R"(\\$x/wendrel" ring actions %F)") + u'\n'));
}

TEST(FileManagerActions, ScriptsQuoteThePathForTheShell)
{
    const QString script = text(selectionScript(FileManager::nautilus, RingKind::tools, awkwardExecutable));
    EXPECT_TRUE(script.startsWith(u"#!/bin/sh\n"));
    EXPECT_TRUE(script.endsWith(QStringLiteral(R"(exec '/opt/50% off\ "beta"/it'\''s $x/wendrel' ring tools "$@")") + u'\n'));
    EXPECT_TRUE(script.contains(u"${NAUTILUS_SCRIPT_SELECTED_FILE_PATHS-}"));
    EXPECT_TRUE(text(selectionScript(FileManager::caja, RingKind::tools, awkwardExecutable))
                    .contains(u"${CAJA_SCRIPT_SELECTED_FILE_PATHS-}"));
}

TEST(FileManagerActions, ThunarCommandIsShellQuotedWithPercentDoubled)
{
    const QList<ThunarEntry> entries = thunarEntries(*thunarActionsWithWendrel(usersUca, awkwardExecutable));
    ASSERT_EQ(entries.size(), 4);
    EXPECT_EQ(entries[1].command, QStringLiteral(R"('/opt/50%% off\ "beta"/it'\''s $x/wendrel' ring convert %F)"));
    EXPECT_EQ(entries[3].command, QStringLiteral(R"('/opt/50%% off\ "beta"/it'\''s $x/wendrel' ring actions %F)"));
}

TEST(FileManagerActions, EveryFileManagerGetsTheThreeActionsWhereItLooks)
{
    const IntegrationHomes homes{QStringLiteral("/h/data"), QStringLiteral("/h/config"), {}};
    const QString exe = QStringLiteral("/usr/bin/wendrel");
    const QList<OwnFile> nautilus = ownFiles(FileManager::nautilus, homes, exe);
    ASSERT_EQ(nautilus.size(), 3);
    EXPECT_EQ(nautilus[0].path, u"/h/data/nautilus/scripts/Convert with Wendrel");
    EXPECT_EQ(nautilus[1].path, u"/h/data/nautilus/scripts/Wendrel Tools");
    EXPECT_EQ(nautilus[2].path, u"/h/data/nautilus/scripts/Wendrel Actions");
    EXPECT_TRUE(nautilus[2].executable);
    EXPECT_EQ(ownFiles(FileManager::caja, homes, exe)[1].path, u"/h/config/caja/scripts/Wendrel Tools");

    const QList<OwnFile> nemo = ownFiles(FileManager::nemo, homes, exe);
    ASSERT_EQ(nemo.size(), 3);
    EXPECT_EQ(nemo[2].path, u"/h/data/nemo/actions/wendrel-actions.nemo_action");
    const QString action = text(nemo[0].content);
    for (const char* line : {"[Nemo Action]\n", "Name=Convert with Wendrel\n", "Exec=\"/usr/bin/wendrel\" ring convert %F\n",
                             "Selection=NotNone\n", "Extensions=any;\n", "Quote=double\n"})
        EXPECT_TRUE(action.contains(QLatin1String(line))) << line;

    const QList<OwnFile> dolphin = ownFiles(FileManager::dolphin, homes, exe);
    ASSERT_EQ(dolphin.size(), 2);
    EXPECT_EQ(dolphin[0].path, u"/h/data/kio/servicemenus/wendrel-ring.desktop");
    EXPECT_TRUE(dolphin[0].executable);  // Plasma 6 ignores service menus that aren't
    EXPECT_EQ(dolphin[1].path, u"/h/data/kservices5/ServiceMenus/wendrel-ring.desktop");
    const QString menu = text(dolphin[0].content);
    for (const char* line : {"[Desktop Entry]\n", "Type=Service\n", "MimeType=all/all;\n",
                             "Actions=wendrelConvert;wendrelTools;wendrelActions;\n", "[Desktop Action wendrelTools]\n",
                             "Name=Wendrel Tools\n", "Exec=\"/usr/bin/wendrel\" ring tools %F\n"})
        EXPECT_TRUE(menu.contains(QLatin1String(line))) << line;

    EXPECT_TRUE(ownFiles(FileManager::thunar, homes, exe).isEmpty());
    EXPECT_EQ(thunarActionsPath(homes), u"/h/config/Thunar/uca.xml");
}

TEST(FileManagerActions, OnlyFilesWithWendrelsMarkerAreWendrels)
{
    for (FileManager manager : allFileManagers) {
        for (const OwnFile& file : ownFiles(manager, {QStringLiteral("/d"), QStringLiteral("/c"), {}}, awkwardExecutable))
            EXPECT_TRUE(isWendrelFile(file.content)) << file.path.toStdString();
    }
    EXPECT_FALSE(isWendrelFile("#!/bin/sh\nexec wendrel ring convert \"$@\"\n"));
    EXPECT_FALSE(isWendrelFile("[Nemo Action]\nName=Convert with Wendrel\nExec=wendrel ring convert %F\n"));
    EXPECT_FALSE(isWendrelFile(""));
}

TEST(FileManagerActions, CreatedFoldersAreNotedInTheFileAndReadBack)
{
    const QStringList folders{QStringLiteral("/home/me/.local/share/nemo/my -- actions"),
                              QStringLiteral("/home/me/odd\nname 100%")};
    const QByteArray noted = withFoldersCreated(nemoAction(RingKind::tools, awkwardExecutable), folders);
    EXPECT_TRUE(isWendrelFile(noted));
    EXPECT_EQ(foldersCreatedFor(noted), folders);
    EXPECT_TRUE(noted.endsWith("Quote=double\n"));
    EXPECT_TRUE(foldersCreatedFor(nemoAction(RingKind::tools, awkwardExecutable)).isEmpty());
    EXPECT_EQ(withFoldersCreated(dolphinServiceMenu(awkwardExecutable), {}), dolphinServiceMenu(awkwardExecutable));

    const QByteArray uca = newThunarActionsFile({}, folders);
    EXPECT_EQ(foldersCreatedFor(uca), folders);
    EXPECT_TRUE(thunarEntries(uca).isEmpty());  // the note is a well-formed comment
}

TEST(ThunarActions, MergingKeepsTheUsersActionsAndRemovalGivesBackTheSameBytes)
{
    const std::optional<QByteArray> merged = thunarActionsWithWendrel(usersUca, QStringLiteral("/usr/bin/wendrel"));
    ASSERT_TRUE(merged);
    const QList<ThunarEntry> entries = thunarEntries(*merged);
    ASSERT_EQ(entries.size(), 4);
    EXPECT_EQ(entries[0].name, u"Open Terminal & Here");
    EXPECT_EQ(entries[1].name, u"Convert with Wendrel");
    EXPECT_EQ(entries[2].name, u"Wendrel Tools");
    EXPECT_EQ(entries[3].name, u"Wendrel Actions");
    EXPECT_EQ(entries[3].uniqueId, u"wendrel-integrate-actions");
    EXPECT_TRUE(merged->startsWith(usersUca.left(usersUca.indexOf("</actions>"))));

    EXPECT_EQ(thunarActionsWithoutWendrel(*merged), usersUca);
    EXPECT_EQ(thunarActionsWithoutWendrel(usersUca), usersUca);
}

TEST(ThunarActions, MergingAgainReplacesWendrelsEntriesInsteadOfAddingMore)
{
    const QByteArray once = *thunarActionsWithWendrel(usersUca, QStringLiteral("/usr/bin/wendrel"));
    EXPECT_EQ(thunarActionsWithWendrel(once, QStringLiteral("/usr/bin/wendrel")), once);

    const QList<ThunarEntry> moved = thunarEntries(*thunarActionsWithWendrel(once, QStringLiteral("/opt/wendrel")));
    ASSERT_EQ(moved.size(), 4);
    EXPECT_EQ(moved[0].name, u"Open Terminal & Here");
    EXPECT_EQ(moved[1].command, u"'/opt/wendrel' ring convert %F");
    EXPECT_EQ(moved[3].command, u"'/opt/wendrel' ring actions %F");
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

    const QByteArray withoutDefaults =
        *thunarActionsWithWendrel(newThunarActionsFile({}, {}), QStringLiteral("/usr/bin/wendrel"));
    EXPECT_EQ(thunarEntries(withoutDefaults).size(), 3);
    EXPECT_TRUE(isUnchangedThunarFileOfWendrel(withoutDefaults, {}));
}

TEST(ThunarActions, AnEmptySelfClosedListReceivesWendrelsActions)
{
    const std::optional<QByteArray> merged = thunarActionsWithWendrel("<actions/>\n", QStringLiteral("/usr/bin/wendrel"));
    ASSERT_TRUE(merged);
    EXPECT_EQ(thunarEntries(*merged).size(), 3);
    EXPECT_EQ(thunarEntries(*thunarActionsWithoutWendrel(*merged)).size(), 0);
}
