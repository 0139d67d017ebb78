// The built application on an X server of its own with a tray, as a user
// meets it: a full-screen shot from the command line, another from the tray
// menu, and a clean exit.
#include "ChildProcess.h"
#include "IsolatedEnvironment.h"
#include "PngDecoder.h"
#include "PngEncoder.h"
#include "SessionBus.h"
#include "TextSpecimens.h"
#include "X11DisplayCapturer.h"
#include "XvfbServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>

using namespace tosvar;
namespace fs = std::filesystem;

namespace {

struct CommandRun {
    int exitCode = -1;
    std::string output;
};

CommandRun run(const std::string& command) {
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    CommandRun result;
    char buffer[4096];
    std::size_t n = 0;
    while (pipe && (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, n);
    const int status = pipe ? ::pclose(pipe) : -1;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

CommandRun runTosvar(const std::string& arguments) { return run(std::string(TOSVAR_EXECUTABLE) + " " + arguments); }

bool waitFor(const std::function<bool()>& condition, int milliseconds = 10000) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return condition();
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<fs::path> screenshots(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("Tosvar Screenshot ") && name.ends_with(".png")) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

// The tray's panel: where it stands and how wide it is; zero width before
// trayer has mapped it.
struct PanelGeometry {
    int x = 0, y = 0, width = 0, height = 0;
};

PanelGeometry panelGeometry() {
    const CommandRun panel = run("xdotool search --name '^panel$' getwindowgeometry --shell");
    PanelGeometry geometry;
    for (std::istringstream lines(panel.output); lines;) {
        std::string line;
        std::getline(lines, line);
        std::sscanf(line.c_str(), "X=%d", &geometry.x);
        std::sscanf(line.c_str(), "Y=%d", &geometry.y);
        std::sscanf(line.c_str(), "WIDTH=%d", &geometry.width);
        std::sscanf(line.c_str(), "HEIGHT=%d", &geometry.height);
    }
    return geometry;
}

class TosvarEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override {
        XvfbServer::shared().useAsDisplay();
        ::unsetenv("QT_QPA_PLATFORM");
        // The welcome window is for people; here it would only cover the screen.
        fs::create_directories(environment.root() / "config/tosvar");
        std::ofstream(environment.root() / "config/tosvar/defaults.json") << R"({"tosvar.onboardingCompleted": true})";
    }
    void TearDown() override { runTosvar("quit"); }

    fs::path saveFolder() const { return environment.root() / "home/Pictures/Tosvar"; }
    fs::path stateFolder() const { return environment.root() / "state/tosvar"; }

    IsolatedEnvironment environment;
    SessionBus bus;
};

} // namespace

TEST_F(TosvarEndToEndTest, FullScreenShotsFromTheCommandLineAndTheTrayMenuThenACleanExit) {
    ChildProcess tray({"trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28",
                       "--transparent", "false"});
    ASSERT_TRUE(tray.started()) << "trayer is missing (scripts/setup.sh installs it)";
    ASSERT_TRUE(waitFor([] { return run("xdotool search --name '^panel$'").exitCode == 0; })) << "no tray panel";
    const int emptyPanelWidth = panelGeometry().width;

    // The application first, so its icon sits in the tray before the shot.
    ChildProcess application({TOSVAR_EXECUTABLE});
    ASSERT_TRUE(application.started());
    ASSERT_TRUE(waitFor([&] { return panelGeometry().width > emptyPanelWidth; })) << "the icon never reached the tray";

    const CommandRun shot = runTosvar("screenshot-full");
    ASSERT_EQ(shot.exitCode, 0) << shot.output;
    std::vector<fs::path> files = screenshots(saveFolder());
    ASSERT_EQ(files.size(), 1u);

    const Rect wholeScreen(0, 0, XvfbServer::shared().width(), XvfbServer::shared().height());
    X11DisplayCapturer reference(wholeScreen);
    Expected<ImageBuffer> saved = PngDecoder::decodeFile(files[0]);
    ASSERT_TRUE(saved) << saved.error().message;
    // The toast that says where the shot went covers part of the screen for a
    // moment; once it is gone the display is what the shot holds.
    EXPECT_TRUE(waitFor([&] {
        const std::optional<CapturedDisplay> now = reference.capture({wholeScreen, wholeScreen, 1});
        return now && saved->samePixels(now->image);
    }, 5000));

    const std::string fileBytes = readFile(files[0]);
    const CommandRun clipboard = run("xclip -selection clipboard -t image/png -o");
    ASSERT_EQ(clipboard.exitCode, 0) << clipboard.output;
    EXPECT_TRUE(clipboard.output == fileBytes) << "the clipboard holds " << clipboard.output.size()
                                               << " bytes, the file " << fileBytes.size();

    // The tray icon opens the menu; its second row is the full-screen shot.
    const PanelGeometry panel = panelGeometry();
    ASSERT_GT(panel.width, 0);
    std::this_thread::sleep_for(std::chrono::seconds(1)); // one second apart, so the names differ
    const std::string click = "xdotool mousemove " + std::to_string(panel.x + panel.width / 2) + " " +
                              std::to_string(panel.y + panel.height / 2) + " click 1";
    ASSERT_EQ(run(click).exitCode, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ASSERT_EQ(run("xdotool key Down Down Return").exitCode, 0);
    EXPECT_TRUE(waitFor([&] { return screenshots(saveFolder()).size() == 2; }, 5000));

    const std::string log = readFile(stateFolder() / "launch.log");
    EXPECT_NE(log.find("launch complete"), std::string::npos);

    EXPECT_EQ(runTosvar("quit").exitCode, 0);
    EXPECT_TRUE(waitFor([] { return runTosvar("quit").output.find("not running") != std::string::npos; }));
    EXPECT_TRUE(waitFor([&] { return readFile(stateFolder() / "launch-state.json").find("\"exited\"") != std::string::npos; }))
        << readFile(stateFolder() / "launch-state.json");
}

namespace {

// Whether (x, y) lies within `reach` of the border of `box`.
bool nearBorder(int x, int y, const Rect& box, double reach) {
    const double dx = std::max({box.minX() - x, x - box.maxX(), 0.0});
    const double dy = std::max({box.minY() - y, y - box.maxY(), 0.0});
    const bool inside = dx == 0 && dy == 0;
    const double distance = inside ? std::min({x - box.minX(), box.maxX() - x, y - box.minY(), box.maxY() - y}) : std::hypot(dx, dy);
    return distance <= reach;
}

ImageBuffer pattern(int width, int height) {
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, {static_cast<std::uint8_t>(40 + x * 150 / width), static_cast<std::uint8_t>(60 + y * 150 / height),
                                  static_cast<std::uint8_t>((x / 16 + y / 16) % 2 ? 200 : 120), 255});
    return std::move(image).freeze();
}

} // namespace

// `tosvar annotate FILE`, a rectangle dragged with its tool key, a text typed
// in place, Ctrl+S: one new file in the save folder that differs from the
// original only along the rectangle's stroke and inside the text's box.
TEST_F(TosvarEndToEndTest, AnnotateAFileWithARectangleAndATextThenSave) {
    const fs::path original = environment.root() / "shot.png";
    ASSERT_FALSE(PngEncoder::writeFile(pattern(600, 400), original));
    const CommandRun open = runTosvar("annotate " + original.string());
    ASSERT_EQ(open.exitCode, 0) << open.output;
    ASSERT_TRUE(waitFor([] { return run("xdotool search --name '^Annotate shot.png$'").exitCode == 0; })) << "no editor window";
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const CommandRun geometry = run("xdotool search --name '^Annotate shot.png$' getwindowgeometry --shell");
    int x = 0, y = 0, width = 0, height = 0;
    for (std::istringstream lines(geometry.output); lines;) {
        std::string line;
        std::getline(lines, line);
        std::sscanf(line.c_str(), "X=%d", &x);
        std::sscanf(line.c_str(), "Y=%d", &y);
        std::sscanf(line.c_str(), "WIDTH=%d", &width);
        std::sscanf(line.c_str(), "HEIGHT=%d", &height);
    }
    // The window is as tall as the image plus its toolbar, which shows it at
    // one screen pixel per image pixel, centred across the window's width.
    const int toolbar = height - 400;
    ASSERT_GT(toolbar, 0) << geometry.output;
    auto screen = [&](int ix, int iy) { return std::to_string(x + (width - 600) / 2 + ix) + " " + std::to_string(y + toolbar + iy); };

    ASSERT_EQ(run("xdotool mousemove " + screen(300, 200) + " sleep 0.2 key r").exitCode, 0);
    ASSERT_EQ(run("xdotool mousemove " + screen(100, 80) + " mousedown 1 mousemove " + screen(150, 120) + " mousemove " +
                  screen(300, 230) + " sleep 0.1 mouseup 1")
                  .exitCode,
              0);
    ASSERT_EQ(run("xdotool sleep 0.2 key t mousemove " + screen(120, 300) + " click 1 sleep 0.3 type --delay 40 Hi").exitCode, 0);
    ASSERT_EQ(run("xdotool sleep 0.2 key Return sleep 0.2 key ctrl+s").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return screenshots(saveFolder()).size() == 1; }, 5000)) << "nothing saved";

    const Expected<ImageBuffer> saved = PngDecoder::decodeFile(screenshots(saveFolder()).front());
    ASSERT_TRUE(saved) << saved.error().message;
    const ImageBuffer before = pattern(600, 400);
    ASSERT_EQ(saved->width(), 600);
    ASSERT_EQ(saved->height(), 400);
    const Rect rectangle(100, 80, 200, 150);
    const Rect textBox(110, 260, 110, 80); // "Hi" at 40 px, its first line centred on the click
    int onStroke = 0, inText = 0, elsewhere = 0;
    for (int py = 0; py < 400; ++py)
        for (int px = 0; px < 600; ++px) {
            const Rgba8 a = saved->pixel(px, py), b = before.pixel(px, py);
            if (std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)}) <= 2) continue;
            if (nearBorder(px, py, rectangle, 10)) ++onStroke;
            else if (textBox.contains({px + 0.5, py + 0.5})) ++inText;
            else ++elsewhere;
        }
    EXPECT_GT(onStroke, 2 * (200 + 150) * 6) << "the rectangle's stroke";
    EXPECT_GT(inText, 300) << "the text";
    EXPECT_EQ(elsewhere, 0);
}

