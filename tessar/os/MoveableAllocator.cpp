#include "tessar/os/MoveableAllocator.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>

#include "tessar/os/MoveableChunk.h"
#include "tessar/os/detail/FileSpace.h"

namespace koOS {

namespace {

// The largest file offset that mmap and ftruncate accept.
constexpr std::uint64_t maxFileSize = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

int openUnlinkedTemporaryFile() {
    std::error_code error;
    std::filesystem::path directory = std::filesystem::temp_directory_path(error);
    if (error) {
        directory = "/tmp";
    }
    int fd = -1;
#if defined(O_TMPFILE)
    fd = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0) {
        return fd;
    }
#endif
    std::string name = (directory / "koOS-moveable-XXXXXX").string();
    fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd >= 0) {
        ::unlink(name.c_str());
    }
    return fd;
}

int openAnonymousFile() {
#if defined(__linux__)
    int fd = ::memfd_create("koOS-moveable", MFD_CLOEXEC);
    if (fd >= 0) {
        return fd;
    }
#endif
    return openUnlinkedTemporaryFile();
}

// Sets the file's length, retrying when a signal interrupts the call.
bool resizeFile(int fd, std::uint64_t length) {
    int result;
    do {
        result = ::ftruncate(fd, static_cast<off_t>(length));
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

// Gives the storage of a free range inside the file back to the file system. Only an economy:
// where the file system cannot punch holes the range keeps its storage until reused.
void discardRange([[maybe_unused]] int fd, [[maybe_unused]] std::uint64_t offset,
                  [[maybe_unused]] std::uint64_t length) {
#if defined(FALLOC_FL_PUNCH_HOLE)
    ::fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                static_cast<off_t>(length));
#endif
}

} // namespace

MoveableAllocator::MoveableAllocator()
    : pageSize_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
      space_(std::make_unique<detail::FileSpace>()) {
    fd_ = openAnonymousFile();
}

MoveableAllocator::MoveableAllocator(const char* path)
    : pageSize_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
      space_(std::make_unique<detail::FileSpace>()) {
    if (path != nullptr) {
        fd_ = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    }
}

MoveableAllocator::~MoveableAllocator() {
    for (MoveableChunk* chunk = chunks_; chunk != nullptr;) {
        MoveableChunk* next = chunk->next_;
        chunk->allocator_ = nullptr;
        chunk->previous_ = nullptr;
        chunk->next_ = nullptr;
        chunk = next;
    }
    // A detached chunk's mapping holds its own reference to the file, so closing is safe.
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

MoveableChunk* MoveableAllocator::allocate(std::size_t bytes) {
    if (bytes == 0 || fd_ < 0 || bytes > std::numeric_limits<std::size_t>::max() - pageSize_) {
        return nullptr;
    }
    const std::size_t reserved = (bytes + pageSize_ - 1) / pageSize_ * pageSize_;
    if (reserved > maxFileSize) {
        return nullptr;
    }

    // Every heap request comes first, so that a failure leaves the allocator as it was. The
    // chunk stays detached until its place in the file is settled: dropping it before then
    // gives nothing back.
    auto nodes = std::make_unique<detail::ChunkNodes>(detail::ChunkNodes::make());
    std::unique_ptr<MoveableChunk> chunk(new MoveableChunk(bytes, reserved, std::move(nodes)));

    std::uint64_t offset;
    if (auto found = space_->take(reserved)) {
        offset = *found;
    } else {
        if (fileSize_ > maxFileSize - reserved || !resizeFile(fd_, fileSize_ + reserved)) {
            return nullptr;
        }
        offset = fileSize_;
        fileSize_ += reserved;
    }
    chunk->offset_ = offset;
    chunk->allocator_ = this;
    chunk->next_ = chunks_;
    if (chunks_ != nullptr) {
        chunks_->previous_ = chunk.get();
    }
    chunks_ = chunk.get();
    ++numChunks_;
    return chunk.release();
}

std::size_t MoveableAllocator::numFreeRanges() const noexcept { return space_->numRanges(); }

std::uint64_t MoveableAllocator::freeBytes() const noexcept { return space_->freeBytes(); }

void MoveableAllocator::release(MoveableChunk& chunk) noexcept {
    if (chunk.previous_ != nullptr) {
        chunk.previous_->next_ = chunk.next_;
    } else {
        chunks_ = chunk.next_;
    }
    if (chunk.next_ != nullptr) {
        chunk.next_->previous_ = chunk.previous_;
    }
    --numChunks_;

    const detail::FileSpace::Range merged =
        space_->release({chunk.offset_, chunk.reservedBytes_}, std::move(*chunk.nodes_));
    if (merged.offset + merged.length == fileSize_ && resizeFile(fd_, merged.offset)) {
        space_->forget(merged);
        fileSize_ = merged.offset;
    } else {
        discardRange(fd_, chunk.offset_, chunk.reservedBytes_);
    }
}

} // namespace koOS
