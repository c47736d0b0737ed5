#include "RingTheme.h"

namespace wendrel {

RingTheme RingTheme::from(const QPalette& palette)
{
    RingTheme theme;
    theme.dark = palette.color(QPalette::Window).lightness() < 128;
    QColor accent = palette.color(QPalette::Highlight);
    // Some palettes give a washed-out highlight; the ring needs one that reads at a glance.
    if (accent.hslSaturation() < 60)
        accent = QColor(0x3b, 0x7b, 0xf6);
    theme.accent = accent;
    theme.onAccent = Qt::white;
    theme.success = theme.dark ? QColor(0x4a, 0xd6, 0x6d) : QColor(0x1f, 0x9d, 0x4c);
    theme.failure = theme.dark ? QColor(0xff, 0x6b, 0x63) : QColor(0xd7, 0x37, 0x2f);
    if (theme.dark) {
        theme.ring = QColor(38, 38, 44, 242);
        theme.centre = QColor(54, 54, 62, 250);
        theme.edge = QColor(255, 255, 255, 34);
        theme.text = QColor(0xf2, 0xf2, 0xf5);
        theme.secondaryText = QColor(0xa8, 0xa8, 0xb3);
    } else {
        theme.ring = QColor(250, 250, 252, 244);
        theme.centre = QColor(238, 239, 243, 252);
        theme.edge = QColor(0, 0, 0, 30);
        theme.text = QColor(0x1d, 0x1d, 0x22);
        theme.secondaryText = QColor(0x6b, 0x6b, 0x75);
    }
    return theme;
}

}  // namespace wendrel
