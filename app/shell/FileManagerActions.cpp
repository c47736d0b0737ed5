#include "FileManagerActions.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QUrl>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("FileManagerActions", text); }

// The comment at the top of every file Wendrel owns (after a script's #! line); recognising
// files by it means a user's own file of the same name is never replaced or deleted.
QString ownFileMarker()
{
    return QStringLiteral("# ") + QLatin1String(integrationMarker)
           + QStringLiteral(" written by \"wendrel integrate\"; \"wendrel integrate --remove\" deletes it.");
}

const QLatin1String createdFoldersKey("wendrel-integrate-created:");

// An argument of a desktop entry's Exec key: double quotes, in which ", `, $ and \ take a backslash.
// A literal % is doubled, as field codes start with one.
QString execQuoted(const QString& argument)
{
    QString quoted;
    for (const QChar character : argument) {
        if (character == u'"' || character == u'`' || character == u'$' || character == u'\\')
            quoted += u'\\';
        quoted += character;
    }
    quoted = u'"' + quoted + u'"';
    return quoted.replace(u'%', QLatin1String("%%"));
}

// A desktop entry's string value: backslashes and line breaks are escaped, and this happens after
// Exec quoting, so a backslash in a quoted argument ends up as four.
QString desktopValue(QString value)
{
    return value.replace(u'\\', QLatin1String("\\\\"))
        .replace(u'\n', QLatin1String("\\n"))
        .replace(u'\t', QLatin1String("\\t"))
        .replace(u'\r', QLatin1String("\\r"));
}

QString ringExec(const QString& executable, RingKind ring)
{
    return desktopValue(execQuoted(executable) + QStringLiteral(" ring ") + rawValue(ring) + QStringLiteral(" %F"));
}

}  // namespace

QString shellQuoted(QString text) { return u'\'' + text.replace(u'\'', QLatin1String("'\\''")) + u'\''; }

QString contextMenuDescription(RingKind ring)
{
    switch (ring) {
    case RingKind::convert: return translate("Open Wendrel's convert ring for the selected files");
    case RingKind::tools: return translate("Open Wendrel's tools ring for the selected files");
    case RingKind::actions: return translate("Open Wendrel's actions ring for the selected files");
    }
    return {};
}

QString createdFoldersNote(const QStringList& folders)
{
    QString note = createdFoldersKey;
    // '-' is encoded too, so that the note can sit in an XML comment, where "--" may not appear.
    for (const QString& folder : folders)
        note += u' ' + QString::fromLatin1(QUrl::toPercentEncoding(folder, "/", "-"));
    return note;
}

QString fileManagerName(FileManager manager)
{
    switch (manager) {
    case FileManager::nautilus: return QStringLiteral("Nautilus");
    case FileManager::caja: return QStringLiteral("Caja");
    case FileManager::nemo: return QStringLiteral("Nemo");
    case FileManager::dolphin: return QStringLiteral("Dolphin");
    case FileManager::thunar: return QStringLiteral("Thunar");
    }
    return {};
}

QString contextMenuLabel(RingKind ring)
{
    switch (ring) {
    case RingKind::convert: return translate("Convert with Wendrel");
    case RingKind::tools: return translate("Wendrel Tools");
    case RingKind::actions: return translate("Wendrel Actions");
    }
    return {};
}

IntegrationHomes IntegrationHomes::current()
{
    IntegrationHomes homes;
    homes.dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    homes.configHome = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    homes.configDirs = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    homes.configDirs.removeAll(homes.configHome);
    return homes;
}

QByteArray selectionScript(FileManager manager, RingKind ring, const QString& executable)
{
    const QString variable = manager == FileManager::caja ? QStringLiteral("CAJA_SCRIPT_SELECTED_FILE_PATHS")
                                                          : QStringLiteral("NAUTILUS_SCRIPT_SELECTED_FILE_PATHS");
    return QStringLiteral(
               "#!/bin/sh\n"
               "%1\n"
               "# Opens Wendrel's %2 ring for the files selected in %3.\n"
               "#\n"
               "# %3 passes the selection as arguments, relative to the folder it starts the script in.\n"
               "# Where one is not a local path (search results come as URIs), the list in\n"
               "# %4 is read instead, one path a line; only the\n"
               "# arguments can hold names with line breaks.\n"
               "from_list=no\n"
               "[ \"$#\" -gt 0 ] || from_list=yes\n"
               "for file in \"$@\"; do\n"
               "    [ -e \"$file\" ] || [ -L \"$file\" ] || from_list=yes\n"
               "done\n"
               "if [ \"$from_list\" = yes ]; then\n"
               "    set -f\n"
               "    IFS='\n"
               "'\n"
               "    set -- ${%4-}\n"
               "    unset IFS\n"
               "    set +f\n"
               "fi\n"
               "[ \"$#\" -gt 0 ] || exit 0\n"
               "exec %5 ring %6 \"$@\"\n")
        .arg(ownFileMarker(), rawValue(ring), fileManagerName(manager), variable, shellQuoted(executable), rawValue(ring))
        .toUtf8();
}

