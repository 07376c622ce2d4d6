#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/tools/formwork/ProgramRun.h"
#include "tools/formwork/AssimpExport.h"
#include "tools/formwork/MeshFiles.h"
#include "tools/formwork/Png.h"
#include "tools/formwork/Progress.h"

namespace formworkTest {
namespace {

using formworkTool::MeshList;

// Reads a file the program wrote, in process.
MeshList readBack(const std::string& path) {
    MeshList meshes;
    std::string error;
    formworkTool::Progress quiet(false);
    EXPECT_TRUE(formworkTool::readMeshes(path, {}, meshes, error, quiet)) << error;
    return meshes;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// True when `text` is one line.
bool oneLine(const std::string& text) { return text.find('\n') == text.size() - 1; }

TEST(Program, ExitCodesTellDoneBadInputAndBadUsageApart) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.fwpk";
    ASSERT_EQ(runProgram({"make-torus", torus, "--segments", "8", "--rings", "4"}, dir).exitCode,
              0);
    writeFile(dir / "junk.obj", "this is not a mesh\n");
    writeFile(dir / "cut.fwpk", readFile(torus).substr(0, 300));
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string errorLine; // the whole of stderr when not empty
    } cases[] = {
        {{"--help"}, 0, ""},
        {{"subdivide", "--help"}, 0, ""},
        {{}, 2, ""},
        {{"frobnicate"}, 2, ""},
        {{"info"}, 2, ""},
        {{"info", torus, "--colour"}, 2, ""},
        {{"render", torus, dir / "t.png", "--width", "0"}, 2, ""},
        {{"import", torus, dir / "out.xyz"}, 2, ""},
        {{"import", torus, dir / "out.obj", "--scale", "-1"}, 2, ""},
        {{"subdivide", torus, dir / "s.obj", "--levels", "1", "--undo", "2"}, 2, ""},
        {{"dump", torus, "--max-values", "-1"}, 2, ""},
        {{"info", dir / "missing.obj"},
         1,
         "formwork: " + (dir / "missing.obj") + ": No such file or directory\n"},
        {{"dump", dir / "missing.fwpk"},
         1,
         "formwork: " + (dir / "missing.fwpk") + ": No such file or directory\n"},
        {{"info", dir / ""}, 1, "formwork: " + (dir / "") + ": Is a directory\n"},
        {{"export", torus, dir / "no-such-dir/out.obj"}, 1, ""},
        {{"info", dir / "junk.obj"}, 1, ""},
        {{"render", dir / "cut.fwpk", dir / "t.png"}, 1, ""},
        {{"dump", dir / "junk.obj"}, 1, ""},
    };
    for (const auto& c : cases) {
        std::string words;
        for (const std::string& a : c.arguments) {
            words += a + " ";
        }
        SCOPED_TRACE(words);
        const ProgramRun run = runProgram(c.arguments, dir);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err;
        if (!c.errorLine.empty()) {
            EXPECT_EQ(run.err, c.errorLine);
        } else if (c.exitCode == 1) {
            EXPECT_TRUE(oneLine(run.err)) << run.err;
            EXPECT_TRUE(contains(run.err, "formwork: " + (dir / ""))) << run.err;
        } else if (c.exitCode == 0) {
            EXPECT_TRUE(contains(run.out, "Usage: formwork")) << run.out;
        }
    }
}

TEST(Program, PacketFileHoldsTheTorusExactlyAndImportScalesOnlyPositions) {
    ScratchDirectory dir;
    const ProgramRun made = runProgram({"make-torus", dir / "t.fwpk"}, dir);
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_EQ(made.out, "wrote " + (dir / "t.fwpk") + ": 1 mesh, 1225 vertices, 2304 triangles\n");
    const MeshList torus = readBack(dir / "t.fwpk");
    EXPECT_EQ(compareMeshLists(torus, torusList(48, 24)), "");
    ASSERT_EQ(runProgram({"-q", "import", "--scale", "2", dir / "t.fwpk", dir / "big.fwpk"}, dir)
                  .exitCode,
              0);
    const MeshList big = readBack(dir / "big.fwpk");
    ASSERT_EQ(big.size(), 1u);
    for (int i = 0; i < 3 * 1225; ++i) {
        ASSERT_EQ(big[0]->getVerticesRaw()[i], 2.0f * torus[0]->getVerticesRaw()[i]) << i;
    }
    big[0]->getVerticesRaw()[0] = torus[0]->getVerticesRaw()[0];
    EXPECT_EQ(std::vector<float>(big[0]->getNormalsRaw(), big[0]->getNormalsRaw() + 3 * 1225),
              std::vector<float>(torus[0]->getNormalsRaw(), torus[0]->getNormalsRaw() + 3 * 1225));
}

TEST(Program, InfoReportsTheTorusAsAClosedSurfaceOfGenusOne) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.fwpk";
    ASSERT_EQ(runProgram({"make-torus", torus}, dir).exitCode, 0);
    const ProgramRun json = runProgram({"info", "--json", torus}, dir);
    ASSERT_EQ(json.exitCode, 0) << json.err;
    for (const char* member :
         {"\"vertices\": 1225", "\"triangles\": 2304",
          "\"channels\": [\"vertices\", \"normals\", \"uvs\", \"colours\"]",
          "\"min\": [-1.39999998, -0.400000006, -1.39999998]", "\"edges\": 3456",
          "\"boundaryLoops\": 0", "\"eulerCharacteristic\": 0", "\"genus\": 1",
          "\"sizeInBytes\": 87520"}) {
        EXPECT_TRUE(contains(json.out, member)) << member << "\n" << json.out;
    }
    const ProgramRun text = runProgram({"info", torus}, dir);
    EXPECT_TRUE(contains(text.out, "mesh 0: 1225 vertices, 2304 triangles\n")) << text.out;
    EXPECT_TRUE(contains(text.out, "  genus         1\n")) << text.out;
    EXPECT_EQ(text.err, "");
}

