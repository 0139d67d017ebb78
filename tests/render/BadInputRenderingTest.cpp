// Documents that are partly wrong render what can be drawn and say what could
// not: unreadable elements are left out when reading, unusable ones when
// drawing, and the rest still reaches the image.
#include "AnnotationJson.h"
#include "AnnotationRenderer.h"
#include "FileContents.h"
#include "PngDecoder.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"
#include "RenderSamples.h"
#include "TestApplication.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>

namespace tosvar {
namespace {

const char* const goodRectangle =
    R"({"id":"6F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0","kind":{"rectangle":{}},"geometry":{"rect":{"_0":[[20,20],[60,40]]}},)"
    R"("style":{"strokeColor":{"red":1,"green":0,"blue":0,"alpha":1},"lineWidth":4,"opacity":1,"cornerRadius":0,)"
    R"("arrowHead":{"standard":{}},"fontSize":24,"mosaicBlockSize":16,"blurRadius":12,"dashed":false,"shadow":false,)"
    R"("outline":false,"curvature":0,"textOutline":true,"watermarkAngle":-45,"watermarkSpacing":1,"watermarkOffset":[0,0]}})";

std::string withKind(const std::string& element, const std::string& kind) {
    std::string out = element;
    out.replace(out.find(R"({"rectangle":{}})"), 16, kind);
    return out;
}

std::string withGeometry(const std::string& element, const std::string& geometry) {
    std::string out = element;
    const std::string old = R"({"rect":{"_0":[[20,20],[60,40]]}})";
    out.replace(out.find(old), old.size(), geometry);
    return out;
}

class BadInput : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testApplication<QGuiApplication>(); }
};

TEST_F(BadInput, ReadingKeepsEveryElementThatReadsAndNamesTheOthers) {
    const std::string text = "[" + std::string(goodRectangle) + "," + withKind(goodRectangle, R"({"hexagon":{}})") + "," +
                             withGeometry(goodRectangle, R"({"rect":{"_0":[["wide",20],[60,40]]}})") + "," + R"({"id":"x"})" + "]";
    const AnnotationJson::ElementsReading reading = AnnotationJson::decodeElementsLeniently(text);
    EXPECT_FALSE(reading.failure);
    ASSERT_EQ(reading.elements.size(), 1u);
    ASSERT_EQ(reading.rejected.size(), 3u);
    EXPECT_EQ(reading.rejected[0].index, 1u);
    EXPECT_NE(reading.rejected[0].reason.find("hexagon"), std::string::npos) << reading.rejected[0].reason;
    EXPECT_EQ(reading.rejected[1].index, 2u);
    EXPECT_EQ(reading.rejected[2].index, 3u);
}

TEST_F(BadInput, TextThatIsNotAListOfElementsIsAFailureWithAReason) {
    for (const std::string& text : {std::string("[") + goodRectangle, std::string(goodRectangle), std::string("NaN"), std::string()}) {
        const AnnotationJson::ElementsReading reading = AnnotationJson::decodeElementsLeniently(text);
        ASSERT_TRUE(reading.failure) << text;
        EXPECT_FALSE(reading.failure->empty());
        EXPECT_TRUE(reading.elements.empty());
    }
}

TEST_F(BadInput, UnusableElementsAreSkippedWithTheirReasonAndTheRestIsDrawn) {
    const AnnotationElement good = *AnnotationJson::decodeElement(goodRectangle);
    AnnotationElement huge = good;
    huge.geometry = Geometry::rect({1e300, -1e300, 1e300, 5});
    AnnotationElement wrongGeometry = good;
    wrongGeometry.kind = AnnotationKind(AnnotationKind::Case::arrow);
    AnnotationElement notAPicture = good;
    notAPicture.kind = AnnotationKind::image({Uuid::random(), SharedBytes(std::vector<std::uint8_t>(64, 0x5A)), 10, 10});
    AnnotationElement hugeLine = good;
    hugeLine.style.lineWidth = 1e9;

    const ImageBuffer base = samples::screenPattern(100, 80);
    const AnnotationDocument document(base, 1, std::nullopt, {huge, wrongGeometry, good, notAPicture, hugeLine});
    std::vector<SkippedElement> skipped;
    const std::optional<ImageBuffer> image = AnnotationRenderer(QtDrawingBackend::shared()).render(document, &skipped);
    ASSERT_TRUE(image);
    ASSERT_EQ(skipped.size(), 4u);
    EXPECT_EQ(skipped[0].index, 0u);
    EXPECT_NE(skipped[0].reason.find("out of range"), std::string::npos);
    EXPECT_EQ(skipped[1].index, 1u);
    EXPECT_NE(skipped[1].reason.find("segment"), std::string::npos);
    EXPECT_EQ(skipped[2].index, 3u);
    EXPECT_NE(skipped[2].reason.find("not an image"), std::string::npos);
    EXPECT_EQ(skipped[3].index, 4u);
    const Rgba8 border = image->pixel(20, 40);
    EXPECT_GT(border.r, 200);
    EXPECT_LT(border.g, 60);
    EXPECT_TRUE(image->pixel(50, 40) == base.pixel(50, 40)); // inside the unfilled rectangle
}

class RenderTool : public BadInput {
protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() / ("tosvar-render-" + Uuid::random().string());
        std::filesystem::create_directories(folder_);
        ASSERT_FALSE(PngEncoder::writeFile(samples::screenPattern(100, 80), folder_ / "base.png"));
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    int run(const std::string& elements) {
        std::ofstream(folder_ / "elements.json") << elements;
        const std::string command = std::string(TOSVAR_RENDER_EXECUTABLE) + " " + (folder_ / "elements.json").string() + " " +
                                    (folder_ / "base.png").string() + " " + out().string() + " 2>" + (folder_ / "stderr").string();
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::filesystem::path out() const { return folder_ / "out.png"; }
    std::string errors() const { return readFileText(folder_ / "stderr").value_or(""); }

    std::filesystem::path folder_;
};

TEST_F(RenderTool, WritesTheFlattenedImage) {
    EXPECT_EQ(run("[" + std::string(goodRectangle) + "]"), 0) << errors();
    const Expected<ImageBuffer> image = PngDecoder::decodeFile(out());
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 100);
    EXPECT_GT(image->pixel(20, 40).r, 200);
}

TEST_F(RenderTool, DrawsWhatItCanAndExitsWithOneWhenElementsWereLeftOut) {
    EXPECT_EQ(run("[" + withKind(goodRectangle, R"({"hexagon":{}})") + "," + goodRectangle + "]"), 1);
    EXPECT_NE(errors().find("element 0 left out"), std::string::npos) << errors();
    EXPECT_TRUE(std::filesystem::exists(out()));
}

TEST_F(RenderTool, RefusesUnreadableInputWithoutWritingAnything) {
    EXPECT_EQ(run(std::string("[") + goodRectangle), 2);
    EXPECT_NE(errors().find("elements.json"), std::string::npos) << errors();
    EXPECT_FALSE(std::filesystem::exists(out()));
}

} // namespace
} // namespace tosvar