QByteArray nemoAction(RingKind ring, const QString& executable)
{
    // Quote=double: Nemo puts each path in double quotes and escapes its quotes; without it, a
    // name with a space would arrive as two arguments.
    return QStringLiteral("%1\n"
                          "[Nemo Action]\n"
                          "Name=%2\n"
                          "Comment=%3\n"
                          "Exec=%4\n"
                          "Icon-Name=wendrel\n"
                          "Selection=NotNone\n"
                          "Extensions=any;\n"
                          "Quote=double\n")
        .arg(ownFileMarker(), desktopValue(contextMenuLabel(ring)), desktopValue(contextMenuDescription(ring)),
             ringExec(executable, ring))
        .toUtf8();
}

QByteArray dolphinServiceMenu(const QString& executable)
{
    QString text = QStringLiteral("%1\n"
                                  "[Desktop Entry]\n"
                                  "Type=Service\n"
                                  "Name=Wendrel\n"
                                  "Icon=wendrel\n"
                                  "X-KDE-ServiceTypes=KonqPopupMenu/Plugin\n"
                                  "MimeType=all/all;\n"
                                  "Actions=wendrelConvert;wendrelTools;wendrelActions;\n"
                                  "X-KDE-StartupNotify=false\n")
                       .arg(ownFileMarker());
    for (RingKind ring : allRingKinds) {
        QString id = rawValue(ring);
        id[0] = id[0].toUpper();
        text += QStringLiteral("\n[Desktop Action wendrel%1]\nName=%2\nIcon=wendrel\nExec=%3\n")
                    .arg(id, desktopValue(contextMenuLabel(ring)), ringExec(executable, ring));
    }
    return text.toUtf8();
}

QList<OwnFile> ownFiles(FileManager manager, const IntegrationHomes& homes, const QString& executable)
{
    QList<OwnFile> files;
    switch (manager) {
    case FileManager::nautilus:
    case FileManager::caja: {
        const QString folder = manager == FileManager::caja ? homes.configHome + QStringLiteral("/caja/scripts/")
                                                            : homes.dataHome + QStringLiteral("/nautilus/scripts/");
        // The script's name is its menu label.
        for (RingKind ring : allRingKinds)
            files.append({folder + contextMenuLabel(ring), selectionScript(manager, ring, executable), true});
        break;
    }
    case FileManager::nemo:
        for (RingKind ring : allRingKinds)
            files.append({homes.dataHome + QStringLiteral("/nemo/actions/wendrel-%1.nemo_action").arg(rawValue(ring)),
                          nemoAction(ring, executable), false});
        break;
    case FileManager::dolphin:
        // Plasma 6 reads service menus only from kio/servicemenus and only when they are
        // executable; Plasma 5 reads kservices5/ServiceMenus. Plasma 5.85 and later read both
        // and show a name found in both once.
        files.append({homes.dataHome + QStringLiteral("/kio/servicemenus/wendrel-ring.desktop"),
                      dolphinServiceMenu(executable), true});
        files.append({homes.dataHome + QStringLiteral("/kservices5/ServiceMenus/wendrel-ring.desktop"),
                      dolphinServiceMenu(executable), false});
        break;
    case FileManager::thunar:
        break;
    }
    return files;
}

bool isWendrelFile(const QByteArray& content)
{
    const QByteArray marker = QByteArray("# ") + integrationMarker;
    return content.startsWith(marker) || content.contains('\n' + marker);
}

QStringList foldersCreatedFor(const QByteArray& content)
{
    const QString text = QString::fromUtf8(content);
    const qsizetype key = text.indexOf(createdFoldersKey);
    if (key < 0)
        return {};
    const qsizetype start = key + createdFoldersKey.size();
    qsizetype end = text.indexOf(u'\n', start);
    QString list = text.mid(start, end < 0 ? -1 : end - start);
    if (const qsizetype commentEnd = list.indexOf(QLatin1String("-->")); commentEnd >= 0)
        list.truncate(commentEnd);
    QStringList folders;
    for (const QString& encoded : list.split(u' ', Qt::SkipEmptyParts))
        folders.append(QString::fromUtf8(QByteArray::fromPercentEncoding(encoded.toLatin1())));
    return folders;
}

QByteArray withFoldersCreated(const QByteArray& ownFileContent, const QStringList& folders)
{
    if (folders.isEmpty())
        return ownFileContent;
    const QString line = QStringLiteral("# ") + createdFoldersNote(folders);
    QString text = QString::fromUtf8(ownFileContent);
    const qsizetype markerLineEnd = text.indexOf(u'\n', text.indexOf(ownFileMarker()));
    text.insert(markerLineEnd + 1, line + u'\n');
    return text.toUtf8();
}

}  // namespace wendrel
