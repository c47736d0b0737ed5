#include "RingKeyBindings.h"

#include "operations/settings/SettingsStore.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace wendrel::RingKeyBindings {

namespace {

const QString bindingsKey = QStringLiteral("ringKeyBindings");

QString doubleTapKey(RingKind ring) { return QStringLiteral("doubleTap.") + rawValue(ring); }

void store(const QHash<RingKind, ModifierFlags>& combos)
{
    QJsonObject object;
    for (auto it = combos.cbegin(); it != combos.cend(); ++it)
        object.insert(rawValue(it.key()), QJsonObject{{QStringLiteral("rawValue"), double(it.value())}});
    SettingsStore::setText(bindingsKey, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

// The stored bindings as they are, without defaults: rings missing there have no entry.
QHash<RingKind, ModifierFlags> storedBindings()
{
    QHash<RingKind, ModifierFlags> stored;
    const std::optional<QString> text = SettingsStore::text(bindingsKey);
    if (!text)
        return stored;
    const QJsonDocument document = QJsonDocument::fromJson(text->toUtf8());
    if (!document.isObject())
        return stored;
    const QJsonObject object = document.object();
    for (RingKind ring : allRingKinds) {
        const QJsonValue combo = object.value(rawValue(ring)).toObject().value(QStringLiteral("rawValue"));
        if (combo.isDouble() && combo.toDouble() >= 0)
            stored.insert(ring, ModifierFlags(combo.toDouble()));
    }
    return stored;
}

}  // namespace

ModifierFlags defaultCombo(RingKind ring)
{
    switch (ring) {
    case RingKind::convert: return Modifier::shift;
    case RingKind::tools: return Modifier::control;
    case RingKind::actions: return Modifier::option;
    }
    return 0;
}

QHash<RingKind, ModifierFlags> bindings()
{
    QHash<RingKind, ModifierFlags> combos;
    for (RingKind ring : allRingKinds)
        combos.insert(ring, defaultCombo(ring));
    const QHash<RingKind, ModifierFlags> stored = storedBindings();
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        combos.insert(it.key(), it.value());
    return combos;
}

ModifierFlags comboForRing(RingKind ring) { return bindings().value(ring, defaultCombo(ring)); }

std::optional<RingKind> ringForFlags(ModifierFlags flags)
{
    const ModifierFlags wanted = flags & Modifier::mask;
    const QHash<RingKind, ModifierFlags> combos = bindings();
    for (RingKind ring : allRingKinds) {
        if (combos.value(ring) == wanted)
            return ring;
    }
    return std::nullopt;
}

void setComboForRing(ModifierFlags combo, RingKind ring)
{
    QHash<RingKind, ModifierFlags> combos = bindings();
    const ModifierFlags previous = combos.value(ring, defaultCombo(ring));
    for (RingKind other : allRingKinds) {
        if (other != ring && combos.value(other) == combo)
            combos.insert(other, previous);
    }
    combos.insert(ring, combo & Modifier::mask);
    store(combos);
}

bool isDoubleTapEnabled(RingKind ring)
{
    // Anything but a stored "false" counts as on.
    const QVariant stored = SettingsStore::value(doubleTapKey(ring));
    return !(stored.isValid() && stored.toString() == u"false");
}

void setDoubleTapEnabled(RingKind ring, bool enabled) { SettingsStore::setValue(doubleTapKey(ring), enabled); }

}  // namespace wendrel::RingKeyBindings
