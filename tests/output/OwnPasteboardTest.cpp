#include "OwnPasteboard.h"

#include "FakePasteboard.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

std::string text(const Bytes* bytes) { return bytes ? std::string(bytes->begin(), bytes->end()) : "<absent>"; }

} // namespace

TEST(OwnPasteboard, EveryWriteCarriesTheMarkers) {
    FakePasteboard pasteboard;
    OwnPasteboardLedger ledger;
    OwnPasteboard::write(pasteboard, ledger, std::string("hello"));
    EXPECT_EQ(text(pasteboard.contents.find("text/plain")), "hello");
    EXPECT_EQ(text(pasteboard.contents.find(OwnPasteboard::markerType)), "2");
    EXPECT_EQ(text(pasteboard.contents.find(OwnPasteboard::sourceMarkerType)), "app.vemla.tosvar");
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount()), OwnWriteKind::text);
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount() + 1), std::nullopt);
}

TEST(OwnPasteboard, FilesAsUriListAndFileManagerCopy) {
    FakePasteboard pasteboard;
    OwnPasteboardLedger ledger;
    OwnPasteboard::write(pasteboard, ledger, std::vector<std::filesystem::path>{"/a b/x.png", "/c/y#1.gif"});
    EXPECT_EQ(text(pasteboard.contents.find("text/uri-list")), "file:///a%20b/x.png\r\nfile:///c/y%231.gif\r\n");
    EXPECT_EQ(text(pasteboard.contents.find("x-special/gnome-copied-files")),
              "copy\nfile:///a%20b/x.png\nfile:///c/y%231.gif");
}

TEST(OwnPasteboard, PrivateClipboardsStayOutOfTheLedger) {
    FakePasteboard pasteboard;
    pasteboard.general = false;
    OwnPasteboardLedger ledger;
    const auto count = OwnPasteboard::writePNG(pasteboard, ledger, Bytes{1});
    EXPECT_EQ(ledger.ownWrite(count), std::nullopt);
    EXPECT_NE(pasteboard.contents.find(OwnPasteboard::markerType), nullptr);
}

TEST(OwnPasteboard, FileUriEncodesNonAsciiBytes) {
    EXPECT_EQ(OwnPasteboard::fileURI("/home/zoë/ä.png"), "file:///home/zo%C3%AB/%C3%A4.png");
}
