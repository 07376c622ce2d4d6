#include "tools/formwork/MeshArrays.h"

#include <cmath>
#include <cstring>

namespace formworkTool {

namespace {

template <class T>
void copyInto(T* target, const std::vector<T>& source) {
    if (!source.empty()) {
        std::memcpy(target, source.data(), source.size() * sizeof(T));
    }
}

// What is wrong with one run of indices (a primitive array or a sequence's points).
std::string checkRun(const char* what, const int* indices, long long count, int numVertices) {
    for (long long i = 0; i < count; ++i) {
        if (indices[i] < 0 || indices[i] >= numVertices) {
            return std::string(what) + " index " + std::to_string(i) + " is " +
                   std::to_string(indices[i]) + ", outside the " + std::to_string(numVertices) +
                   " vertices";
        }
    }
    return {};
}

std::string checkSequence(const char* what, const koGeom::MeshSequence& sequence, int numVertices) {
    long long total = 0;
    const int* lengths = sequence.lengths().elements();
    for (int i = 0; i < sequence.lengths().count(); ++i) {
        if (lengths[i] < 0) {
            return std::string(what) + " " + std::to_string(i) + " has a negative length";
        }
        total += lengths[i];
    }
    if (total != sequence.points().count()) {
        return std::string(what) + " lengths add up to " + std::to_string(total) + ", not to the " +
               std::to_string(sequence.points().count()) + " points";
    }
    return checkRun(what, sequence.points().elements(), total, numVertices);
}

} // namespace

ko::Reference<koGeom::CompactMesh> MeshArrays::toMesh() const {
    ko::Reference<koGeom::CompactMesh> mesh(new koGeom::CompactMesh);
    mesh->resizeVertexArray(numVertices());
    copyInto(mesh->getVerticesRaw(), positions);
    if (!normals.empty()) {
        mesh->allocNormalArray();
        copyInto(mesh->getNormalsRaw(), normals);
        mesh->setNormalsComputed(false);
    }
    if (!uvs.empty()) {
        mesh->allocUVArray();
        copyInto(mesh->getUVsRaw(), uvs);
    }
    if (!sts.empty()) {
        mesh->allocSTArray();
        copyInto(mesh->getSTsRaw(), sts);
    }
    if (!colours.empty()) {
        mesh->allocColourArray();
        copyInto(mesh->getColoursRaw(), colours);
    }
    if (!triangles.empty()) {
        mesh->copyTriangles(static_cast<int>(triangles.size() / 3), triangles.data());
    }
    if (!lineStripLengths.empty()) {
        mesh->resizeLineStripArrays(static_cast<int>(lineStripPoints.size()),
                                    static_cast<int>(lineStripLengths.size()));
        copyInto(mesh->getLineStripPoints(), lineStripPoints);
        copyInto(mesh->getLineStripLengths(), lineStripLengths);
    }
    return mesh;
}

std::string checkIndices(const koGeom::CompactMesh& mesh) {
    const int n = mesh.getNumVertices();
    std::string wrong =
        checkRun("triangle", mesh.getTrianglesRaw(), 3LL * mesh.getNumTriangles(), n);
    if (wrong.empty() && mesh.getNumLines() > 0) {
        wrong = checkRun("line", &mesh.getLines()->v[0], 2LL * mesh.getNumLines(), n);
    }
    const std::pair<const char*, const koGeom::MeshSequence*> sequences[] = {
        {"triangle strip", &mesh.getTriStrips()},
        {"triangle fan", &mesh.getTriFans()},
        {"line strip", &mesh.getLineStrips()},
        {"polygon", &mesh.getPolys()}};
    for (const auto& [what, sequence] : sequences) {
        if (wrong.empty()) {
            wrong = checkSequence(what, *sequence, n);
        }
    }
    return wrong;
}

std::vector<int> surfaceTriangles(const koGeom::CompactMesh& mesh) {
    std::vector<int> indices(mesh.getTrianglesRaw(),
                             mesh.getTrianglesRaw() + 3LL * mesh.getNumTriangles());
    if (mesh.getNumTriStrips() > 0 || mesh.getNumTriFans() > 0) {
        // The library's own expansion, on a scratch mesh holding only the strips and fans.
        koGeom::CompactMesh scratch;
        scratch.getTriStrips() = mesh.getTriStrips();
        scratch.getTriFans() = mesh.getTriFans();
        scratch.fullyPopulateTriangleArray();
        indices.insert(indices.end(), scratch.getTrianglesRaw(),
                       scratch.getTrianglesRaw() + 3LL * scratch.getNumTriangles());
    }
    const int* points = mesh.getPolyPoints();
    for (int p = 0; p < mesh.getNumPolys(); ++p) {
        const int length = mesh.getPolyLengths()[p];
        for (int i = 1; i + 1 < length; ++i) {
            indices.insert(indices.end(), {points[0], points[i], points[i + 1]});
        }
        points += length;
    }
    return indices;
}

std::vector<float> vertexNormals(const koGeom::CompactMesh& mesh,
                                 const std::vector<int>& triangles) {
    const float* p = mesh.getVerticesRaw();
    std::vector<double> sums(3 * static_cast<std::size_t>(mesh.getNumVertices()), 0.0);
    for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
        const float* a = p + 3 * triangles[t];
        const float* b = p + 3 * triangles[t + 1];
        const float* c = p + 3 * triangles[t + 2];
        const double u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
        const double v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
        // The cross product's length is twice the area: the weighting comes for free.
        const double n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                             u[0] * v[1] - u[1] * v[0]};
        for (std::size_t k = 0; k < 3; ++k) {
            double* sum = &sums[3 * static_cast<std::size_t>(triangles[t + k])];
            sum[0] += n[0];
            sum[1] += n[1];
            sum[2] += n[2];
        }
    }
    std::vector<float> normals(sums.size(), 0.0f);
    for (std::size_t i = 0; i < sums.size(); i += 3) {
        const double length =
            std::sqrt(sums[i] * sums[i] + sums[i + 1] * sums[i + 1] + sums[i + 2] * sums[i + 2]);
        if (length > 0.0) {
            for (std::size_t k = 0; k < 3; ++k) {
                normals[i + k] = static_cast<float>(sums[i + k] / length);
            }
        }
    }
    return normals;
}

} // namespace formworkTool
