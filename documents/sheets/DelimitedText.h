#pragma once

#include "SheetCell.h"

#include <QByteArray>
#include <QStringList>

#include <functional>

class QIODevice;

namespace wendrel {

// The separator of a CSV file, guessed from its first lines: whichever of ',', ';', tab and
// '|' appears outside quotes on the first line and the same number of times on most of the
// lines that follow (';' is the CSV of locales whose decimal point is a comma). A tie goes to
// the earlier of that list; text without any of them is one column, and ',' is as good as any.
QChar detectDelimiter(QStringView head);

// Splits delimited text into rows of fields as it arrives, in pieces of any size, so a file
// of any length passes through in bounded memory.
//
// Fields follow RFC 4180 and what programs actually write: a field that starts with a quote
// runs to the next lone quote, and holds delimiters, line breaks and "" for a quote; a quote
// anywhere else in a field is an ordinary character, and so is text after a closing quote.
// Rows end at \n, \r\n or a lone \r and keep the number of fields they have; an empty line is
// an empty row. A quoted field still open at the end of the text runs to the end. A field
// longer than sheet::longestDelimitedField characters or a row of more than
// sheet::mostDelimitedFields fields ends the reading with sheet::unreadableTable(): a quote
// that never closes can't swallow memory.
class DelimitedParser {
public:
    using RowSink = std::function<void(const QStringList& fields)>;

    DelimitedParser(QChar delimiter, RowSink sink);

    void feed(QStringView text);
    // Hands over the last row when the text doesn't end with a line break.
    void finish();

private:
    enum class State { fieldStart, unquoted, quoted, quoteInQuoted };

    void append(QChar c);
    void endField();
    void endRow();

    QChar m_delimiter;
    RowSink m_sink;
    State m_state = State::fieldStart;
    QString m_field;
    QStringList m_fields;
    bool m_rowStarted = false;
    bool m_skipLineFeed = false;  // the row ended at \r: a \n right after belongs to it
};

// Writes rows as delimited text: UTF-8 without byte-order mark, lines ending in \r\n, fields
// as cellText() gives them, quoted (with "" for a quote) when they hold the delimiter, a quote
// or a line break, or begin or end with a space, so every reader splits them back the same.
// No byte-order mark: the tools that follow a CSV on this system (scripts, databases, other
// converters) take the mark for part of the first field's name, and spreadsheet programs here
// recognise UTF-8 without it.
class DelimitedWriter {
public:
    DelimitedWriter(QIODevice& device, QChar delimiter);

    void writeRow(const SheetRow& row);
    // Writes what is still buffered; throws OperationError when the device refuses.
    void finish();

private:
    void flush();

    QIODevice& m_device;
    QChar m_delimiter;
    QByteArray m_buffer;
};

// One field, quoted if it needs to be (see DelimitedWriter).
QString delimitedField(const QString& text, QChar delimiter);

}  // namespace wendrel
