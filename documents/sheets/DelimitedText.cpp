#include "DelimitedText.h"

#include "SheetErrors.h"
#include "SheetLimits.h"

#include <QCoreApplication>
#include <QIODevice>

#include <array>

namespace wendrel {

namespace {

constexpr std::array<QChar, 4> delimiterCandidates{u',', u';', u'\t', u'|'};
constexpr int linesToCompare = 20;
constexpr qsizetype writeBufferBytes = 1 << 20;

}  // namespace

QChar detectDelimiter(QStringView head)
{
    // Candidate counts per line, outside quotes.
    QList<std::array<int, 4>> lines;
    std::array<int, 4> counts{};
    bool quoted = false;
    bool lineEnded = false;
    for (qsizetype i = 0; i < head.size() && lines.size() < linesToCompare; ++i) {
        const QChar c = head[i];
        if (c == u'"') {
            quoted = !quoted;  // "" inside quotes flips twice: still inside
            continue;
        }
        if (quoted)
            continue;
        if (c == u'\n' || c == u'\r') {
            if (c == u'\r' && i + 1 < head.size() && head[i + 1] == u'\n')
                ++i;
            lines.append(counts);
            counts = {};
            lineEnded = true;
            continue;
        }
        lineEnded = false;
        for (std::size_t k = 0; k < delimiterCandidates.size(); ++k) {
            if (c == delimiterCandidates[k])
                ++counts[k];
        }
    }
    // A last line cut off by the end of the head counts only when it is the only one.
    if (!lineEnded && lines.isEmpty())
        lines.append(counts);

    QChar best = u',';
    int bestAgreeing = 0;
    for (std::size_t k = 0; k < delimiterCandidates.size() && !lines.isEmpty(); ++k) {
        const int onFirstLine = lines.first()[k];
        if (onFirstLine == 0)
            continue;
        int agreeing = 0;
        for (const auto& line : lines)
            agreeing += line[k] == onFirstLine;
        if (agreeing > bestAgreeing) {
            best = delimiterCandidates[k];
            bestAgreeing = agreeing;
        }
    }
    return best;
}

DelimitedParser::DelimitedParser(QChar delimiter, RowSink sink)
    : m_delimiter(delimiter), m_sink(std::move(sink))
{
}

void DelimitedParser::append(QChar c)
{
    if (m_field.size() >= sheet::longestDelimitedField)
        throw sheet::unreadableTable();
    m_field.append(c);
}

void DelimitedParser::endField()
{
    if (m_fields.size() >= sheet::mostDelimitedFields)
        throw sheet::unreadableTable();
    m_fields.append(m_field);
    m_field.clear();
    m_state = State::fieldStart;
}

void DelimitedParser::endRow()
{
    if (m_rowStarted)
        endField();
    m_sink(m_fields);
    m_fields.clear();
    m_rowStarted = false;
    m_state = State::fieldStart;
}

void DelimitedParser::feed(QStringView text)
{
    for (const QChar c : text) {
        if (m_skipLineFeed) {
            m_skipLineFeed = false;
            if (c == u'\n')
                continue;
        }
        switch (m_state) {
        case State::quoted:
            if (c == u'"')
                m_state = State::quoteInQuoted;
            else
                append(c);
            continue;
        case State::quoteInQuoted:
            if (c == u'"') {
                append(c);
                m_state = State::quoted;
                continue;
            }
            break;  // the field's quotes have closed: what follows is read as outside them
        case State::fieldStart:
            if (c == u'"') {
                m_rowStarted = true;
                m_state = State::quoted;
                continue;
            }
            break;
        case State::unquoted:
            break;
        }

        if (c == m_delimiter) {
            m_rowStarted = true;
            endField();
        } else if (c == u'\n' || c == u'\r') {
            endRow();
            m_skipLineFeed = c == u'\r';
        } else {
            m_rowStarted = true;
            append(c);
            m_state = State::unquoted;
        }
    }
}

void DelimitedParser::finish()
{
    if (m_rowStarted)
        endRow();
}

QString delimitedField(const QString& text, QChar delimiter)
{
    bool needsQuotes = !text.isEmpty() && (text.front() == u' ' || text.back() == u' ');
    for (qsizetype i = 0; i < text.size() && !needsQuotes; ++i) {
        const QChar c = text[i];
        needsQuotes = c == delimiter || c == u'"' || c == u'\n' || c == u'\r';
    }
    if (!needsQuotes)
        return text;
    QString quoted = text;
    quoted.replace(u'"', QStringLiteral("\"\""));
    return u'"' + quoted + u'"';
}

DelimitedWriter::DelimitedWriter(QIODevice& device, QChar delimiter) : m_device(device), m_delimiter(delimiter)
{
    m_buffer.reserve(writeBufferBytes + 4096);
}

void DelimitedWriter::writeRow(const SheetRow& row)
{
    for (qsizetype i = 0; i < row.size(); ++i) {
        if (i > 0)
            m_buffer.append(char(m_delimiter.unicode()));
        m_buffer.append(delimitedField(cellText(row[i]), m_delimiter).toUtf8());
    }
    m_buffer.append("\r\n");
    if (m_buffer.size() >= writeBufferBytes)
        flush();
}

void DelimitedWriter::flush()
{
    if (m_device.write(m_buffer) != m_buffer.size()) {
        throw OperationError::withReason(QCoreApplication::translate("SheetOperations", "Couldn't write the table"),
                                         m_device.errorString());
    }
    m_buffer.clear();
}

void DelimitedWriter::finish() { flush(); }

}  // namespace wendrel
