#include "SheetTestTools.h"

#include "documents/sheets/DelimitedFile.h"
#include "documents/sheets/DelimitedText.h"
#include "documents/sheets/SheetLimits.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QBuffer>
#include <QStringDecoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

using Rows = QList<QStringList>;

Rows parse(QStringView text, QChar delimiter, qsizetype pieceSize = 0)
{
    Rows rows;
    DelimitedParser parser(delimiter, [&](const QStringList& fields) { rows.append(fields); });
    if (pieceSize <= 0) {
        parser.feed(text);
    } else {
        for (qsizetype at = 0; at < text.size(); at += pieceSize)
            parser.feed(text.mid(at, pieceSize));
    }
    parser.finish();
    return rows;
}

Rows rowsOfFile(const QString& path, std::optional<QChar> delimiter = std::nullopt)
{
    Rows rows;
    readDelimitedFile(path, {.delimiter = delimiter, .typeValues = false}, [&](const SheetRow& row) {
        QStringList fields;
        for (const SheetCell& cell : row)
            fields.append(cell.text);
        rows.append(fields);
    }, {});
    return rows;
}

}  // namespace

TEST(DelimitedParsing, SplitsFieldsTheWayWritersMeantThem)
{
    const struct {
        const char16_t* text;
        QChar delimiter;
        Rows rows;
    } cases[] = {
        {u"a,b,c\n1,2,3\n", u',', {{u"a"_s, u"b"_s, u"c"_s}, {u"1"_s, u"2"_s, u"3"_s}}},
        {u"a;b\r\n1,5;2\r\n", u';', {{u"a"_s, u"b"_s}, {u"1,5"_s, u"2"_s}}}, {u"a\tb\n", u'\t', {{u"a"_s, u"b"_s}}},
        {u"a|b", u'|', {{u"a"_s, u"b"_s}}},  // no line break at the end
        {u"\"x, y\",\"say \"\"hi\"\"\"\n", u',', {{u"x, y"_s, u"say \"hi\""_s}}},
        {u"\"two\nlines\",\"cr\r\nlf\"\nnext\n", u',', {{u"two\nlines"_s, u"cr\r\nlf"_s}, {u"next"_s}}},
        {u"a,b,c\n1\n1,2,3,4\n", u',', {{u"a"_s, u"b"_s, u"c"_s}, {u"1"_s}, {u"1"_s, u"2"_s, u"3"_s, u"4"_s}}},
        {u"a,,\n,\n", u',', {{u"a"_s, u""_s, u""_s}, {u""_s, u""_s}}},
        {u"a\n\nb\n", u',', {{u"a"_s}, {}, {u"b"_s}}},                       // an empty line is an empty row
        {u"a\rb\r", u',', {{u"a"_s}, {u"b"_s}}},                              // old Mac line ends
        {u"5\" disk,ok\n", u',', {{u"5\" disk"_s, u"ok"_s}}},                  // a quote mid-field is a character
        {u"\"closed\"tail,x\n", u',', {{u"closedtail"_s, u"x"_s}}},            // text after the closing quote
        {u"a,\"never closed\nstill, inside\n", u',', {{u"a"_s, u"never closed\nstill, inside\n"_s}}},
        {u"\"\",\"\"\"\"\n", u',', {{u""_s, u"\""_s}}},
        {u" a , b \n", u',', {{u" a "_s, u" b "_s}}},                          // blanks are data
        {u"", u',', {}},
    };
    for (const auto& testCase : cases) {
        const QString text = QString::fromUtf16(testCase.text);
        EXPECT_EQ(parse(text, testCase.delimiter), testCase.rows) << text.toStdString();
        // The same rows whatever the pieces the text arrives in, even a character at a time.
        EXPECT_EQ(parse(text, testCase.delimiter, 1), testCase.rows) << text.toStdString();
    }
}

