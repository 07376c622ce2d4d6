#include "geom/mesh/PointMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "geom/mesh/MeshChannel.h"
#include "geom/mesh/MeshModification.h"
#include "geom/spatial/BoundingBox.h"

namespace koGeom {

namespace {

// What the memory estimate counts for the mesh object itself.
constexpr std::uint32_t meshObjectBytes = 160;

constexpr int maxDimension = 4;

// The floats per vertex of each standard channel, in channel order.
constexpr int standardDimensions[numMeshChannels] = {3, 3, 2, 2, 4};

constexpr int dimensionOf(MeshChannel channel) noexcept {
    return standardDimensions[static_cast<int>(channel)];
}

// `select` applied to the channel, or null without one. Given a const channel, the views read
// through the allocator's const `get`.
template <class Channel, class Select>
auto viewOf(Channel* channel, Select select) noexcept -> decltype(select(*channel)) {
    return channel == nullptr ? nullptr : select(*channel);
}

constexpr auto vertexView = [](auto& channel) noexcept { return channel.asMeshVertex(); };
constexpr auto normalView = [](auto& channel) noexcept { return channel.asMeshNormal(); };
constexpr auto uvView = [](auto& channel) noexcept { return channel.asMeshUV(); };
constexpr auto colourView = [](auto& channel) noexcept { return channel.asMeshColour(); };
constexpr auto floatView = [](auto& channel) noexcept { return channel.asFloat(); };

koLinear::Range2d range2Of(const MeshAttributes* channel) {
    if (channel == nullptr) {
        koLinear::Range2d range;
        range.setUnbounded();
        return range;
    }
    return channel->getRange2();
}

} // namespace

// Bound to the library's channel names, so that each of the five strings exists once.
const koString::CString& PointMesh::VerticesName = meshVerticesName;
const koString::CString& PointMesh::NormalsName = meshNormalsName;
const koString::CString& PointMesh::UVsName = meshUVsName;
const koString::CString& PointMesh::STsName = meshSTsName;
const koString::CString& PointMesh::ColoursName = meshColoursName;

void PointMesh::DestroyChannel::operator()(MeshAttributes* channel) const noexcept {
    delete channel;
}

PointMesh::PointMesh() = default;

PointMesh::PointMesh(ko::Reference<ArrayAllocator> allocator) : allocator_(std::move(allocator)) {}

PointMesh::PointMesh(int n, const MeshVertex* vertices, const MeshNormal* normals,
                     const MeshUV* uvs, const MeshColour* colours)
    : numVertices_(n) {
    if (n < 1) {
        return;
    }
    // The records are plain floats of the channel's width, copied as such.
    MeshAttributes* channel = appendChannel(VerticesName, dimensionOf(MeshChannel::Vertices), n);
    if (vertices != nullptr) {
        channel->copyArray(reinterpret_cast<const float*>(vertices));
    }
    if (normals != nullptr) {
        appendChannel(NormalsName, dimensionOf(MeshChannel::Normals), n)
            ->copyArray(reinterpret_cast<const float*>(normals));
    }
    if (uvs != nullptr) {
        appendChannel(UVsName, dimensionOf(MeshChannel::UVs), n)
            ->copyArray(reinterpret_cast<const float*>(uvs));
    }
    if (colours != nullptr) {
        appendChannel(ColoursName, dimensionOf(MeshChannel::Colours), n)
            ->copyArray(reinterpret_cast<const float*>(colours));
    }
}

PointMesh::PointMesh(const PointMesh& other) : Entity(other) { *this = other; }

PointMesh& PointMesh::operator=(const PointMesh& other) {
    if (this == &other) {
        return *this;
    }
    // Everything is copied aside first, so that a failure leaves this mesh as it was.
    ChannelList copies;
    copies.reserve(other.attributes_.size());
    for (const OwnedChannel& channel : other.attributes_) {
        // Copy construction: the copy shares the allocator of the channel it copies, while
        // this mesh's own allocator stays for the channels it makes later.
        copies.emplace_back(new MeshAttributes(*channel));
    }
    BitVector selection(other.selectedVertices_);

    attributes_.swap(copies);
    numVertices_ = other.numVertices_;
    selectedVertices_.swap(selection);
    rederiveCachedPointers();
    return *this;
}

PointMesh::~PointMesh() { destroyChannels(); }

void PointMesh::swap(PointMesh& other) noexcept {
    // Deliberate: a mesh in an allocator keeps its channels where that allocator put them, so
    // an exchange involving one is ignored without a word; callers swap freely and rely on it.
    if (allocator_ || other.allocator_) {
        return;
    }
    attributes_.swap(other.attributes_);
    std::swap(verticesAttr_, other.verticesAttr_);
    std::swap(normalsAttr_, other.normalsAttr_);
    std::swap(uvsAttr_, other.uvsAttr_);
    std::swap(stsAttr_, other.stsAttr_);
    std::swap(coloursAttr_, other.coloursAttr_);
    std::swap(numVertices_, other.numVertices_);
    selectedVertices_.swap(other.selectedVertices_);
}

void PointMesh::resizeVertexArray(int n) {
    if (n == 0) {
        numVertices_ = 0;
        destroyChannels();
        return;
    }
    if (numVertices_ == 0) {
        // An empty mesh has no channels to resize: it gains its vertex positions.
        appendChannel(VerticesName, dimensionOf(MeshChannel::Vertices), n);
        numVertices_ = n;
        return;
    }
    // The cached ranges stay as they were: a client that changes values says so through
    // `modified`, which resets the ranges of the channels it names.
    for (const OwnedChannel& channel : attributes_) {
        channel->resize(channel->getDimension() * n);
    }
    numVertices_ = n;
}

void PointMesh::copyVertices(int n, const MeshVertex* source) {
    resizeVertexArray(n);
    // A mesh made with a negative count gains no "vertices" channel from a resize.
    if (n != 0 && verticesAttr_ != nullptr) {
        verticesAttr_->copyArray(reinterpret_cast<const float*>(source));
    }
}

MeshAttributes* PointMesh::allocAttributes(const koString::CString& name, int dimension) {
    if (dimension < 1 || dimension > maxDimension || numVertices_ == 0 || name == VerticesName) {
        return nullptr;
    }
    if (MeshAttributes* existing = getAttributes(name)) {
        return existing->getDimension() == dimension ? existing : nullptr;
    }
    const int standard = meshChannelIndex(name);
    if (standard >= 0 && standardDimensions[standard] != dimension) {
        return nullptr;
    }
    return appendChannel(name, dimension, numVertices_);
}

void PointMesh::allocNormalArray() {
    allocStandardChannel(normalsAttr_, NormalsName, dimensionOf(MeshChannel::Normals));
}

void PointMesh::allocUVArray() {
    allocStandardChannel(uvsAttr_, UVsName, dimensionOf(MeshChannel::UVs));
}

void PointMesh::allocSTArray() {
    allocStandardChannel(stsAttr_, STsName, dimensionOf(MeshChannel::STs));
}

void PointMesh::allocColourArray() {
    allocStandardChannel(coloursAttr_, ColoursName, dimensionOf(MeshChannel::Colours));
}

void PointMesh::deleteAttributes(const koString::CString& name) {
    if (name == VerticesName) {
        return;
    }
    auto found = std::find_if(attributes_.begin(), attributes_.end(),
                              [&name](const OwnedChannel& c) { return c->getName() == name; });
    if (found == attributes_.end()) {
        return;
    }
    attributes_.erase(found);
    rederiveCachedPointers();
}

MeshAttributes* PointMesh::getAttributes(const koString::CString& name) noexcept {
    return const_cast<MeshAttributes*>(std::as_const(*this).getAttributes(name));
}

const MeshAttributes* PointMesh::getAttributes(const koString::CString& name) const noexcept {
    for (const OwnedChannel& channel : attributes_) {
        if (channel->getName() == name) {
            return channel.get();
        }
    }
    return nullptr;
}

MeshAttributes* PointMesh::getAttributes(int i) noexcept {
    return i < 0 || i >= getNumAttributes() ? nullptr : attributes_[i].get();
}

const MeshAttributes* PointMesh::getAttributes(int i) const noexcept {
    return i < 0 || i >= getNumAttributes() ? nullptr : attributes_[i].get();
}

void PointMesh::getAttributeNames(ko::set<koString::CString>& names) const {
    for (const OwnedChannel& channel : attributes_) {
        names.insert(channel->getName());
    }
}

MeshVertex* PointMesh::getVertices() noexcept { return viewOf(verticesAttr_, vertexView); }
const MeshVertex* PointMesh::getVertices() const noexcept {
    return viewOf<const MeshAttributes>(verticesAttr_, vertexView);
}
MeshNormal* PointMesh::getNormals() noexcept { return viewOf(normalsAttr_, normalView); }
const MeshNormal* PointMesh::getNormals() const noexcept {
    return viewOf<const MeshAttributes>(normalsAttr_, normalView);
}
MeshUV* PointMesh::getUVs() noexcept { return viewOf(uvsAttr_, uvView); }
const MeshUV* PointMesh::getUVs() const noexcept {
    return viewOf<const MeshAttributes>(uvsAttr_, uvView);
}
MeshUV* PointMesh::getSTs() noexcept { return viewOf(stsAttr_, uvView); }
const MeshUV* PointMesh::getSTs() const noexcept {
    return viewOf<const MeshAttributes>(stsAttr_, uvView);
}
MeshColour* PointMesh::getColours() noexcept { return viewOf(coloursAttr_, colourView); }
const MeshColour* PointMesh::getColours() const noexcept {
    return viewOf<const MeshAttributes>(coloursAttr_, colourView);
}

float* PointMesh::getVerticesRaw() noexcept { return viewOf(verticesAttr_, floatView); }
const float* PointMesh::getVerticesRaw() const noexcept {
    return viewOf<const MeshAttributes>(verticesAttr_, floatView);
}
float* PointMesh::getNormalsRaw() noexcept { return viewOf(normalsAttr_, floatView); }
const float* PointMesh::getNormalsRaw() const noexcept {
    return viewOf<const MeshAttributes>(normalsAttr_, floatView);
}
float* PointMesh::getUVsRaw() noexcept { return viewOf(uvsAttr_, floatView); }
const float* PointMesh::getUVsRaw() const noexcept {
    return viewOf<const MeshAttributes>(uvsAttr_, floatView);
}
float* PointMesh::getSTsRaw() noexcept { return viewOf(stsAttr_, floatView); }
const float* PointMesh::getSTsRaw() const noexcept {
    return viewOf<const MeshAttributes>(stsAttr_, floatView);
}
float* PointMesh::getColoursRaw() noexcept { return viewOf(coloursAttr_, floatView); }
const float* PointMesh::getColoursRaw() const noexcept {
    return viewOf<const MeshAttributes>(coloursAttr_, floatView);
}

bool PointMesh::getNormalsComputed() const noexcept {
    return normalsAttr_ != nullptr && normalsAttr_->isComputed();
}

void PointMesh::setNormalsComputed(bool computed) noexcept {
    if (normalsAttr_ != nullptr) {
        normalsAttr_->setComputed(computed);
    }
}

koLinear::Range2d PointMesh::getUVRange() const { return range2Of(uvsAttr_); }

koLinear::Range2d PointMesh::getSTRange() const { return range2Of(stsAttr_); }

void PointMesh::setUVRange(const koLinear::Range2d& range) noexcept {
    if (uvsAttr_ != nullptr) {
        uvsAttr_->setRange2(range);
    }
}

void PointMesh::setSTRange(const koLinear::Range2d& range) noexcept {
    if (stsAttr_ != nullptr) {
        stsAttr_->setRange2(range);
    }
}

void PointMesh::getBoundingBox(BoundingBox& box) const {
    if (verticesAttr_ == nullptr) {
        box.setInvalid();
        return;
    }
    box = verticesAttr_->getRange3();
}

void PointMesh::getBoundingBox(koLinear::Range3d& range) const {
    if (verticesAttr_ == nullptr) {
        range.setUnbounded();
        return;
    }
    range = verticesAttr_->getRange3();
}

void PointMesh::setArrayAllocator(ko::Reference<ArrayAllocator> allocator) {
    allocator_ = allocator;
    for (const OwnedChannel& channel : attributes_) {
        channel->setArrayAllocator(allocator);
    }
}

void PointMesh::modified(MeshModification& mod) {
    std::size_t i = 0;
    while (i < attributes_.size()) {
        MeshAttributes& channel = *attributes_[i];
        if (mod.areVertexAttribsValid(channel.getName())) {
            if (mod.areVertexAttribsModified(channel.getName())) {
                channel.invalidateRange();
            }
            ++i;
            continue;
        }
        // Listeners hear of a dropped channel as a modified one.
        mod.vertexAttribsModified(channel.getName());
        // The next channel moves into this index. The cached pointers are re-derived at once,
        // so that a failure to record a later channel leaves none pointing at this one.
        attributes_.erase(attributes_.begin() + static_cast<std::ptrdiff_t>(i));
        rederiveCachedPointers();
    }
    sendMessage(mod);
}

int PointMesh::getSizeInBytes() const noexcept {
    std::uint32_t bytes = meshObjectBytes;
    bytes += static_cast<std::uint32_t>(selectedVertices_.getSizeInBytes());
    for (const OwnedChannel& channel : attributes_) {
        bytes += static_cast<std::uint32_t>(channel->getSizeInBytes());
    }
    return static_cast<int>(bytes);
}

MeshAttributes* PointMesh::appendChannel(const koString::CString& name, int dimension,
                                         int numElements) {
    // Owned before it is listed, so that a failure to list it destroys it.
    OwnedChannel channel(new MeshAttributes(name, dimension, numElements, allocator_));
    attributes_.push_back(std::move(channel));
    rederiveCachedPointers();
    return attributes_.back().get();
}

void PointMesh::allocStandardChannel(const MeshAttributes* existing, const koString::CString& name,
                                     int dimension) {
    if (existing == nullptr && numVertices_ != 0) {
        appendChannel(name, dimension, numVertices_);
    }
}

void PointMesh::destroyChannels() noexcept {
    attributes_.clear();
    rederiveCachedPointers();
}

void PointMesh::rederiveCachedPointers() noexcept {
    MeshAttributes** cached[numMeshChannels] = {&verticesAttr_, &normalsAttr_, &uvsAttr_, &stsAttr_,
                                                &coloursAttr_};
    for (MeshAttributes** pointer : cached) {
        *pointer = nullptr;
    }
    // In list order, so a later channel of a name would win; names are unique.
    for (const OwnedChannel& channel : attributes_) {
        const int standard = meshChannelIndex(channel->getName());
        if (standard >= 0) {
            *cached[standard] = channel.get();
        }
    }
}

} // namespace koGeom
