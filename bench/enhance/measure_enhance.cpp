// Measures what Auto Enhance does to photos: how far it moves their mean lightness, whether it
// turns the hue of their main colours, and how many pixels it pushes into clipping. Prints one
// Markdown table row per photo, so runs before and after a change can be set side by side.
//
// Usage: measure_enhance [--save DIR] PHOTO...
//   --save DIR: also write each result as DIR/<name>.jpg (for before/after strips)

#include "imaging/AutoEnhance.h"
#include "imaging/VipsRuntime.h"

#include <QFileInfo>
#include <QString>

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using vips::VImage;

struct Lab {
    double L, a, b;
};

// The picture's colours in CIELAB, one entry per pixel of a copy reduced to about `side` pixels
// on its longer side. Original and result are reduced alike, so entry i is the same spot in both.
std::vector<Lab> labSample(const VImage& picture, int side)
{
    const double scale = std::min(1.0, double(side) / std::max(picture.width(), picture.height()));
    const VImage lab = picture.resize(scale).colourspace(VIPS_INTERPRETATION_LAB).cast(VIPS_FORMAT_FLOAT).copy_memory();
    size_t size = 0;
    auto* data = static_cast<float*>(lab.write_to_memory(&size));
    std::vector<Lab> pixels(size / (3 * sizeof(float)));
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = {data[3 * i], data[3 * i + 1], data[3 * i + 2]};
    g_free(data);
    return pixels;
}

// Lightness counts half as much as colour, so clusters follow colours more than light and shade.
double distance(const Lab& p, const Lab& q)
{
    const double dL = (p.L - q.L) * 0.5;
    return dL * dL + (p.a - q.a) * (p.a - q.a) + (p.b - q.b) * (p.b - q.b);
}

// The picture's dominant colours: k-means, seeded k-means++ style with a fixed seed so that two
// runs on one photo agree. Returns the cluster of every pixel.
std::vector<int> dominantColours(const std::vector<Lab>& pixels, int k)
{
    std::mt19937 random(1);
    std::vector<Lab> centres{pixels[random() % pixels.size()]};
    std::vector<double> nearest(pixels.size());
    while (int(centres.size()) < k) {
        for (size_t i = 0; i < pixels.size(); ++i) {
            nearest[i] = distance(pixels[i], centres[0]);
            for (const Lab& centre : centres)
                nearest[i] = std::min(nearest[i], distance(pixels[i], centre));
        }
        std::discrete_distribution<size_t> pick(nearest.begin(), nearest.end());
        centres.push_back(pixels[pick(random)]);
    }
    std::vector<int> cluster(pixels.size(), 0);
    for (int round = 0; round < 20; ++round) {
        for (size_t i = 0; i < pixels.size(); ++i) {
            const auto closer = [&](const Lab& x, const Lab& y) { return distance(pixels[i], x) < distance(pixels[i], y); };
            cluster[i] = int(std::min_element(centres.begin(), centres.end(), closer) - centres.begin());
        }
        std::vector<Lab> sums(k, Lab{0, 0, 0});
        std::vector<int> counts(k, 0);
        for (size_t i = 0; i < pixels.size(); ++i) {
            sums[cluster[i]].L += pixels[i].L;
            sums[cluster[i]].a += pixels[i].a;
            sums[cluster[i]].b += pixels[i].b;
            ++counts[cluster[i]];
        }
        for (int c = 0; c < k; ++c) {
            if (counts[c])
                centres[c] = {sums[c].L / counts[c], sums[c].a / counts[c], sums[c].b / counts[c]};
        }
    }
    return cluster;
}

double hueDegrees(double a, double b)
{
    const double hue = std::atan2(b, a) * 180 / std::numbers::pi;
    return hue < 0 ? hue + 360 : hue;
}

double hueDifference(double from, double to)
{
    const double difference = std::fmod(to - from + 540.0, 360.0) - 180.0;
    return std::abs(difference);
}

// Fraction of pixels with at least one channel at 0 or 255.
double clippedFraction(const VImage& picture)
{
    const VImage colour = picture.extract_band(0, VImage::option()->set("n", std::min(3, picture.bands())));
    const VImage clipped = ((colour == 0.0) | (colour == 255.0)).bandor();
    return clipped.avg() / 255.0;
}