namespace {

int occurrences(const std::string& text, const std::string& word) {
    int count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

// A region is captured with rounded corners: the squares of `radius` in its
// corners are left out of a comparison.
bool inCorner(int x, int y, int width, int height, int radius) {
    return (x < radius || x >= width - radius) && (y < radius || y >= height - radius);
}

// The pixels of `image` that differ from `screen`, outside the corners.
std::vector<std::pair<int, int>> differences(const ImageBuffer& image, const ImageBuffer& screen, int radius) {
    std::vector<std::pair<int, int>> found;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (!inCorner(x, y, image.width(), image.height(), radius) && image.pixel(x, y) != screen.pixel(x, y)) found.emplace_back(x, y);
    return found;
}

std::optional<ImageBuffer> screenNow(const Rect& crop) {
    const Rect wholeScreen(0, 0, XvfbServer::shared().width(), XvfbServer::shared().height());
    X11DisplayCapturer reference(wholeScreen);
    const std::optional<CapturedDisplay> now = reference.capture({wholeScreen, wholeScreen, 1});
    if (!now) return std::nullopt;
    return now->image.cropped({static_cast<int>(crop.minX()), static_cast<int>(crop.minY()), static_cast<int>(crop.width()),
                               static_cast<int>(crop.height())});
}

} // namespace

// Capture Area from the command line: a drag over the frozen screen gives one
// file and the same image on the clipboard, equal to that rectangle of the
// screen; a click on a window takes the window; Escape writes nothing and the
// next request opens a session at once; two requests in a row open one session.
TEST_F(TosvarEndToEndTest, CaptureAreaByDragAndCancelByEscape) {
    ChildProcess manager({"openbox"});
    ASSERT_TRUE(manager.started()) << "openbox is missing (scripts/setup.sh installs it)";
    // A plaid root, so the frozen rectangle has something to get right.
    ASSERT_EQ(run("xsetroot -mod 7 5 -fg '#c83232' -bg '#3264c8'").exitCode, 0);
    const fs::path log = stateFolder() / "launch.log";
    auto presented = [&] { return occurrences(readFile(log), "overlays presented"); };

    ASSERT_EQ(runTosvar("screenshot").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return presented() == 1; })) << readFile(log);
    // A corner of the screen no window or toast covers, so the screen stays as it was frozen.
    ASSERT_EQ(run("xdotool mousemove 20 560 mousedown 1 mousemove 100 600 mousemove 320 780 sleep 0.1 mouseup 1").exitCode, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(screenshots(saveFolder()).empty()) << "the region waits to be annotated";
    ASSERT_EQ(run("xdotool key Return").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return screenshots(saveFolder()).size() == 1; }, 5000)) << "nothing saved";

    const Expected<ImageBuffer> saved = PngDecoder::decodeFile(screenshots(saveFolder()).front());
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(saved->width(), 300);
    EXPECT_EQ(saved->height(), 220);
    bool plaid = false;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x) plaid = plaid || saved->pixel(x, y) != saved->pixel(0, 0);
    EXPECT_TRUE(plaid) << "the plaid shows";
    EXPECT_TRUE(waitFor([&] {
        const std::optional<ImageBuffer> now = screenNow({20, 560, 300, 220});
        return now && differences(*saved, *now, 8).empty();
    }, 5000)) << "the file is that rectangle of the screen, its corners rounded";
    EXPECT_EQ(saved->pixel(0, 0).a, 0) << "a rounded corner";
    const CommandRun clipboard = run("xclip -selection clipboard -t image/png -o");
    EXPECT_TRUE(clipboard.output == readFile(screenshots(saveFolder()).front())) << "the clipboard holds the same image";

    // A click on a window takes the window as it shows, frame and all.
    std::this_thread::sleep_for(std::chrono::seconds(1)); // one second apart, so the names differ
    const CommandRun placeholder = run("xdotool search --name '^Tosvar$' getwindowgeometry --shell");
    int wx = 0, wy = 0, ww = 0, wh = 0;
    for (std::istringstream lines(placeholder.output); lines;) {
        std::string line;
        std::getline(lines, line);
        std::sscanf(line.c_str(), "X=%d", &wx);
        std::sscanf(line.c_str(), "Y=%d", &wy);
        std::sscanf(line.c_str(), "WIDTH=%d", &ww);
        std::sscanf(line.c_str(), "HEIGHT=%d", &wh);
    }
    ASSERT_GT(ww, 0) << placeholder.output;
    ASSERT_EQ(runTosvar("screenshot").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return presented() == 2; }));
    ASSERT_EQ(run("xdotool mousemove " + std::to_string(wx + ww / 2) + " " + std::to_string(wy + wh / 2) + " sleep 0.2 click 1 sleep 0.3 key Return").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return screenshots(saveFolder()).size() == 2; }, 5000)) << "the window was not taken";
    const Expected<ImageBuffer> window = PngDecoder::decodeFile(screenshots(saveFolder()).back());
    ASSERT_TRUE(window);
    EXPECT_GE(window->width(), ww) << "the window with its frame";
    EXPECT_GT(window->height(), wh) << "a title bar above it";

    // Escape writes nothing, and the next request opens a session at once.
    ASSERT_EQ(runTosvar("screenshot").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return presented() == 3; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    ASSERT_EQ(run("xdotool key Escape").exitCode, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_EQ(runTosvar("screenshot").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return presented() == 4; })) << "no new session after Escape";
    ASSERT_EQ(runTosvar("screenshot").exitCode, 0); // a second request during the session
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(presented(), 4) << "one session for two requests";
    ASSERT_EQ(run("xdotool key Escape").exitCode, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(screenshots(saveFolder()).size(), 2u) << "Escape wrote nothing";
}

