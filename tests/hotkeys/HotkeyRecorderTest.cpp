#include "HotkeyRecorder.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

KeyEvent key(std::uint32_t keyCode, std::uint32_t flags, KeyEvent::Type type = KeyEvent::Type::keyDown)
{
    return {type, keyCode, flags, 0, false};
}

struct Recorded {
    HotkeyRecorderGroup group;
    std::vector<std::optional<GlobalHotkeyBinding>> changes;
    HotkeyRecorder recorder{group, 1, GlobalHotkeyBinding::defaultScreenshot(), GlobalHotkeyBinding::defaultScreenshot(),
                            [this](std::optional<GlobalHotkeyBinding> binding) { changes.push_back(binding); }};
};

} // namespace

TEST(HotkeyRecorder, KeysThatMakeNoBindingShowTheErrorAndKeepRecording)
{
    Recorded r;
    r.recorder.startRecording();
    EXPECT_TRUE(r.recorder.handle(key(0, 0))); // plain A
    EXPECT_EQ(r.recorder.errorKey(), "hotkey.needModifier");
    EXPECT_TRUE(r.recorder.isRecording());
    EXPECT_TRUE(r.recorder.handle(key(0, ModifierFlag::shift))); // Shift+A: Shift alone does not count
    EXPECT_TRUE(r.recorder.isRecording());
    EXPECT_TRUE(r.changes.empty());

    EXPECT_TRUE(r.recorder.handle(key(56, ModifierFlag::command | ModifierFlag::shift, KeyEvent::Type::flagsChanged)));
    EXPECT_EQ(r.recorder.preview(), "⌘⇧");
    EXPECT_TRUE(r.recorder.handle(key(20, ModifierFlag::command | ModifierFlag::shift)));
    EXPECT_FALSE(r.recorder.isRecording());
    EXPECT_EQ(r.recorder.binding(), (GlobalHotkeyBinding{20, 0x300}));
    EXPECT_EQ(r.recorder.errorKey(), "");
    EXPECT_EQ(r.recorder.preview(), "");
    EXPECT_EQ(r.changes.size(), 1u);
    EXPECT_FALSE(r.recorder.handle(key(21, ModifierFlag::command))); // not recording: not swallowed
}

TEST(HotkeyRecorder, EscapeEndsRecordingAndKeepsThePreviousBinding)
{
    Recorded r;
    r.recorder.startRecording();
    r.recorder.handle(key(53, 0));
    EXPECT_FALSE(r.recorder.isRecording());
    EXPECT_EQ(r.recorder.binding(), GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_TRUE(r.changes.empty());
}

TEST(HotkeyRecorder, TrailingControlClearsTheDefaultAndResetsAnythingElse)
{
    Recorded r;
    EXPECT_EQ(r.recorder.trailingControl(), HotkeyRecorder::TrailingControl::clear);
    r.recorder.clear();
    EXPECT_EQ(r.recorder.binding(), std::nullopt);
    EXPECT_EQ(r.recorder.trailingControl(), HotkeyRecorder::TrailingControl::reset);
    r.recorder.reset();
    EXPECT_EQ(r.recorder.binding(), GlobalHotkeyBinding::defaultScreenshot());
    r.recorder.startRecording();
    EXPECT_EQ(r.recorder.trailingControl(), HotkeyRecorder::TrailingControl::none);

    HotkeyRecorderGroup group;
    HotkeyRecorder noDefault(group, 2, std::nullopt, std::nullopt, nullptr);
    EXPECT_EQ(noDefault.trailingControl(), HotkeyRecorder::TrailingControl::none);
    noDefault.startRecording();
    noDefault.handle(key(1, ModifierFlag::option));
    EXPECT_EQ(noDefault.trailingControl(), HotkeyRecorder::TrailingControl::clear);
}

TEST(HotkeyRecorder, OnlyOneRecorderOfAPageRecordsAtATime)
{
    HotkeyRecorderGroup group;
    HotkeyRecorder first(group, 1, std::nullopt, std::nullopt, nullptr);
    HotkeyRecorder second(group, 2, std::nullopt, std::nullopt, nullptr);
    first.startRecording();
    second.startRecording();
    EXPECT_FALSE(first.isRecording());
    EXPECT_TRUE(second.isRecording());
    first.endRecording(); // ending a recorder that is not active leaves the other alone
    EXPECT_TRUE(second.isRecording());
}
