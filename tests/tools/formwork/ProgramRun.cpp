#include "tests/tools/formwork/ProgramRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/formwork/Torus.h"

extern char** environ;

namespace formworkTest {

ScratchDirectory::ScratchDirectory() {
    std::string pattern = testing::TempDir() + "formwork-program-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        ADD_FAILURE() << "cannot make a directory from " << pattern;
    }
    path_ = pattern;
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

namespace {

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments,
                      const ScratchDirectory& directory) {
    const std::string outPath = directory / "stdout.txt";
    const std::string errPath = directory / "stderr.txt";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    std::vector<std::string> words{FORMWORK_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    ProgramRun run;
    pid_t pid = 0;
    const int spawned =
        posix_spawn(&pid, FORMWORK_PROGRAM, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        ADD_FAILURE() << "cannot run " << FORMWORK_PROGRAM << ": " << std::strerror(spawned);
        return run;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = slurp(outPath);
    run.err = slurp(errPath);
    return run;
}

namespace {

template <class T>
std::string compareArrays(const char* what, const T* a, const T* b, long long count) {
    if ((a == nullptr) != (b == nullptr)) {
        return std::string(what) +
               (a == nullptr ? " missing in the first" : " missing in the second");
    }
    if (count > 0 && a != nullptr &&
        std::memcmp(a, b, static_cast<std::size_t>(count) * sizeof(T)) != 0) {
        return std::string(what) + " differ";
    }
    return {};
}

} // namespace

std::string compareMeshLists(const formworkTool::MeshList& a, const formworkTool::MeshList& b) {
    if (a.size() != b.size()) {
        return "mesh counts " + std::to_string(a.size()) + " and " + std::to_string(b.size());
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const koGeom::CompactMesh& x = *a[i];
        const koGeom::CompactMesh& y = *b[i];
        const std::string mesh = "mesh " + std::to_string(i) + ": ";
        const long long n = x.getNumVertices();
        if (n != y.getNumVertices() || x.getNumTriangles() != y.getNumTriangles() ||
            x.getNumLineStrips() != y.getNumLineStrips() ||
            x.getNumLineStripPoints() != y.getNumLineStripPoints()) {
            return mesh + "counts differ";
        }
        for (const std::string& wrong :
             {compareArrays("vertices", x.getVerticesRaw(), y.getVerticesRaw(), 3 * n),
              compareArrays("normals", x.getNormalsRaw(), y.getNormalsRaw(), 3 * n),
              compareArrays("uvs", x.getUVsRaw(), y.getUVsRaw(), 2 * n),
              compareArrays("sts", x.getSTsRaw(), y.getSTsRaw(), 2 * n),
              compareArrays("colours", x.getColoursRaw(), y.getColoursRaw(), 4 * n),
              compareArrays("triangles", x.getTrianglesRaw(), y.getTrianglesRaw(),
                            3LL * x.getNumTriangles()),
              compareArrays("line strip points", x.getLineStripPoints(), y.getLineStripPoints(),
                            x.getNumLineStripPoints()),
              compareArrays("line strip lengths", x.getLineStripLengths(), y.getLineStripLengths(),
                            x.getNumLineStrips())}) {
            if (!wrong.empty()) {
                return mesh + wrong;
            }
        }
    }
    return {};
}

formworkTool::MeshList torusList(int segments, int rings) {
    return {formworkTool::makeTorus(segments, rings, 1.0, 0.4).toMesh()};
}

} // namespace formworkTest
