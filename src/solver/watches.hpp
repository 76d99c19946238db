#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "solver/bound.hpp"

// A watched atom of a dclause, filed under the atom's variable. It carries a copy of the atom,
// so that a new bound that leaves the atom alone, by far the common case, is passed over
// without touching the clause.
struct dclause_watch {
  std::uint32_t dclause = 0;
  std::uint32_t position = 0;
  bound atom;
};

// The watches of one variable in one direction (all lower atoms, or all upper ones), in the
// order a visit walks them. Long lists are the rule once thousands of clauses are learned,
// and a new bound falsifies few of their atoms: a summary per block of entries lets the walk
// skip every block in which no atom can be falsified, and still meet the others in list order.
// A summary is a bound on the values of the block's awake entries (no lower atom above it, no
// upper atom below it); an entry is asleep while its clause is passed over by visits (a reason
// on the current level, or deleted). Entries that leave a block never make a summary wrong, so
// it is tightened only when a walk has read the whole block anyway. An entry that wakes loosens
// the summary of the block where a walk last passed it over (`wake`): had it moved since, the
// summary of its new block took it in when it arrived.
class watch_list {
 public:
  explicit watch_list(bool lower_atoms) : lower_(lower_atoms) {}

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  const dclause_watch& operator[](std::size_t i) const { return entries_[i]; }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

  void push_back(const dclause_watch& w) {
    if (entries_.size() % block == 0) {
      summary_.push_back(w.atom.value);
    } else {
      summary_.back() = extreme(summary_.back(), w.atom.value);
    }
    entries_.push_back(w);
  }

  // Replaces entry i by the last one, which the walk then examines at i.
  void remove_swapping_last(std::size_t i) {
    entries_[i] = entries_.back();
    entries_.pop_back();
    if (entries_.size() % block == 0) summary_.pop_back();
    if (i < entries_.size()) summary_[i / block] = extreme(summary_[i / block], entries_[i].atom.value);
  }

  template <typename Predicate>
  void erase_if(Predicate doomed) {
    std::erase_if(entries_, doomed);
    summary_.clear();
    for (std::size_t i = 0; i < entries_.size(); i += block) summary_.push_back(entries_[i].atom.value);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      summary_[i / block] = extreme(summary_[i / block], entries_[i].atom.value);
    }
  }

  // The first index from i on whose atom a bound falsifies, passing over asleep entries as the
  // visit would pass over their clauses; size() if none. `reach` is where the falsified atoms
  // end (callers widen it so that it covers every one): a lower atom whose value is at least
  // `reach`, an upper atom whose value is at most `reach`; `falsified` then decides each.
  template <typename Falsified, typename Asleep>
  std::size_t next_candidate(std::size_t i, double reach, const Falsified& falsified, const Asleep& asleep) {
    return lower_ ? walk<true>(i, reach, falsified, asleep) : walk<false>(i, reach, falsified, asleep);
  }

  // An entry with this value, last passed over asleep at index i, is awake again.
  void wake(std::size_t i, double value) {
    if (i / block < summary_.size()) summary_[i / block] = extreme(summary_[i / block], value);
  }

 private:
  static constexpr std::size_t block = 32;

  template <bool lower>
  static bool candidate(double value, double reach) {
    return lower ? value >= reach : value <= reach;
  }
  template <bool lower>
  static double extreme(double a, double b) {
    return lower ? std::max(a, b) : std::min(a, b);
  }
  double extreme(double a, double b) const { return lower_ ? extreme<true>(a, b) : extreme<false>(a, b); }

  template <bool lower, typename Falsified, typename Asleep>
  std::size_t walk(std::size_t i, double reach, const Falsified& falsified, const Asleep& asleep) {
    const std::size_t n = entries_.size();
    while (i < n) {
      const std::size_t b = i / block;
      if (!candidate<lower>(summary_[b], reach)) {
        i = (b + 1) * block;
        continue;
      }
      const bool whole = i == b * block;
      const std::size_t stop = std::min(n, (b + 1) * block);
      double seen = lower ? -HUGE_VAL : HUGE_VAL;  // a block of sleepers only is never a candidate
      for (; i < stop; ++i) {
        const bound& a = entries_[i].atom;
        if (candidate<lower>(a.value, reach) && falsified(a)) {
          if (!asleep(entries_[i], i)) return i;
          continue;
        }
        seen = extreme<lower>(seen, a.value);
      }
      if (whole) summary_[b] = seen;
    }
    return n;
  }

  std::vector<dclause_watch> entries_;
  std::vector<double> summary_;
  bool lower_;
};
