#pragma once

#include "Pasteboard.h"

#include <functional>

namespace tosvar {

// A clipboard in memory that keeps every write.
class FakePasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() const override { return changeCount_; }
    std::int64_t write(const PasteboardContent& content) override {
        contents = content;
        writes.push_back(content);
        if (onWrite) onWrite();
        return ++changeCount_;
    }
    bool isGeneral() const override { return general; }
    std::optional<Bytes> readImagePNG() const override {
        if (const Bytes* png = contents.find("image/png")) return *png;
        return std::nullopt;
    }

    PasteboardContent contents;
    std::vector<PasteboardContent> writes;
    bool general = true;
    std::function<void()> onWrite;

private:
    std::int64_t changeCount_ = 0;
};

} // namespace tosvar