TEST(Program, DumpListsEveryPacketAndStopsAtTheDamage) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.fwpk";
    ASSERT_EQ(runProgram({"make-torus", torus}, dir).exitCode, 0);
    const ProgramRun text = runProgram({"dump", torus}, dir);
    ASSERT_EQ(text.exitCode, 0) << text.err;
    // The header, then 1000-element blocks: 2 of vertices, 3 of triangles, 2 each of normals,
    // UVs and colours.
    EXPECT_EQ(text.out.rfind("packet 0 at 16: ko.tz.mesh (object 1)", 0), 0u) << text.out;
    EXPECT_TRUE(contains(text.out, "packet 11 at ")) << text.out;
    EXPECT_TRUE(contains(text.out, ": ko.tz.mesh.colours, payload ")) << text.out;
    EXPECT_EQ(text.out.substr(text.out.size() - 11), "12 packets\n");
    const ProgramRun json = runProgram({"dump", "--json", torus}, dir);
    EXPECT_TRUE(contains(json.out, "\"packetCount\":12,\"error\":null")) << json.out;

    writeFile(dir / "cut.fwpk", readFile(torus).substr(0, 20000));
    const ProgramRun cut = runProgram({"dump", dir / "cut.fwpk"}, dir);
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_TRUE(oneLine(cut.err)) << cut.err;
    // Packet 3, the first of triangles, starts at about 15,000 and runs past 20,000.
    EXPECT_TRUE(contains(cut.err, "formwork: " + (dir / "cut.fwpk") + ": packet 3 at byte "))
        << cut.err;
    EXPECT_TRUE(contains(cut.out, "packet 2 at ")) << cut.out; // listed up to the damage
}

TEST(Program, ExportsReadBackAsTheSameClosedTorusInEveryFormat) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.fwpk";
    ASSERT_EQ(runProgram({"-q", "make-torus", torus}, dir).exitCode, 0);
    for (const char* format : {"ply", "glb", "stl", "obj"}) {
        SCOPED_TRACE(format);
        const std::string out = dir / (std::string("again.") + format);
        const ProgramRun run = runProgram({"export", torus, out}, dir);
        ASSERT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, "wrote " + out + ": 1 mesh, 1225 vertices, 2304 triangles\n");
        const ProgramRun info = runProgram({"info", "--json", out}, dir);
        EXPECT_TRUE(contains(info.out, "\"faces\": 2304")) << info.out;
        EXPECT_TRUE(contains(info.out, "\"genus\": 1")) << info.out;
        EXPECT_TRUE(contains(info.out, "\"max\": [1.39999998, 0.400000006, 1.39999998]"))
            << info.out;
    }
    // OBJ keeps every channel exactly; read back, the order of its vertices is stable too.
    ASSERT_EQ(runProgram({"import", dir / "again.obj", dir / "again.fwpk"}, dir).exitCode, 0);
    ASSERT_EQ(runProgram({"export", dir / "again.fwpk", dir / "twice.obj"}, dir).exitCode, 0);
    EXPECT_EQ(compareMeshLists(readBack(dir / "twice.obj"), readBack(dir / "again.obj")), "");
}

TEST(Program, ImportMergesNodesOnlyWhenAsked) {
    ScratchDirectory dir;
    MeshList two = torusList(8, 4);
    two.push_back(torusList(6, 3)[0]);
    std::string error;
    ASSERT_TRUE(formworkTool::exportWithAssimp(dir / "two.glb", two, 1.0, error)) << error;
    const ProgramRun apart = runProgram({"import", dir / "two.glb", dir / "apart.fwpk"}, dir);
    EXPECT_EQ(apart.out,
              "wrote " + (dir / "apart.fwpk") + ": 2 meshes, 73 vertices, 100 triangles\n");
    const ProgramRun merged =
        runProgram({"import", "--merge", dir / "two.glb", dir / "one.fwpk"}, dir);
    EXPECT_EQ(merged.out, "wrote " + (dir / "one.fwpk") + ": 1 mesh, 73 vertices, 100 triangles\n");
}

