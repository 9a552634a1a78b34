#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// An array that grows. `Argument` is the type by which elements are handed in.
/// New elements are value-initialised (numbers are 0). Element access is not checked against the size.
/// Throws CMemoryException when there is no memory to grow into.
template <class T, class Argument = const T&>
class CArray {
public:
    int GetSize() const { return static_cast<int>(elements_.size()); }
    int GetCount() const { return GetSize(); }

    /// Index of the last element; -1 when empty.
    int GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return elements_.empty(); }

    /// Makes the array exactly `size` long; a negative size counts as 0. A positive `growBy` reserves that many more.
    void SetSize(int size, int growBy = -1)
    {
        const auto count = Count(size);
        elements_.reserve(count + Count(growBy));
        elements_.resize(count);
    }

    /// Appends an element and returns its index.
    int Add(Argument element)
    {
        elements_.push_back(element);
        return GetUpperBound();
    }

    const T& GetAt(int index) const { return elements_[Count(index)]; }
    void SetAt(int index, Argument element) { elements_[Count(index)] = element; }

    /// Sets an element, first growing the array to hold it.
    void SetAtGrow(int index, Argument element)
    {
        T value(element); // the argument may refer into the array
        if (index >= GetSize()) {
            elements_.resize(Count(index) + 1);
        }
        elements_[Count(index)] = std::move(value);
    }

    T& ElementAt(int index) { return elements_[Count(index)]; }
    T& operator[](int index) { return elements_[Count(index)]; }
    const T& operator[](int index) const { return elements_[Count(index)]; }

    T* GetData() { return elements_.data(); }
    const T* GetData() const { return elements_.data(); }

    void RemoveAll() { elements_.clear(); }

    /// Removes up to `count` elements from `index` on; what lies beyond the end is left out.
    void RemoveAt(int index, int count = 1)
    {
        const auto first = elements_.begin() + std::min(Offset(index), Size());
        elements_.erase(first, first + std::min(Offset(count), elements_.end() - first));
    }

    /// Inserts `count` copies before `index`; an index beyond the end first grows the array up to it.
    void InsertAt(int index, Argument element, int count = 1)
    {
        const T value(element); // the argument may refer into the array
        if (index > GetSize()) {
            elements_.resize(Count(index));
        }
        elements_.insert(elements_.begin() + Offset(index), Count(count), value);
    }

private:
    static std::size_t Count(int value) { return static_cast<std::size_t>(std::max(value, 0)); }
    static std::ptrdiff_t Offset(int value) { return std::max(value, 0); }
    std::ptrdiff_t Size() const { return static_cast<std::ptrdiff_t>(elements_.size()); }

    std::vector<T> elements_;
};
