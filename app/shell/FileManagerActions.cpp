#include "FileManagerActions.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("FileManagerActions", text); }

// The first line of every file Wendrel owns; recognising files by it means a user's own file
// of the same name is never replaced or deleted.
const QLatin1String ownFileMarker("# wendrel-integrate: written by \"wendrel integrate\"; "
                                  "\"wendrel integrate --remove\" deletes it.");
const QLatin1String markerPrefix("wendrel-integrate:");
const QLatin1String createdFoldersKey("wendrel-integrate-created:");
const QLatin1String thunarIdPrefix("wendrel-integrate-");

// POSIX sh: inside single quotes every character stands for itself except the quote, which
// closes, is escaped, and reopens.
QString shellQuoted(QString text) { return u'\'' + text.replace(u'\'', QLatin1String("'\\''")) + u'\''; }

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

QString description(RingKind ring)
{
    switch (ring) {
    case RingKind::convert: return translate("Open Wendrel's convert ring for the selected files");
    case RingKind::tools: return translate("Open Wendrel's tools ring for the selected files");
    case RingKind::actions: return translate("Open Wendrel's actions ring for the selected files");
    }
    return {};
}

QString encodedFolder(const QString& folder)
{
    // '-' too, so that the list can sit in an XML comment, where "--" may not appear.
    return QString::fromLatin1(QUrl::toPercentEncoding(folder, "/", "-"));
}

// ---- Thunar's uca.xml ----

struct Span {
    qsizetype start = 0;
    qsizetype end = 0;
};

// Where things are in a uca.xml, as offsets into its text, so that edits keep every other byte.
struct ThunarLayout {
    QString text;
    qsizetype rootStart = 0;        // "<actions"
    qsizetype rootOpenEnd = 0;      // just past "<actions>" (or "<actions/>")
    qsizetype rootCloseStart = 0;   // "</actions>"
    bool rootSelfClosed = false;
    QList<Span> wendrelActions;
    std::optional<Span> wendrelNote;
};

std::optional<ThunarLayout> readThunarLayout(const QByteArray& bytes)
{
    ThunarLayout layout;
    layout.text = QString::fromUtf8(bytes);
    if (layout.text.toUtf8() != bytes)
        return std::nullopt;  // not UTF-8: it couldn't be written back byte for byte
    const QString& text = layout.text;
    // Thunar writes its declaration as <?xml encoding="UTF-8" version="1.0"?>, which strict XML
    // readers refuse; the text is decoded already, so the reader gets spaces in its place.
    QString parsed = text;
    if (parsed.startsWith(QLatin1String("<?xml"))) {
        const qsizetype end = parsed.indexOf(QLatin1String("?>"));
        if (end > 0)
            parsed.replace(0, end + 2, QString(end + 2, u' '));
    }
    QXmlStreamReader reader(parsed);
    int depth = 0;
    bool sawRoot = false;
    qsizetype actionStart = 0;
    QString actionId;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        // Element offsets point just past the tag's '>'; a tag holds no other '<'.
        const qsizetype offset = reader.characterOffset();
        if (token == QXmlStreamReader::Comment && depth == 0 && reader.text().trimmed().startsWith(markerPrefix)) {
            layout.wendrelNote = Span{text.lastIndexOf(QLatin1String("<!--"), offset - 1), offset};
        } else if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth == 1) {
                if (reader.name() != u"actions")
                    return std::nullopt;
                sawRoot = true;
                layout.rootStart = text.lastIndexOf(u'<', offset - 1);
                layout.rootOpenEnd = offset;
            } else if (depth == 2 && reader.name() == u"action") {
                actionStart = text.lastIndexOf(u'<', offset - 1);
                actionId.clear();
            } else if (depth == 3 && reader.name() == u"unique-id") {
                actionId = reader.readElementText().trimmed();
                --depth;  // readElementText() consumed the end tag
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (depth == 2 && reader.name() == u"action" && actionId.startsWith(thunarIdPrefix))
                layout.wendrelActions.append(Span{actionStart, offset});
            if (depth == 1) {
                layout.rootSelfClosed = offset == layout.rootOpenEnd;
                layout.rootCloseStart = layout.rootSelfClosed ? layout.rootStart : text.lastIndexOf(u'<', offset - 1);
            }
            --depth;
        }
    }
    if (reader.hasError() || !sawRoot)
        return std::nullopt;
    return layout;
}

// Cuts the spans out of the text, each with the line break that follows it.
QString withoutSpans(QString text, QList<Span> spans)
{
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.start > b.start; });
    for (Span span : spans) {
        if (span.end < text.size() && text[span.end] == u'\n')
            ++span.end;
        text.remove(span.start, span.end - span.start);
    }
    return text;
}

