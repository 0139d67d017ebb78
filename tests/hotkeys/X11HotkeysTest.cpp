// Global keys against a real X server: grabs, repeats, lock keys, another
// client's grab, and raw events for the keyboard monitor.
#include "DoubleTapMonitor.h"
#include "HotkeyRegistrar.h"
#include "KeyPositions.h"
#include "TestApplication.h"
#include "X11HotkeyGrabber.h"
#include "X11KeyboardConnection.h"
#include "X11KeyboardMonitor.h"
#include "XvfbServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tosvar;

namespace {

void pumpFor(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

template <typename Condition>
bool pumpUntil(Condition condition, int milliseconds = 3000)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return condition();
}

void xdotool(const std::string& arguments)
{
    ASSERT_EQ(std::system(("xdotool " + arguments).c_str()), 0) << arguments;
}

bool numLockIsOn()
{
    return std::system("xset q | grep -q 'Num Lock: *on'") == 0;
}

std::vector<HotkeyRequest> defaultRows()
{
    return {{HotkeyAction::screenshot, 1, GlobalHotkeyBinding::defaultScreenshot()},
            {HotkeyAction::recording, 3, GlobalHotkeyBinding::defaultRecording()},
            {HotkeyAction::translateRegion, 11, GlobalHotkeyBinding::defaultTranslateRegion()}};
}

class X11Hotkeys : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        XvfbServer::shared().useAsDisplay();
        testApplication<QCoreApplication>();
    }
    void SetUp() override
    {
        keyboard = X11KeyboardConnection::open();
        ASSERT_TRUE(keyboard);
    }
    std::unique_ptr<X11KeyboardConnection> keyboard;
};

} // namespace

TEST_F(X11Hotkeys, TheServersKeymapRoundTripsEveryKeyOfAUsLayout)
{
    const KeyTranslator& translator = keyboard->translator();
    int translated = 0;
    for (const KeyPosition& position : keyPositions()) {
        const auto keycode = translator.xKeycode(position.macKeyCode);
        if (!keycode)
            continue; // keys this virtual keyboard lacks (F13 and up, say)
        ++translated;
        EXPECT_EQ(translator.macKeyCode(*keycode), position.macKeyCode) << position.macKeyCode;
    }
    EXPECT_GE(translated, 90);
    EXPECT_EQ(translator.xKeycode(19), 11); // the 2 key
}

TEST_F(X11Hotkeys, ControlShiftTwoFiresTheScreenshotOncePerPressWhateverTheLocks)
{
    X11HotkeyGrabber grabber(*keyboard);
    std::vector<HotkeyAction> pressed;
    HotkeyRegistrar registrar(grabber, [&](HotkeyAction action) { pressed.push_back(action); });
    ASSERT_TRUE(registrar.registerHotKeys(defaultRows()).empty());

    xdotool("key ctrl+shift+2");
    ASSERT_TRUE(pumpUntil([&] { return !pressed.empty(); }));
    pumpFor(200);
    EXPECT_EQ(pressed, std::vector<HotkeyAction>{HotkeyAction::screenshot});

    // Held for a second: the key repeats on the server, the action does not.
    int serverPresses = 0;
    const int counter = keyboard->addEventHandler([&](const xcb_generic_event_t& event) {
        serverPresses += (event.response_type & 0x7f) == XCB_KEY_PRESS;
    });
    pressed.clear();
    xdotool("keydown ctrl+shift+2 sleep 1 keyup 2 keyup shift keyup ctrl");
    pumpFor(300);
    EXPECT_GT(serverPresses, 3);
    EXPECT_EQ(pressed.size(), 1u);
    keyboard->removeHandler(counter);

    // With Num Lock and Caps Lock on, the same combination still arrives.
    pressed.clear();
    if (!numLockIsOn())
        xdotool("key Num_Lock");
    xdotool("key Caps_Lock");
    ASSERT_TRUE(numLockIsOn());
    xdotool("key ctrl+shift+2");
    EXPECT_TRUE(pumpUntil([&] { return !pressed.empty(); }));
    pumpFor(200);
    EXPECT_EQ(pressed, std::vector<HotkeyAction>{HotkeyAction::screenshot});
    xdotool("key Num_Lock key Caps_Lock");

    // Ctrl+Alt+Shift+2 is another combination.
    pressed.clear();
    xdotool("key ctrl+alt+shift+2");
    pumpFor(300);
    EXPECT_TRUE(pressed.empty());
}

