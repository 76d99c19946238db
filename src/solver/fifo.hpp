#pragma once

#include <cstddef>
#include <vector>

// First-in first-out queue on a ring buffer that only grows: once warmed up, pushing and
// popping never allocate.
template <typename T>
class fifo {
 public:
  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }

  void push_back(const T& item) {
    if (size_ == ring_.size()) grow();
    ring_[(head_ + size_) & (ring_.size() - 1)] = item;
    ++size_;
  }
  T& front() { return ring_[head_]; }
  void pop_front() {
    head_ = (head_ + 1) & (ring_.size() - 1);
    --size_;
  }
  // The i-th waiting item, 0 being the front.
  const T& operator[](std::size_t i) const { return ring_[(head_ + i) & (ring_.size() - 1)]; }
  void clear() {
    head_ = 0;
    size_ = 0;
  }

 private:
  void grow() {
    std::vector<T> larger(ring_.empty() ? 16 : 2 * ring_.size());
    for (std::size_t i = 0; i < size_; ++i) larger[i] = (*this)[i];
    ring_.swap(larger);
    head_ = 0;
  }

  std::vector<T> ring_;
  std::size_t head_ = 0;
  std::size_t size_ = 0;
};
