#include "tools/formwork/AssimpExport.h"

#include <assimp/scene.h>
#include <assimp/Exporter.hpp>

#include <algorithm>
#include <cctype>
#include <memory>
#include <vector>

#include "tools/formwork/OneLine.h"

namespace formworkTool {

namespace {

// The vertices a run of primitives uses, renumbered in order of first use, and the
// primitives in the new numbering.
struct Subset {
    std::vector<int> vertices;        // new index -> mesh vertex
    std::vector<unsigned> indices;    // the primitives' corners, renumbered
    unsigned cornersPerPrimitive = 0; // 1, 2 or 3
    unsigned primitiveType = 0;       // aiPrimitiveType_…
};

Subset makeSubset(int numVertices, const std::vector<int>& corners, unsigned perPrimitive,
                  unsigned type) {
    Subset subset;
    subset.cornersPerPrimitive = perPrimitive;
    subset.primitiveType = type;
    std::vector<int> renumbered(static_cast<std::size_t>(numVertices), -1);
    subset.indices.reserve(corners.size());
    for (const int v : corners) {
        int& index = renumbered[static_cast<std::size_t>(v)];
        if (index < 0) {
            index = static_cast<int>(subset.vertices.size());
            subset.vertices.push_back(v);
        }
        subset.indices.push_back(static_cast<unsigned>(index));
    }
    return subset;
}

// The segments of the mesh's line strips and lines, two corners each.
std::vector<int> segmentCorners(const koGeom::CompactMesh& mesh) {
    std::vector<int> corners;
    const int* points = mesh.getLineStripPoints();
    for (int s = 0; s < mesh.getNumLineStrips(); ++s) {
        const int length = mesh.getLineStripLengths()[s];
        for (int i = 0; i + 1 < length; ++i) {
            corners.insert(corners.end(), {points[i], points[i + 1]});
        }
        points += length;
    }
    for (int l = 0; l < mesh.getNumLines(); ++l) {
        corners.insert(corners.end(), {mesh.getLines()[l][0], mesh.getLines()[l][1]});
    }
    return corners;
}

// The assimp mesh of one subset, with every channel of `mesh` for the subset's vertices.
aiMesh* makeAssimpMesh(const koGeom::CompactMesh& mesh, const Subset& subset, float scale) {
    auto* out = new aiMesh;
    const auto n = static_cast<unsigned>(subset.vertices.size());
    out->mPrimitiveTypes = subset.primitiveType;
    out->mMaterialIndex = 0;
    out->mNumVertices = n;
    out->mVertices = new aiVector3D[n];
    const float* normals = mesh.getNormalsRaw();
    const float* uvs = mesh.getUVsRaw();
    const float* sts = mesh.getSTsRaw();
    const float* colours = mesh.getColoursRaw();
    if (normals != nullptr) {
        out->mNormals = new aiVector3D[n];
    }
    const float* uvSets[2] = {uvs, sts};
    for (unsigned set = 0; set < 2; ++set) {
        if (uvSets[set] != nullptr) {
            out->mTextureCoords[set] = new aiVector3D[n];
            out->mNumUVComponents[set] = 2;
        }
    }
    if (colours != nullptr) {
        out->mColors[0] = new aiColor4D[n];
    }
    const float* positions = mesh.getVerticesRaw();
    for (unsigned i = 0; i < n; ++i) {
        const auto v = static_cast<std::size_t>(subset.vertices[i]);
        out->mVertices[i].Set(positions[3 * v] * scale, positions[3 * v + 1] * scale,
                              positions[3 * v + 2] * scale);
        if (normals != nullptr) {
            out->mNormals[i].Set(normals[3 * v], normals[3 * v + 1], normals[3 * v + 2]);
        }
        for (unsigned set = 0; set < 2; ++set) {
            if (uvSets[set] != nullptr) {
                out->mTextureCoords[set][i].Set(uvSets[set][2 * v], uvSets[set][2 * v + 1], 0.0f);
            }
        }
        if (colours != nullptr) {
            out->mColors[0][i] = aiColor4D(colours[4 * v], colours[4 * v + 1], colours[4 * v + 2],
                                           colours[4 * v + 3]);
        }
    }
    const unsigned perFace = subset.cornersPerPrimitive;
    out->mNumFaces = static_cast<unsigned>(subset.indices.size()) / perFace;
    out->mFaces = new aiFace[out->mNumFaces];
    for (unsigned f = 0; f < out->mNumFaces; ++f) {
        aiFace& face = out->mFaces[f];
        face.mNumIndices = perFace;
        face.mIndices = new unsigned[perFace];
        std::copy_n(&subset.indices[f * perFace], perFace, face.mIndices);
    }
    return out;
}

} // namespace

const char* assimpExportFormat(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos) {
        return nullptr;
    }
    std::string extension(path.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == "obj") {
        return "objnomtl";
    }
    if (extension == "ply") {
        // ASCII, nine digits a float: assimp's reader misreads the colours of its own binary
        // PLY files.
        return "ply";
    }
    if (extension == "stl") {
        return "stlb";
    }
    if (extension == "glb") {
        return "glb2";
    }
    return nullptr;
}

