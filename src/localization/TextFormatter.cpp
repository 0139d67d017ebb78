#include "TextFormatter.h"

#include <cmath>
#include <cstdio>

namespace tosvar {

namespace {

std::string asText(const FormatArgument& argument) {
    if (const auto* text = std::get_if<std::string>(&argument)) return *text;
    if (const auto* integer = std::get_if<std::int64_t>(&argument)) return std::to_string(*integer);
    const double value = std::get<double>(argument);
    if (std::isfinite(value) && value == std::trunc(value) && std::abs(value) < 1e15)
        return std::to_string(static_cast<std::int64_t>(value));
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    return buffer;
}

std::string asInteger(const FormatArgument& argument) {
    if (const auto* value = std::get_if<double>(&argument)) {
        if (std::isfinite(*value) && std::abs(*value) < 9.2e18) return std::to_string(static_cast<std::int64_t>(*value));
    }
    return asText(argument);
}

std::string asFixed(const FormatArgument& argument, int decimals) {
    double value = 0;
    if (const auto* d = std::get_if<double>(&argument)) {
        value = *d;
    } else if (const auto* i = std::get_if<std::int64_t>(&argument)) {
        value = static_cast<double>(*i);
    } else {
        return std::get<std::string>(argument);
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

} // namespace

std::string formatText(std::string_view format, const std::vector<FormatArgument>& arguments) {
    std::string out;
    std::size_t nextArgument = 0;
    std::size_t i = 0;
    while (i < format.size()) {
        if (format[i] != '%') {
            out.push_back(format[i++]);
            continue;
        }
        const std::size_t start = i++;
        if (i < format.size() && format[i] == '%') {
            out.push_back('%');
            ++i;
            continue;
        }
        // Optional position: digits followed by '$'.
        std::size_t position = 0;
        std::size_t j = i;
        while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j]))) position = position * 10 + static_cast<std::size_t>(format[j++] - '0');
        std::size_t index = nextArgument;
        if (j > i && j < format.size() && format[j] == '$' && position > 0) {
            index = position - 1;
            i = j + 1;
        }
        // Optional precision for %f.
        int decimals = 6;
        if (i < format.size() && format[i] == '.') {
            std::size_t k = i + 1;
            int digits = 0;
            while (k < format.size() && std::isdigit(static_cast<unsigned char>(format[k]))) digits = digits * 10 + (format[k++] - '0');
            if (k < format.size() && format[k] == 'f') {
                decimals = std::min(digits, 20);
                i = k;
            }
        }
        if (i < format.size() && format[i] == 'l') ++i;
        if (i >= format.size()) {
            out.append(format.substr(start));
            break;
        }
        const char conversion = format[i++];
        if (conversion != '@' && conversion != 'd' && conversion != 'f') {
            out.append(format.substr(start, i - start)); // not ours: left as written
            continue;
        }
        nextArgument = index + 1;
        if (index >= arguments.size()) continue; // missing: nothing
        const FormatArgument& argument = arguments[index];
        out += conversion == '@' ? asText(argument) : conversion == 'd' ? asInteger(argument) : asFixed(argument, decimals);
    }
    return out;
}

} // namespace tosvar
