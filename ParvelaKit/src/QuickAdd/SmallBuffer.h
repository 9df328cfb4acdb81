#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>

namespace parvela {

/// A growing array of plain values whose first `inlineCapacity` elements need no allocation.
template <class T, std::size_t inlineCapacity>
class SmallBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    SmallBuffer() = default;  // NOLINT(cppcoreguidelines-pro-type-member-init): filling the array is what this avoids
    SmallBuffer(const SmallBuffer&) = delete;
    SmallBuffer& operator=(const SmallBuffer&) = delete;

    T* data() { return data_; }
    const T* data() const { return data_; }
    std::size_t size() const { return size_; }
    T& operator[](std::size_t index) { return data_[index]; }
    const T& operator[](std::size_t index) const { return data_[index]; }
    std::span<const T> span() const { return {data_, size_}; }

    void push(const T& value) {
        if (size_ == capacity_) grow(size_ + 1);
        data_[size_++] = value;
    }

    /// New elements have no defined value.
    void resize(std::size_t size) {
        if (size > capacity_) grow(size);
        size_ = size;
    }

private:
    void grow(std::size_t needed) {
        const std::size_t capacity = needed > capacity_ * 2 ? needed : capacity_ * 2;
        auto larger = std::make_unique_for_overwrite<T[]>(capacity);
        std::copy_n(data_, size_, larger.get());
        heap_ = std::move(larger);
        data_ = heap_.get();
        capacity_ = capacity;
    }

    std::unique_ptr<T[]> heap_;
    std::size_t size_ = 0;
    std::size_t capacity_ = inlineCapacity;
    alignas(T) std::array<std::byte, inlineCapacity * sizeof(T)> inline_;  // left uninitialised
    T* data_ = reinterpret_cast<T*>(inline_.data());
};

}  // namespace parvela
