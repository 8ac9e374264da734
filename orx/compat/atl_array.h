// CAtlArray: a growable array in one contiguous block.
//
// Indices are checked: one that is not below the count raises CAtlException with E_INVALIDARG; a block that
// cannot grow raises E_OUTOFMEMORY, except in SetCount, which reports it by its result. An array cannot be
// copied by construction or assignment; Copy does it on demand.
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

  T& GetAt(std::size_t index) { return data_[Checked(index)]; }
  const T& GetAt(std::size_t index) const { return data_[Checked(index)]; }
  T& operator[](std::size_t index) { return data_[Checked(index)]; }
  const T& operator[](std::size_t index) const { return data_[Checked(index)]; }
  void SetAt(std::size_t index, const T& value) { data_[Checked(index)] = value; }

  // The index of the new element. `value` may be an element of this array.
  std::size_t Add(const T& value) {
    T copy(value);
    return Add(std::move(copy));
  }
  std::size_t Add(T&& value) {
    T kept(std::move(value));
    Reserve(count_ + 1);
    std::construct_at(data_ + count_, std::move(kept));
    return count_++;
  }

  // New elements are value-initialised, surplus ones destroyed; 0 frees the block. A growth step of -1 leaves
  // the one in force, 0 grows by half. False when the block cannot grow; the array is then unchanged.
  bool SetCount(std::size_t count, int growth_step = -1) {
    if (growth_step >= 0) growth_step_ = static_cast<std::size_t>(growth_step);
    if (count == 0) {
      RemoveAll();
      return true;
    }
    if (count > capacity_ && !Reallocate(GrownCapacity(count))) return false;
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
    if (elements == 0) return;  // moving elements onto themselves would empty them
    std::move(data_ + index + elements, data_ + count_, data_ + index);
    std::destroy(data_ + count_ - elements, data_ + count_);
    count_ -= elements;
  }

  // An index beyond the end first grows the array with value-initialised elements.
  void InsertAt(std::size_t index, const T& value) {
    T kept(value);
    if (index > count_ && !SetCount(index)) AtlThrow(E_OUTOFMEMORY);
    Add(std::move(kept));
    std::rotate(data_ + index, data_ + count_ - 1, data_ + count_);
  }

  // The index of the first appended element.
  std::size_t Append(const CAtlArray& other) {
    const std::size_t first = count_;
    const std::size_t added = other.count_;
    Reserve(count_ + added);
    std::uninitialized_copy_n(other.data_, added, data_ + first);
    count_ += added;
    return first;
  }

  void Copy(const CAtlArray& other) {
    if (this == &other) return;
    RemoveAll();
    Append(other);
  }

  // Frees the block; the growth step stays.
  void RemoveAll() noexcept {
    std::destroy(data_, data_ + count_);
    std::free(data_);
    data_ = nullptr;
    count_ = capacity_ = 0;
  }

 private:
  std::size_t Checked(std::size_t index) const {
    if (index >= count_) AtlThrow(E_INVALIDARG);
    return index;
  }

  std::size_t GrownCapacity(std::size_t wanted) const noexcept {
    const std::size_t step = growth_step_ != 0 ? growth_step_ : capacity_ / 2;
    return std::max(wanted, capacity_ + step);
  }

  void Reserve(std::size_t wanted) {
    if (wanted > capacity_ && !Reallocate(GrownCapacity(wanted))) AtlThrow(E_OUTOFMEMORY);
  }

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
