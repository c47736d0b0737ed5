#include "TestPictures.h"

#include "imaging/VipsRuntime.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

namespace wendrel::test {

using vips::VImage;

VImage photoLike(int width, int height)
{
    startVips();
    const VImage xy = VImage::xyz(width, height);
    const VImage x = xy[0] / double(width);
    const VImage y = xy[1] / double(height);
    // Broad gradients per channel plus a fine ripple standing in for texture.
    const VImage ripple = ((xy[0] * 0.9).sin() + (xy[1] * 1.3).sin()) * 12.0;
    const VImage red = x * 150.0 + 40.0 + ripple;
    const VImage green = y * 140.0 + 50.0 - ripple;
    const VImage blue = (x + y) * 60.0 + 60.0 + ripple * 0.5;
    return VImage::bandjoin({red, green, blue})
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

VImage twoColours(int width, int height)
{
    startVips();
    const VImage left = VImage::black(width / 2, height, VImage::option()->set("bands", 3)) + std::vector<double>{230, 20, 20};
    const VImage right = VImage::black(width - width / 2, height, VImage::option()->set("bands", 3)) + std::vector<double>{20, 20, 230};
    return left.join(right, VIPS_DIRECTION_HORIZONTAL)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

VImage transparentDisc(int side)
{
    startVips();
    const VImage xy = VImage::xyz(side, side) - std::vector<double>{side / 2.0, side / 2.0};
    const VImage distance = (xy[0] * xy[0] + xy[1] * xy[1]).pow(0.5);
    const VImage alpha = (distance < side / 3.0).ifthenelse(255, 0);
    const VImage colour = VImage::black(side, side, VImage::option()->set("bands", 3)) + std::vector<double>{30, 200, 60};
    return colour.bandjoin(alpha)
        .cast(VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

void save(const VImage& image, const QString& path) { image.write_to_file(QFile::encodeName(path).constData()); }

std::vector<double> pixel(const VImage& image, int x, int y) { return image.getpoint(x, y); }

VImage decoded(const QString& path)
{
    startVips();
    return VImage::new_from_file(QFile::encodeName(path).constData()).copy_memory();
}

QString toolOutput(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {};
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(120'000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool haveTool(const QString& program) { return !QStandardPaths::findExecutable(program).isEmpty(); }

}  // namespace wendrel::test
