#include "StepBadgeLabel.h"

#include <algorithm>
#include <charconv>

namespace tosvar::StepBadgeLabel {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string incrementLetters(std::string label) {
    for (auto c = label.rbegin(); c != label.rend(); ++c) {
        if (*c == 'z') {
            *c = 'a';
        } else if (*c == 'Z') {
            *c = 'A';
        } else {
            ++*c;
            return label;
        }
    }
    return (label.front() == 'A' ? "A" : "a") + label;
}

} // namespace

std::string next(const std::string& label) {
    if (label.empty()) return "1";
    if (std::all_of(label.begin(), label.end(), isDigit)) {
        unsigned long long n = 0;
        const auto [end, error] = std::from_chars(label.data(), label.data() + label.size(), n);
        if (error == std::errc() && end == label.data() + label.size()) return std::to_string(n + 1);
        return label;
    }
    if (std::all_of(label.begin(), label.end(), isLetter)) return incrementLetters(label);
    return label;
}

double fittedFontSize(const TextMeasuring& bold, const std::string& label, double radius) {
    if (label.empty() || !(radius > 0)) return radius;
    double widest = 0;
    int lines = 0;
    for (std::size_t start = 0;; ++lines) {
        const std::size_t end = label.find('\n', start);
        const std::string_view line = std::string_view(label).substr(start, end == std::string::npos ? std::string::npos : end - start);
        widest = std::max(widest, bold.lineWidth(line, radius));
        if (end == std::string::npos) {
            ++lines;
            break;
        }
        start = end + 1;
    }
    const double height = bold.metrics(radius).lineHeight() * lines;
    const double available = 1.5 * radius;
    double scale = 1;
    if (widest > 0) scale = std::min(scale, available / widest);
    if (height >= 1) scale = std::min(scale, available / height);
    return radius * scale;
}

} // namespace tosvar::StepBadgeLabel
