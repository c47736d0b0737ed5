#pragma once

#include <cstddef>
#include <string_view>

namespace wendrel {

// The order of the entries on each ring, the one place it is written. Ids from different rings
// never collide, so one list serves all three; only the relative order within a ring matters.
// An entry's registration names its id, and EntryId finds the rank here when compiling: an id
// missing from this list doesn't compile.
inline constexpr std::string_view ringOrder[] = {
    // convert: images, PDFs to other formats, media, documents, spreadsheets, subtitles, archives
    "image.jpg", "image.png", "image.heic", "image.webp", "image.avif", "image.tiff", "image.bmp",
    "image.gif", "image.jxl", "image.ico", "image.pdf",
    "pdf.docx", "pdf.md", "pdf.epub", "pdf.txt", "pdf.jpg", "pdf.png",
    "media.mp4", "media.mov", "video.gif", "media.m4a", "media.wav", "media.aiff", "media.flac",
    "doc.pdf", "doc.docx", "doc.rtf", "doc.odt", "doc.html", "doc.txt", "doc.md", "doc.epub",
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

// After every listed entry: ids the list doesn't know keep their registration order there.
inline constexpr int unlistedRank = static_cast<int>(std::size(ringOrder));

// The place of `id` in ringOrder, or unlistedRank.
constexpr int ringRankOf(std::string_view id)
{
    for (std::size_t rank = 0; rank < std::size(ringOrder); ++rank) {
        if (ringOrder[rank] == id)
            return static_cast<int>(rank);
    }
    return unlistedRank;
}

}  // namespace wendrel
