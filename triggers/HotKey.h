#pragma once

#include "operations/RingKind.h"

#include <QJsonObject>
#include <QString>

#include <optional>
#include <variant>

namespace wendrel {

// A global shortcut. The key is stored by its portable code (the design's virtual key code),
// so a recorded shortcut means the same key on every platform; tables translate it to and
// from the keys of this one.
struct HotKey {
    quint32 keyCode = 0;          // portable key code
    quint32 carbonModifiers = 0;  // Super 0x100, Shift 0x200, Alt 0x800, Ctrl 0x1000
    QString keyName;              // the key without modifiers: "Space", "F5", "K"

    static constexpr quint32 superModifier = 0x100;
    static constexpr quint32 shiftModifier = 0x200;
    static constexpr quint32 altModifier = 0x800;
    static constexpr quint32 controlModifier = 0x1000;

    // {"keyCode", "carbonModifiers", "keyName"}, exactly.
    QJsonObject toJson() const;
    static std::optional<HotKey> fromJson(const QJsonObject& object);

    // "⌃⌥⇧⌘" glyphs for the modifiers, then the key's name: "⌃Space".
    QString displayText() const;

    friend bool operator==(const HotKey&, const HotKey&) = default;
};

// A key pressed while a shortcut is being recorded, as Qt reports it.
struct RecordedPress {
    int qtKey = 0;                    // Qt::Key
    Qt::KeyboardModifiers modifiers;  // Qt's: Meta is Super
};

// The recorder's rule: function keys F1–F20 alone are fine; anything else needs Ctrl, Alt or
// Super (Shift alone is not enough). A refused press gives the hint to show.
std::variant<HotKey, QString> hotKeyFromPress(const RecordedPress& press);

// The portable code of a Qt key, and back; none for keys without one.
std::optional<quint32> portableKeyCode(int qtKey);
std::optional<int> qtKeyForPortableCode(quint32 keyCode);

}  // namespace wendrel
