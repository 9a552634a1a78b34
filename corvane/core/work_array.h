#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "corvane/platform/memory.h"

namespace corvane {

/// Where large work arrays are: on pages of their own, which are large ones where the system has them, since columns of
/// a plane touch a page for each row. Elements that are given no value begin with none.
template <class T>
struct WorkMemory {
    using value_type = T;

    WorkMemory() = default;
    template <class Other>
    WorkMemory(const WorkMemory<Other>&) noexcept // NOLINT(google-explicit-constructor): allocators are converted
    {}

    /// Room for so many elements; throws std::bad_alloc.
    T* allocate(std::size_t count)
    {
        if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) {
            throw std::bad_alloc();
        }
        if (!IsPaged(count)) {
            return static_cast<T*>(::operator new(count * sizeof(T)));
        }
        void* const pages = platform::AllocatePages(count * sizeof(T));
        return pages != nullptr ? static_cast<T*>(pages) : throw std::bad_alloc();
    }
    /// Takes it back.
    void deallocate(T* memory, std::size_t count) noexcept
    {
        if (IsPaged(count)) {
            platform::FreePages(memory, count * sizeof(T));
        } else {
            ::operator delete(memory);
        }
    }
    /// An element without a value.
    template <class Element>
    void construct(Element* place) noexcept
    {
        ::new (static_cast<void*>(place)) Element;
    }
    /// An element with one.
    template <class Element, class... Values>
    void construct(Element* place, Values&&... values)
    {
        ::new (static_cast<void*>(place)) Element(std::forward<Values>(values)...);
    }

    /// Any takes back what another gave.
    friend bool operator==(const WorkMemory&, const WorkMemory&) { return true; }

private:
    static constexpr std::size_t kLeastPaged = std::size_t{1} << 16; // bytes

    static bool IsPaged(std::size_t count) { return count >= kLeastPaged / sizeof(T); }
};

/// Samples or frequencies of a plane that work goes on in. Those of `WorkArray(count)` are undefined.
using WorkArray = std::vector<float, WorkMemory<float>>;

} // namespace corvane