TEST(DelimitedParsing, TheDelimiterIsFoundOutsideQuotes)
{
    const struct {
        const char16_t* head;
        QChar delimiter;
    } cases[] = {
        {u"name,age\nAnn,31\nBo,4\n", u','},
        {u"Name;Preis\nTee;1,50\nKaffee;2,20\n", u';'},           // decimal commas don't count against ';'
        {u"a\tb\tc\n1\t2\t3\n", u'\t'}, {u"id|name\n1|x\n", u'|'},
        {u"\"a;b;c\",d\n\"e;f;g\",h\n", u','},                   // semicolons only inside quotes
        {u"\"multi\nline; text\",x\n\"y\",z\n", u','}, {u"one column\nonly\n", u','},
        {u"a,b;c;d\n1,2;3\n4,5;6\n", u','},                      // ',' agrees on every line, ';' doesn't
        {u"", u','},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(detectDelimiter(QString::fromUtf16(testCase.head)), testCase.delimiter)
            << QString::fromUtf16(testCase.head).toStdString();
}

// A field that never ends and a row of endless delimiters stop at their limits.
TEST(DelimitedParsing, EndlessFieldsAndRowsStopAtTheirLimitsWithTheUnreadableMessage)
{
    DelimitedParser field(u',', [](const QStringList&) {});
    const QString piece(1 << 20, u'x');
    field.feed(u"\"");
    EXPECT_EQ(errorMessageOf([&] {
        for (qsizetype fed = 0; fed <= sheet::longestDelimitedField; fed += piece.size())
            field.feed(piece);
    }), u"This file isn't a readable table");
    DelimitedParser row(u',', [](const QStringList&) {});
    EXPECT_EQ(errorMessageOf([&] { row.feed(QString(sheet::mostDelimitedFields + 1, u',')); }),
              u"This file isn't a readable table");
}

TEST(DelimitedWriting, QuotesOnlyWhatNeedsIt)
{
    const struct {
        const char16_t* field;
        QChar delimiter;
        const char16_t* written;
    } cases[] = {
        {u"plain", u',', u"plain"}, {u"a,b", u',', u"\"a,b\""}, {u"a,b", u'\t', u"a,b"},
        {u"tab\there", u'\t', u"\"tab\there\""}, {u"say \"hi\"", u',', u"\"say \"\"hi\"\"\""},
        {u"two\nlines", u',', u"\"two\nlines\""}, {u"cr\rhere", u'\t', u"\"cr\rhere\""}, {u" lead", u',', u"\" lead\""},
        {u"trail ", u',', u"\"trail \""}, {u"in side", u',', u"in side"}, {u"", u',', u""},
        {u"Grüße, 東京", u',', u"\"Grüße, 東京\""},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(delimitedField(QString::fromUtf16(testCase.field), testCase.delimiter),
                  QString::fromUtf16(testCase.written));
}

TEST(DelimitedWriting, RowsEndInCrLfAndReadBackTheSame)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    DelimitedWriter writer(buffer, u',');
    const Rows rows{{u"a,1"_s, u"\"q\""_s, u"line\nbreak"_s}, {u"short"_s}, {}, {u" x"_s, u"ü"_s}};
    for (const QStringList& fields : rows) {
        SheetRow row;
        for (const QString& field : fields)
            row.append(SheetCell::ofText(field));
        writer.writeRow(row);
    }
    writer.finish();
    EXPECT_EQ(bytes, "\"a,1\",\"\"\"q\"\"\",\"line\nbreak\"\r\nshort\r\n\r\n\" x\",\xC3\xBC\r\n");
    EXPECT_EQ(parse(QString::fromUtf8(bytes), u','), rows);
}

TEST(DelimitedFiles, ReadUtf8WithOrWithoutMarkAndUtf16WithOne)
{
    QTemporaryDir folder;
    const QString text = u"name;city\r\nZoë;Zürich\r\n\"Li, Wei\";北京\r\n"_s;
    const Rows expected{{u"name"_s, u"city"_s}, {u"Zoë"_s, u"Zürich"_s}, {u"Li, Wei"_s, u"北京"_s}};
    QStringEncoder littleEndian(QStringEncoder::Utf16LE);
    QStringEncoder bigEndian(QStringEncoder::Utf16BE);
    const struct {
        const char* name;
        QByteArray bytes;
    } files[] = {
        {"plain.csv", text.toUtf8()}, {"marked.csv", "\xEF\xBB\xBF" + text.toUtf8()},
        {"utf16le.csv", "\xFF\xFE" + QByteArray(littleEndian.encode(text))},
        {"utf16be.csv", "\xFE\xFF" + QByteArray(bigEndian.encode(text))},
    };
    for (const auto& file : files) {
        const QString path = folder.filePath(QString::fromUtf8(file.name));
        writeFile(path, file.bytes);
        EXPECT_EQ(rowsOfFile(path), expected) << file.name;
    }
}

TEST(DelimitedFiles, OtherEncodingsAndCutCharactersAreTold)
{
    QTemporaryDir folder;
    const QString latin1 = folder.filePath(u"latin1.csv"_s);
    writeFile(latin1, "caf\xE9,1\n");
    EXPECT_EQ(errorMessageOf([&] { rowsOfFile(latin1); }), u"This table isn't UTF-8 text");
    const QString cut = folder.filePath(u"cut.csv"_s);
    writeFile(cut, "a,\xE2\x82");  // the euro sign's first two bytes, then the end
    EXPECT_EQ(errorMessageOf([&] { rowsOfFile(cut); }), u"This table isn't UTF-8 text");
}

TEST(DelimitedFiles, PiecesOfTheFileJoinInsideCharactersAndQuotes)
{
    // Larger than a piece read at once, with a quoted field and a three-byte character
    // across every boundary.
    QTemporaryDir folder;
    const QString path = folder.filePath(u"long.tsv"_s);
    QString text;
    Rows expected;
    for (int i = 0; i < 60'000; ++i) {
        text += u"€%1\t\"multi\nline\t%1\"\n"_s.arg(i);
        expected.append({u"€%1"_s.arg(i), u"multi\nline\t%1"_s.arg(i)});
    }
    writeFile(path, text.toUtf8());
    ASSERT_GT(text.toUtf8().size(), 1 << 20);
    EXPECT_EQ(rowsOfFile(path, u'\t'), expected);
}
