#include "JsonFileDefaultsStore.h"

#include "AtomicFile.h"
#include "Base64.h"
#include "FileContents.h"
#include "LocalTime.h"
#include "Log.h"
#include "XdgPaths.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace tosvar {

namespace {

using nlohmann::json;

constexpr const char* bytesKey = "base64";

std::optional<DefaultsValue> fromJson(const json& node) {
    switch (node.type()) {
    case json::value_t::boolean: return node.get<bool>();
    case json::value_t::number_integer: return node.get<std::int64_t>();
    case json::value_t::number_unsigned: {
        const auto u = node.get<std::uint64_t>();
        if (u > static_cast<std::uint64_t>(INT64_MAX)) return static_cast<double>(u);
        return static_cast<std::int64_t>(u);
    }
    case json::value_t::number_float: return node.get<double>();
    case json::value_t::string: return node.get<std::string>();
    case json::value_t::object:
        if (node.size() == 1 && node.contains(bytesKey) && node[bytesKey].is_string()) {
            auto decoded = Base64::decode(node[bytesKey].get<std::string>());
            if (decoded) return std::move(decoded).value();
        }
        return std::nullopt;
    default: return std::nullopt;
    }
}

json toJson(const DefaultsValue& value) {
    return std::visit(
        [](const auto& v) -> json {
            using V = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<V, Bytes>) {
                return json{{bytesKey, Base64::encode(v)}};
            } else {
                return v;
            }
        },
        value);
}

std::string timestamp() { return formatLocalTime(std::chrono::system_clock::now(), "%Y%m%d-%H%M%S"); }

} // namespace

JsonFileDefaultsStore::JsonFileDefaultsStore(std::filesystem::path file) : file_(std::move(file)) { load(); }

std::filesystem::path JsonFileDefaultsStore::standardPath() { return XdgPaths::appConfigDir() / "defaults.json"; }

void JsonFileDefaultsStore::load() {
    std::error_code ec;
    if (!std::filesystem::exists(file_, ec)) return;
    Expected<std::string> text = readFileText(file_);
    if (!text) {
        persists_ = false;
        logLine("defaults: " + text.error().message + "; settings changes stay in memory this session");
        return;
    }
    json root = json::parse(*text, nullptr, /*allow_exceptions=*/false);
    if (root.is_discarded() || !root.is_object()) {
        const std::filesystem::path aside = file_.string() + ".corrupt-" + timestamp();
        std::filesystem::rename(file_, aside, ec);
        if (ec) {
            persists_ = false;
            logLine("defaults: " + file_.string() + " is not a JSON object and could not be moved aside (" +
                    ec.message() + "); settings changes stay in memory this session");
        } else {
            logLine("defaults: " + file_.string() + " is not a JSON object; moved it to " + aside.string() +
                    " and started from defaults");
        }
        return;
    }
    for (const auto& [key, node] : root.items()) {
        if (auto value = fromJson(node)) {
            layers_.stored.emplace(key, std::move(*value));
        } else {
            logLine("defaults: ignoring the unreadable value of \"" + key + "\" in " + file_.string());
        }
    }
}

void JsonFileDefaultsStore::persistLocked() {
    if (!persists_) return;
    json root = json::object();
    for (const auto& [key, value] : layers_.stored) root[key] = toJson(value);
    if (auto error = AtomicFile::write(file_, root.dump(2) + "\n")) logLine("defaults: " + error->message);
}

std::optional<DefaultsValue> JsonFileDefaultsStore::value(const std::string& key) const {
    std::lock_guard lock(mutex_);
    return layers_.lookup(key);
}

void JsonFileDefaultsStore::set(const std::string& key, DefaultsValue value) {
    std::lock_guard lock(mutex_);
    layers_.stored.insert_or_assign(key, std::move(value));
    persistLocked();
}

void JsonFileDefaultsStore::set(const std::map<std::string, DefaultsValue>& values) {
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : values) layers_.stored.insert_or_assign(key, value);
    persistLocked();
}

void JsonFileDefaultsStore::remove(const std::string& key) {
    std::lock_guard lock(mutex_);
    if (layers_.stored.erase(key) > 0) persistLocked();
}

void JsonFileDefaultsStore::registerDefaults(const std::map<std::string, DefaultsValue>& defaults) {
    std::lock_guard lock(mutex_);
    layers_.registerAll(defaults);
}

} // namespace tosvar