// Annotating a region in place, from the hotkey: a drag commits a region that
// stays on the frozen screen; a rectangle and an arrow drawn with their keys,
// the region grown by its bottom-right handle, and Return give one image of
// the grown region, on the clipboard and in the folder, equal to the screen
// but for the two shapes and the rounded corners.
TEST_F(TosvarEndToEndTest, AnnotateARegionInPlaceResizeItAndCopy) {
    ChildProcess manager({"openbox"});
    ASSERT_TRUE(manager.started()) << "openbox is missing (scripts/setup.sh installs it)";
    ASSERT_EQ(run("xsetroot -mod 7 5 -fg '#c83232' -bg '#3264c8'").exitCode, 0);
    ChildProcess application({TOSVAR_EXECUTABLE});
    ASSERT_TRUE(application.started());
    const fs::path log = stateFolder() / "launch.log";
    ASSERT_TRUE(waitFor([&] { return occurrences(readFile(log), "QApplication.exec") > 0; })) << readFile(log);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));

    ASSERT_EQ(run("xdotool key ctrl+shift+2").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return occurrences(readFile(log), "overlays presented") == 1; })) << readFile(log);
    ASSERT_EQ(run("xdotool mousemove 20 470 mousedown 1 mousemove 100 500 mousemove 320 690 sleep 0.1 mouseup 1 sleep 0.3").exitCode, 0);
    ASSERT_EQ(run("xdotool key r sleep 0.1 mousemove 60 500 mousedown 1 mousemove 90 520 mousemove 140 560 sleep 0.1 mouseup 1 sleep 0.2").exitCode, 0);
    ASSERT_EQ(run("xdotool key a sleep 0.1 mousemove 180 500 mousedown 1 mousemove 220 540 mousemove 280 600 sleep 0.1 mouseup 1 sleep 0.2").exitCode, 0);
    // The bottom-right corner handle, with a drawing tool still armed.
    ASSERT_EQ(run("xdotool mousemove 320 690 mousedown 1 mousemove 340 710 mousemove 400 760 sleep 0.1 mouseup 1 sleep 0.3").exitCode, 0);
    EXPECT_TRUE(screenshots(saveFolder()).empty()) << "nothing is written before Return";
    ASSERT_EQ(run("xdotool key Return").exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return screenshots(saveFolder()).size() == 1; }, 5000)) << "nothing saved";
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_EQ(screenshots(saveFolder()).size(), 1u);

    const Expected<ImageBuffer> saved = PngDecoder::decodeFile(screenshots(saveFolder()).front());
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(saved->width(), 380) << "the grown region";
    EXPECT_EQ(saved->height(), 290);
    EXPECT_TRUE(run("xclip -selection clipboard -t image/png -o").output == readFile(screenshots(saveFolder()).front()))
        << "the clipboard holds the same image";

    // Where the shapes may change pixels, in the image: each shape's box grown by its stroke.
    const Rect rectangleBox = Rect(40, 30, 80, 60).insetBy(-16, -16);
    const Rect arrowBox = Rect(160, 30, 100, 100).insetBy(-30, -30);
    std::vector<std::pair<int, int>> changed;
    ASSERT_TRUE(waitFor([&] {
        const std::optional<ImageBuffer> now = screenNow({20, 470, 380, 290});
        if (!now) return false;
        changed = differences(*saved, *now, 8);
        return std::all_of(changed.begin(), changed.end(), [&](const auto& p) {
            const Point at{static_cast<double>(p.first), static_cast<double>(p.second)};
            return rectangleBox.contains(at) || arrowBox.contains(at);
        });
    }, 5000)) << changed.size() << " pixels differ outside the shapes";
    int inRectangle = 0, inArrow = 0;
    for (const auto& [x, y] : changed) {
        const Point at{static_cast<double>(x), static_cast<double>(y)};
        inRectangle += rectangleBox.contains(at);
        inArrow += arrowBox.contains(at) && !rectangleBox.contains(at);
    }
    EXPECT_GT(inRectangle, 2 * (80 + 60) * 3) << "the rectangle's stroke";
    EXPECT_GT(inArrow, 300) << "the arrow";
}

