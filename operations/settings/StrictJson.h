#pragma once

#include <QJsonObject>
#include <QString>

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace wendrel {

// An enumeration's stored spellings: its cases paired with their raw values, in case order.
template <typename Enum, typename Raw, size_t Count>
using RawValues = std::array<std::pair<Enum, Raw>, Count>;

template <typename Enum, typename Raw, size_t Count>
Raw rawValueOf(Enum value, const RawValues<Enum, Raw, Count>& table)
{
    for (const auto& [candidate, raw] : table) {
        if (candidate == value)
            return raw;
    }
    return table.front().second;
}

// Reads the fields of a stored record, insisting that each is present with the right type.
// The first missing or mistyped field makes the whole record invalid: a record is decoded
// completely or not at all, never merged with defaults field by field.
class StrictJsonReader {
public:
    explicit StrictJsonReader(const QJsonObject& object) : m_object(object) {}

    bool isValid() const { return m_valid; }

    bool boolean(const QString& key)
    {
        const QJsonValue value = field(key);
        if (!value.isBool())
            return invalid(false);
        return value.toBool();
    }

    double number(const QString& key)
    {
        const QJsonValue value = field(key);
        if (!value.isDouble() || !std::isfinite(value.toDouble()))
            return invalid(0.0);
        return value.toDouble();
    }

    // A whole number in int range; 1.5 or 1e12 is a type mismatch.
    int integer(const QString& key)
    {
        const double value = number(key);
        if (value != std::trunc(value) || value < std::numeric_limits<int>::min()
            || value > std::numeric_limits<int>::max())
            return invalid(0);
        return static_cast<int>(value);
    }

    template <typename Enum, size_t Count>
    Enum enumeration(const QString& key, const RawValues<Enum, const char*, Count>& table)
    {
        const QJsonValue value = field(key);
        for (const auto& [candidate, raw] : table) {
            if (value.isString() && value.toString() == QLatin1String(raw))
                return candidate;
        }
        return invalid(table.front().first);
    }

    template <typename Enum, size_t Count>
    Enum enumeration(const QString& key, const RawValues<Enum, int, Count>& table)
    {
        const int stored = integer(key);
        for (const auto& [candidate, raw] : table) {
            if (m_valid && stored == raw)
                return candidate;
        }
        return invalid(table.front().first);
    }

private:
    QJsonValue field(const QString& key) const { return m_object.value(key); }

    template <typename T>
    T invalid(T placeholder)
    {
        m_valid = false;
        return placeholder;
    }

    QJsonObject m_object;
    bool m_valid = true;
};

}  // namespace wendrel
