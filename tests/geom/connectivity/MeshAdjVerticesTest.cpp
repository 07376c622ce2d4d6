#include "geom/connectivity/MeshAdjVertices.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <vector>

#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

int* onGeneralHeap(const std::vector<int>& values) {
    int* array = static_cast<int*>(std::malloc(values.size() * sizeof(int)));
    for (std::size_t i = 0; i < values.size(); ++i) {
        array[i] = values[i];
    }
    return array;
}

TEST(MeshAdjVertices, ReadsRecordsThroughOffsetsAndEstimatesAFixedSize) {
    ko::Reference<MeshAdjVertices> empty(new MeshAdjVertices);
    EXPECT_EQ(empty->maxVerts(), 0);
    EXPECT_EQ(empty->numBytesUsed(), 40);

    // Records stored out of vertex order: vertex 0's record comes last.
    const std::vector<int> data = {2, 0, 2, 0, 3, 1, 2, 3};
    ko::Reference<MeshAdjVertices> table(
        new MeshAdjVertices(3, 3, onGeneralHeap({4, 0, 3}), onGeneralHeap(data)));
    EXPECT_EQ(table->maxVerts(), 3);
    ASSERT_EQ(table->numVertices(0), 3);
    EXPECT_EQ(table->vertexIndices(0)[0], 1);
    EXPECT_EQ(table->vertexIndices(0)[2], 3);
    ASSERT_EQ(table->numVertices(1), 2);
    EXPECT_EQ(table->vertexIndices(1)[1], 2);
    EXPECT_EQ(table->numVertices(2), 0);

    table->swap(*empty);
    EXPECT_EQ(table->maxVerts(), 0);
    EXPECT_EQ(empty->numVertices(0), 3);

    // Deliberate: 32 bytes a vertex plus 40, whatever the records hold.
    std::vector<int> offsets(10, 0);
    ko::Reference<MeshAdjVertices> ten(
        new MeshAdjVertices(10, 0, onGeneralHeap(offsets), onGeneralHeap({0})));
    EXPECT_EQ(ten->numBytesUsed(), 360);
}

} // namespace
} // namespace koGeom