bool exportWithAssimp(const std::string& path, const MeshList& meshes, double scale,
                      std::string& error) {
    const char* format = assimpExportFormat(path);
    if (format == nullptr) {
        error = path + ": no exporter for this file name (use .obj, .ply, .stl or .glb)";
        return false;
    }
    // STL holds triangles only; its exporter reads three corners of every face.
    const bool trianglesOnly = std::string_view(format) == "stlb";
    // The scene owns everything hung on it and frees it with itself.
    auto scene = std::make_unique<aiScene>();
    scene->mRootNode = new aiNode("formwork");
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial* [1] { new aiMaterial };
    std::vector<std::vector<aiMesh*>> nodeMeshes;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        const int numVertices = mesh->getNumVertices();
        std::vector<bool> used(static_cast<std::size_t>(numVertices), false);
        std::vector<Subset> subsets;
        subsets.push_back(
            makeSubset(numVertices, surfaceTriangles(*mesh), 3, aiPrimitiveType_TRIANGLE));
        if (!trianglesOnly) {
            subsets.push_back(
                makeSubset(numVertices, segmentCorners(*mesh), 2, aiPrimitiveType_LINE));
        }
        for (const Subset& subset : subsets) {
            for (const int v : subset.vertices) {
                used[static_cast<std::size_t>(v)] = true;
            }
        }
        std::vector<int> loose;
        for (int v = 0; v < numVertices; ++v) {
            if (!used[static_cast<std::size_t>(v)]) {
                loose.push_back(v);
            }
        }
        if (!trianglesOnly) {
            subsets.push_back(makeSubset(numVertices, loose, 1, aiPrimitiveType_POINT));
        }
        std::vector<aiMesh*>& made = nodeMeshes.emplace_back();
        for (const Subset& subset : subsets) {
            if (!subset.indices.empty()) {
                made.push_back(makeAssimpMesh(*mesh, subset, static_cast<float>(scale)));
            }
        }
    }
    if (trianglesOnly &&
        std::all_of(nodeMeshes.begin(), nodeMeshes.end(),
                    [](const std::vector<aiMesh*>& made) { return made.empty(); })) {
        error = path + ": STL holds triangles only, and the meshes have none";
        return false;
    }
    std::vector<aiMesh*> all;
    aiNode* root = scene->mRootNode;
    root->mNumChildren = static_cast<unsigned>(nodeMeshes.size());
    root->mChildren = new aiNode*[nodeMeshes.size()];
    for (std::size_t i = 0; i < nodeMeshes.size(); ++i) {
        auto* node = new aiNode("mesh" + std::to_string(i));
        node->mParent = root;
        node->mNumMeshes = static_cast<unsigned>(nodeMeshes[i].size());
        node->mMeshes = new unsigned[nodeMeshes[i].size()];
        for (std::size_t k = 0; k < nodeMeshes[i].size(); ++k) {
            node->mMeshes[k] = static_cast<unsigned>(all.size());
            all.push_back(nodeMeshes[i][k]);
        }
        root->mChildren[i] = node;
    }
    scene->mNumMeshes = static_cast<unsigned>(all.size());
    scene->mMeshes = new aiMesh*[all.size()];
    std::copy(all.begin(), all.end(), scene->mMeshes);

    Assimp::Exporter exporter;
    if (exporter.Export(scene.get(), format, path) != aiReturn_SUCCESS) {
        error = path + ": " + oneLine(exporter.GetErrorString());
        return false;
    }
    return true;
}

} // namespace formworkTool
