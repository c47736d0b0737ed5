#include "HotKey.h"

#include <QCoreApplication>
#include <QStringList>

#include <array>
#include <utility>

namespace wendrel {

namespace {

struct KeyEntry {
    int qtKey;
    quint32 code;
    const char* name;  // set for keys with a name of their own; others are named by their text
};

// Portable key codes (a US layout's physical keys) for the Qt keys they correspond to.
constexpr std::array<KeyEntry, 81> keyTable{{
    {Qt::Key_A, 0, nullptr},     {Qt::Key_S, 1, nullptr},     {Qt::Key_D, 2, nullptr},
    {Qt::Key_F, 3, nullptr},     {Qt::Key_H, 4, nullptr},     {Qt::Key_G, 5, nullptr},
    {Qt::Key_Z, 6, nullptr},     {Qt::Key_X, 7, nullptr},     {Qt::Key_C, 8, nullptr},
    {Qt::Key_V, 9, nullptr},     {Qt::Key_B, 11, nullptr},    {Qt::Key_Q, 12, nullptr},
    {Qt::Key_W, 13, nullptr},    {Qt::Key_E, 14, nullptr},    {Qt::Key_R, 15, nullptr},
    {Qt::Key_Y, 16, nullptr},    {Qt::Key_T, 17, nullptr},    {Qt::Key_1, 18, nullptr},
    {Qt::Key_2, 19, nullptr},    {Qt::Key_3, 20, nullptr},    {Qt::Key_4, 21, nullptr},
    {Qt::Key_6, 22, nullptr},    {Qt::Key_5, 23, nullptr},    {Qt::Key_Equal, 24, nullptr},
    {Qt::Key_9, 25, nullptr},    {Qt::Key_7, 26, nullptr},    {Qt::Key_Minus, 27, nullptr},
    {Qt::Key_8, 28, nullptr},    {Qt::Key_0, 29, nullptr},    {Qt::Key_BracketRight, 30, nullptr},
    {Qt::Key_O, 31, nullptr},    {Qt::Key_U, 32, nullptr},    {Qt::Key_BracketLeft, 33, nullptr},
    {Qt::Key_I, 34, nullptr},    {Qt::Key_P, 35, nullptr},    {Qt::Key_Return, 36, "\u21A9"},
    {Qt::Key_L, 37, nullptr},    {Qt::Key_J, 38, nullptr},    {Qt::Key_Apostrophe, 39, nullptr},
    {Qt::Key_K, 40, nullptr},    {Qt::Key_Semicolon, 41, nullptr}, {Qt::Key_Backslash, 42, nullptr},
    {Qt::Key_Comma, 43, nullptr}, {Qt::Key_Slash, 44, nullptr}, {Qt::Key_N, 45, nullptr},
    {Qt::Key_M, 46, nullptr},    {Qt::Key_Period, 47, nullptr}, {Qt::Key_Tab, 48, "\u21E5"},
    {Qt::Key_Space, 49, "Space"}, {Qt::Key_QuoteLeft, 50, nullptr}, {Qt::Key_Backspace, 51, "\u232B"},
    {Qt::Key_Escape, 53, "\u238B"}, {Qt::Key_F17, 64, "F17"}, {Qt::Key_F18, 79, "F18"},
    {Qt::Key_F19, 80, "F19"},    {Qt::Key_F20, 90, "F20"},    {Qt::Key_F5, 96, "F5"},
    {Qt::Key_F6, 97, "F6"},      {Qt::Key_F7, 98, "F7"},      {Qt::Key_F3, 99, "F3"},
    {Qt::Key_F8, 100, "F8"},     {Qt::Key_F9, 101, "F9"},     {Qt::Key_F11, 103, "F11"},
    {Qt::Key_F13, 105, "F13"},   {Qt::Key_F16, 106, "F16"},   {Qt::Key_F14, 107, "F14"},
    {Qt::Key_F10, 109, "F10"},   {Qt::Key_F12, 111, "F12"},   {Qt::Key_F15, 113, "F15"},
    {Qt::Key_Home, 115, "\u2196"}, {Qt::Key_PageUp, 116, "\u21DE"}, {Qt::Key_F4, 118, "F4"},
    {Qt::Key_End, 119, "\u2198"}, {Qt::Key_F2, 120, "F2"},    {Qt::Key_PageDown, 121, "\u21DF"},
    {Qt::Key_F1, 122, "F1"},     {Qt::Key_Left, 123, "\u2190"}, {Qt::Key_Right, 124, "\u2192"},
    {Qt::Key_Down, 125, "\u2193"}, {Qt::Key_Up, 126, "\u2191"}, {Qt::Key_Delete, 117, "\u2326"},
}};

const KeyEntry* entryForQtKey(int qtKey)
{
    for (const KeyEntry& entry : keyTable) {
        if (entry.qtKey == qtKey)
            return &entry;
    }
    return nullptr;
}

bool isFunctionKey(int qtKey) { return qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F20; }

}  // namespace

QJsonObject HotKey::toJson() const
{
    return {{QStringLiteral("keyCode"), double(keyCode)},
            {QStringLiteral("carbonModifiers"), double(carbonModifiers)},
            {QStringLiteral("keyName"), keyName}};
}

std::optional<HotKey> HotKey::fromJson(const QJsonObject& object)
{
    const QJsonValue code = object.value(QStringLiteral("keyCode"));
    const QJsonValue modifiers = object.value(QStringLiteral("carbonModifiers"));
    const QJsonValue name = object.value(QStringLiteral("keyName"));
    const auto isUnsigned32 = [](const QJsonValue& value) {
        return value.isDouble() && value.toDouble() >= 0 && value.toDouble() <= 0xFFFFFFFF
               && value.toDouble() == double(qint64(value.toDouble()));
    };
    if (!isUnsigned32(code) || !isUnsigned32(modifiers) || !name.isString())
        return std::nullopt;
    return HotKey{quint32(code.toDouble()), quint32(modifiers.toDouble()), name.toString()};
}

QString HotKey::displayText() const
{
    QStringList parts;
    if (carbonModifiers & controlModifier)
        parts.append(QCoreApplication::translate("Modifiers", "Ctrl"));
    if (carbonModifiers & altModifier)
        parts.append(QCoreApplication::translate("Modifiers", "Alt"));
    if (carbonModifiers & shiftModifier)
        parts.append(QCoreApplication::translate("Modifiers", "Shift"));
    if (carbonModifiers & superModifier)
        parts.append(QCoreApplication::translate("Modifiers", "Super"));
    parts.append(keyName);
    return parts.join(u'+');
}

std::variant<HotKey, QString> hotKeyFromPress(const RecordedPress& press)
{
    const bool hasCommandKey = press.modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (!isFunctionKey(press.qtKey) && !hasCommandKey)
        return QCoreApplication::translate("HotKey", "Add Ctrl, Alt or Super to the key");
    const KeyEntry* entry = entryForQtKey(press.qtKey);
    if (!entry)
        return QCoreApplication::translate("HotKey", "This key can't be a shortcut");

    HotKey hotKey;
    hotKey.keyCode = entry->code;
    if (press.modifiers & Qt::MetaModifier)
        hotKey.carbonModifiers |= HotKey::superModifier;
    if (press.modifiers & Qt::ShiftModifier)
        hotKey.carbonModifiers |= HotKey::shiftModifier;
    if (press.modifiers & Qt::AltModifier)
        hotKey.carbonModifiers |= HotKey::altModifier;
    if (press.modifiers & Qt::ControlModifier)
        hotKey.carbonModifiers |= HotKey::controlModifier;
    // Keys without a name of their own are the printable ones: Qt numbers them by the
    // character on the key, upper case.
    if (entry->name)
        hotKey.keyName = QString::fromUtf8(entry->name);
    else if (press.qtKey > 0x20 && press.qtKey < 0x7f)
        hotKey.keyName = QChar(press.qtKey);
    else
        hotKey.keyName = QStringLiteral("#%1").arg(entry->code);
    return hotKey;
}

std::optional<quint32> portableKeyCode(int qtKey)
{
    if (const KeyEntry* entry = entryForQtKey(qtKey))
        return entry->code;
    return std::nullopt;
}

std::optional<int> qtKeyForPortableCode(quint32 keyCode)
{
    for (const KeyEntry& entry : keyTable) {
        if (entry.code == keyCode)
            return entry.qtKey;
    }
    return std::nullopt;
}

}  // namespace wendrel
