#pragma once

#include "AlertPresenting.h"
#include "DefaultsStore.h"
#include "FileTrash.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace tosvar {

// Moves captures to the trash, after asking unless the user said not to ask
// again. Nothing is ever deleted outright. Main thread only.
class CaptureDeletion {
public:
    static constexpr const char* suppressionKey = "capture.delete.skipConfirmation";
    // Runs with the first failure, or none when every file went to the trash.
    using Completion = std::function<void(const std::optional<Error>&)>;

    CaptureDeletion(DefaultsStore& defaults, AlertPresenting& alerts, FileTrash& trash);

    bool isConfirmationSuppressed() const;
    // An empty list does nothing (no dialog, no completion). The "don't ask
    // again" box is remembered whichever button closes the dialog.
    void trash(const std::vector<std::filesystem::path>& urls, void* parentWindow, Completion completion);
    void trashWithoutAsking(const std::vector<std::filesystem::path>& urls, Completion completion);

    static AlertRequest confirmation(const std::vector<std::filesystem::path>& urls);

private:
    DefaultsStore& defaults_;
    AlertPresenting& alerts_;
    FileTrash& fileTrash_;
};

} // namespace tosvar
