#include "DesktopIntegration.h"

#include "operations/AtomicFile.h"
#include "operations/OperationError.h"
#include "operations/Logging.h"
#include "operations/settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace wendrel::DesktopIntegration {

namespace {

QString quotedExec(const QString& executable)
{
    QString quoted = executable;
    quoted.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    return u'"' + quoted + u'"';
}

QByteArray entryText(const QString& executable, bool autostart)
{
    QString text = QStringLiteral(
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Wendrel\n"
        "GenericName=File Ring\n"
        "Comment=Convert, compress and hand on files from a ring at the pointer\n"
        "Exec=%1\n"
        "Icon=wendrel\n"
        "Terminal=false\n"
        "Categories=Utility;FileTools;\n"
        "Keywords=convert;compress;resize;image;pdf;zip;\n"
        "StartupNotify=false\n").arg(quotedExec(executable));
    if (autostart)
        text += QStringLiteral("X-GNOME-Autostart-enabled=true\nNoDisplay=true\n");
    return text.toUtf8();
}

bool writeIfChanged(const QString& path, const QByteArray& content)
{
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && existing.readAll() == content)
        return true;
    QDir().mkpath(QFileInfo(path).absolutePath());
    try {
        writeFileAtomically(path, content, QStringLiteral("can't write %1").arg(path));
        return true;
    } catch (const OperationError& error) {
        qCWarning(lcRing, "%s", qUtf8Printable(error.message()));
        return false;
    }
}

QString dataHome() { return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation); }

}  // namespace

QString autostartEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/autostart/wendrel.desktop");
}

QString applicationEntryPath() { return dataHome() + QStringLiteral("/applications/wendrel.desktop"); }

void installApplicationEntry(const QString& executable)
{
    writeIfChanged(applicationEntryPath(), entryText(executable, false));
    QFile icon(QStringLiteral(":/wendrel/app/wendrel.svg"));
    if (icon.open(QIODevice::ReadOnly))
        writeIfChanged(dataHome() + QStringLiteral("/icons/hicolor/scalable/apps/wendrel.svg"), icon.readAll());
}

bool startsAtLogin() { return QFileInfo::exists(autostartEntryPath()); }

void setStartsAtLogin(bool enabled, const QString& executable)
{
    if (enabled)
        writeIfChanged(autostartEntryPath(), entryText(executable, true));
    else
        QFile::remove(autostartEntryPath());
}

void applyFirstRunDefaults(const QString& executable)
{
    const QString key = QStringLiteral("startAtLoginChosen");
    if (SettingsStore::value(key, false).toBool())
        return;
    setStartsAtLogin(true, executable);
    SettingsStore::setValue(key, true);
}

}  // namespace wendrel::DesktopIntegration
