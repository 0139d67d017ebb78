#pragma once

#include "AppSettings.h"
#include "DefaultsStore.h"
#include "ScreenLayout.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace tosvar {

enum class CaptureCardKind { image, video, audio };

// One card: what it shows and what its buttons do. Absent actions are not offered.
struct CaptureCardItem {
    CaptureCardKind kind = CaptureCardKind::image;
    std::string title;
    std::variant<Bytes, std::filesystem::path> content; // PNG bytes or the file
    std::optional<std::filesystem::path> fileURL;

    std::function<void()> onCopy;
    std::function<void()> onEdit;
    std::function<void()> onPin;
    std::function<void()> onReveal;
    std::function<void()> onDelete;
    std::function<void()> onOpen;
    std::function<void()> onCopyText;
    std::function<void()> onTranslate;
};

using CaptureCardHandle = std::uint64_t;

// The floating cards in a corner of the screen.
class CaptureCardController {
public:
    virtual ~CaptureCardController() = default;
    virtual CaptureCardHandle show(const CaptureCardItem& item, const AppSettings& settings,
                                   const std::optional<ScreenInfo>& screen) = 0;
    virtual void update(CaptureCardHandle handle, const CaptureCardItem& item) = 0;
    virtual void dismiss(CaptureCardHandle handle, bool animated) = 0;
};

} // namespace tosvar