TEST(Program, ImportPlacesNodesByTheirTransformsAndKeepsMirroredTrianglesOutward) {
    // One triangle (0, 0, 0), (1, 0, 0), (0, 1, 0) under two nodes: one moves it by 0.005 in x
    // (closer to the identity than assimp's own identity test can tell), one mirrors x.
    ScratchDirectory dir;
    writeFile(dir / "placed.gltf",
              R"({"asset": {"version": "2.0"}, "scene": 0,
        "scenes": [{"nodes": [0, 1]}],
        "nodes": [{"mesh": 0, "translation": [0.005, 0, 0]}, {"mesh": 0, "scale": [-1, 1, 1]}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "buffers": [{"byteLength": 44, "uri": "data:application/octet-stream;base64,)"
              R"(AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAABAAIAAAA="}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}, {"buffer": 0, "byteOffset": 36,
                         "byteLength": 6}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]},
                      {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"}]})");
    ASSERT_EQ(runProgram({"-q", "import", dir / "placed.gltf", dir / "placed.fwpk"}, dir).exitCode,
              0);
    const MeshList placed = readBack(dir / "placed.fwpk");
    ASSERT_EQ(placed.size(), 2u);
    const std::vector<float> expected[2] = {{0.005f, 0, 0, 1.005f, 0, 0, 0.005f, 1, 0},
                                            {-0.0f, 0, 0, -1, 0, 0, -0.0f, 1, 0}};
    const std::vector<int> corners[2] = {{0, 1, 2}, {0, 2, 1}}; // the mirror turns them
    for (std::size_t i = 0; i < 2; ++i) {
        const float* p = placed[i]->getVerticesRaw();
        EXPECT_EQ(std::vector<float>(p, p + 9), expected[i]) << i;
        const int* t = placed[i]->getTrianglesRaw();
        EXPECT_EQ(std::vector<int>(t, t + 3), corners[i]) << i;
    }
}

TEST(Program, RenderWritesThePictureAndNothingOnStderr) {
    ScratchDirectory dir;
    ASSERT_EQ(runProgram({"make-torus", dir / "t.fwpk"}, dir).exitCode, 0);
    const ProgramRun run = runProgram(
        {"render", dir / "t.fwpk", dir / "t.png", "--width", "80", "--height", "60", "--wireframe"},
        dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "wrote " + (dir / "t.png") + ": 80 x 60 pixels\n");
    EXPECT_EQ(run.err, ""); // stderr is no terminal: no progress
    formworkTool::Image image;
    std::string error;
    ASSERT_TRUE(formworkTool::readPng(dir / "t.png", image, error)) << error;
    EXPECT_EQ(image.width, 80);
    EXPECT_EQ(image.height, 60);
}

TEST(Program, SubdivideSavesAStatePerLevelAndUndoReturnsToOne) {
    ScratchDirectory dir;
    ASSERT_EQ(runProgram({"make-torus", dir / "t.fwpk"}, dir).exitCode, 0);
    const ProgramRun run = runProgram(
        {"subdivide", dir / "t.fwpk", dir / "s.fwpk", "--levels", "2", "--undo", "1"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "level 0: 1152 vertices, 2304 faces\n"
              "level 1: 3456 vertices, 6912 faces\n"
              "level 2: 10368 vertices, 20736 faces\n"
              "undo 1: setState back to level 1: 3456 vertices, 6912 faces\n"
              "wrote " +
                  (dir / "s.fwpk") + ": 1 mesh, 3456 vertices, 6912 triangles\n");
    // Relaxing pulls the old vertices inward; keeping them leaves the box as it was.
    koGeom::BoundingBox relaxed;
    readBack(dir / "s.fwpk")[0]->getBoundingBox(relaxed);
    EXPECT_LT(relaxed.maxPt().x, 1.399f);
    ASSERT_EQ(
        runProgram({"-q", "subdivide", dir / "t.fwpk", dir / "k.fwpk", "--keep-vertices"}, dir)
            .exitCode,
        0);
    koGeom::BoundingBox kept;
    readBack(dir / "k.fwpk")[0]->getBoundingBox(kept);
    EXPECT_FLOAT_EQ(kept.maxPt().x, 1.4f);
}

TEST(Progress, ShowsAfterItsDelayAndClearsItsLine) {
    std::FILE* sink = std::tmpfile();
    ASSERT_NE(sink, nullptr);
    {
        formworkTool::Progress progress(true, sink);
        progress.setDelay(0.0);
        progress.start("render");
        progress.update(0.5);
        progress.update(0.501); // the same whole percentage: not redrawn
        progress.finish();
        formworkTool::Progress off(false, sink);
        off.setDelay(0.0);
        off.start("import");
        off.update(0.5);
    }
    std::rewind(sink);
    char text[64] = {};
    std::fread(text, 1, sizeof text - 1, sink);
    std::fclose(sink);
    EXPECT_EQ(std::string(text), "\rrender  50%\r\033[K");
}

} // namespace
} // namespace formworkTest
