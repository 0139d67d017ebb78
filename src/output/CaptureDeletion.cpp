#include "CaptureDeletion.h"

#include "SecurityScopedFileAccess.h"

namespace tosvar {

CaptureDeletion::CaptureDeletion(DefaultsStore& defaults, AlertPresenting& alerts, FileTrash& trash)
    : defaults_(defaults), alerts_(alerts), fileTrash_(trash) {}

bool CaptureDeletion::isConfirmationSuppressed() const { return defaults_.boolean(suppressionKey).value_or(false); }

AlertRequest CaptureDeletion::confirmation(const std::vector<std::filesystem::path>& urls) {
    AlertRequest request;
    request.style = AlertStyle::warning;
    request.message = urls.size() == 1
                          ? LocalizedText{"delete.confirm.title.one", {urls.front().filename().string()}}
                          : LocalizedText{"delete.confirm.title.many", {std::to_string(urls.size())}};
    request.informativeText = {"delete.confirm.body", {}};
    request.buttons = {{"delete.confirm.trash", {}}, {"common.cancel", {}}};
    request.suppressionCheckbox = LocalizedText{"delete.confirm.dontAsk", {}};
    return request;
}

void CaptureDeletion::trash(const std::vector<std::filesystem::path>& urls, void* parentWindow,
                            Completion completion) {
    if (urls.empty()) return;
    if (isConfirmationSuppressed()) {
        trashWithoutAsking(urls, std::move(completion));
        return;
    }
    const AlertResponse response = alerts_.run(confirmation(urls), parentWindow);
    if (response.suppressionChecked) defaults_.set(suppressionKey, true);
    if (response.buttonIndex == 0) trashWithoutAsking(urls, std::move(completion));
}

void CaptureDeletion::trashWithoutAsking(const std::vector<std::filesystem::path>& urls, Completion completion) {
    if (urls.empty()) return;
    const SecurityScopedFileAccess::Handle access = SecurityScopedFileAccess::begin(urls);
    std::optional<Error> firstFailure;
    for (const auto& url : access.urls) {
        std::optional<Error> error = fileTrash_.moveToTrash(url);
        if (error && !firstFailure) firstFailure = std::move(error);
    }
    access.stop();
    if (completion) completion(firstFailure);
}

} // namespace tosvar
