// The sink on the real desktop clipboard: another program (xclip) reads back
// our markers and exactly the bytes of the file we wrote.
#include "FileCaptureSink.h"

#include "FileContents.h"
#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "LocalFileManager.h"
#include "PngEncoder.h"
#include "QtPasteboard.h"
#include "SolidWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// Runs a program while our event loop keeps serving the clipboard.
QByteArray runWhileServing(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    QElapsedTimer clock;
    clock.start();
    while (process.state() != QProcess::NotRunning && clock.elapsed() < 10000) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        process.waitForFinished(10);
    }
    return process.readAllStandardOutput();
}

} // namespace

TEST(OutputX11, ClipboardHoldsTheMarkersAndTheFileBytes) {
    IsolatedEnvironment environment;
    xvfbApplication();

    MutableImage image(64, 32);
    image.fill({200, 40, 90, 255});
    const auto png = PngEncoder::encode(std::move(image).freeze());
    ASSERT_TRUE(png);

    InMemoryDefaultsStore defaults;
    LocalFileManager files;
    QtPasteboard pasteboard;
    OwnPasteboardLedger ledger;
    RecentCaptures recents(files, defaults);
    FileCaptureSink sink(recents, pasteboard, ledger, defaults, files, nullptr);
    std::optional<CaptureDelivery> delivered;
    sink.onDelivered = [&](const CaptureDelivery& d) { delivered = d; };
    sink.deliver(*png, true);
    ASSERT_TRUE(delivered && delivered->fileURL);
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount()), OwnWriteKind::image);

    const QString targets = QString::fromUtf8(runWhileServing("xclip", {"-selection", "clipboard", "-o", "-t", "TARGETS"}));
    EXPECT_TRUE(targets.contains("image/png")) << targets.toStdString();
    EXPECT_TRUE(targets.contains(OwnPasteboard::markerType)) << targets.toStdString();
    EXPECT_TRUE(targets.contains(OwnPasteboard::sourceMarkerType)) << targets.toStdString();

    const QByteArray pasted = runWhileServing("xclip", {"-selection", "clipboard", "-o", "-t", "image/png"});
    const Bytes onDisk = readFileBytes(*delivered->fileURL).value();
    EXPECT_EQ(Bytes(pasted.begin(), pasted.end()), onDisk);
    EXPECT_EQ(onDisk, *png);

    // Another program taking the clipboard counts as a change that is not ours.
    const auto before = pasteboard.changeCount();
    QProcess xclip;
    xclip.start("xclip", {"-selection", "clipboard", "-i"});
    xclip.write("someone else");
    xclip.closeWriteChannel();
    QElapsedTimer clock;
    clock.start();
    while (pasteboard.changeCount() == before && clock.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(pasteboard.changeCount(), before + 1);
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount()), std::nullopt);
    xclip.kill();
    xclip.waitForFinished();
}
