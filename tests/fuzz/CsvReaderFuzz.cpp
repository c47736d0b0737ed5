// libFuzzer target for delimited text: any bytes, read as CSV with the separator guessed and as
// TSV, end in an OperationError or in rows the CSV and XLSX writers write; never a crash, a
// hang or runaway memory.
#include "FuzzSupport.h"
#include "SheetFuzzing.h"

using namespace wendrel;
using namespace wendrel::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    // The first byte picks the format, so one corpus serves both.
    const bool tab = size > 0 && (data[0] & 1);
    convertEveryWay(scratchFile(tab ? QStringLiteral("input.tsv") : QStringLiteral("input.csv"), bytes),
                    tab ? SheetFormat::tsv : SheetFormat::csv);
    return 0;
}
