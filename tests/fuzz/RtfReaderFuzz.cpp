// libFuzzer target for the RTF reader: any bytes end in an OperationError or in a document no
// larger than its source, which the writer can write; never a crash, a hang or runaway memory.
#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"
#include "operations/OperationError.h"

#include <QGuiApplication>
#include <QTextDocument>

#include <cstdint>
#include <cstdlib>

using namespace wendrel;

#define REQUIRE(condition) if (!(condition)) std::abort()

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Documents hold fonts, which want an application; one for the whole run.
    static int argc = 1;
    static char name[] = "rtf_reader_fuzz";
    static char* argv[] = {name, nullptr};
    static const bool offscreen = qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(argc, argv);
    (void)offscreen;

    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    try {
        const auto document = readRtf(bytes);
        REQUIRE(document->characterCount() <= bytes.size() + 1);
        REQUIRE(writeRtf(*document).startsWith("{\\rtf1"));
    } catch (const OperationError&) {
    }
    return 0;
}
