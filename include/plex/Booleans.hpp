// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>

namespace ovra::plex
{

/// Booleans side by side, as a std::vector<bool> does not have them: each one has an address.
class Booleans
{
public:
    using value_type = bool;

    Booleans() noexcept = default;

    explicit Booleans(std::size_t size) { resize(size); }

    Booleans(std::initializer_list<bool> values) { assign(values.begin(), values.size()); }

    Booleans(const Booleans& other) { assign(other.data(), other.size()); }

    Booleans(Booleans&& other) noexcept { swap(other); }

    Booleans& operator=(const Booleans& other)
    {
        if (this != &other) {
            assign(other.data(), other.size());
        }
        return *this;
    }

    Booleans& operator=(Booleans&& other) noexcept
    {
        Booleans(std::move(other)).swap(*this);
        return *this;
    }

    ~Booleans() = default;

    bool* data() noexcept { return values_.get(); }

    const bool* data() const noexcept { return values_.get(); }

    std::size_t size() const noexcept { return size_; }

    bool empty() const noexcept { return size_ == 0; }

    bool* begin() noexcept { return data(); }

    bool* end() noexcept { return data() + size_; }

    const bool* begin() const noexcept { return data(); }

    const bool* end() const noexcept { return data() + size_; }

    /// @param index below size().
    bool& operator[](std::size_t index) noexcept { return values_[index]; }

    bool operator[](std::size_t index) const noexcept { return values_[index]; }

    void clear() noexcept { size_ = 0; }

    /// Keeps what is there; what is new is false.
    /// @throws std::bad_alloc when there is no memory for so many; nothing has changed then.
    void resize(std::size_t size)
    {
        // No array is longer. Compilers that can tell warn of what would happen to one.
        if (size > PTRDIFF_MAX) {
            throw std::bad_array_new_length();
        }
        if (size > capacity_) {
            reserve(size);
        }
        if (size > size_) {
            std::fill(data() + size_, data() + size, false);
        }
        size_ = size;
    }

    /// Takes over other values, which are not of this object.
    void assign(const bool* values, std::size_t size)
    {
        resize(size);
        std::copy_n(values, size, data());
    }

    void swap(Booleans& other) noexcept
    {
        std::swap(values_, other.values_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    friend bool operator==(const Booleans& left, const Booleans& right) noexcept
    {
        // NOLINTNEXTLINE(modernize-use-ranges): applications may be C++17
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

    friend bool operator!=(const Booleans& left, const Booleans& right) noexcept { return !(left == right); }

private:
    void reserve(std::size_t capacity)
    {
        // NOLINTNEXTLINE(modernize-avoid-c-arrays): a std::vector<bool> holds no booleans that can be viewed
        auto values = std::make_unique<bool[]>(capacity);
        std::copy_n(data(), size_, values.get());
        values_ = std::move(values);
        capacity_ = capacity;
    }

    std::unique_ptr<bool[]> values_; // NOLINT(modernize-avoid-c-arrays): as above
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace ovra::plex
