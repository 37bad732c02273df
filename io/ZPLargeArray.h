#pragma once

#include <cstddef>
#include <new>
#include <span>
#include <sys/mman.h>
#include <type_traits>
#include <utility>

/// An array of megabytes, zeroed by the system as its pages are touched: not a second time before,
/// and by each thread for the part that it fills.
template <class Element>
class ZPLargeArray {
    static_assert(std::is_trivially_copyable_v<Element> &&
                  std::is_trivially_destructible_v<Element>);

  public:
    ZPLargeArray() = default;
    /// Empty for a count of 0, and when there is not enough memory.
    explicit ZPLargeArray(std::size_t count) {
        void *address = mmap(nullptr, count * sizeof(Element), PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (address == MAP_FAILED)
            return;
        _elements = {static_cast<Element *>(address), count};
    }
    /// Throws std::bad_alloc when there is not enough memory.
    static ZPLargeArray allocate(std::size_t count) {
        ZPLargeArray array(count);
        if (array.size() != count)
            throw std::bad_alloc();
        return array;
    }
    ~ZPLargeArray() {
        if (!_elements.empty())
            munmap(_elements.data(), _elements.size_bytes());
    }
    ZPLargeArray(ZPLargeArray &&other) noexcept : _elements(std::exchange(other._elements, {})) {}
    ZPLargeArray &operator=(ZPLargeArray &&other) noexcept {
        std::swap(_elements, other._elements);
        return *this;
    }

    /// The same memory for elements of another type, of the same size.
    template <class Other>
    requires(sizeof(Other) == sizeof(Element) &&
             alignof(Other) <= alignof(Element)) ZPLargeArray<Other> as() && {
        ZPLargeArray<Other> other;
        other._elements = {reinterpret_cast<Other *>(_elements.data()), _elements.size()};
        _elements = {};
        return other;
    }

    bool empty() const { return _elements.empty(); }
    Element *data() const { return _elements.data(); }
    std::size_t size() const { return _elements.size(); }
    Element *begin() const { return data(); }
    Element *end() const { return data() + size(); }

  private:
    template <class>
    friend class ZPLargeArray;

    std::span<Element> _elements;
};
