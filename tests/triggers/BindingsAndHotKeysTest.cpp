#include "triggers/HotKey.h"
#include "triggers/HotKeyCenter.h"
#include "triggers/RingKeyBindings.h"

#include "operations/settings/SettingsStore.h"
#include "support/TestEnvironment.h"

#include <QFile>

#include <gtest/gtest.h>

#include <variant>

using namespace wendrel;

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

HotKey controlSpace() { return {49, HotKey::controlModifier, QStringLiteral("Space")}; }

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
    SettingsStore::setText(QStringLiteral("ringKeyBindings"),
                           QStringLiteral(R"({"tools":{"rawValue":393216},"misc":{"rawValue":1}})"));
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::tools), Modifier::shift | Modifier::control);
    EXPECT_EQ(RingKeyBindings::comboForRing(RingKind::convert), Modifier::shift);
    SettingsStore::setText(QStringLiteral("ringKeyBindings"), QStringLiteral("{broken"));
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
    SettingsStore::setValue(QStringLiteral("doubleTap.actions"), QStringLiteral("maybe"));
    EXPECT_TRUE(RingKeyBindings::isDoubleTapEnabled(RingKind::actions));
}

TEST(ModifierLabels, SymbolsAndNamesInTheirOwnOrders)
{
    EXPECT_EQ(symbolLabel(Modifier::control | Modifier::shift), QStringLiteral("\u2303\u21E7"));
    EXPECT_EQ(symbolLabel(Modifier::command | Modifier::option), QStringLiteral("\u2325\u2318"));
    EXPECT_EQ(nameLabel(Modifier::control | Modifier::shift), u"Shift + Ctrl");
    EXPECT_EQ(nameLabel(Modifier::option), u"Alt");
}

TEST(HotKeyRecorder, FunctionKeysAloneOthersNeedACommandModifier)
{
    const auto f5 = hotKeyFromPress({Qt::Key_F5, Qt::NoModifier});
    ASSERT_TRUE(std::holds_alternative<HotKey>(f5));
    EXPECT_EQ(std::get<HotKey>(f5), (HotKey{96, 0, QStringLiteral("F5")}));

    const auto shiftA = hotKeyFromPress({Qt::Key_A, Qt::ShiftModifier});
    ASSERT_TRUE(std::holds_alternative<QString>(shiftA));
    EXPECT_EQ(std::get<QString>(shiftA), u"Add Ctrl, Alt or Super to the key");

    const auto space = hotKeyFromPress({Qt::Key_Space, Qt::ControlModifier});
    ASSERT_TRUE(std::holds_alternative<HotKey>(space));
    EXPECT_EQ(std::get<HotKey>(space), controlSpace());
    EXPECT_EQ(std::get<HotKey>(space).displayText(), u"Ctrl+Space");

    const auto superShiftK = hotKeyFromPress({Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier});
    EXPECT_EQ(std::get<HotKey>(superShiftK), (HotKey{40, HotKey::superModifier | HotKey::shiftModifier, QStringLiteral("K")}));
}

TEST(HotKeyRecorder, PortableCodesTranslateBothWays)
{
    EXPECT_EQ(portableKeyCode(Qt::Key_Space), 49u);
    EXPECT_EQ(qtKeyForPortableCode(122), Qt::Key_F1);
    EXPECT_EQ(portableKeyCode(Qt::Key_Launch0), std::nullopt);
}

TEST(HotKeyJson, ExactKeysAndStrictDecoding)
{
    const QJsonObject json = controlSpace().toJson();
    EXPECT_EQ(json.keys(), (QStringList{QStringLiteral("carbonModifiers"), QStringLiteral("keyCode"), QStringLiteral("keyName")}));
    EXPECT_EQ(HotKey::fromJson(json), controlSpace());
    EXPECT_EQ(HotKey::fromJson({{QStringLiteral("keyCode"), -1}, {QStringLiteral("carbonModifiers"), 0},
                                {QStringLiteral("keyName"), QStringLiteral("X")}}),
              std::nullopt);
    EXPECT_EQ(HotKey::fromJson({{QStringLiteral("keyCode"), 1}, {QStringLiteral("keyName"), QStringLiteral("X")}}),
              std::nullopt);
}

TEST_F(HotKeyCenterTest, RegistersStoredShortcutsAndReportsConflicts)
{
    FakeGrabber grabber;
    grabber.taken.insert(40);  // K is held by another program
    {
        HotKeyCenter center(grabber);
        center.setHotKey(controlSpace(), RingKind::tools);
        center.setHotKey(HotKey{40, HotKey::controlModifier, QStringLiteral("K")}, RingKind::actions);
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
    EXPECT_FALSE(SettingsStore::text(QStringLiteral("hotKey.convert")).has_value());
}

TEST_F(HotKeyCenterTest, UndecodableStoredShortcutCountsAsNone)
{
    SettingsStore::setText(QStringLiteral("hotKey.convert"), QStringLiteral("{\"keyCode\":\"F5\"}"));
    FakeGrabber grabber;
    HotKeyCenter center(grabber);
    center.load();
    EXPECT_TRUE(center.hotKeys().isEmpty());
}
