#pragma once

// An open-addressing hash map from object address to reference number, for the writer: one
// probe sequence in one array, no heap allocation per entry (a packet file of a half-edge mesh
// names millions of records).
//
// Objects that a packet names are usually near each other in memory (a record and its
// neighbours), so the map first places addresses by a hash that keeps nearby addresses in
// nearby slots: most look-ups then hit a cache line already loaded. Should the addresses be
// laid out so that this clusters (a probe sequence grows long), the map switches for good to a
// hash that scatters every address, and re-places its entries.

#include <cstddef>
#include <cstdint>
#include <memory>

namespace crateWire {

class PointerMap {
public:
    /// The number of `key`, 0 when it has none.
    int find(const void* key) const noexcept {
        if (size_ == 0) {
            return 0;
        }
        for (std::size_t i = slotOf(key);; i = (i + 1) & mask_) {
            if (slots_[i].key == key) {
                return slots_[i].value;
            }
            if (slots_[i].key == nullptr) {
                return 0;
            }
        }
    }

    /// Adds `key` (non-null, not present) with `value` (non-zero).
    void insert(const void* key, int value) {
        if ((size_ + 1) * 4 > capacity_ * 3) {
            rebuild(capacity_ == 0 ? 64 : capacity_ * 2);
        }
        if (place(key, value) > maxProbes && !scatter_) {
            scatter_ = true;
            rebuild(capacity_);
        }
    }

    /// Removes `key` when present, shifting back the entries that probed past it.
    void erase(const void* key) noexcept {
        if (size_ == 0) {
            return;
        }
        std::size_t i = slotOf(key);
        while (slots_[i].key != key) {
            if (slots_[i].key == nullptr) {
                return;
            }
            i = (i + 1) & mask_;
        }
        for (std::size_t j = (i + 1) & mask_; slots_[j].key != nullptr; j = (j + 1) & mask_) {
            // An entry may move into the hole when its home slot is not in (i, j].
            const std::size_t home = slotOf(slots_[j].key);
            const bool homeBetween = i <= j ? (i < home && home <= j) : (i < home || home <= j);
            if (!homeBetween) {
                slots_[i] = slots_[j];
                i = j;
            }
        }
        slots_[i] = {};
        --size_;
    }

    std::size_t size() const noexcept { return size_; }

private:
    struct Slot {
        const void* key = nullptr;
        int value = 0;
    };

    /// A probe sequence longer than this means the addresses cluster under the near hash.
    static constexpr std::size_t maxProbes = 64;

    std::size_t slotOf(const void* key) const noexcept {
        std::uint64_t h = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key)) >> 3;
        if (scatter_) {
            h ^= h >> 33;
            h *= 0xff51afd7ed558ccdULL;
            h ^= h >> 33;
        } else {
            // Near addresses to near slots; the high bits folded in break up regular strides.
            h ^= (h >> 17) ^ (h >> 34);
        }
        return static_cast<std::size_t>(h) & mask_;
    }

    /// Puts an entry in its slot; returns the length of the probe sequence.
    std::size_t place(const void* key, int value) noexcept {
        std::size_t i = slotOf(key);
        std::size_t probes = 0;
        while (slots_[i].key != nullptr) {
            i = (i + 1) & mask_;
            ++probes;
        }
        slots_[i] = {key, value};
        ++size_;
        return probes;
    }

    void rebuild(std::size_t newCapacity) {
        std::unique_ptr<Slot[]> old = std::move(slots_);
        const std::size_t oldCapacity = capacity_;
        slots_ = std::make_unique<Slot[]>(newCapacity);
        capacity_ = newCapacity;
        mask_ = newCapacity - 1;
        size_ = 0;
        for (std::size_t k = 0; k < oldCapacity; ++k) {
            if (old[k].key != nullptr) {
                place(old[k].key, old[k].value);
            }
        }
    }

    std::unique_ptr<Slot[]> slots_;
    std::size_t capacity_ = 0;
    std::size_t mask_ = 0;
    std::size_t size_ = 0;
    bool scatter_ = false;
};

} // namespace crateWire
