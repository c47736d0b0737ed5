#include "SymbolIcons.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>

namespace wendrel {

namespace {

// Symbol names as the entries declare them, and the icon of the bundled set for each.
const QHash<QString, QString>& iconNames()
{
    static const QHash<QString, QString> names{
        {QStringLiteral("photo"), QStringLiteral("image")},
        {QStringLiteral("app.dashed"), QStringLiteral("app-window")},
        {QStringLiteral("doc.richtext"), QStringLiteral("file-text")},
        {QStringLiteral("doc.text"), QStringLiteral("file-text")},
        {QStringLiteral("number"), QStringLiteral("hash")},
        {QStringLiteral("book"), QStringLiteral("book-open")},
        {QStringLiteral("text.alignleft"), QStringLiteral("align-left")},
        {QStringLiteral("film"), QStringLiteral("film")},
        {QStringLiteral("video"), QStringLiteral("video")},
        {QStringLiteral("photo.stack"), QStringLiteral("images")},
        {QStringLiteral("photo.on.rectangle"), QStringLiteral("images")},
        {QStringLiteral("waveform"), QStringLiteral("audio-waveform")},
        {QStringLiteral("music.note"), QStringLiteral("music")},
        {QStringLiteral("tablecells"), QStringLiteral("table")},
        {QStringLiteral("captions.bubble"), QStringLiteral("captions")},
        {QStringLiteral("arrow.down.right.and.arrow.up.left"), QStringLiteral("minimize-2")},
        {QStringLiteral("slider.horizontal.3"), QStringLiteral("sliders-horizontal")},
        {QStringLiteral("wand.and.stars"), QStringLiteral("wand-sparkles")},
        {QStringLiteral("camera.filters"), QStringLiteral("blend")},
        {QStringLiteral("arrow.down.forward.and.arrow.up.backward"), QStringLiteral("shrink")},
        {QStringLiteral("rectangle.compress.vertical"), QStringLiteral("fold-vertical")},
        {QStringLiteral("rotate.right"), QStringLiteral("rotate-cw")},
        {QStringLiteral("rotate.left"), QStringLiteral("rotate-ccw")},
        {QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"),
         QStringLiteral("flip-left-right")},
        {QStringLiteral("crop"), QStringLiteral("crop")},
        {QStringLiteral("rectangle.inset.filled"), QStringLiteral("frame")},
        {QStringLiteral("circle.lefthalf.filled"), QStringLiteral("contrast")},
        {QStringLiteral("eye.slash"), QStringLiteral("eye-off")},
        {QStringLiteral("person.crop.rectangle"), QStringLiteral("square-user")},
        {QStringLiteral("wand.and.rays"), QStringLiteral("wand")},
        {QStringLiteral("face.dashed"), QStringLiteral("scan-face")},
        {QStringLiteral("qrcode.viewfinder"), QStringLiteral("scan-qr-code")},
        {QStringLiteral("text.viewfinder"), QStringLiteral("scan-text")},
        {QStringLiteral("square.stack.3d.down.right"), QStringLiteral("merge")},
        {QStringLiteral("square.split.2x1"), QStringLiteral("split")},
        {QStringLiteral("number.square"), QStringLiteral("list-ordered")},
        {QStringLiteral("drop.triangle"), QStringLiteral("droplet")},
        {QStringLiteral("lock"), QStringLiteral("lock")},
        {QStringLiteral("speaker.slash"), QStringLiteral("volume-x")},
        {QStringLiteral("dial.medium"), QStringLiteral("gauge")},
        {QStringLiteral("link"), QStringLiteral("link")},
        {QStringLiteral("tray.and.arrow.down"), QStringLiteral("inbox")},
        {QStringLiteral("folder.badge.plus"), QStringLiteral("folder-plus")},
        {QStringLiteral("airplayaudio"), QStringLiteral("send")},
        {QStringLiteral("envelope"), QStringLiteral("mail")},
        {QStringLiteral("terminal"), QStringLiteral("terminal")},
        {QStringLiteral("magnifyingglass"), QStringLiteral("folder-search")},
        {QStringLiteral("doc.zipper"), QStringLiteral("file-archive")},
        {QStringLiteral("archivebox"), QStringLiteral("archive")},
    };
    return names;
}

}  // namespace

QString iconResourceFor(const QString& symbolName)
{
    return QStringLiteral(":/wendrel/icons/%1.svg")
        .arg(iconNames().value(symbolName, QStringLiteral("circle-dot")));
}

QPixmap symbolPixmap(const QString& symbolName, const QColor& colour, int size, qreal devicePixelRatio)
{
    // Drawing an SVG takes far longer than a frame may: every icon is drawn once per look.
    static QHash<QString, QPixmap> drawn;
    const QString key = QStringLiteral("%1|%2|%3|%4").arg(symbolName, colour.name(QColor::HexArgb)).arg(size).arg(devicePixelRatio);
    if (const auto cached = drawn.constFind(key); cached != drawn.cend())
        return *cached;

    QFile file(iconResourceFor(symbolName));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // The set draws with the current colour; give it ours.
    QByteArray svg = file.readAll();
    svg.replace("currentColor", colour.name(QColor::HexRgb).toUtf8());
    QSvgRenderer renderer(svg);
    QPixmap pixmap(QSize(size, size) * devicePixelRatio);
    pixmap.fill(Qt::transparent);
    {
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, pixmap.width(), pixmap.height()));
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    drawn.insert(key, pixmap);
    return pixmap;
}

}  // namespace wendrel
