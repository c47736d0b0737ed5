#include "ConverterTools.h"
#include "DocumentSamples.h"

#include "documents/odt/OdtReader.h"
#include "documents/odt/OdtWriter.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

TEST(OdtTest, RoundTripKeepsTheSampleStructure)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const auto sample = richSampleDocument();
    const QString path = folder.filePath(QStringLiteral("sample.odt"));
    document::writeOdt(*sample, path);
    const auto read = document::readOdt(path);
    EXPECT_EQ(structureOf(*read), structureOf(*sample));
}

}  // namespace wendrel::test
