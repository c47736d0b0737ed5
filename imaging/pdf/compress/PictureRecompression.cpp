#include "PictureRecompression.h"

#include "ImagePlacements.h"
#include "PdfPictureCodec.h"
#include "operations/Logging.h"
#include "operations/OperationContext.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace wendrel {

namespace {

// A batch holds about this much of pictures read and pixels decoded at once.
constexpr qint64 batchBytes = 96LL * 1024 * 1024;

struct Candidate {
    QPDFObjGen id;
    QSizeF placed;
};

// What a picture holds in memory while it is worked on: its bytes and its decoded pixels.
qint64 workingBytes(const PictureToEncode& picture)
{
    return picture.data.size() + qint64(picture.pixels.width()) * picture.pixels.height() * picture.components;
}

// Encodes every picture of a batch on its own threads; results in the batch's order.
std::vector<std::optional<EncodedPicture>> encodeAll(const std::vector<PictureToEncode>& batch,
                                                     const PdfCompressionLevel& level)
{
    std::vector<std::optional<EncodedPicture>> results(batch.size());
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < batch.size(); i = next++)
            results[i] = encodePicture(batch[i], level);
    };
    const std::size_t threads = std::min<std::size_t>(batch.size(), std::max(1u, std::thread::hardware_concurrency()));
    {
        std::vector<std::jthread> helpers;
        for (std::size_t i = 1; i < threads; ++i)
            helpers.emplace_back(work);
        work();
    }
    return results;
}

}  // namespace

RecompressionCount recompressPictures(QPDF& pdf, const PdfCompressionLevel& level, const OperationContext& context,
                                      const std::function<void(double)>& progress)
{
    const ImagePlacements placements = findImagePlacements(pdf);
    std::vector<Candidate> candidates;
    for (const auto& [id, placed] : placements.largest) {
        if (!placements.unreadable.contains(id))
            candidates.push_back({id, placed});
    }

    RecompressionCount count;
    std::size_t done = 0;
    while (done < candidates.size()) {
        context.throwIfCancelled();
        std::vector<PictureToEncode> batch;
        std::vector<QPDFObjGen> ids;
        qint64 held = 0;
        for (; done < candidates.size() && (batch.empty() || held < batchBytes); ++done) {
            QPDFObjectHandle image = pdf.getObjectByObjGen(candidates[done].id);
            if (std::optional<PictureToEncode> picture = pictureToEncode(image, candidates[done].placed)) {
                held += workingBytes(*picture);
                batch.push_back(std::move(*picture));
                ids.push_back(candidates[done].id);
            }
        }
        count.pictures += int(batch.size());
        std::vector<std::optional<EncodedPicture>> encoded;
        {
            const MemoryBudget::Reservation reservation = context.reserveMemory(held);
            encoded = encodeAll(batch, level);
        }
        for (std::size_t i = 0; i < batch.size(); ++i) {
            if (encoded[i]) {
                replacePicture(pdf.getObjectByObjGen(ids[i]), *encoded[i]);
                ++count.replaced;
            }
        }
        if (progress)
            progress(double(done) / double(candidates.size()));
    }
    qCInfo(lcJobs, "pdf pictures: %d readable, %d stored anew", count.pictures, count.replaced);
    return count;
}

}  // namespace wendrel
