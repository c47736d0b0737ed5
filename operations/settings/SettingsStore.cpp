#include "SettingsStore.h"

#include <QSettings>
#include <QStandardPaths>

namespace wendrel::SettingsStore {

namespace {

// Built from the environment at each use, not once per process, so XDG_CONFIG_HOME set by a
// test or a script takes effect immediately.
QSettings open() { return QSettings(filePath(), QSettings::IniFormat); }

}  // namespace

QString filePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/Wendrel/Wendrel.conf");
}

std::optional<QString> text(const QString& key)
{
    const QVariant stored = open().value(key);
    if (!stored.isValid())
        return std::nullopt;
    return stored.toString();
}

void setText(const QString& key, const QString& value) { setValue(key, value); }

QVariant value(const QString& key, const QVariant& defaultValue)
{
    return open().value(key, defaultValue);
}

void setValue(const QString& key, const QVariant& value)
{
    QSettings settings = open();
    settings.setValue(key, value);
    settings.sync();
}

void remove(const QString& key)
{
    QSettings settings = open();
    settings.remove(key);
    settings.sync();
}

}  // namespace wendrel::SettingsStore
