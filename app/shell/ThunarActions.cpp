#include "ThunarActions.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace wendrel {

namespace {

const QLatin1String thunarIdPrefix("wendrel-integrate-");

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
        const bool isNote = token == QXmlStreamReader::Comment && depth == 0
                            && reader.text().trimmed().startsWith(QLatin1String(integrationMarker));
        if (isNote) {
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
    // Only elements Thunar has long known: an unknown one makes it reject the whole file.
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
             contextMenuDescription(ring).toHtmlEscaped());
}

QByteArray emptyThunarFile() { return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n"; }

// What a uca.xml that Wendrel created looks like once Wendrel's parts are taken out again.
QByteArray thunarBase(const QByteArray& systemDefault)
{
    return !systemDefault.isEmpty() && readThunarLayout(systemDefault) ? systemDefault : emptyThunarFile();
}

}  // namespace

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
    QString note = QStringLiteral("<!-- ") + QLatin1String(integrationMarker)
                   + QStringLiteral(" created by \"wendrel integrate\", whose remove option deletes it again while "
                                    "it holds nothing else.");
    if (!foldersCreated.isEmpty())
        note += u' ' + createdFoldersNote(foldersCreated);
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