namespace {

// Starts the helper window with `arguments` and waits until it is on screen.
struct SpecimenWindow {
    explicit SpecimenWindow(const std::vector<std::string>& arguments) : process([&] {
        std::vector<std::string> command{TOSVAR_TEXT_WINDOW};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }()) {}
    bool shown() { return waitFor([] { return run("xdotool search --name '^Text specimen$'").exitCode == 0; }); }
    ChildProcess process;
};

} // namespace

// Capture Text from the command line over a paragraph, a code block and a
// small table of 14-pixel text at one pixel per point: the clipboard reads
// them back with at most 2% of the characters wrong; and a QR code on screen
// gives exactly its text.
TEST_F(TosvarEndToEndTest, CaptureTextAndAQRCodeFromTheScreen) {
    ChildProcess manager({"openbox"});
    ASSERT_TRUE(manager.started());
    const fs::path log = stateFolder() / "launch.log";
    auto presented = [&] { return occurrences(readFile(log), "overlays presented"); };
    auto readings = [&] { return occurrences(readFile(log), "text capture: "); };
    {
        SpecimenWindow document({"document", "60", "80"});
        ASSERT_TRUE(document.shown());
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ASSERT_EQ(runTosvar("text").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return presented() == 1; })) << readFile(log);
        ASSERT_EQ(run("xdotool mousemove 64 84 mousedown 1 mousemove 300 200 mousemove 956 396 sleep 0.1 mouseup 1").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return readings() == 1; }, 30000)) << readFile(log);
        std::string clipboard;
        waitFor([&] { return (clipboard = run("xclip -selection clipboard -o").output).find("Before you start") != std::string::npos; }, 3000);
        const std::string truth = TextSpecimens::truth(TextSpecimens::document());
        const double errorRate = TextSpecimens::characterErrorRate(clipboard, truth);
        RecordProperty("characterErrorRate", std::to_string(errorRate));
        std::printf("character error rate %.2f%% over %zu characters\n", 100 * errorRate, truth.size());
        EXPECT_LE(errorRate, 0.02) << clipboard;
    }
    {
        const std::string payload = "https://example.org/tides?harbour=north&day=3";
        SpecimenWindow code({"qr", payload, "400", "200"});
        ASSERT_TRUE(code.shown());
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ASSERT_EQ(runTosvar("text").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return presented() == 2; }));
        ASSERT_EQ(run("xdotool mousemove 402 202 mousedown 1 mousemove 500 300 mousemove 590 390 sleep 0.1 mouseup 1").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return readings() == 2; }, 30000)) << readFile(log);
        EXPECT_TRUE(waitFor([&] { return run("xclip -selection clipboard -o").output == payload; }, 3000))
            << run("xclip -selection clipboard -o").output;
    }
    EXPECT_TRUE(screenshots(saveFolder()).empty()) << "reading text saves no picture";
}

