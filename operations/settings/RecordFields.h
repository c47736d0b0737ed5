#pragma once

#include "StrictJson.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QLatin1String>
#include <QString>

#include <optional>
#include <tuple>
#include <type_traits>

namespace wendrel {

// One member of a settings record as it is stored: its JSON key and where it lives. A record
// lists all its members once, in a `fields()` tuple; reading, writing and the prompts that
// ask for them all go through that list, so a key is written in one place only.
template <typename Record, typename Value>
struct RecordField {
    const char* key;
    Value Record::*member;
};

// An enumeration member, stored by its spellings.
template <typename Record, typename Enum, typename Raw, size_t Count>
struct RecordEnumField {
    const char* key;
    Enum Record::*member;
    const RawValues<Enum, Raw, Count>& spellings;
};

template <typename Record, typename Value>
constexpr RecordField<Record, Value> field(const char* key, Value Record::*member)
{
    return {key, member};
}

template <typename Record, typename Enum, typename Raw, size_t Count>
constexpr RecordEnumField<Record, Enum, Raw, Count> field(const char* key, Enum Record::*member,
                                                          const RawValues<Enum, Raw, Count>& spellings)
{
    return {key, member, spellings};
}

namespace record_detail {

template <typename Record, typename Value>
void read(StrictJsonReader& reader, Record& record, const RecordField<Record, Value>& field)
{
    const QString key = QLatin1String(field.key);
    if constexpr (std::is_same_v<Value, bool>)
        record.*field.member = reader.boolean(key);
    else if constexpr (std::is_same_v<Value, int>)
        record.*field.member = reader.integer(key);
    else
        record.*field.member = reader.number(key);
}

template <typename Record, typename Enum, typename Raw, size_t Count>
void read(StrictJsonReader& reader, Record& record, const RecordEnumField<Record, Enum, Raw, Count>& field)
{
    record.*field.member = reader.enumeration(QLatin1String(field.key), field.spellings);
}

template <typename Raw>
QJsonValue jsonOf(const Raw& raw)
{
    if constexpr (std::is_same_v<Raw, const char*>)
        return QLatin1String(raw);
    else
        return raw;
}

template <typename Record, typename Value>
QJsonValue stored(const Record& record, const RecordField<Record, Value>& field)
{
    return record.*field.member;
}

template <typename Record, typename Enum, typename Raw, size_t Count>
QJsonValue stored(const Record& record, const RecordEnumField<Record, Enum, Raw, Count>& field)
{
    return jsonOf(rawValueOf(record.*field.member, field.spellings));
}

// Calls `visit` with the field of `fields` that describes `member`.
template <typename Fields, typename Member, typename Visit>
void withField(const Fields& fields, Member member, Visit&& visit)
{
    std::apply([&](const auto&... field) {
        const auto visitIfSame = [&](const auto& candidate) {
            if constexpr (std::is_same_v<decltype(candidate.member), Member>) {
                if (candidate.member == member)
                    visit(candidate);
            }
        };
        (visitIfSame(field), ...);
    }, fields);
}

}  // namespace record_detail

// The record read from its stored form: complete and valid, or nothing.
template <typename Record>
std::optional<Record> recordFromJson(const QJsonObject& object)
{
    StrictJsonReader reader(object);
    Record record;
    std::apply([&](const auto&... field) { (record_detail::read(reader, record, field), ...); }, Record::fields());
    if (!reader.isValid())
        return std::nullopt;
    return record;
}

template <typename Record>
QJsonObject recordToJson(const Record& record)
{
    QJsonObject object;
    std::apply([&](const auto&... field) {
        (object.insert(QLatin1String(field.key), record_detail::stored(record, field)), ...);
    }, Record::fields());
    return object;
}

// The stored key of a member: recordKey(&CompressionSettings::targetMB) is "targetMB".
template <typename Record, typename Value>
QString recordKey(Value Record::*member)
{
    QString key;
    record_detail::withField(Record::fields(), member, [&](const auto& field) { key = QLatin1String(field.key); });
    Q_ASSERT_X(!key.isEmpty(), "recordKey", "the member is missing from its record's fields()");
    return key;
}

// A member's value in its stored form.
template <typename Record, typename Value>
QJsonValue recordValue(const Record& record, Value Record::*member)
{
    QJsonValue value;
    record_detail::withField(Record::fields(), member,
                             [&](const auto& field) { value = record_detail::stored(record, field); });
    return value;
}

// How a value of an enumeration member is stored: storedSpelling(&S::mode, S::Mode::quality).
template <typename Record, typename Enum>
QJsonValue storedSpelling(Enum Record::*member, Enum value)
{
    QJsonValue spelling;
    record_detail::withField(Record::fields(), member, [&](const auto& field) {
        if constexpr (requires { field.spellings; })
            spelling = record_detail::jsonOf(rawValueOf(value, field.spellings));
    });
    return spelling;
}

}  // namespace wendrel
