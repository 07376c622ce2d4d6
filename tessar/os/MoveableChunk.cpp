#include "tessar/os/MoveableChunk.h"

#include <sys/mman.h>
#include <sys/types.h>

#include "tessar/os/MoveableAllocator.h"
#include "tessar/os/detail/FileSpace.h"

namespace koOS {

MoveableChunk::MoveableChunk(std::size_t size, std::size_t reservedBytes,
                             std::unique_ptr<detail::ChunkNodes> nodes) noexcept
    : nodes_(std::move(nodes)), size_(size), reservedBytes_(reservedBytes) {}

MoveableChunk::~MoveableChunk() {
    unmap();
    if (allocator_ != nullptr) {
        allocator_->release(*this);
    }
}

void* MoveableChunk::map() {
    if (address_ != nullptr || allocator_ == nullptr) {
        return address_;
    }
    void* address = ::mmap(nullptr, reservedBytes_, PROT_READ | PROT_WRITE, MAP_SHARED,
                           allocator_->fd_, static_cast<off_t>(offset_));
    if (address != MAP_FAILED) {
        address_ = address;
    }
    return address_;
}

void MoveableChunk::unmap() noexcept {
    if (address_ != nullptr) {
        ::munmap(address_, reservedBytes_);
        address_ = nullptr;
    }
}

} // namespace koOS
