#include "app/shell/FileManagerIntegration.h"
#include "app/shell/ThunarActions.h"
#include "support/TestEnvironment.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace wendrel;
using namespace wendrel::test;

namespace {

struct Finished {
    int exitCode = -1;
    QString out;
};

Finished run(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment,
        const QString& workingDirectory = QDir::tempPath())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(workingDirectory);
    process.start(program, arguments);
    if (!process.waitForFinished(60'000)) {
        process.kill();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())};
}

// Every file and folder under `root` with its permissions and contents, to compare whole trees.
std::map<std::string, std::string> tree(const QString& root)
{
    std::map<std::string, std::string> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info = it.fileInfo();
        QString entry = QString::number(static_cast<int>(info.permissions()), 16);
        if (info.isSymLink())
            entry += QStringLiteral(" link to ") + info.symLinkTarget();
        else if (info.isDir())
            entry += QStringLiteral(" folder");
        else
            entry += u' ' + QString::fromUtf8(readFile(path));
        entries[path.mid(root.size()).toStdString()] = entry.toStdString();
    }
    return entries;
}

// A private home for the real wendrel binary; XDG_CONFIG_DIRS points at an empty folder so the
// machine's own Thunar defaults don't change what is written.
class IntegrateCommandTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        home = root.filePath(QStringLiteral("home"));
        QDir().mkpath(home);
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home);
        environment.remove(QStringLiteral("XDG_DATA_HOME"));
        environment.remove(QStringLiteral("XDG_CONFIG_HOME"));
        environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), root.filePath(QStringLiteral("etc-xdg")));
    }

    Finished wendrel(const QStringList& arguments) { return run(QStringLiteral(WENDREL_BINARY), arguments, environment); }

    QTemporaryDir root;
    QString home;
    QProcessEnvironment environment;
};

// A stand-in for wendrel that records the arguments it receives, one NUL after each, at a path
// with everything a quoting mistake would trip over.
class StandInTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const QString folder = root.filePath(QStringLiteral("stand-in \"it's\" $HOME \\"));
        QDir().mkpath(folder);
        standIn = folder + QStringLiteral("/wendrel");
        record = root.filePath(QStringLiteral("record"));
        writeFile(standIn, QStringLiteral("#!/bin/sh\nfor argument in \"$@\"; do printf '%s\\0' \"$argument\"; done "
                                          "> '%1.tmp' && mv '%1.tmp' '%1'\n")
                               .arg(record)
                               .toUtf8());
        QFile::setPermissions(standIn, QFile::permissions(standIn) | QFile::ExeOwner);
        homes = {root.filePath(QStringLiteral("data")), root.filePath(QStringLiteral("config")),
                 {root.filePath(QStringLiteral("etc-xdg"))}};
        installFileManagerActions(homes, standIn);

        selection = root.filePath(QStringLiteral("Holiday photos"));
        for (const QString& name : names) {
            writeFile(selection + u'/' + name, "x");
            absoluteNames.append(selection + u'/' + name);
        }
    }

    // What the stand-in received, waiting for launchers that return before their child runs.
    QStringList recorded()
    {
        for (QDeadlineTimer deadline(30'000); !QFileInfo::exists(record) && !deadline.hasExpired();)
            QThread::msleep(20);
        QStringList arguments = QString::fromUtf8(readFile(record)).split(QChar(u'\0'));
        arguments.removeLast();  // after the last NUL
        QFile::remove(record);
        return arguments;
    }

    QTemporaryDir root;
    QString standIn;
    QString record;
    IntegrationHomes homes;
    QString selection;
    const QStringList names{QStringLiteral("a b.jpg"), QStringLiteral("it's \"quoted\".png"),
                            QStringLiteral("line\nbreak.txt"), QStringLiteral("*"), QStringLiteral("-n")};
    QStringList absoluteNames;
};

QProcessEnvironment environmentWith(const QString& name, const QString& value)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("NAUTILUS_SCRIPT_SELECTED_FILE_PATHS"));
    environment.remove(QStringLiteral("CAJA_SCRIPT_SELECTED_FILE_PATHS"));
    if (!name.isEmpty())
        environment.insert(name, value);
    return environment;
}

// The raw value of the first "Exec=" line of a desktop-entry-like file.
QString execLine(const QString& path)
{
    for (const QString& line : QString::fromUtf8(readFile(path)).split(u'\n')) {
        if (line.startsWith(u"Exec="))
            return line.mid(5);
    }
    return {};
}

}  // namespace