namespace {

std::string probe(const fs::path& movie, const std::string& entries) {
    return run("ffprobe -v error -select_streams v:0 -show_entries stream=" + entries + " -of default=noprint_wrappers=1:nokey=1 '" +
               movie.string() + "'")
        .output;
}

std::vector<fs::path> recordings(const fs::path& folder, const std::string& extension) {
    std::vector<fs::path> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error))
        if (entry.path().filename().string().starts_with("Tosvar Recording ") && entry.path().extension() == extension) found.push_back(entry.path());
    return found;
}

} // namespace

// Recording the whole screen from the command line: a first `record-full`
// starts at once (no countdown set), a second stops; while it runs a window
// moves. The MP4 has the screen's size, 30 frames a second, lasts as long as
// the recording ran, and its last frame is the screen as it stood. The same
// with the GIF format gives a GIF of the screen's size.
TEST_F(TosvarEndToEndTest, RecordTheWholeScreenToAnMP4AndAGIFWithTwoCalls) {
    ChildProcess manager({"openbox"});
    ASSERT_TRUE(manager.started());
    for (const std::string format : {"mp4", "gif"}) {
        std::ofstream(environment.root() / "config/tosvar/defaults.json")
            << R"({"tosvar.onboardingCompleted": true, "recordingCountdown": 0, "recording.format": ")" << format << R"("})";
        ChildProcess application({TOSVAR_EXECUTABLE});
        ASSERT_TRUE(application.started());
        const fs::path log = stateFolder() / "launch.log";
        ASSERT_TRUE(waitFor([&] { return occurrences(readFile(log), "QApplication.exec") > 0; }));
        SpecimenWindow moving({"qr", "moving", "100", "100"});
        ASSERT_TRUE(moving.shown());

        ASSERT_EQ(runTosvar("record-full").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return occurrences(readFile(log), "recording capture:") > 0; })) << readFile(log);
        const auto started = std::chrono::steady_clock::now();
        for (int step = 0; step < 25; ++step) {
            run("xdotool search --name '^Text specimen$' windowmove " + std::to_string(100 + step * 20) + " " + std::to_string(100 + step * 10));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        const double ran = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        ASSERT_EQ(runTosvar("record-full").exitCode, 0);
        ASSERT_TRUE(waitFor([&] { return recordings(saveFolder(), "." + format).size() == 1; }, 30000)) << readFile(log);
        const fs::path file = recordings(saveFolder(), "." + format).front();
        const std::string size = std::to_string(XvfbServer::shared().width()) + "\n" + std::to_string(XvfbServer::shared().height()) + "\n";
        EXPECT_EQ(probe(file, "width,height"), size) << format;
        if (format == "gif") {
            EXPECT_GE(std::stoi(probe(file, "nb_frames")), 10) << "the window's steps";
            runTosvar("quit");
            continue;
        }
        // Frames come as the screen changes, at most at the rate asked for.
        int rateNumerator = 0, rateDenominator = 1;
        std::sscanf(probe(file, "r_frame_rate").c_str(), "%d/%d", &rateNumerator, &rateDenominator);
        EXPECT_NEAR(static_cast<double>(rateNumerator) / rateDenominator, 30, 0.1);
        const double duration = std::stod(probe(file, "duration"));
        EXPECT_LE(std::stoi(probe(file, "nb_frames")) / duration, 30.5);
        EXPECT_NEAR(duration, ran, 0.3);

        // The last frame against the screen, which has not moved since.
        const fs::path last = environment.root() / "last.png";
        ASSERT_EQ(run("ffmpeg -v error -y -sseof -0.5 -i '" + file.string() + "' -update 1 '" + last.string() + "'").exitCode, 0);
        const Expected<ImageBuffer> frame = PngDecoder::decodeFile(last);
        ASSERT_TRUE(frame) << frame.error().message;
        // The screen once the announcement has gone.
        double psnr = 0;
        EXPECT_TRUE(waitFor([&] {
            const std::optional<ImageBuffer> screen = screenNow({0, 0, static_cast<double>(XvfbServer::shared().width()),
                                                                static_cast<double>(XvfbServer::shared().height())});
            if (!screen) return false;
            double squared = 0;
            for (int y = 0; y < frame->height(); ++y)
                for (int x = 0; x < frame->width(); ++x) {
                    const Rgba8 a = frame->pixel(x, y), b = screen->pixel(x, y);
                    squared += (a.r - b.r) * (a.r - b.r) + (a.g - b.g) * (a.g - b.g) + (a.b - b.b) * (a.b - b.b);
                }
            psnr = 10 * std::log10(255.0 * 255.0 * 3 * frame->width() * frame->height() / std::max(squared, 1.0));
            return psnr > 30;
        }, 5000)) << "the movie shows the screen: PSNR " << psnr;
        runTosvar("quit");
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
}
