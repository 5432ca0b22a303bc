// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>
#if __cplusplus >= 202002L
#include <span>
#endif

/// Lets compilers that can tell warn of a view that outlives what it views.
#if defined(__clang__)
#define PLEX_LIFETIMEBOUND [[clang::lifetimebound]]
#else
#define PLEX_LIFETIMEBOUND
#endif

namespace ovra::plex
{

/// A view of elements that lie side by side and belong to somebody else. It becomes a std::span where there
/// are such.
template <class T>
class Span
{
public:
    using element_type = T;
    using value_type = std::remove_cv_t<T>;

    constexpr Span() noexcept = default;

    constexpr Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}

    // NOLINTBEGIN(modernize-use-constraints): applications may be C++17

    /// Views a container that has data() and size(); a temporary one only where the elements are constants.
    template <class Container, class = std::enable_if_t<std::is_convertible_v<
                                   decltype(std::declval<const Container&>().data()), T*>>>
    constexpr Span(const Container& container PLEX_LIFETIMEBOUND) noexcept
        : data_(container.data())
        , size_(container.size())
    {
    }

    template <
        class Container,
        class = std::enable_if_t<std::is_convertible_v<decltype(std::declval<Container&>().data()), T*>>,
        class = std::enable_if_t<!std::is_const_v<Container>>>
    constexpr Span(Container& container PLEX_LIFETIMEBOUND) noexcept
        : data_(container.data())
        , size_(container.size())
    {
    }

    // NOLINTEND(modernize-use-constraints)

    constexpr T* data() const noexcept { return data_; }

    constexpr std::size_t size() const noexcept { return size_; }

    constexpr bool empty() const noexcept { return size_ == 0; }

    constexpr T* begin() const noexcept { return data_; }

    constexpr T* end() const noexcept { return data_ + size_; }

    /// @param index below size().
    constexpr T& operator[](std::size_t index) const noexcept { return data_[index]; }

#if __cplusplus >= 202002L
    constexpr operator std::span<T>() const noexcept { return {data_, size_}; }
#endif

private:
    T* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace ovra::plex