TEST_F(X11Hotkeys, ACombinationAnotherClientHoldsIsAConflictAndTheRestRegister)
{
    // Another program grabs Ctrl+Shift+2 first, on its own connection.
    xcb_connection_t* other = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
    const auto control = XModifier::control | XModifier::shift;
    ASSERT_EQ(xcb_request_check(other, xcb_grab_key_checked(other, 1, root, control, 11, XCB_GRAB_MODE_ASYNC,
                                                             XCB_GRAB_MODE_ASYNC)),
              nullptr);

    X11HotkeyGrabber grabber(*keyboard);
    std::vector<HotkeyAction> pressed;
    HotkeyRegistrar registrar(grabber, [&](HotkeyAction action) { pressed.push_back(action); });
    const auto conflicts = registrar.registerHotKeys(defaultRows());
    EXPECT_EQ(conflicts, std::set<HotkeyAction>{HotkeyAction::screenshot});
    EXPECT_EQ(HotkeyRegistrar::conflictLogText(conflicts), "taken by another app: screenshot");
    EXPECT_TRUE(registrar.isRegistered(HotkeyAction::recording));

    xdotool("key alt+shift+2");
    EXPECT_TRUE(pumpUntil([&] { return !pressed.empty(); }));
    EXPECT_EQ(pressed, std::vector<HotkeyAction>{HotkeyAction::translateRegion});
    xcb_disconnect(other);
}

TEST_F(X11Hotkeys, TheSecondActionOnOneCombinationConflicts)
{
    X11HotkeyGrabber grabber(*keyboard);
    std::vector<HotkeyAction> pressed;
    HotkeyRegistrar registrar(grabber, [&](HotkeyAction action) { pressed.push_back(action); });
    const auto conflicts = registrar.registerHotKeys({{HotkeyAction::screenshot, 1, GlobalHotkeyBinding{0, 0x300}},
                                                      {HotkeyAction::captureText, 2, GlobalHotkeyBinding{0, 0x300}}});
    EXPECT_EQ(conflicts, std::set<HotkeyAction>{HotkeyAction::captureText});
    xdotool("key ctrl+shift+a");
    EXPECT_TRUE(pumpUntil([&] { return !pressed.empty(); }));
    pumpFor(100);
    EXPECT_EQ(pressed, std::vector<HotkeyAction>{HotkeyAction::screenshot});
}

TEST_F(X11Hotkeys, TheMonitorSeesADoubleTapOfTheCommandKey)
{
    X11KeyboardMonitor monitor(*keyboard);
    int taps = 0;
    std::vector<KeyEvent> keyDowns;
    auto doubleTap = DoubleTapMonitor::make(monitor, true, ModifierFlag::command, [&] { ++taps; });
    auto letters = monitor.addMonitor(static_cast<unsigned>(KeyboardMonitoring::EventMask::keyDown),
                                      [&](const KeyEvent& event) { keyDowns.push_back(event); });
    ASSERT_TRUE(doubleTap && letters);
    pumpFor(50);

    xdotool("key Control_L key Control_L");
    EXPECT_TRUE(pumpUntil([&] { return taps == 1; }));

    // Taps with a letter between them do not count.
    xdotool("key Control_L key b key Control_L");
    pumpFor(300);
    EXPECT_EQ(taps, 1);

    // A chord is seen with its modifier.
    pumpFor(400);
    xdotool("key ctrl+b");
    ASSERT_TRUE(pumpUntil([&] { return keyDowns.size() == 2; }));
    EXPECT_EQ(keyDowns.back().keyCode, 11u);
    EXPECT_EQ(keyDowns.back().modifierFlags, ModifierFlag::command);
}
