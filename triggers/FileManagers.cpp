#include "FileManagers.h"

#include <QStringList>

namespace wendrel {

namespace {

// File managers by the instance or class name in WM_CLASS, lower-cased.
const QStringList fileManagers{
    QStringLiteral("nautilus"), QStringLiteral("org.gnome.nautilus"), QStringLiteral("nemo"),
    QStringLiteral("caja"),     QStringLiteral("dolphin"),            QStringLiteral("thunar"),
    QStringLiteral("pcmanfm"),  QStringLiteral("pcmanfm-qt"),         QStringLiteral("spacefm"),
    QStringLiteral("peony"),    QStringLiteral("io.elementary.files"), QStringLiteral("konqueror"),
    QStringLiteral("doublecmd"), QStringLiteral("krusader"),
};

}  // namespace

bool isFileManagerWindowClass(const QString& instanceName, const QString& className)
{
    return fileManagers.contains(instanceName.toLower()) || fileManagers.contains(className.toLower());
}

}  // namespace wendrel
