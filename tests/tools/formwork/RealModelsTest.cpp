// Every OBJ, PLY, STL, OFF and glTF model of Debian's assimp-testmodels through the program:
// a model assimp reads imports into a packet file that reads back with identical arrays, whose
// `info` counts agree with data/assimp-models.tsv and with assimp's own count, and which
// renders to a picture with something on it; a model assimp refuses gives exit code 1 and one
// line naming it. One test per format family, so the families run in parallel.

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/formwork/ProgramRun.h"
#include "tools/formwork/MeshFiles.h"
#include "tools/formwork/Png.h"

namespace formworkTest {
namespace {

struct Counts {
    long meshes = 0;
    long vertices = 0;
    long triangles = 0;
    bool operator==(const Counts&) const = default;
};

struct Model {
    std::string path; // relative to the models folder
    bool rejected = false;
    bool skipped = false;
    Counts counts;
};

std::string lowerExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

std::vector<Model> listedModels() {
    std::vector<Model> models;
    std::ifstream in(FORMWORK_TEST_DATA "/assimp-models.tsv");
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::istringstream fields(line);
        Model model;
        std::string second;
        std::getline(fields, model.path, '\t');
        fields >> second;
        model.rejected = second == "rejected";
        model.skipped = second == "skipped";
        if (!model.rejected && !model.skipped) {
            model.counts.meshes = std::stol(second);
            fields >> model.counts.vertices >> model.counts.triangles;
        }
        models.push_back(model);
    }
    return models;
}

// assimp's own count, with the importer's steps: one mesh per node that has meshes, the
// vertices and triangles of every mesh each node names.
Counts assimpCounts(const std::string& path) {
    Assimp::Importer importer;
    const aiScene* scene =
        importer.ReadFile(path, aiProcess_ValidateDataStructure | aiProcess_Triangulate |
                                    aiProcess_JoinIdenticalVertices | aiProcess_SortByPType);
    Counts counts;
    std::vector<const aiNode*> nodes{scene->mRootNode};
    while (!nodes.empty()) {
        const aiNode* node = nodes.back();
        nodes.pop_back();
        counts.meshes += node->mNumMeshes > 0 ? 1 : 0;
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            const aiMesh* mesh = scene->mMeshes[node->mMeshes[i]];
            counts.vertices += mesh->mNumVertices;
            for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
                counts.triangles += mesh->mFaces[f].mNumIndices == 3 ? 1 : 0;
            }
        }
        nodes.insert(nodes.end(), node->mChildren, node->mChildren + node->mNumChildren);
    }
    return counts;
}

// The number after "key": in `text`, from `from` on.
long jsonNumber(const std::string& text, const std::string& key, std::size_t from) {
    const std::size_t at = text.find("\"" + key + "\": ", from);
    return at == std::string::npos ? -1 : std::stol(text.substr(at + key.size() + 4));
}

void checkModel(const Model& model, const ScratchDirectory& dir) {
    const std::string path = std::string(FORMWORK_ASSIMP_MODELS) + "/" + model.path;
    const std::string packets = dir / "model.fwpk";
    const ProgramRun imported = runProgram({"import", path, packets}, dir);
    if (model.rejected) {
        EXPECT_EQ(imported.exitCode, 1);
        EXPECT_EQ(imported.err.rfind("formwork: " + path + ": ", 0), 0u) << imported.err;
        EXPECT_EQ(imported.err.find('\n'), imported.err.size() - 1) << imported.err;
        return;
    }
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
    // The packet file holds exactly what was imported.
    formworkTool::MeshList direct;
    formworkTool::MeshList fromPackets;
    std::string error;
    formworkTool::Progress quiet(false);
    ASSERT_TRUE(formworkTool::readMeshes(path, {}, direct, error, quiet)) << error;
    ASSERT_TRUE(formworkTool::readMeshes(packets, {}, fromPackets, error, quiet)) << error;
    EXPECT_EQ(compareMeshLists(direct, fromPackets), "");

    const ProgramRun info = runProgram({"info", "--json", packets}, dir);
    ASSERT_EQ(info.exitCode, 0) << info.err;
    const std::size_t total = info.out.find("\"total\"");
    const Counts reported{jsonNumber(info.out, "meshes", total),
                          jsonNumber(info.out, "vertices", total),
                          jsonNumber(info.out, "triangles", total)};
    EXPECT_EQ(reported, model.counts);
    EXPECT_EQ(assimpCounts(path), model.counts);

    const std::string picture = dir / "model.png";
    const ProgramRun render =
        runProgram({"render", packets, picture, "--width", "64", "--height", "48"}, dir);
    ASSERT_EQ(render.exitCode, 0) << render.err;
    formworkTool::Image image;
    ASSERT_TRUE(formworkTool::readPng(picture, image, error)) << error;
    long drawn = 0;
    for (std::size_t i = 0; i < image.rgb.size(); ++i) {
        drawn += std::abs(image.rgb[i] - image.rgb[i % 3]) > 24 ? 1 : 0;
    }
    EXPECT_GT(drawn, 0);
}

void checkFamily(const std::set<std::string>& extensions) {
    ScratchDirectory dir;
    int checked = 0;
    for (const Model& model : listedModels()) {
        if (extensions.count(lowerExtension(model.path)) != 0 && !model.skipped) {
            SCOPED_TRACE(model.path);
            checkModel(model, dir);
            ++checked;
        }
    }
    EXPECT_GT(checked, 0);
}

TEST(RealModels, ListMatchesTheInstalledModels) {
    std::set<std::string> installed;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(FORMWORK_ASSIMP_MODELS)) {
        const std::string path = entry.path().string();
        const std::string extension = lowerExtension(path);
        if (entry.is_regular_file() &&
            std::set<std::string>{".obj", ".ply", ".stl", ".off", ".gltf", ".glb"}.count(
                extension)) {
            installed.insert(
                std::filesystem::relative(entry.path(), FORMWORK_ASSIMP_MODELS).string());
        }
    }
    std::set<std::string> listed;
    for (const Model& model : listedModels()) {
        listed.insert(model.path);
    }
    EXPECT_EQ(installed, listed);
    EXPECT_EQ(listed.size(), 100u);
}

TEST(RealModels, ObjModels) { checkFamily({".obj"}); }
TEST(RealModels, PlyAndOffModels) { checkFamily({".ply", ".off"}); }
TEST(RealModels, StlModels) { checkFamily({".stl"}); }
TEST(RealModels, GltfModels) { checkFamily({".gltf", ".glb"}); }

} // namespace
} // namespace formworkTest
