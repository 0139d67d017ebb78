#pragma once

#include "CaptureCardController.h"
#include "MediaThumbnailer.h"
#include "PinnedImageManager.h"
#include "PresentationController.h"
#include "RecordingCountdown.h"
#include "RegionScreenshotController.h"
#include "RegionTranslationController.h"
#include "ScrollCaptureController.h"
#include "TextRecognition.h"

#include <functional>
#include <string>

namespace tosvar {

// Stand-ins for the capture features this build does not carry yet. Every
// request that would start one tells the user so through `notBuilt` (called
// with the feature's name); every question about their state answers idle.
// They go away one by one as the features arrive.
using NotBuiltNotice = std::function<void(const std::string& feature)>;

class UnbuiltPresentation final : public PresentationController {
public:
    explicit UnbuiltPresentation(NotBuiltNotice notBuilt) : notBuilt_(std::move(notBuilt)) {}
    bool isActive() const override { return false; }
    void start(int) override { notBuilt_("presentation"); }
    void stop() override {}
    void toggleAnnotate() override { notBuilt_("presentation"); }

private:
    NotBuiltNotice notBuilt_;
};

class UnbuiltScrollCapture final : public ScrollCaptureController {
public:
    explicit UnbuiltScrollCapture(NotBuiltNotice notBuilt) : notBuilt_(std::move(notBuilt)) {}
    void start(const Rect&, std::optional<std::uint32_t>, std::function<void(const ScrollCaptureResult&)>) override
    {
        notBuilt_("scrolling capture");
    }

private:
    NotBuiltNotice notBuilt_;
};

class UnbuiltTranslation final : public RegionTranslationController {
public:
    explicit UnbuiltTranslation(NotBuiltNotice notBuilt) : notBuilt_(std::move(notBuilt)) {}
    bool isAvailable() const override { return false; }
    std::string unavailableReasonKey() const override { return "tosvar.toast.notBuilt"; }
    void note(const std::string&) override {}
    void dismissTransientCards() override {}
    void presentCard(const Bytes&, const Rect&) override { notBuilt_("translation"); }

private:
    NotBuiltNotice notBuilt_;
};

class UnbuiltStickers final : public PinnedImageManager {
public:
    explicit UnbuiltStickers(NotBuiltNotice notBuilt) : notBuilt_(std::move(notBuilt)) {}
    StickerID createSticker(const PinnedContentPayload&, const std::optional<Rect>&, bool) override
    {
        notBuilt_("stickers");
        return 0;
    }
    void show(StickerID, bool) override {}
    void moveBy(StickerID, double, double) override {}
    std::optional<Rect> frame(StickerID) const override { return std::nullopt; }
    void publishSnapshot(StickerID) override {}
    void notifyListChanged() override {}
    void beginEditing(StickerID, double, std::function<void(const AnnotationResult&, const Rect&)>) override
    {
        notBuilt_("the editor");
    }
    bool isEditorReady(StickerID) const override { return false; }
    void toggleTranslateMode(StickerID) override {}

private:
    NotBuiltNotice notBuilt_;
};

// The card and what it needs: no card shows yet, so `onDelivered` hears of
// each capture (to say where it went); no text is read.
class UnbuiltCaptureCards final : public CaptureCardController,
                                  public TextRecognition,
                                  public MediaThumbnailer {
public:
    explicit UnbuiltCaptureCards(std::function<void(const CaptureCardItem&)> onDelivered) : onDelivered_(std::move(onDelivered)) {}
    CaptureCardHandle show(const CaptureCardItem& item, const AppSettings&, const std::optional<ScreenInfo>&) override
    {
        onDelivered_(item);
        return 0;
    }
    void update(CaptureCardHandle, const CaptureCardItem&) override {}
    void dismiss(CaptureCardHandle, bool) override {}
    void recognizeTextForCard(const Bytes&, std::function<void(const std::optional<std::string>&)> completion) override
    {
        completion(std::nullopt);
    }
    std::optional<Bytes> firstFramePNG(const std::filesystem::path&) const override { return std::nullopt; }

private:
    std::function<void(const CaptureCardItem&)> onDelivered_;
};

// A countdown that is not drawn yet: it tells so and runs nothing.
RecordingCountdownFactory unbuiltCountdowns(NotBuiltNotice notBuilt);

} // namespace tosvar
