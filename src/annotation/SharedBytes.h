#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tosvar {

// Immutable bytes that every copy shares: copying one costs a reference count,
// never the bytes, so a history of a hundred element lists holds one image once.
class SharedBytes {
public:
    SharedBytes() = default;
    explicit SharedBytes(std::vector<std::uint8_t> bytes)
        : storage_(std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes))) {}

    std::span<const std::uint8_t> span() const {
        return storage_ ? std::span<const std::uint8_t>(*storage_) : std::span<const std::uint8_t>();
    }
    std::size_t size() const { return storage_ ? storage_->size() : 0; }
    bool empty() const { return size() == 0; }
    bool sharesStorageWith(const SharedBytes& other) const { return storage_ && storage_ == other.storage_; }

private:
    std::shared_ptr<const std::vector<std::uint8_t>> storage_;
};

} // namespace tosvar