TEST_F(IntegrateCommandTest, InstallTwiceThenRemoveLeavesTheHomeExactlyAsItWas)
{
    // A Nautilus user: its empty scripts folder, a script of their own, their own Thunar actions.
    const QString scripts = home + QStringLiteral("/.local/share/nautilus/scripts");
    QDir().mkpath(scripts);
    writeFile(home + QStringLiteral("/.local/share/nautilus/other/My script"), "#!/bin/sh\necho mine\n");
    const QString uca = home + QStringLiteral("/.config/Thunar/uca.xml");
    writeFile(uca, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n<action>\n\t<name>Mine</name>\n"
                   "\t<unique-id>1-1</unique-id>\n\t<command>echo %F</command>\n</action>\n</actions>\n");
    QFile::setPermissions(uca, QFile::ReadOwner | QFile::WriteOwner);
    const auto before = tree(root.path());

    const Finished install = wendrel({QStringLiteral("integrate")});
    EXPECT_EQ(install.exitCode, 0) << install.out.toStdString();
    EXPECT_TRUE(install.out.startsWith(QStringLiteral("Nautilus: installed in %1\n").arg(scripts))) << install.out.toStdString();
    EXPECT_TRUE(install.out.contains(QStringLiteral("Thunar: installed in %1\n").arg(uca)));
    EXPECT_TRUE(install.out.contains(u"nautilus -q"));
    const QString data = home + QStringLiteral("/.local/share");
    EXPECT_TRUE(QFileInfo(scripts + QStringLiteral("/Convert with Wendrel")).isExecutable());
    EXPECT_TRUE(QFileInfo(home + QStringLiteral("/.config/caja/scripts/Wendrel Actions")).isExecutable());
    EXPECT_TRUE(QFileInfo(data + QStringLiteral("/kio/servicemenus/wendrel-ring.desktop")).isExecutable());
    EXPECT_TRUE(QFileInfo::exists(data + QStringLiteral("/kservices5/ServiceMenus/wendrel-ring.desktop")));
    EXPECT_TRUE(QFileInfo::exists(data + QStringLiteral("/nemo/actions/wendrel-tools.nemo_action")));
    EXPECT_EQ(QFile::permissions(uca), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    EXPECT_TRUE(readFile(uca).contains("<name>Mine</name>"));
    EXPECT_TRUE(readFile(uca).contains("<name>Wendrel Tools</name>"));

    const auto installed = tree(root.path());
    const Finished again = wendrel({QStringLiteral("integrate")});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.out.count(u"already installed in"), 5) << again.out.toStdString();
    EXPECT_EQ(tree(root.path()), installed);

    const Finished remove = wendrel({QStringLiteral("integrate"), QStringLiteral("--remove")});
    EXPECT_EQ(remove.exitCode, 0) << remove.out.toStdString();
    EXPECT_TRUE(remove.out.contains(
        QStringLiteral("Dolphin: removed from %1/kio/servicemenus and %1/kservices5/ServiceMenus\n").arg(data)));
    EXPECT_EQ(tree(root.path()), before);

    EXPECT_TRUE(wendrel({QStringLiteral("integrate"), QStringLiteral("--remove")}).out.contains(u"Thunar: nothing to remove\n"));
}

TEST_F(IntegrateCommandTest, AUsersFileWhereWendrelsWouldGoIsLeftAlone)
{
    const QString theirs = home + QStringLiteral("/.config/caja/scripts/Wendrel Tools");
    writeFile(theirs, "#!/bin/sh\nexec my-own-wendrel-wrapper \"$@\"\n");
    const QByteArray theirBytes = readFile(theirs);

    const Finished install = wendrel({QStringLiteral("integrate")});
    EXPECT_EQ(install.exitCode, 1);
    EXPECT_TRUE(install.out.contains(QStringLiteral("Caja: installed in %1; left %2 alone: it isn't Wendrel's\n")
                                         .arg(QFileInfo(theirs).path(), theirs)))
        << install.out.toStdString();
    EXPECT_EQ(readFile(theirs), theirBytes);
    EXPECT_TRUE(QFileInfo::exists(home + QStringLiteral("/.config/caja/scripts/Wendrel Actions")));

    const Finished remove = wendrel({QStringLiteral("integrate"), QStringLiteral("--remove")});
    EXPECT_EQ(remove.exitCode, 0);
    EXPECT_EQ(readFile(theirs), theirBytes);
    EXPECT_EQ(folderEntries(QFileInfo(theirs).path()), QStringList{QStringLiteral("Wendrel Tools")});
}

