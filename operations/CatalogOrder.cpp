#include "CatalogOrder.h"

#include <QHash>

#include <climits>

namespace wendrel {

namespace {

// The order of the entries on each ring. Ids from different rings never collide, so one list
// serves all three; only the relative order within a ring matters.
constexpr const char* ringOrder[] = {
    // convert: images, PDFs to other formats, media, documents, spreadsheets, subtitles, archives
    "image.jpg", "image.png", "image.heic", "image.webp", "image.avif", "image.tiff", "image.bmp",
    "image.gif", "image.jxl", "image.ico", "image.pdf",
    "pdf.docx", "pdf.md", "pdf.epub", "pdf.txt", "pdf.jpg", "pdf.png",
    "media.mp4", "media.mov", "video.gif", "media.m4a", "media.wav", "media.aiff", "media.flac",
    "document.docx", "document.html", "document.epub", "document.md",
    "sheet.csv", "sheet.tsv", "sheet.xlsx",
    "subtitle.srt", "subtitle.vtt", "subtitle.txt",
    "archive.zip", "archive.unzip",
    // tools: images, vision, PDFs, video, audio
    "image.compress", "image.adjust", "image.autoEnhance", "image.presets", "image.half",
    "image.fit1920", "image.rotate", "image.rotateLeft", "image.flip", "image.square",
    "image.background", "image.gray", "image.strip",
    "ai.removeBackground", "image.removeFlatBackground", "ai.blurFaces", "ai.readCodes",
    "ai.copyText",
    "pdf.merge", "pdf.split", "pdf.compress", "pdf.rotate", "pdf.number", "pdf.watermark",
    "pdf.password",
    "video.compress", "video.mute", "video.extractAudio", "audio.normalize",
    // actions
    "action.copyPath", "action.shelf", "action.copyTo", "action.airdrop", "action.mail",
    "action.terminal", "action.reveal",
};

QHash<QString, int> makeRanks()
{
    QHash<QString, int> ranks;
    int rank = 0;
    for (const char* id : ringOrder)
        ranks.insert(QString::fromLatin1(id), rank++);
    return ranks;
}

}  // namespace

int catalogRank(const QString& id)
{
    static const QHash<QString, int> ranks = makeRanks();
    return ranks.value(id, INT_MAX);
}

}  // namespace wendrel
