#include "HotkeyRegistrar.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

using namespace tosvar;

namespace {

// A system that refuses the combinations in `takenElsewhere` and records
// what is held.
class FakeGrabber final : public HotkeyGrabbing {
public:
    std::set<std::pair<std::uint32_t, std::uint32_t>> takenElsewhere;
    std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> held;
    std::vector<std::string> calls;
    std::function<void(std::uint32_t)> onPressed;

    GrabResult grab(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id) override
    {
        calls.push_back("grab " + std::to_string(id));
        if (takenElsewhere.contains({keyCode, modifiers}))
            return GrabResult::takenByAnotherProgram;
        held[id] = {keyCode, modifiers};
        return GrabResult::registered;
    }
    void release(std::uint32_t id) override
    {
        calls.push_back("release " + std::to_string(id));
        held.erase(id);
    }
    void setPressedHandler(std::function<void(std::uint32_t)> handler) override { onPressed = std::move(handler); }
};

std::vector<HotkeyRequest> rows(std::optional<GlobalHotkeyBinding> screenshot, std::optional<GlobalHotkeyBinding> recording,
                                std::optional<GlobalHotkeyBinding> translate)
{
    return {{HotkeyAction::screenshot, 1, screenshot},
            {HotkeyAction::recording, 3, recording},
            {HotkeyAction::translateRegion, 11, translate}};
}

} // namespace

TEST(HotkeyRegistrar, RegistersValidBindingsAndSendsPressesOnAsActions)
{
    FakeGrabber grabber;
    std::vector<HotkeyAction> pressed;
    HotkeyRegistrar registrar(grabber, [&](HotkeyAction action) { pressed.push_back(action); });
    const auto conflicts = registrar.registerHotKeys(
        rows(GlobalHotkeyBinding::defaultScreenshot(), GlobalHotkeyBinding{19, 0x200}, std::nullopt));
    EXPECT_TRUE(conflicts.empty());
    EXPECT_TRUE(registrar.isRegistered(HotkeyAction::screenshot));
    EXPECT_FALSE(registrar.isRegistered(HotkeyAction::recording)); // Shift alone makes no binding
    EXPECT_FALSE(registrar.isRegistered(HotkeyAction::translateRegion));
    EXPECT_EQ(grabber.held.size(), 1u);

    grabber.onPressed(1);
    grabber.onPressed(42); // an id we never gave out is passed over
    EXPECT_EQ(pressed, std::vector<HotkeyAction>{HotkeyAction::screenshot});
}

TEST(HotkeyRegistrar, RefusedCombinationsAreConflictsAndTheRestStillWork)
{
    FakeGrabber grabber;
    grabber.takenElsewhere.insert({19, 0x1200});
    HotkeyRegistrar registrar(grabber, [](HotkeyAction) {});
    const auto conflicts = registrar.registerHotKeys(rows(GlobalHotkeyBinding::defaultScreenshot(),
                                                          GlobalHotkeyBinding::defaultRecording(),
                                                          GlobalHotkeyBinding::defaultTranslateRegion()));
    EXPECT_EQ(conflicts, std::set<HotkeyAction>{HotkeyAction::recording});
    EXPECT_TRUE(registrar.isRegistered(HotkeyAction::screenshot));
    EXPECT_TRUE(registrar.isRegistered(HotkeyAction::translateRegion));

    // A fresh registration forgets the old conflicts once the key is free.
    grabber.takenElsewhere.clear();
    EXPECT_TRUE(registrar
                    .registerHotKeys(rows(GlobalHotkeyBinding::defaultScreenshot(),
                                          GlobalHotkeyBinding::defaultRecording(), std::nullopt))
                    .empty());
    EXPECT_EQ(grabber.held.size(), 2u);
}

TEST(HotkeyRegistrar, EachRowReleasesItsOldKeyBeforeClaimingTheNewOne)
{
    FakeGrabber grabber;
    HotkeyRegistrar registrar(grabber, [](HotkeyAction) {});
    registrar.registerHotKeys(rows(GlobalHotkeyBinding::defaultScreenshot(), std::nullopt, std::nullopt));
    grabber.calls.clear();
    registrar.registerHotKeys(rows(GlobalHotkeyBinding{20, 0x300}, std::nullopt, std::nullopt));
    EXPECT_EQ(grabber.calls, (std::vector<std::string>{"release 1", "grab 1"}));
    EXPECT_EQ(grabber.held.at(1), std::make_pair(20u, 0x300u));
}

TEST(HotkeyRegistrar, TheConflictLineListsRawNamesSorted)
{
    EXPECT_EQ(HotkeyRegistrar::conflictLogText({HotkeyAction::translateRegion, HotkeyAction::captureText,
                                                HotkeyAction::screenshot}),
              "taken by another app: captureText,screenshot,translateRegion");
}
