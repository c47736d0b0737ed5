#include "triggers/HotKey.h"
#include "triggers/HotKeyCenter.h"
#include "triggers/RingKeyBindings.h"

#include "operations/settings/SettingsStore.h"
#include "support/TestEnvironment.h"

#include <QFile>

#include <gtest/gtest.h>

#include <variant>

using namespace wendrel;
using namespace Qt::StringLiterals;

namespace {

class SettingsFixture : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }
};

using RingKeyBindingsTest = SettingsFixture;
using HotKeyCenterTest = SettingsFixture;

struct FakeGrabber : HotKeyGrabber {
    bool grab(int id, const HotKey& hotKey) override
    {
        if (taken.contains(hotKey.keyCode))
            return false;
        grabbed.insert(id);
        return true;
    }
    void release(int id) override { grabbed.remove(id); }
    QSet<int> grabbed;
    QSet<quint32> taken;  // key codes other programs hold
};

HotKey controlSpace() { return {49, HotKey::controlModifier, u"Space"_s}; }

}  // namespace

TEST_F(RingKeyBindingsTest, DefaultsAndExactMatches)
{
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::shift), RingKind::convert);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::control), RingKind::tools);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::option), RingKind::actions);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::shift | Modifier::control), std::nullopt);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::shift | 0x10000), RingKind::convert);  // Caps Lock ignored
}

TEST_F(RingKeyBindingsTest, StoredBindingsOverrideAndGarbageIsIgnored)
{
    SettingsStore::setText(u"ringKeyBindings"_s, uR"({"tools":{"rawValue":393216},"misc":{"rawValue":1}})"_s);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::tools), Modifier::shift | Modifier::control);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::convert), Modifier::shift);
    SettingsStore::setText(u"ringKeyBindings"_s, u"{broken"_s);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::tools), Modifier::control);
}

TEST_F(RingKeyBindingsTest, TakingAnotherRingsKeysSwapsThem)
{
    RingKeyBindings::setComboForRing(Modifier::shift, RingKind::tools);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::tools), Modifier::shift);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::convert), Modifier::control);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::actions), Modifier::option);

    RingKeyBindings::setComboForRing(Modifier::command, RingKind::actions);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::option), std::nullopt);
    EXPECT_EQ(RingKeyBindings::ringForFlags(Modifier::command), RingKind::actions);
}

TEST_F(RingKeyBindingsTest, DoubleTapIsOnUnlessSwitchedOff)
{
    EXPECT_TRUE(RingKeyBindings::isDoubleTapEnabled(RingKind::tools));
    RingKeyBindings::setDoubleTapEnabled(RingKind::tools, false);
    EXPECT_FALSE(RingKeyBindings::isDoubleTapEnabled(RingKind::tools));
    EXPECT_TRUE(RingKeyBindings::isDoubleTapEnabled(RingKind::convert));
    SettingsStore::setValue(u"doubleTap.actions"_s, u"maybe"_s);
    EXPECT_TRUE(RingKeyBindings::isDoubleTapEnabled(RingKind::actions));
}

TEST(ModifierLabels, SymbolsAndNamesInTheirOwnOrders)
{
    EXPECT_EQ(symbolLabel(Modifier::control | Modifier::shift), u"\u2303\u21E7"_s);
    EXPECT_EQ(symbolLabel(Modifier::command | Modifier::option), u"\u2325\u2318"_s);
    EXPECT_EQ(nameLabel(Modifier::control | Modifier::shift), u"Shift + Ctrl");
    EXPECT_EQ(nameLabel(Modifier::option), u"Alt");
}

