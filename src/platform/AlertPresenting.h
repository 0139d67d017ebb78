#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// A text of the interface: a localisation key with its arguments, turned into
// words by whoever shows it.
struct LocalizedText {
    std::string key;
    std::vector<std::string> arguments;
    friend bool operator==(const LocalizedText&, const LocalizedText&) = default;
};

enum class AlertStyle { informational, warning, critical };

struct AlertRequest {
    AlertStyle style = AlertStyle::warning;
    LocalizedText message;
    LocalizedText informativeText;
    std::vector<LocalizedText> buttons; // the first is the default
    std::optional<LocalizedText> suppressionCheckbox;
};

struct AlertResponse {
    int buttonIndex = -1; // -1: dismissed without a button
    bool suppressionChecked = false;
};

// Shows a modal question, attached to `parentWindow` (an opaque toolkit
// window, may be null) when given, and waits for the answer.
class AlertPresenting {
public:
    virtual ~AlertPresenting() = default;
    virtual AlertResponse run(const AlertRequest& request, void* parentWindow) = 0;
};

} // namespace tosvar
