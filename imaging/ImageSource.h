#pragma once

#include <QSize>
#include <QString>

#include <vips/vips8>

#include <functional>
#include <memory>

namespace wendrel {

// One picture file, opened once: its header is read when it is made and its pixels are decoded
// on demand, all from that one opening.
//
// Every picture comes out upright (the file's orientation applied, and no orientation left in
// its metadata to apply twice), 8 bits per channel in sRGB (CMYK, other colour profiles and
// 16-bit converted) or grey (kept grey), with its alpha, and only the first frame of an
// animation or of a multi-image file.
//
// A file that isn't an image, is truncated or damaged, claims more than Wendrel will hold
// (more than 500 megapixels, a PNG chunk larger than the file), or isn't a regular file fails
// with "Can't read this image" before any large allocation. Once `isCancelled` answers true,
// reading and decoding stop at the next piece of the file and fail with OperationCancelled.
class ImageSource {
public:
    using CancelCheck = std::function<bool()>;

    explicit ImageSource(const QString& path, CancelCheck isCancelled = {});
    ~ImageSource();
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;

    // The upright width and height, from the header.
    QSize uprightSize() const { return m_uprightSize; }

    // Whether the file's pixels are stored upright, with no orientation left to apply.
    bool isStoredUpright() const { return m_storedUpright; }

    // The memory the whole picture takes once decoded: four bytes a pixel.
    qint64 decodedBytes() const { return qint64(m_uprightSize.width()) * m_uprightSize.height() * 4; }

    // The whole picture, decoded into memory.
    vips::VImage decode() const;

    // The picture scaled to exactly `size` (upright width and height), decoded at a reduced
    // size where the format allows, which makes shrinking large photos much cheaper.
    vips::VImage decodeScaled(QSize size) const;

    // The whole picture, or shrunk to fit `maxDimension` when it is larger; 0 means no limit.
    vips::VImage decodeWithin(int maxDimension) const;

private:
    struct Reader;

    template <typename Work>
    vips::VImage decoding(const char* what, Work&& work) const;

    QString m_path;
    CancelCheck m_isCancelled;
    std::unique_ptr<Reader> m_reader;
    vips::VImage m_header;
    QSize m_uprightSize;
    bool m_storedUpright = true;
};

// The whole picture at `path`, for callers that need nothing else from the file.
vips::VImage loadImage(const QString& path);

// Whether an upright, standardised image has transparency.
bool hasAlpha(const vips::VImage& image);

}  // namespace wendrel
