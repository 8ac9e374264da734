// CAtlArray: a growable array in one contiguous block.
//
// The array owns its elements. An index that is not below the count raises CAtlException with E_INVALIDARG.
// When memory runs out, the functions raise CAtlException with E_OUTOFMEMORY, except SetCount, which returns
// false. The array then keeps its elements; only Copy leaves it empty. Pointers and references to elements
// are valid until the array changes. An array has no copy constructor and no assignment; Copy copies
// explicitly. Different threads may use different arrays.
#pragma once

#if defined(_MSC_VER)
#include <atlcoll.h>
#else

#include <orx/compat/atl_exception.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

// The first count_ elements of the block at data_ are constructed, and the block has space for capacity_ of
// them. Without a block data_ is null and capacity_ is 0.
template <class T>
class CAtlArray {
  static_assert(std::is_nothrow_move_constructible_v<T>, "elements move when the block grows");
  static_assert(alignof(T) <= alignof(std::max_align_t));

 public:
  CAtlArray() noexcept = default;
  CAtlArray(const CAtlArray&) = delete;
  CAtlArray& operator=(const CAtlArray&) = delete;
  ~CAtlArray() { RemoveAll(); }

  std::size_t GetCount() const noexcept { return count_; }
  bool IsEmpty() const noexcept { return count_ == 0; }
  T* GetData() noexcept { return data_; }
  const T* GetData() const noexcept { return data_; }
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + count_; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + count_; }

  T& GetAt(std::size_t index) { return data_[CheckIndex(index)]; }
  const T& GetAt(std::size_t index) const { return data_[CheckIndex(index)]; }
  T& operator[](std::size_t index) { return data_[CheckIndex(index)]; }
  const T& operator[](std::size_t index) const { return data_[CheckIndex(index)]; }
  void SetAt(std::size_t index, const T& value) { data_[CheckIndex(index)] = value; }

  // Appends an element and returns its index. `value` may be an element of this array, and is therefore
  // copied before the block grows.
  std::size_t Add(const T& value) {
    T copy(value);
    return Add(std::move(copy));
  }
  std::size_t Add(T&& value) {
    T element(std::move(value));
    Reserve(count_ + 1);
    std::construct_at(data_ + count_, std::move(element));
    ++count_;
    return count_ - 1;
  }

  // Sets the number of elements. New elements are value-initialised, surplus elements are destroyed, and a
  // count of 0 frees the block. `growth_step` is the least number of elements by which the block grows from
  // now on: 0 means half the capacity, -1 keeps the current step. Returns false when memory runs out;
  // the elements are then unchanged.
  bool SetCount(std::size_t count, int growth_step = -1) {
    if (growth_step >= 0) growth_step_ = static_cast<std::size_t>(growth_step);
    if (count == 0) {
      RemoveAll();
      return true;
    }
    if (count > capacity_ && !Reallocate(NextCapacity(count))) return false;
    if (count < count_) {
      std::destroy(data_ + count, data_ + count_);
    } else {
      std::uninitialized_value_construct(data_ + count_, data_ + count);
    }
    count_ = count;
    return true;
  }

  void RemoveAt(std::size_t index, std::size_t elements = 1) {
    if (index > count_ || elements > count_ - index) AtlThrow(E_INVALIDARG);
    if (elements == 0) return;  // moving an element onto itself would empty it
    std::move(data_ + index + elements, data_ + count_, data_ + index);
    std::destroy(data_ + count_ - elements, data_ + count_);
    count_ -= elements;
  }

  // Inserts before the element at `index`. An index beyond the end first grows the array to that many
  // elements, value-initialised. `value` may be an element of this array.
  void InsertAt(std::size_t index, const T& value) {
    T element(value);
    if (index > count_ && !SetCount(index)) AtlThrow(E_OUTOFMEMORY);
    Add(std::move(element));
    std::rotate(data_ + index, data_ + count_ - 1, data_ + count_);
  }

  // Appends copies of all elements of `other`, which may be this array, and returns the index of the first.
  std::size_t Append(const CAtlArray& other) {
    const std::size_t first = count_;
    const std::size_t added = other.count_;
    Reserve(count_ + added);
    std::uninitialized_copy_n(other.data_, added, data_ + first);
    count_ += added;
    return first;
  }

  // Replaces the elements by copies of those of `other`.
  void Copy(const CAtlArray& other) {
    if (this == &other) return;
    RemoveAll();
    Append(other);
  }

  // Destroys the elements and frees the block. The growth step is kept.
  void RemoveAll() noexcept {
    std::destroy(data_, data_ + count_);
    std::free(data_);
    data_ = nullptr;
    count_ = 0;
    capacity_ = 0;
  }

 private:
  std::size_t CheckIndex(std::size_t index) const {
    if (index >= count_) AtlThrow(E_INVALIDARG);
    return index;
  }

  std::size_t NextCapacity(std::size_t wanted) const noexcept {
    const std::size_t step = growth_step_ != 0 ? growth_step_ : capacity_ / 2;
    return std::max(wanted, capacity_ + step);
  }

  void Reserve(std::size_t wanted) {
    if (wanted > capacity_ && !Reallocate(NextCapacity(wanted))) AtlThrow(E_OUTOFMEMORY);
  }

  // Moves the elements into a block with space for `capacity` of them. Returns false, and changes nothing,
  // when memory runs out.
  bool Reallocate(std::size_t capacity) noexcept {
    if (capacity > PTRDIFF_MAX / sizeof(T)) return false;
    T* block = static_cast<T*>(std::malloc(capacity * sizeof(T)));
    if (block == nullptr) return false;
    std::uninitialized_move_n(data_, count_, block);
    std::destroy(data_, data_ + count_);
    std::free(data_);
    data_ = block;
    capacity_ = capacity;
    return true;
  }

  T* data_ = nullptr;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
  std::size_t growth_step_ = 0;
};

#endif