TEST_F(IntegrateCommandTest, AFolderThatCannotBeMadeFailsThatFileManagerOnly)
{
    const QString blocker = home + QStringLiteral("/.local/share/nemo");
    writeFile(blocker, "a file where Nemo's folder would be");
    const Finished install = wendrel({QStringLiteral("integrate")});
    EXPECT_EQ(install.exitCode, 1);
    EXPECT_TRUE(install.out.contains(
        QStringLiteral("Nemo: not installed; can't create the folder %1/actions\n").arg(blocker)))
        << install.out.toStdString();
    EXPECT_TRUE(install.out.contains(u"Thunar: installed in "));

    const Finished remove = wendrel({QStringLiteral("integrate"), QStringLiteral("--remove")});
    EXPECT_EQ(remove.exitCode, 0);
    EXPECT_TRUE(remove.out.contains(u"Nemo: nothing to remove\n"));
    EXPECT_EQ(readFile(blocker), "a file where Nemo's folder would be");
}

TEST_F(IntegrateCommandTest, FollowsXdgDataAndConfigHomeAndReportsJson)
{
    environment.insert(QStringLiteral("XDG_DATA_HOME"), root.filePath(QStringLiteral("xdg data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root.filePath(QStringLiteral("xdg config")));
    const Finished install = wendrel({QStringLiteral("integrate"), QStringLiteral("--json")});
    ASSERT_EQ(install.exitCode, 0) << install.out.toStdString();
    const QJsonObject report = QJsonDocument::fromJson(install.out.toUtf8()).object();
    EXPECT_EQ(report.value(QStringLiteral("action")).toString(), u"install");
    const QJsonArray managers = report.value(QStringLiteral("fileManagers")).toArray();
    ASSERT_EQ(managers.size(), 5);
    EXPECT_EQ(managers[4].toObject().value(QStringLiteral("name")).toString(), u"Thunar");
    int files = 0;
    for (const QJsonValue manager : managers) {
        for (const QJsonValue file : manager.toObject().value(QStringLiteral("files")).toArray()) {
            const QString path = file.toObject().value(QStringLiteral("path")).toString();
            EXPECT_TRUE(path.startsWith(root.filePath(QStringLiteral("xdg "))) && QFileInfo::exists(path)) << path.toStdString();
            EXPECT_EQ(file.toObject().value(QStringLiteral("outcome")).toString(), u"written");
            ++files;
        }
    }
    EXPECT_EQ(files, 12);
    EXPECT_TRUE(folderEntries(home).isEmpty());

    EXPECT_EQ(wendrel({QStringLiteral("integrate"), QStringLiteral("--remove")}).exitCode, 0);
    EXPECT_EQ(folderEntries(root.path()), (QStringList{QStringLiteral("home")}));
}

TEST_F(StandInTest, NautilusAndCajaScriptsPassEveryNameAsOneArgument)
{
    // Nautilus starts a script in the viewed folder with the selected names as arguments.
    const QString nautilus = homes.dataHome + QStringLiteral("/nautilus/scripts/Convert with Wendrel");
    EXPECT_EQ(run(QStringLiteral("sh"), QStringList{nautilus} + names, environmentWith({}, {}), selection).exitCode, 0);
    EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), QStringLiteral("convert")}) + names);

    const QString caja = homes.configHome + QStringLiteral("/caja/scripts/Wendrel Actions");
    EXPECT_EQ(run(QStringLiteral("sh"), QStringList{caja} + absoluteNames, environmentWith({}, {})).exitCode, 0);
    EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), QStringLiteral("actions")}) + absoluteNames);
}

TEST_F(StandInTest, ScriptsReadTheSelectionVariableWhenTheArgumentsAreNoLocalPaths)
{
    // A search result comes as a URI; the variable then lists the paths, one a line.
    const QStringList listable = absoluteNames.filter(QRegularExpression(QStringLiteral("^[^\n]*$")));
    const QString list = listable.join(u'\n') + u'\n';
    const QString nautilus = homes.dataHome + QStringLiteral("/nautilus/scripts/Wendrel Tools");
    const QProcessEnvironment withList = environmentWith(QStringLiteral("NAUTILUS_SCRIPT_SELECTED_FILE_PATHS"), list);
    EXPECT_EQ(run(QStringLiteral("sh"), {nautilus, QStringLiteral("file:///search/a%20b.jpg")}, withList).exitCode, 0);
    EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), QStringLiteral("tools")}) + listable);

    const QString caja = homes.configHome + QStringLiteral("/caja/scripts/Convert with Wendrel");
    EXPECT_EQ(run(QStringLiteral("sh"), {caja}, environmentWith(QStringLiteral("CAJA_SCRIPT_SELECTED_FILE_PATHS"), list),
                  selection)
                  .exitCode,
              0);
    EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), QStringLiteral("convert")}) + listable);

    // Nothing selected at all: the script ends without starting wendrel.
    EXPECT_EQ(run(QStringLiteral("sh"), {caja}, environmentWith({}, {})).exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(record));
}

