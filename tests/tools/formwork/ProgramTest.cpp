#include <gtest/gtest.h>

#include <cstdio>
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

TEST(Program, ExitCodesTellDoneBadInputAndBadUsageApart) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.obj";
    ASSERT_EQ(runProgram({"make-torus", torus, "--segments", "8", "--rings", "4"}, dir).exitCode,
              0);
    {
        std::FILE* junk = std::fopen((dir / "junk.obj").c_str(), "w");
        std::fputs("this is not a mesh\n", junk);
        std::fclose(junk);
    }
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
        {{"info", dir / "missing.obj"},
         1,
         "formwork: " + (dir / "missing.obj") + ": No such file or directory\n"},
        {{"render", dir / "missing.fwpk", dir / "t.png"},
         1,
         "formwork: " + (dir / "missing.fwpk") + ": No such file or directory\n"},
        {{"export", torus, dir / "no-such-dir/out.obj"}, 1, ""},
        {{"info", dir / "junk.obj"}, 1, ""},
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
            // One line that names the file.
            EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
            EXPECT_TRUE(contains(run.err, dir / "")) << run.err;
        } else if (c.exitCode == 0) {
            EXPECT_TRUE(contains(run.out, "Usage: formwork")) << run.out;
        }
    }
}

TEST(Program, InfoReportsTheTorusAsAClosedSurfaceOfGenusOne) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.obj";
    ASSERT_EQ(runProgram({"make-torus", torus}, dir).exitCode, 0);
    const ProgramRun json = runProgram({"info", "--json", torus}, dir);
    ASSERT_EQ(json.exitCode, 0) << json.err;
    for (const char* member :
         {"\"vertices\": 1225", "\"triangles\": 2304",
          "\"channels\": [\"vertices\", \"normals\", "
          "\"uvs\", \"colours\"]",
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

TEST(Program, ExportsReadBackAsTheSameClosedTorusInEveryFormat) {
    ScratchDirectory dir;
    const std::string torus = dir / "torus.obj";
    ASSERT_EQ(runProgram({"-q", "make-torus", torus}, dir).exitCode, 0);
    const MeshList original = readBack(torus);
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
    // OBJ keeps every channel exactly (once read, the order of the vertices is stable too).
    EXPECT_EQ(compareMeshLists(readBack(dir / "again.obj"), original), "");
}

TEST(Program, ImportScalesAndMergesNodes) {
    ScratchDirectory dir;
    MeshList two = torusList(8, 4);
    two.push_back(torusList(6, 3)[0]);
    std::string error;
    ASSERT_TRUE(formworkTool::exportWithAssimp(dir / "two.glb", two, 1.0, error)) << error;
    const ProgramRun apart = runProgram({"import", dir / "two.glb", dir / "apart.obj"}, dir);
    EXPECT_EQ(apart.out,
              "wrote " + (dir / "apart.obj") + ": 2 meshes, 73 vertices, 100 triangles\n");
    const ProgramRun merged =
        runProgram({"import", "--merge", "--scale", "2", dir / "two.glb", dir / "one.obj"}, dir);
    EXPECT_EQ(merged.out, "wrote " + (dir / "one.obj") + ": 1 mesh, 73 vertices, 100 triangles\n");
    const MeshList one = readBack(dir / "one.obj");
    ASSERT_EQ(one.size(), 1u);
    koGeom::BoundingBox box;
    one[0]->getBoundingBox(box);
    EXPECT_FLOAT_EQ(box.maxPt().x, 2.8f);
    EXPECT_FLOAT_EQ(box.minPt().y, -0.8f);
}

TEST(Program, RenderWritesThePictureAndNothingOnStderr) {
    ScratchDirectory dir;
    ASSERT_EQ(runProgram({"make-torus", dir / "t.obj"}, dir).exitCode, 0);
    const ProgramRun run = runProgram(
        {"render", dir / "t.obj", dir / "t.png", "--width", "80", "--height", "60", "--wireframe"},
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
    ASSERT_EQ(runProgram({"make-torus", dir / "t.obj"}, dir).exitCode, 0);
    const ProgramRun run = runProgram(
        {"subdivide", dir / "t.obj", dir / "s.obj", "--levels", "2", "--undo", "1"}, dir);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "level 0: 1152 vertices, 2304 faces\n"
              "level 1: 3456 vertices, 6912 faces\n"
              "level 2: 10368 vertices, 20736 faces\n"
              "undo 1: setState back to level 1: 3456 vertices, 6912 faces\n"
              "wrote " +
                  (dir / "s.obj") + ": 1 mesh, 3456 vertices, 6912 triangles\n");
    // Relaxing pulls the old vertices inward; keeping them leaves the box as it was.
    koGeom::BoundingBox relaxed;
    readBack(dir / "s.obj")[0]->getBoundingBox(relaxed);
    EXPECT_LT(relaxed.maxPt().x, 1.399f);
    ASSERT_EQ(runProgram({"-q", "subdivide", dir / "t.obj", dir / "k.obj", "--keep-vertices"}, dir)
                  .exitCode,
              0);
    koGeom::BoundingBox kept;
    readBack(dir / "k.obj")[0]->getBoundingBox(kept);
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