// Function keys alone; other keys need Ctrl, Alt or Super; codes are the portable ones.
TEST(HotKeyRecorder, FunctionKeysAloneOthersNeedACommandModifier)
{
    using Recorded = std::variant<HotKey, QString>;
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        Recorded expected;
    } rows[] = {
        {Qt::Key_F5, Qt::NoModifier, HotKey{96, 0, u"F5"_s}},
        {Qt::Key_A, Qt::ShiftModifier, u"Add Ctrl, Alt or Super to the key"_s},
        {Qt::Key_Space, Qt::ControlModifier, controlSpace()},
        {Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier, HotKey{40, HotKey::superModifier | HotKey::shiftModifier, u"K"_s}},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(hotKeyFromPress({row.key, row.modifiers}) == row.expected) << row.key;
    EXPECT_EQ(controlSpace().displayText(), u"Ctrl+Space");
    EXPECT_EQ(portableKeyCode(Qt::Key_Space), 49u);
    EXPECT_EQ(qtKeyForPortableCode(122), Qt::Key_F1);
    EXPECT_EQ(portableKeyCode(Qt::Key_Launch0), std::nullopt);
}

TEST(HotKeyJson, ExactKeysAndStrictDecoding)
{
    const QJsonObject json = controlSpace().toJson();
    EXPECT_EQ(json.keys(), (QStringList{u"carbonModifiers"_s, u"keyCode"_s, u"keyName"_s}));
    EXPECT_EQ(HotKey::fromJson(json), controlSpace());
    EXPECT_EQ(HotKey::fromJson({{u"keyCode"_s, -1}, {u"carbonModifiers"_s, 0}, {u"keyName"_s, u"X"_s}}), std::nullopt);
    EXPECT_EQ(HotKey::fromJson({{u"keyCode"_s, 1}, {u"keyName"_s, u"X"_s}}), std::nullopt);
}

TEST_F(HotKeyCenterTest, RegistersStoredShortcutsAndReportsConflicts)
{
    FakeGrabber grabber;
    grabber.taken.insert(40);  // K is held by another program
    {
        HotKeyCenter center(grabber);
        center.setHotKey(controlSpace(), RingKind::tools);
        center.setHotKey(HotKey{40, HotKey::controlModifier, u"K"_s}, RingKind::actions);
        EXPECT_EQ(center.conflicts(), QSet<RingKind>{RingKind::actions});
        center.unregisterAll();
    }
    HotKeyCenter restarted(grabber);
    restarted.load();
    restarted.registerAll();
    EXPECT_EQ(restarted.hotKeys().value(RingKind::tools), controlSpace());
    EXPECT_EQ(grabber.grabbed, QSet<int>{1});
    EXPECT_EQ(restarted.ringUsing(49, HotKey::controlModifier), RingKind::tools);
    EXPECT_EQ(restarted.ringUsing(49, 0), std::nullopt);

    std::vector<RingKind> triggered;
    restarted.onTrigger = [&](RingKind ring) { triggered.push_back(ring); };
    restarted.triggered(1);
    restarted.triggered(2);  // the conflicting one was never registered
    EXPECT_EQ(triggered, std::vector<RingKind>{RingKind::tools});
}

TEST_F(HotKeyCenterTest, SuspendedMeansNothingRegistered)
{
    FakeGrabber grabber;
    HotKeyCenter center(grabber);
    center.setHotKey(controlSpace(), RingKind::convert);
    ASSERT_EQ(grabber.grabbed.size(), 1);
    center.setSuspended(true);
    EXPECT_TRUE(grabber.grabbed.isEmpty());
    EXPECT_TRUE(center.conflicts().isEmpty());
    bool fired = false;
    center.onTrigger = [&](RingKind) { fired = true; };
    center.triggered(0);
    EXPECT_FALSE(fired);
    center.setSuspended(false);
    EXPECT_EQ(grabber.grabbed, QSet<int>{0});

    center.setHotKey(std::nullopt, RingKind::convert);
    EXPECT_TRUE(grabber.grabbed.isEmpty());
    EXPECT_FALSE(SettingsStore::text(u"hotKey.convert"_s).has_value());
}

TEST_F(HotKeyCenterTest, UndecodableStoredShortcutCountsAsNone)
{
    SettingsStore::setText(u"hotKey.convert"_s, u"{\"keyCode\":\"F5\"}"_s);
    FakeGrabber grabber;
    HotKeyCenter center(grabber);
    center.load();
    EXPECT_TRUE(center.hotKeys().isEmpty());
}
