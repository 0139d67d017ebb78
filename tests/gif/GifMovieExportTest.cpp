// A movie made by ffmpeg exported to a GIF through our FFmpeg movie reader:
// the frames kept for the rate, their delays and size, and the errors of a
// movie that cannot be read.
#include "FfmpegMovieFiles.h"
#include "GIFExporter.h"
#include "TestApplication.h"
#include "WorkerPool.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tosvar;

TEST(GIFMovieExport, AThirtyFrameASecondMovieBecomesATenFrameASecondGifNoWiderThanAsked) {
    testApplication<QGuiApplication>();
    QTemporaryDir folder;
    const std::string movie = folder.filePath(QStringLiteral("clip.mp4")).toStdString();
    ASSERT_EQ(std::system(("ffmpeg -v error -y -f lavfi -i testsrc=size=320x240:rate=30 -t 2 -pix_fmt yuv420p " + movie).c_str()), 0)
        << "ffmpeg is missing (scripts/setup.sh installs it)";
    const std::filesystem::path gif = folder.filePath(QStringLiteral("clip.gif")).toStdString();
    FfmpegMovieFiles movies;
    std::vector<double> progress;
    const std::optional<Error> error = GIFExporter::exportMovie(movies, movie, gif, {10, 160}, WorkerPool::shared(),
                                                                [&](double share) { progress.push_back(share); });
    ASSERT_FALSE(error) << error->message;
    ASSERT_EQ(progress.size(), 20u) << "two seconds at ten frames a second";
    EXPECT_DOUBLE_EQ(progress.back(), 1.0);

    QImageReader reader(QString::fromStdString(gif.string()), "gif");
    EXPECT_EQ(reader.size(), QSize(160, 120)) << "scaled to the width asked, in proportion";
    EXPECT_EQ(reader.loopCount(), -1);
    int frames = 0, shown = 0;
    for (QImage frame = reader.read(); !frame.isNull(); frame = reader.read()) {
        ++frames;
        shown += reader.nextImageDelay();
    }
    EXPECT_GE(frames, 15) << "the test picture moves in most frames";
    EXPECT_NEAR(shown, 2000, 20) << "the frames last as long as the movie";
}

TEST(GIFMovieExport, AMovieThatCannotBeReadSaysSo) {
    QTemporaryDir folder;
    FfmpegMovieFiles movies;
    const std::optional<Error> missing =
        GIFExporter::exportMovie(movies, folder.filePath(QStringLiteral("none.mp4")).toStdString(),
                                 folder.filePath(QStringLiteral("x.gif")).toStdString(), {}, WorkerPool::shared());
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->message.starts_with(GIFExporter::unreadableMovie)) << missing->message;
    EXPECT_FALSE(std::filesystem::exists(folder.filePath(QStringLiteral("x.gif")).toStdString()));
}
