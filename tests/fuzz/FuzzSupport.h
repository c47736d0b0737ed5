#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <cstdlib>
#include <utility>

class QTextDocument;

// Shared by the libFuzzer targets: the application documents need, the fuzzer's bytes split
// into the parts of a package, and packages built with our own ZIP writer, so mutations reach
// the XML readers instead of dying in the ZIP layer.
namespace wendrel::fuzz {

// An invariant that can only fail on a real fault: libFuzzer reports the abort with its input.
#define REQUIRE(condition) if (!(condition)) std::abort()

// Documents hold fonts, which want an application: one, offscreen, for the whole run.
void ensureGuiApplication();

// The fuzzer's bytes, without copying.
QByteArray bytesOf(const std::uint8_t* data, std::size_t size);

// Splits the bytes at each partSeparator into at most `count` parts; missing ones are empty.
// Seeds are written the same way, so the fuzzer mutates every part's XML independently.
inline constexpr char partSeparator[] = "\n@@part@@\n";
QList<QByteArray> splitParts(const QByteArray& bytes, int count);

// A ZIP package of `parts` (name, contents) in that order, built with ZipWriter in memory.
QByteArray zipPackage(const QList<std::pair<QString, QByteArray>>& parts);

// A file in a folder kept for the whole run, rewritten with `bytes` at every call.
QString scratchFile(const QString& name, const QByteArray& bytes);
// A folder kept for the whole run, for readers that unpack parts into one.
QString scratchFolder();

// Runs a document a reader made through the writers, so they meet odd documents too, and
// checks what each promises: the RTF is RTF, the HTML page is well-formed XML, and the Word
// document and OpenDocument text we write read back.
void writeEveryWay(const QTextDocument& document);

// Reads with `read`: refusing with OperationError is the answer most inputs deserve; anything
// else must be a document, which then goes through every writer.
void readAndWriteEveryWay(const std::function<std::unique_ptr<QTextDocument>()>& read);

// A 3 × 2 PNG, the one picture the packages hold.
QByteArray smallPng();

}  // namespace wendrel::fuzz
