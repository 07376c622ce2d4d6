// formwork: the command-line program over the library. Each subcommand is a function of
// Commands.h; this file only turns the command line into their arguments.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <functional>
#include <new>
#include <string>

#include "tools/formwork/Commands.h"
#include "tools/formwork/MeshFiles.h"

namespace {

using namespace formworkTool;

// Output names whose extension the program can write.
const CLI::Validator meshFileName(
    [](std::string& name) {
        return isWritableFileName(name)
                   ? std::string()
                   : name + " is not a mesh file name (use .fwpk, .obj, .ply, .stl or .glb)";
    },
    "MESH FILE");

struct Arguments {
    CommonOptions common;
    std::string in;
    std::string out;
    ImportOptions import;
    double scale = 1.0;
    bool json = false;
    int maxValues = 8;
    RenderOptions render;
    int levels = 1;
    int undo = 0;
    bool keepVertices = false;
    int segments = 48;
    int rings = 24;
    double majorRadius = 1.0;
    double minorRadius = 0.4;
};

// Builds the command line; `run` is set to the chosen subcommand's work.
void describe(CLI::App& app, Arguments& a, std::function<int()>& run) {
    app.require_subcommand(1);
    app.fallthrough();
    app.add_flag("-q,--quiet", a.common.quiet, "No progress or summary lines");
    app.footer(
        "Exit codes: 0 done, 1 bad input (one line on stderr names the file and the fault),"
        " 2 bad usage.\nMore: docs/formwork.md, or formwork <subcommand> --help.");

    CLI::App* import = app.add_subcommand(
        "import",
        "Read a mesh file (OBJ, PLY, STL, OFF, glTF/GLB, FBX, 3DS, ...) into a packet file");
    import->add_option("IN", a.in, "Mesh file, any format assimp reads")->required();
    import->add_option("OUT", a.out, "Output: a packet file (.fwpk) or .obj, .ply, .stl, .glb")
        ->required()
        ->check(meshFileName);
    import->add_flag("--merge", a.import.merge, "One mesh for the whole scene, not one per node");
    import->add_option("--scale", a.scale, "Multiply every position by this factor")
        ->check(CLI::PositiveNumber);
    import->callback([&] { run = [&] { return runImport(a.common, a.in, a.out, a.import, a.scale);
};
} // namespace
);

CLI::App* exporter =
    app.add_subcommand("export", "Write the meshes of a packet file (or any mesh file) out");
exporter->add_option("IN", a.in, "Packet file, or any mesh file")->required();
exporter->add_option("OUT", a.out, "Output: .obj, .ply, .stl, .glb (or .fwpk)")
    ->required()
    ->check(meshFileName);
exporter->callback([&] { run = [&] { return runExport(a.common, a.in, a.out); }; });

CLI::App* info =
    app.add_subcommand("info", "Counts, bounding box, memory and surface topology of a mesh file");
info->add_option("FILE", a.in, "Packet file, or any mesh file")->required();
info->add_flag("--json", a.json, "One JSON object, for scripts");
info->callback([&] { run = [&] { return runInfo(a.common, a.in, a.json); }; });

CLI::App* dump = app.add_subcommand("dump", "The packets and values of any packet file");
dump->add_option("FILE", a.in, "Packet file")->required();
dump->add_flag("--json", a.json, "One JSON object, for scripts");
dump->add_option("--max-values", a.maxValues, "Show at most this many values of an array")
    ->check(CLI::Range(0, 1 << 20));
dump->callback([&] { run = [&] { return runDump(a.common, a.in, a.json, a.maxValues); }; });

CLI::App* render =
    app.add_subcommand("render", "A PNG picture of a mesh file through the library's camera");
render->add_option("IN", a.in, "Packet file, or any mesh file")->required();
render->add_option("OUT", a.out, "PNG file to write")->required();
render->add_option("--width", a.render.width, "Picture width in pixels")
    ->check(CLI::Range(1, 8192));
render->add_option("--height", a.render.height, "Picture height in pixels")
    ->check(CLI::Range(1, 8192));
render->add_option("--azimuth", a.render.azimuth, "Degrees about y from +z to the eye");
render->add_option("--elevation", a.render.elevation, "Degrees of the eye above the xz plane")
    ->check(CLI::Range(-90.0, 90.0));
render->add_flag("--wireframe", a.render.wireframe, "Draw the triangles' edges too");
render->add_option("--supersample", a.render.supersample, "Samples per pixel along each axis")
    ->check(CLI::Range(1, 4));
render->callback([&] { run = [&] { return runRender(a.common, a.in, a.out, a.render); }; });

CLI::App* subdivide = app.add_subcommand(
    "subdivide", "sqrt(3) subdivision on the half-edge mesh, one saved state per level");
subdivide->add_option("IN", a.in, "Packet file, or any mesh file")->required();
subdivide->add_option("OUT", a.out, "Output: .fwpk, .obj, .ply, .stl or .glb")
    ->required()
    ->check(meshFileName);
subdivide->add_option("--levels", a.levels, "Subdivision steps")->check(CLI::Range(0, 8));
subdivide->add_option("--undo", a.undo, "Go back this many levels with setState before writing")
    ->check(CLI::NonNegativeNumber);
subdivide->add_flag("--keep-vertices", a.keepVertices,
                    "Change the topology only: old vertices do not move");
subdivide->callback([&] {
    if (a.undo > a.levels) {
        throw CLI::ValidationError("--undo", "cannot go back more levels than --levels makes");
    }
    run = [&] { return runSubdivide(a.common, a.in, a.out, a.levels, a.undo, !a.keepVertices); };
});

CLI::App* torus = app.add_subcommand("make-torus", "Write the demonstration torus");
torus->group("Extras");
torus->add_option("OUT", a.out, "Output: .fwpk, .obj, .ply, .stl or .glb")
    ->required()
    ->check(meshFileName);
torus->add_option("--segments", a.segments, "Steps round the axis")->check(CLI::Range(3, 4096));
torus->add_option("--rings", a.rings, "Steps round the tube")->check(CLI::Range(3, 4096));
torus->add_option("--major", a.majorRadius, "Radius of the ring")->check(CLI::PositiveNumber);
torus->add_option("--minor", a.minorRadius, "Radius of the tube")->check(CLI::PositiveNumber);
torus->callback([&] {
    run = [&] {
        return runMakeTorus(a.common, a.out, a.segments, a.rings, a.majorRadius, a.minorRadius);
    };
});
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("formwork: import, inspect, convert, render and subdivide meshes with Formwork",
                 "formwork");
    Arguments arguments;
    std::function<int()> run;
    describe(app, arguments, run);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        // Help asked for is success; anything else the parser rejects is bad usage.
        const int shown = app.exit(e);
        return shown == 0 ? exitDone : exitBadUsage;
    }
    try {
        return run();
    } catch (const std::bad_alloc&) {
        std::fputs("formwork: out of memory\n", stderr);
        return exitBadInput;
    }
}
