#include "app/shell/FileManagerActions.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

// Spaces, both quotes, a dollar, a backslash and a percent: everything some format must escape.
const QString awkwardExecutable = QStringLiteral("/opt/50% off\\ \"beta\"/it's $x/wendrel");

QString text(const QByteArray& bytes) { return QString::fromUtf8(bytes); }

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

// What each file manager's files say. (Where they go, and that the scripts and Plasma 6's
// service menu are executable, the integration test checks on a real install.)
TEST(FileManagerActions, EveryFileManagerGetsTheThreeActions)
{
    const IntegrationHomes homes{QStringLiteral("/h/data"), QStringLiteral("/h/config"), {}};
    const QString exe = QStringLiteral("/usr/bin/wendrel");
    EXPECT_EQ(ownFiles(FileManager::nautilus, homes, exe).size(), 3);
    EXPECT_EQ(ownFiles(FileManager::caja, homes, exe).size(), 3);
    const QList<OwnFile> nemo = ownFiles(FileManager::nemo, homes, exe);
    ASSERT_EQ(nemo.size(), 3);
    const QString action = text(nemo[0].content);
    for (const char* line : {"[Nemo Action]\n", "Name=Convert with Wendrel\n", "Exec=\"/usr/bin/wendrel\" ring convert %F\n",
                             "Selection=NotNone\n", "Extensions=any;\n", "Quote=double\n"})
        EXPECT_TRUE(action.contains(QLatin1String(line))) << line;

    const QList<OwnFile> dolphin = ownFiles(FileManager::dolphin, homes, exe);
    ASSERT_EQ(dolphin.size(), 2);
    EXPECT_EQ(dolphin[1].content, dolphin[0].content);  // Plasma 5 reads the same menu elsewhere
    const QString menu = text(dolphin[0].content);
    for (const char* line : {"[Desktop Entry]\n", "Type=Service\n", "MimeType=all/all;\n",
                             "Actions=wendrelConvert;wendrelTools;wendrelActions;\n", "[Desktop Action wendrelTools]\n",
                             "Name=Wendrel Tools\n", "Exec=\"/usr/bin/wendrel\" ring tools %F\n"})
        EXPECT_TRUE(menu.contains(QLatin1String(line))) << line;

    EXPECT_TRUE(ownFiles(FileManager::thunar, homes, exe).isEmpty());
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
}

