#include "Appearance.h"

#include "operations/settings/SettingsStore.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace wendrel {

namespace {

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(0x2b, 0x2b, 0x30);
    const QColor base(0x22, 0x22, 0x27);
    const QColor text(0xf0, 0xf0, 0xf3);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, QColor(0x3b, 0x7b, 0xf6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(0x8a, 0x8a, 0x94));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x70, 0x78));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x70, 0x78));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x70, 0x78));
    // Disabled text is drawn with an embossed highlight in this colour; keep it invisible.
    palette.setColor(QPalette::Disabled, QPalette::Light, window);
    return palette;
}

}  // namespace

void applyAppearance()
{
    const QString appearance = SettingsStore::value(QStringLiteral("appearance"), QStringLiteral("system")).toString();
    if (appearance != u"light" && appearance != u"dark")
        return;
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(appearance == u"dark" ? darkPalette() : QApplication::style()->standardPalette());
}

}  // namespace wendrel
