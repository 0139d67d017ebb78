#include "DoubleTapMonitor.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

class FakeKeyboard final : public KeyboardMonitoring {
public:
    int installed = 0;
    std::unique_ptr<Token> addMonitor(unsigned, std::function<void(const KeyEvent&)>) override
    {
        ++installed;
        return nullptr;
    }
};

struct Taps {
    int fired = 0;
    DoubleTapMonitor monitor{ModifierFlag::option, [this] { ++fired; }};

    // Press and release the modifier(s) `flags` at time t.
    void tap(double t, std::uint32_t flags = ModifierFlag::option)
    {
        monitor.handleFlagsChanged(t, flags);
        monitor.handleFlagsChanged(t + 0.05, 0);
    }
};

} // namespace

TEST(DoubleTapMonitor, TwoTapsWithinTheWindowFireOnce)
{
    Taps taps;
    taps.tap(10.0);
    taps.tap(10.25);
    EXPECT_EQ(taps.fired, 1);
    // The pair is spent: a third tap starts a new count.
    taps.tap(10.5);
    EXPECT_EQ(taps.fired, 1);
    taps.tap(10.7);
    EXPECT_EQ(taps.fired, 2);
}

TEST(DoubleTapMonitor, TapsTooFarApartOrWithAKeyBetweenDoNotCount)
{
    Taps slow;
    slow.tap(10.0);
    slow.tap(10.31);
    EXPECT_EQ(slow.fired, 0);
    slow.tap(10.5); // but the late tap counts as the first of a new pair
    EXPECT_EQ(slow.fired, 1);

    Taps chord;
    chord.tap(10.0);
    chord.monitor.handleKeyDown(); // Option+letter in between
    chord.tap(10.2);
    EXPECT_EQ(chord.fired, 0);
}

TEST(DoubleTapMonitor, AnotherModifierPressedBetweenForgetsTheFirstTapEvenWhenNotHeldTogether)
{
    // Any flags that are neither empty nor the target reset the count, so a
    // Command tap alone between two Option taps breaks the pair.
    Taps alone;
    alone.tap(10.0);
    alone.tap(10.1, ModifierFlag::command);
    alone.tap(10.2);
    EXPECT_EQ(alone.fired, 0);

    Taps together;
    together.tap(10.0, ModifierFlag::option | ModifierFlag::command);
    together.tap(10.1);
    EXPECT_EQ(together.fired, 0);
    together.tap(10.2);
    EXPECT_EQ(together.fired, 1);
}

TEST(DoubleTapMonitor, AnEventSeenTwiceCountsOnce)
{
    Taps taps;
    taps.monitor.handleFlagsChanged(10.0, ModifierFlag::option);
    taps.monitor.handleFlagsChanged(10.0, ModifierFlag::option); // the same event through a second monitor
    EXPECT_EQ(taps.fired, 0);
    taps.monitor.handleFlagsChanged(10.05, 0);
    taps.tap(10.2);
    EXPECT_EQ(taps.fired, 1);
}

TEST(DoubleTapMonitor, MadeOnlyOnTheDirectChannelForATappableModifier)
{
    FakeKeyboard keyboard;
    EXPECT_FALSE(DoubleTapMonitor::make(keyboard, false, ModifierFlag::command, [] {}));
    EXPECT_FALSE(DoubleTapMonitor::make(keyboard, true, 0, [] {}));
    EXPECT_FALSE(DoubleTapMonitor::make(keyboard, true, ModifierFlag::shift, [] {}));
    EXPECT_EQ(keyboard.installed, 0);
    EXPECT_TRUE(DoubleTapMonitor::make(keyboard, true, ModifierFlag::control, [] {}));
    EXPECT_EQ(keyboard.installed, 2); // flags changed and key down
}
