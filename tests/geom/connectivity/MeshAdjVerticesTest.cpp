#include "geom/connectivity/MeshAdjVertices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

int* onGeneralHeap(std::initializer_list<int> values) {
    int* array = static_cast<int*>(std::malloc(values.size() * sizeof(int)));
    std::copy(values.begin(), values.end(), array);
    return array;
}

TEST(MeshAdjVertices, ReadsRecordsThroughOffsetsAndEstimatesAFixedSize) {
    // Vertex 0's record {1, 2, 3} is stored last, vertex 2's {} in the middle.
    ko::Reference<MeshAdjVertices> table(new MeshAdjVertices(
        3, 3, onGeneralHeap({4, 0, 3}), onGeneralHeap({2, 0, 2, 0, 3, 1, 2, 3})));
    ASSERT_EQ(table->numVertices(0), 3);
    EXPECT_EQ(table->vertexIndices(0)[2], 3);
    EXPECT_EQ(table->vertexIndices(1)[1], 2);
    EXPECT_EQ(table->numVertices(2), 0);

    ko::Reference<MeshAdjVertices> empty(new MeshAdjVertices);
    empty->swap(*table);
    EXPECT_EQ(empty->maxVerts(), 3);
    EXPECT_EQ(empty->numVertices(1), 2);
    EXPECT_EQ(table->numBytesUsed(), 40);

    // Deliberate: 32 bytes a vertex plus 40, whatever the records hold.
    ko::Reference<MeshAdjVertices> ten(new MeshAdjVertices(
        10, 0, onGeneralHeap({0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), onGeneralHeap({0})));
    EXPECT_EQ(ten->numBytesUsed(), 360);
}

} // namespace
} // namespace koGeom
