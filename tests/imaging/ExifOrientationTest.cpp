#include "imaging/ExifOrientation.h"

#include <QList>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

struct Entry {
    quint16 tag;
    quint16 type;
    quint32 count;
    quint32 value;
};

// A TIFF-structured EXIF block with one directory holding `entries`.
QByteArray exifBlock(const QList<Entry>& entries, bool bigEndian, quint32 nextDirectory = 0)
{
    QByteArray block("Exif\0\0", 6);
    QByteArray tiff(8, '\0');
    auto put16 = [&](char* at, quint16 value) {
        bigEndian ? qToBigEndian(value, at) : qToLittleEndian(value, at);
    };
    auto put32 = [&](char* at, quint32 value) {
        bigEndian ? qToBigEndian(value, at) : qToLittleEndian(value, at);
    };
    tiff.replace(0, 4, bigEndian ? QByteArray("MM\0*", 4) : QByteArray("II*\0", 4));
    put32(tiff.data() + 4, 8);
    QByteArray directory(2 + entries.size() * 12 + 4, '\0');
    put16(directory.data(), quint16(entries.size()));
    for (qsizetype index = 0; index < entries.size(); ++index) {
        char* at = directory.data() + 2 + index * 12;
        put16(at, entries[index].tag);
        put16(at + 2, entries[index].type);
        put32(at + 4, entries[index].count);
        put32(at + 8, entries[index].value);
    }
    put32(directory.data() + 2 + entries.size() * 12, nextDirectory);
    return block + tiff + directory + QByteArray("trailing data", 13);
}

}  // namespace

TEST(ExifOrientation, RemovesOnlyTheOrientationEntryInBothByteOrders)
{
    for (bool bigEndian : {false, true}) {
        auto read16 = [&](const QByteArray& bytes, qsizetype at) {
            return bigEndian ? qFromBigEndian<quint16>(bytes.constData() + at) : qFromLittleEndian<quint16>(bytes.constData() + at);
        };
        auto read32 = [&](const QByteArray& bytes, qsizetype at) {
            return bigEndian ? qFromBigEndian<quint32>(bytes.constData() + at) : qFromLittleEndian<quint32>(bytes.constData() + at);
        };
        const QByteArray original = exifBlock(
            {{0x010F, 2, 4, 0x41424300}, {0x0112, 3, 1, 6u << (bigEndian ? 16 : 0)}, {0x8769, 4, 1, 0x1234}},
            bigEndian, 0x200);
        const QByteArray edited = withoutExifOrientation(original);

        constexpr qsizetype directory = 6 + 8;
        ASSERT_EQ(edited.size(), original.size());
        EXPECT_EQ(read16(edited, directory), 2);
        EXPECT_EQ(read16(edited, directory + 2), 0x010F);
        EXPECT_EQ(read32(edited, directory + 2 + 8), 0x41424300u);
        EXPECT_EQ(read16(edited, directory + 14), 0x8769);
        EXPECT_EQ(read32(edited, directory + 14 + 8), 0x1234u);
        EXPECT_EQ(read32(edited, directory + 26), 0x200u);  // the link to the next directory moved up
        EXPECT_TRUE(edited.endsWith("trailing data"));
        EXPECT_EQ(withoutExifOrientation(edited), edited);
    }
}

TEST(ExifOrientation, BlocksWithoutTheTagOrTooDamagedAreLeftAlone)
{
    QByteArray lying = exifBlock({{0x0112, 3, 1, 6}}, false);
    lying[6 + 8] = char(0xFF);  // claims 255 entries in a block that holds one
    QByteArray pointsOutside = exifBlock({{0x0112, 3, 1, 6}}, false);
    qToLittleEndian(quint32(0x7FFFFFF0), pointsOutside.data() + 6 + 4);
    for (const QByteArray& block : {exifBlock({{0x010F, 2, 4, 0}}, false), lying, pointsOutside,
                                    QByteArray("Exif\0\0II", 8), QByteArray()})
        EXPECT_EQ(withoutExifOrientation(block), block) << block.toHex().toStdString();
}

TEST(XmpOrientation, RemovesAttributeAndElementForms)
{
    const QByteArray attribute =
        R"(<rdf:Description rdf:about="" xmlns:tiff="http://ns.adobe.com/tiff/1.0/" tiff:Orientation="6" tiff:Make="Cam"/>)";
    EXPECT_EQ(withoutXmpOrientation(attribute),
              R"(<rdf:Description rdf:about="" xmlns:tiff="http://ns.adobe.com/tiff/1.0/" tiff:Make="Cam"/>)");
    const QByteArray element = "<rdf:Description><tiff:Orientation>8</tiff:Orientation><tiff:Make>Cam</tiff:Make></rdf:Description>";
    EXPECT_EQ(withoutXmpOrientation(element), "<rdf:Description><tiff:Make>Cam</tiff:Make></rdf:Description>");
    const QByteArray none = "<x:xmpmeta/>";
    EXPECT_EQ(withoutXmpOrientation(none), none);
}
