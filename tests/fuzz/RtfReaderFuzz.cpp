// libFuzzer target for the RTF reader: any bytes end in an OperationError or in a document no
// larger than its source, which the writers can write; never a crash, a hang or runaway memory.
#include "FuzzSupport.h"

#include "documents/rtf/RtfReader.h"
#include "operations/OperationError.h"

#include <QTextDocument>

using namespace wendrel;
using namespace wendrel::fuzz;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ensureGuiApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    std::unique_ptr<QTextDocument> document;
    try {
        document = readRtf(bytes);
    } catch (const OperationError&) {
        return 0;
    }
    REQUIRE(document->characterCount() <= bytes.size() + 1);
    writeEveryWay(*document);
    return 0;
}
