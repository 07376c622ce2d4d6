#include "tools/formwork/AssimpImport.h"

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/formwork/OneLine.h"

namespace formworkTool {

namespace {

// Passes assimp's coarse progress (reading, then each post-processing step) on.
class ImportProgress : public Assimp::ProgressHandler {
public:
    explicit ImportProgress(Progress& progress) : progress_(progress) {}
    bool Update(float percentage) override {
        if (percentage >= 0.0f) {
            progress_.update(percentage);
        }
        return true;
    }

private:
    Progress& progress_;
};

// One mesh of the scene as a node places it.
struct Part {
    const aiMesh* mesh;
    aiMatrix4x4 transform;
};

// The meshes of every node, depth first, each node's list in the order the node names them.
// The walk keeps its own stack, so a deep hierarchy cannot exhaust the call stack.
std::vector<std::vector<Part>> partsByNode(const aiScene& scene) {
    std::vector<std::vector<Part>> nodes;
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> stack{{scene.mRootNode, aiMatrix4x4()}};
    while (!stack.empty()) {
        const auto [node, parent] = stack.back();
        stack.pop_back();
        const aiMatrix4x4 transform = parent * node->mTransformation;
        if (node->mNumMeshes > 0) {
            std::vector<Part>& parts = nodes.emplace_back();
            for (unsigned i = 0; i < node->mNumMeshes; ++i) {
                parts.push_back({scene.mMeshes[node->mMeshes[i]], transform});
            }
        }
        // Children go on the stack last first, so that they come off in order.
        for (unsigned i = node->mNumChildren; i-- > 0;) {
            stack.emplace_back(node->mChildren[i], transform);
        }
    }
    return nodes;
}

// Appends the segments of `mesh`'s lines, shifted by `base`, as line strips; a segment that
// starts where the previous one ended continues its strip.
void appendLines(const aiMesh& mesh, int base, MeshArrays& arrays) {
    bool continuing = false;
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        if (face.mNumIndices != 2) {
            continuing = false;
            continue;
        }
        const int a = base + static_cast<int>(face.mIndices[0]);
        const int b = base + static_cast<int>(face.mIndices[1]);
        if (continuing && arrays.lineStripPoints.back() == a) {
            arrays.lineStripPoints.push_back(b);
            ++arrays.lineStripLengths.back();
        } else {
            arrays.lineStripPoints.insert(arrays.lineStripPoints.end(), {a, b});
            arrays.lineStripLengths.push_back(2);
        }
        continuing = true;
    }
}

// The concatenation of `parts` as one mesh.
ko::Reference<koGeom::CompactMesh> buildMesh(const std::vector<Part>& parts) {
    bool anyNormals = false;
    bool anyUVs = false;
    bool anySTs = false;
    bool anyColours = false;
    std::size_t numVertices = 0;
    for (const Part& part : parts) {
        anyNormals |= part.mesh->HasNormals();
        anyUVs |= part.mesh->HasTextureCoords(0);
        anySTs |= part.mesh->HasTextureCoords(1);
        anyColours |= part.mesh->HasVertexColors(0);
        numVertices += part.mesh->mNumVertices;
    }
    MeshArrays arrays;
    arrays.positions.reserve(3 * numVertices);
    std::vector<bool> normalSupplied;
    for (const Part& part : parts) {
        const aiMesh& mesh = *part.mesh;
        const int base = arrays.numVertices();
        // Exactly the identity: assimp's own IsIdentity allows a hundredth off.
        const bool asGiven = part.transform == aiMatrix4x4();
        aiMatrix3x3 normalMatrix(part.transform);
        normalMatrix.Inverse().Transpose();
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            // Under the identity the file's positions are taken as they are (even −0 stays).
            const aiVector3D p = asGiven ? mesh.mVertices[i] : part.transform * mesh.mVertices[i];
            arrays.positions.insert(arrays.positions.end(), {p.x, p.y, p.z});
            if (anyNormals) {
                aiVector3D n = mesh.HasNormals() ? mesh.mNormals[i] : aiVector3D();
                if (!asGiven) {
                    n = normalMatrix * n;
                    n.NormalizeSafe();
                }
                arrays.normals.insert(arrays.normals.end(), {n.x, n.y, n.z});
                normalSupplied.push_back(mesh.HasNormals());
            }
            for (const auto& [present, set, target] :
                 {std::tuple{anyUVs, 0u, &arrays.uvs}, std::tuple{anySTs, 1u, &arrays.sts}}) {
                if (present) {
                    const aiVector3D uv =
                        mesh.HasTextureCoords(set) ? mesh.mTextureCoords[set][i] : aiVector3D();
                    target->insert(target->end(), {uv.x, uv.y});
                }
            }
            if (anyColours) {
                const aiColor4D c = mesh.HasVertexColors(0) ? mesh.mColors[0][i]
                                                            : aiColor4D(1.0f, 1.0f, 1.0f, 1.0f);
                arrays.colours.insert(arrays.colours.end(), {c.r, c.g, c.b, c.a});
            }
        }
        const bool mirrored = part.transform.Determinant() < 0.0f;
        constexpr unsigned corners[2][3] = {{0, 1, 2}, {0, 2, 1}};
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices == 3) {
                // A mirroring transform turns the triangles inside out unless they turn too.
                for (const unsigned k : mirrored ? corners[1] : corners[0]) {
                    arrays.triangles.push_back(base + static_cast<int>(face.mIndices[k]));
                }
            }
        }
        appendLines(mesh, base, arrays);
    }
    ko::Reference<koGeom::CompactMesh> result = arrays.toMesh();
    if (anyNormals && !arrays.triangles.empty()) {
        // The parts without normals of their own take them from their triangles.
        const std::vector<float> computed = vertexNormals(*result, arrays.triangles);
        float* normals = result->getNormalsRaw();
        for (std::size_t i = 0; i < normalSupplied.size(); ++i) {
            if (!normalSupplied[i]) {
                std::copy_n(&computed[3 * i], 3, &normals[3 * i]);
            }
        }
    }
    return result;
}

} // namespace

