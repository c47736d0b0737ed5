#pragma once

#include <QString>
#include <QVariant>

#include <optional>

namespace wendrel::SettingsStore {

// The settings file: $XDG_CONFIG_HOME/Wendrel/Wendrel.conf (~/.config by default), in INI form.
// Every call reads the file afresh, so a value changed by another Wendrel process is seen at
// its next use.
QString filePath();

std::optional<QString> text(const QString& key);
void setText(const QString& key, const QString& value);

QVariant value(const QString& key, const QVariant& defaultValue = {});
void setValue(const QString& key, const QVariant& value);

void remove(const QString& key);

}  // namespace wendrel::SettingsStore
