#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace koOS::detail {

using FreeByOffset = std::map<std::uint64_t, std::uint64_t>;
using FreeBySize = std::set<std::pair<std::uint64_t, std::uint64_t>>;

// One node of each free-range index, made when a chunk is allocated so that releasing its range
// later needs no heap request (a chunk's destructor has no way to report failure).
struct ChunkNodes {
    FreeByOffset::node_type byOffset;
    FreeBySize::node_type bySize;

    static ChunkNodes make() {
        FreeByOffset byOffset{{0, 0}};
        FreeBySize bySize{{0, 0}};
        return ChunkNodes{byOffset.extract(byOffset.begin()), bySize.extract(bySize.begin())};
    }
};

// The free ranges of a moveable allocator's backing file, indexed by offset (to find the
// neighbours a released range merges with) and by length (to find the best fit).
class FileSpace {
public:
    struct Range {
        std::uint64_t offset;
        std::uint64_t length;
    };

    // Takes `length` bytes from the smallest free range that holds them, the lowest such range
    // when several have the same length, and returns their offset; the rest of the range stays
    // free. Nothing when no free range is long enough. Makes no heap request.
    std::optional<std::uint64_t> take(std::uint64_t length) noexcept {
        auto found = bySize_.lower_bound({length, 0});
        if (found == bySize_.end()) {
            return std::nullopt;
        }
        const auto [freeLength, offset] = *found;
        auto sizeNode = bySize_.extract(found);
        auto offsetNode = byOffset_.extract(offset);
        freeBytes_ -= length;
        if (freeLength > length) {
            // The leftover keeps the nodes of the range it came from.
            sizeNode.value() = {freeLength - length, offset + length};
            offsetNode.key() = offset + length;
            offsetNode.mapped() = freeLength - length;
            bySize_.insert(std::move(sizeNode));
            byOffset_.insert(std::move(offsetNode));
        }
        return offset;
    }

    // Makes `range` free again, merged with the free ranges that touch it, and returns the
    // merged range. Uses `nodes` for the new entry; the nodes of merged neighbours are freed.
    Range release(Range range, ChunkNodes&& nodes) noexcept {
        std::uint64_t begin = range.offset;
        std::uint64_t end = range.offset + range.length;
        freeBytes_ += range.length;
        auto next = byOffset_.lower_bound(end);
        if (next != byOffset_.end() && next->first == end) {
            end += next->second;
            bySize_.erase({next->second, next->first});
            next = byOffset_.erase(next);
        }
        if (next != byOffset_.begin()) {
            auto previous = std::prev(next);
            if (previous->first + previous->second == begin) {
                begin = previous->first;
                bySize_.erase({previous->second, previous->first});
                byOffset_.erase(previous);
            }
        }
        nodes.byOffset.key() = begin;
        nodes.byOffset.mapped() = end - begin;
        nodes.bySize.value() = {end - begin, begin};
        byOffset_.insert(std::move(nodes.byOffset));
        bySize_.insert(std::move(nodes.bySize));
        return Range{begin, end - begin};
    }

    // Drops a free range that `release` returned, when the file no longer holds it.
    void forget(Range range) noexcept {
        byOffset_.erase(range.offset);
        bySize_.erase({range.length, range.offset});
        freeBytes_ -= range.length;
    }

    std::size_t numRanges() const noexcept { return byOffset_.size(); }

    std::uint64_t freeBytes() const noexcept { return freeBytes_; }

private:
    FreeByOffset byOffset_;
    FreeBySize bySize_;
    std::uint64_t freeBytes_ = 0;
};

} // namespace koOS::detail