bool importWithAssimp(const std::string& path, const ImportOptions& options, MeshList& meshes,
                      std::string& error, Progress& progress) {
    Assimp::Importer importer;
    importer.SetProgressHandler(new ImportProgress(progress)); // the importer deletes it
    progress.start("import");
    // Validation comes first, so the other steps only ever see a well-formed scene.
    const aiScene* scene =
        importer.ReadFile(path, aiProcess_ValidateDataStructure | aiProcess_Triangulate |
                                    aiProcess_JoinIdenticalVertices | aiProcess_SortByPType);
    progress.finish();
    if (scene == nullptr) {
        error = path + ": " + oneLine(importer.GetErrorString());
        return false;
    }
    std::vector<std::vector<Part>> nodes = partsByNode(*scene);
    if (options.merge && nodes.size() > 1) {
        for (std::size_t i = 1; i < nodes.size(); ++i) {
            nodes[0].insert(nodes[0].end(), nodes[i].begin(), nodes[i].end());
        }
        nodes.resize(1);
    }
    std::uint64_t total = 0;
    for (const std::vector<Part>& parts : nodes) {
        std::uint64_t vertices = 0;
        std::uint64_t faces = 0;
        for (const Part& part : parts) {
            vertices += part.mesh->mNumVertices;
            faces += part.mesh->mNumFaces;
        }
        // Counts and indices of a mesh are 32-bit signed; three floats a vertex must fit too.
        if (3 * std::max(vertices, faces) >
            static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
            error = path + ": a node holds " + std::to_string(vertices) +
                    " vertices, more than a mesh can index";
            return false;
        }
        total += vertices;
    }
    if (total == 0) {
        error = path + ": no vertices in the scene";
        return false;
    }
    MeshList imported;
    for (const std::vector<Part>& parts : nodes) {
        imported.push_back(buildMesh(parts));
    }
    meshes.insert(meshes.end(), imported.begin(), imported.end());
    return true;
}

} // namespace formworkTool