TEST_F(StandInTest, ThunarCommandReachesTheStandInThroughTheShell)
{
    QStringList commands;
    QXmlStreamReader reader(readFile(thunarActionsPath(homes)));
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == u"command")
            commands.append(reader.readElementText());
    }
    ASSERT_EQ(commands.size(), 3);

    // What Thunar does: each path in single quotes for %F, %% for a percent, then /bin/sh -c.
    QStringList quoted;
    for (QString name : absoluteNames)
        quoted.append(u'\'' + name.replace(u'\'', QStringLiteral("'\\''")) + u'\'');
    QString command = commands[1];
    command.replace(QStringLiteral("%F"), quoted.join(u' ')).replace(QStringLiteral("%%"), QStringLiteral("%"));
    EXPECT_EQ(run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command}, environmentWith({}, {})).exitCode, 0);
    EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), QStringLiteral("tools")}) + absoluteNames);
}

TEST_F(StandInTest, DolphinAndNemoExecLinesReachTheStandInThroughGLibsDesktopEntryReader)
{
    const QString gio = QStandardPaths::findExecutable(QStringLiteral("gio"));
    if (gio.isEmpty())
        GTEST_SKIP() << "gio (libglib2.0-bin) is not installed";
    // GLib reads Exec by the desktop entry rules, as KIO and Nemo do; an application entry
    // carrying the same Exec value shows what a file manager would start.
    const struct {
        QString file;
        QString ring;
    } cases[] = {{homes.dataHome + QStringLiteral("/kio/servicemenus/wendrel-ring.desktop"), QStringLiteral("convert")},
                 {homes.dataHome + QStringLiteral("/nemo/actions/wendrel-actions.nemo_action"), QStringLiteral("actions")}};
    for (const auto& entry : cases) {
        const QString probe = root.filePath(QStringLiteral("probe.desktop"));
        writeFile(probe, QStringLiteral("[Desktop Entry]\nType=Application\nName=Probe\nExec=%1\n")
                             .arg(execLine(entry.file))
                             .toUtf8());
        const Finished launch = run(gio, QStringList{QStringLiteral("launch"), probe} + absoluteNames, environmentWith({}, {}));
        EXPECT_EQ(launch.exitCode, 0) << launch.out.toStdString();
        EXPECT_EQ(recorded(), QStringList({QStringLiteral("ring"), entry.ring}) + absoluteNames) << entry.file.toStdString();
    }
}

TEST_F(StandInTest, DolphinServiceMenuPassesTheValidatorButForWhatOnlyServiceMenusUse)
{
    const QString validator = QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    if (validator.isEmpty())
        GTEST_SKIP() << "desktop-file-validate (desktop-file-utils) is not installed";
    // The validator knows application entries: MimeType and Actions in a Type=Service entry and
    // the all/all pseudo type are what service menus are made of, so those complaints are expected.
    const Finished validation = run(validator, {homes.dataHome + QStringLiteral("/kio/servicemenus/wendrel-ring.desktop")},
                               environmentWith({}, {}));
    QStringList unexpected;
    for (const QString& line : validation.out.split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.contains(u"\"all/all\"") && !line.contains(u"while this key is only valid for type \"Application\""))
            unexpected.append(line);
    }
    EXPECT_TRUE(unexpected.isEmpty()) << unexpected.join(u'\n').toStdString();
    EXPECT_TRUE(validation.out.contains(u"\"all/all\""))
        << "the validator did not read the file: " << validation.out.toStdString();
}

TEST_F(StandInTest, ANewUcaXmlKeepsThunarsDefaultsAndGoesAwayWithWendrelsActions)
{
    removeFileManagerActions(homes);
    EXPECT_FALSE(QFileInfo::exists(homes.configHome));  // created by the install, empty again
    EXPECT_FALSE(QFileInfo::exists(homes.dataHome));

    writeFile(homes.configDirs[0] + QStringLiteral("/Thunar/uca.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n<action>\n\t<name>Open Terminal Here</name>\n"
              "\t<command>exo-open %F</command>\n</action>\n</actions>\n");
    installFileManagerActions(homes, standIn);
    const QString uca = thunarActionsPath(homes);
    EXPECT_TRUE(readFile(uca).contains("<name>Open Terminal Here</name>"));
    EXPECT_TRUE(readFile(uca).contains("<name>Convert with Wendrel</name>"));

    removeFileManagerActions(homes);
    EXPECT_FALSE(QFileInfo::exists(homes.configHome));
}