QString thunarAction(RingKind ring, const QString& executable)
{
    const QString command = shellQuoted(executable).replace(u'%', QLatin1String("%%")) + QStringLiteral(" ring ")
                            + rawValue(ring) + QStringLiteral(" %F");
    // Only elements every Thunar since 4.16 knows: an unknown one makes it reject the whole file.
    return QStringLiteral("<action>\n"
                          "\t<icon>wendrel</icon>\n"
                          "\t<name>%1</name>\n"
                          "\t<unique-id>%2</unique-id>\n"
                          "\t<command>%3</command>\n"
                          "\t<description>%4</description>\n"
                          "\t<patterns>*</patterns>\n"
                          "\t<directories/>\n"
                          "\t<audio-files/>\n"
                          "\t<image-files/>\n"
                          "\t<other-files/>\n"
                          "\t<text-files/>\n"
                          "\t<video-files/>\n"
                          "</action>\n")
        .arg(contextMenuLabel(ring).toHtmlEscaped(), thunarIdPrefix + rawValue(ring), command.toHtmlEscaped(),
             description(ring).toHtmlEscaped());
}

QByteArray emptyThunarFile() { return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n"; }

// What a uca.xml that Wendrel created looks like once Wendrel's parts are taken out again.
QByteArray thunarBase(const QByteArray& systemDefault)
{
    return !systemDefault.isEmpty() && readThunarLayout(systemDefault) ? systemDefault : emptyThunarFile();
}

}  // namespace

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
        .arg(ownFileMarker, rawValue(ring), fileManagerName(manager), variable, shellQuoted(executable), rawValue(ring))
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
        .arg(ownFileMarker, desktopValue(contextMenuLabel(ring)), desktopValue(description(ring)),
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
                       .arg(ownFileMarker);
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
    const QByteArray marker = "# " + QByteArray(markerPrefix.data(), markerPrefix.size());
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
    QString line = QStringLiteral("# ") + createdFoldersKey;
    for (const QString& folder : folders)
        line += u' ' + encodedFolder(folder);
    QString text = QString::fromUtf8(ownFileContent);
    const qsizetype markerLineEnd = text.indexOf(u'\n', text.indexOf(ownFileMarker));
    text.insert(markerLineEnd + 1, line + u'\n');
    return text.toUtf8();
}

QString thunarActionsPath(const IntegrationHomes& homes) { return homes.configHome + QStringLiteral("/Thunar/uca.xml"); }

std::optional<QByteArray> thunarActionsWithWendrel(const QByteArray& existing, const QString& executable)
{
    const std::optional<ThunarLayout> old = readThunarLayout(existing);
    if (!old)
        return std::nullopt;
    const std::optional<ThunarLayout> layout =
        readThunarLayout(withoutSpans(old->text, old->wendrelActions).toUtf8());
    if (!layout)
        return std::nullopt;
    QString actions;
    for (RingKind ring : allRingKinds)
        actions += thunarAction(ring, executable);
    QString text = layout->text;
    if (layout->rootSelfClosed)
        text.replace(layout->rootStart, layout->rootOpenEnd - layout->rootStart,
                     QStringLiteral("<actions>\n") + actions + QStringLiteral("</actions>"));
    else
        text.insert(layout->rootCloseStart, actions);
    return text.toUtf8();
}

std::optional<QByteArray> thunarActionsWithoutWendrel(const QByteArray& existing)
{
    const std::optional<ThunarLayout> layout = readThunarLayout(existing);
    if (!layout)
        return std::nullopt;
    QList<Span> spans = layout->wendrelActions;
    if (layout->wendrelNote)
        spans.append(*layout->wendrelNote);
    return withoutSpans(layout->text, spans).toUtf8();
}

QByteArray newThunarActionsFile(const QByteArray& systemDefault, const QStringList& foldersCreated)
{
    QString note = QStringLiteral("<!-- wendrel-integrate: created by \"wendrel integrate\", whose remove option "
                                  "deletes it again while it holds nothing else.");
    if (!foldersCreated.isEmpty()) {
        note += u' ' + createdFoldersKey;
        for (const QString& folder : foldersCreated)
            note += u' ' + encodedFolder(folder);
    }
    note += QStringLiteral(" -->\n");

    QString text = QString::fromUtf8(thunarBase(systemDefault));
    qsizetype position = 0;
    if (text.startsWith(QLatin1String("<?xml"))) {
        position = text.indexOf(QLatin1String("?>")) + 2;
        if (position < text.size() && text[position] == u'\n')
            ++position;
    }
    text.insert(position, note);
    return text.toUtf8();
}

bool isUnchangedThunarFileOfWendrel(const QByteArray& existing, const QByteArray& systemDefault)
{
    const std::optional<ThunarLayout> layout = readThunarLayout(existing);
    return layout && layout->wendrelNote && thunarActionsWithoutWendrel(existing) == thunarBase(systemDefault);
}

}  // namespace wendrel
