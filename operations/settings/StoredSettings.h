#pragma once

#include "SettingsStore.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <concepts>
#include <optional>

namespace wendrel {

// A settings record kept under one key of the settings file, as JSON text: it has defaults
// (its default constructor), a fixed key, and a strict JSON form both ways.
template <typename Record>
concept StoredSettings = std::default_initializable<Record>
    && requires(const Record& record, const QJsonObject& object) {
           { Record::defaultsKey() } -> std::convertible_to<QString>;
           { Record::fromJson(object) } -> std::same_as<std::optional<Record>>;
           { record.toJson() } -> std::same_as<QJsonObject>;
       };

// The stored record, or the defaults when nothing is stored or what is stored does not decode
// completely. Never reports an error: settings that can't be read silently become defaults.
template <StoredSettings Record>
Record loadStoredSettings()
{
    const std::optional<QString> stored = SettingsStore::text(Record::defaultsKey());
    if (!stored)
        return Record{};
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(stored->toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return Record{};
    return Record::fromJson(document.object()).value_or(Record{});
}

template <StoredSettings Record>
void saveStoredSettings(const Record& record)
{
    SettingsStore::setText(
        Record::defaultsKey(),
        QString::fromUtf8(QJsonDocument(record.toJson()).toJson(QJsonDocument::Compact)));
}

}  // namespace wendrel