struct HueShift {
    double mainBefore = 0, mainAfter = 0;  // hue of the largest coloured cluster
    double weighted = 0;                   // mean shift over coloured clusters, by their size
    double largest = 0;                    // largest shift of a coloured cluster holding >= 10 % of the photo
    bool coloured = false;
};

// Below this chroma a cluster is grey and its hue means nothing.
constexpr double colouredChroma = 6;

HueShift hueShift(const std::vector<Lab>& before, const std::vector<Lab>& after)
{
    constexpr int k = 6;
    const std::vector<int> cluster = dominantColours(before, k);
    std::array<Lab, k> sumBefore{}, sumAfter{};
    std::array<int, k> count{};
    for (size_t i = 0; i < before.size(); ++i) {
        sumBefore[cluster[i]].a += before[i].a;
        sumBefore[cluster[i]].b += before[i].b;
        sumAfter[cluster[i]].a += after[i].a;
        sumAfter[cluster[i]].b += after[i].b;
        ++count[cluster[i]];
    }
    HueShift shift;
    double weightSum = 0;
    int mainCount = 0;
    for (int c = 0; c < k; ++c) {
        if (!count[c] || std::hypot(sumBefore[c].a, sumBefore[c].b) / count[c] < colouredChroma)
            continue;
        const double from = hueDegrees(sumBefore[c].a, sumBefore[c].b);
        const double to = hueDegrees(sumAfter[c].a, sumAfter[c].b);
        const double weight = double(count[c]) / before.size();
        shift.weighted += weight * hueDifference(from, to);
        weightSum += weight;
        if (weight >= 0.1)
            shift.largest = std::max(shift.largest, hueDifference(from, to));
        if (count[c] > mainCount) {
            mainCount = count[c];
            shift.mainBefore = from;
            shift.mainAfter = to;
            shift.coloured = true;
        }
    }
    if (weightSum > 0)
        shift.weighted /= weightSum;
    return shift;
}

double meanLightness(const std::vector<Lab>& pixels)
{
    double sum = 0;
    for (const Lab& p : pixels)
        sum += p.L;
    return sum / pixels.size() / 100;
}

}  // namespace

int main(int argc, char** argv)
{
    wendrel::startVips();
    QString saveFolder;
    std::vector<QString> photos;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--save" && i + 1 < argc)
            saveFolder = QString::fromLocal8Bit(argv[++i]);
        else
            photos.push_back(QString::fromLocal8Bit(argv[i]));
    }
    if (photos.empty()) {
        std::fprintf(stderr, "usage: measure_enhance [--save DIR] PHOTO...\n");
        return 2;
    }

    std::printf("| photo | mean L* before | after | change | main hue before → after | hue shift (weighted) | "
                "largest hue shift | clipping added |\n");
    std::printf("|---|---:|---:|---:|---|---:|---:|---:|\n");
    int failures = 0;
    for (const QString& photo : photos) {
        const QString name = QFileInfo(photo).completeBaseName();
        try {
            const VImage original = VImage::new_from_file(photo.toLocal8Bit().constData()).copy_memory();
            const VImage enhanced = wendrel::autoEnhanced(original, photo);
            if (!saveFolder.isEmpty())
                enhanced.write_to_file((saveFolder + QLatin1Char('/') + name + QStringLiteral(".jpg[Q=90]")).toLocal8Bit().constData());

            const std::vector<Lab> before = labSample(original, 256);
            const std::vector<Lab> after = labSample(enhanced, 256);
            const HueShift shift = hueShift(before, after);
            const double lightBefore = meanLightness(before);
            const double lightAfter = meanLightness(after);
            const double clipAdded = clippedFraction(enhanced) - clippedFraction(original);
            const std::string hues = shift.coloured ? std::to_string(int(std::lround(shift.mainBefore))) + "° → " +
                                                          std::to_string(int(std::lround(shift.mainAfter))) + "°"
                                                    : "grey";
            std::printf("| %s | %.3f | %.3f | %+.3f | %s | %.1f° | %.1f° | %+.2f %% |\n", qUtf8Printable(name), lightBefore,
                        lightAfter, lightAfter - lightBefore, hues.c_str(), shift.weighted, shift.largest, 100 * clipAdded);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", qUtf8Printable(photo), error.what());
            ++failures;
        }
        std::fflush(stdout);
    }
    return failures ? 1 : 0;
}
